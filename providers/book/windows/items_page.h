// Numbers and e-mail addresses of a contact: one is typed above the list of them, and taken into it.
#pragma once

#include <vector>

#include "providers/book/windows/contact_fields.h"
#include "providers/book/windows/contact_page.h"
#include "providers/book/windows/controls.h"
#include "providers/book/windows/steps.h"

namespace book {

class ItemsPage : public ContactPage {
 public:
  // The controls of a page, by their parts in it.
  struct Controls {
    int text, kind, preferred, add, change, list, remove, up, down;
  };

  void Prepare() override;
  void Fill() override;
  void Lock() override;
  bool OnCommand(int control, int notification) override;
  void OnNotify(const NMHDR& header) override;
  bool OnKey(int control, UINT key) override;
  UINT Fault() const override;
  void TakeTyped() override;
  bool HasTyped() const override;

  void Select(int row);

 protected:
  // An item as it stands in the controls above the list.
  struct Typed {
    std::string text;
    int kind = 0;
    bool isPreferred = false;

    bool operator==(const Typed&) const = default;
  };

  ItemsPage(kit::Dialog& window, formats::Contact& contact, Field field, const Controls& controls)
      : ContactPage(window, contact), controls_(controls), steps_(contact, field) {}

  virtual std::span<const ListView::Column> Columns() const = 0;
  virtual std::span<const UINT> Kinds() const = 0;
  virtual int Count() const = 0;
  virtual Typed At(int row) const = 0;
  // `row` may be the one behind the last: a new one.
  virtual void Store(int row, const Typed& typed) = 0;
  virtual void Remove(int row) = 0;
  virtual void Swap(int row, int other) = 0;
  virtual UINT FaultOf(const std::string& text) const = 0;
  virtual bool IsSame(const Typed& one, const Typed& other) const = 0;
  virtual UINT TwiceFault() const = 0;
  virtual bool MayBePreferred(int) const { return true; }

 private:
  Typed Read() const;
  void Show(const Typed& typed);
  // As it would be taken: in the place of the selected one, or as a further one.
  UINT FaultAt(const Typed& typed, int row) const;
  bool Differs(const Typed& typed) const;
  void Press(int button);
  void Add();
  void Change();
  void RemoveSelected();
  void Move(int by);
  void ShowList();
  void Judge();
  bool Undo();
  bool Paste();

  const Controls controls_;
  Steps steps_;
  int selected_ = -1;
  bool isLocked_ = false;
};

class NumbersPage final : public ItemsPage {
 public:
  NumbersPage(kit::Dialog& window, formats::Contact& contact);

  // By the key of a number; nothing for one that is not there.
  void SelectKey(uint32_t key);

 protected:
  std::span<const ListView::Column> Columns() const override;
  std::span<const UINT> Kinds() const override;
  int Count() const override { return static_cast<int>(contact_.numbers.size()); }
  Typed At(int row) const override;
  void Store(int row, const Typed& typed) override;
  void Remove(int row) override;
  void Swap(int row, int other) override;
  UINT FaultOf(const std::string& text) const override;
  bool IsSame(const Typed& one, const Typed& other) const override;
  UINT TwiceFault() const override;
  bool MayBePreferred(int kind) const override;
};

class EmailsPage final : public ItemsPage {
 public:
  EmailsPage(kit::Dialog& window, formats::Contact& contact);

 protected:
  std::span<const ListView::Column> Columns() const override;
  std::span<const UINT> Kinds() const override;
  int Count() const override { return static_cast<int>(contact_.emails.size()); }
  Typed At(int row) const override;
  void Store(int row, const Typed& typed) override;
  void Remove(int row) override;
  void Swap(int row, int other) override;
  UINT FaultOf(const std::string& text) const override;
  bool IsSame(const Typed& one, const Typed& other) const override;
  UINT TwiceFault() const override;
};

}  // namespace book
