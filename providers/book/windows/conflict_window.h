// Two versions of an entry side by side, to choose from field by field.
#pragma once

#include <vector>

#include "providers/book/windows/contact_fields.h"

namespace book {

class ConflictWindow final : public kit::Dialog {
 public:
  // `base` is what both began with: what only one of them has changed is chosen at first.
  ConflictWindow(const kit::Language& language, const formats::Contact& base, const formats::Contact& mine,
                 const formats::Contact& theirs);

  // What was chosen, once it has been shown.
  formats::Contact Chosen() const;
  bool HasDifferences() const { return !differences_.empty(); }

 private:
  struct Difference {
    Field field;
    bool keepsMine;
  };

  void OnShow() override;
  bool OnCommand(int control, int notification) override;
  LRESULT OnNotify(const NMHDR& header) override;
  std::vector<std::wstring> CellsOf(const Difference& difference) const;
  void ShowSelected();
  void Keep(bool keepsMine);

  const formats::Contact& mine_;
  const formats::Contact& theirs_;
  std::vector<Difference> differences_;
  int selected_ = 0;
};

}  // namespace book
