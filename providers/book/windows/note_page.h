// The note of a contact, and what else an imported one has.
#pragma once

#include "providers/book/windows/contact_page.h"

namespace book {

class NotePage final : public ContactPage {
 public:
  using ContactPage::ContactPage;

  void Prepare() override;
  void Fill() override;
  void Lock() override;
  bool OnCommand(int control, int notification) override;
};

}  // namespace book
