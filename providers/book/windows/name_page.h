// Names and company of a contact.
#pragma once

#include "providers/book/windows/contact_page.h"

namespace book {

// The display name is composed of the others until the user has typed one.
class NamePage final : public ContactPage {
 public:
  using ContactPage::ContactPage;

  void Prepare() override;
  void Fill() override;
  void Lock() override;
  bool OnCommand(int control, int notification) override;

 private:
  void Compose();

  bool isComposed_ = false;
};

// "Dr. Ida B. Wells Jr.", or the family name first where the language has it so; else the company.
std::string ComposedName(const formats::Contact& contact, LANGID language);

}  // namespace book
