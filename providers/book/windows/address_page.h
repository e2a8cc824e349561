// Postal addresses of a contact: the one that is selected stands below the list of them.
#pragma once

#include "providers/book/windows/contact_page.h"

namespace book {

class AddressPage final : public ContactPage {
 public:
  using ContactPage::ContactPage;

  void Prepare() override;
  void Fill() override;
  void Lock() override;
  bool OnCommand(int control, int notification) override;
  bool OnKey(int control, UINT key) override;

 private:
  bool OnField(int control, int notification);
  // What is typed without a selection begins one.
  formats::ContactAddress& Current();
  void ShowList();
  void Select(int row);
  void SelectListed();
  void Begin();
  void Remove();

  int selected_ = -1;
  bool isLocked_ = false;
};

}  // namespace book
