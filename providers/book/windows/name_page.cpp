#include "providers/book/windows/name_page.h"

#include "providers/book/windows/controls.h"
#include "providers/book/windows/resource.h"

namespace book {
namespace {

struct Field {
  int control;
  std::string formats::Contact::*text;
};
constexpr Field kFields[] = {
    {IDC_NAME, &formats::Contact::name},       {IDC_PREFIX, &formats::Contact::prefix},
    {IDC_GIVEN, &formats::Contact::given},     {IDC_MIDDLE, &formats::Contact::middle},
    {IDC_SURNAME, &formats::Contact::surname}, {IDC_SUFFIX, &formats::Contact::suffix},
    {IDC_COMPANY, &formats::Contact::company}, {IDC_DEPARTMENT, &formats::Contact::department},
    {IDC_TITLE, &formats::Contact::title}};

constexpr int kLongestName = 500;

}  // namespace

std::string ComposedName(const formats::Contact& contact, LANGID language) {
  const bool isFamilyFirst = PRIMARYLANGID(language) == LANG_JAPANESE;
  const std::string *given = &contact.given, *surname = &contact.surname;
  const std::string* western[] = {&contact.prefix, given, &contact.middle, surname, &contact.suffix};
  const std::string* eastern[] = {&contact.prefix, surname, given, &contact.middle, &contact.suffix};
  std::string name;
  for (const std::string* each : isFamilyFirst ? eastern : western) {
    const std::string part = Trimmed(*each);
    if (!part.empty()) name += (name.empty() ? "" : " ") + part;
  }
  return name.empty() ? Trimmed(contact.company) : name;
}

void NamePage::Prepare() {
  for (const Field& each : kFields) window_.LimitText(each.control, kLongestName);
}

void NamePage::Fill() {
  const Filling filling(isFilling_);
  for (const Field& each : kFields) ShowText(window_, each.control, contact_.*each.text);
  isComposed_ = contact_.name == ComposedName(contact_, window_.Texts().Id());
}

void NamePage::Lock() {
  for (const Field& each : kFields) window_.SetReadOnly(each.control, true);
}

bool NamePage::OnCommand(int control, int notification) {
  for (const Field& each : kFields) {
    if (each.control != control) continue;
    if (notification != EN_CHANGE || isFilling_) return true;
    contact_.*each.text = TypedIn(window_, control);
    if (control == IDC_NAME) isComposed_ = contact_.name.empty();
    if (control != IDC_NAME) Compose();
    return true;
  }
  return false;
}

void NamePage::Compose() {
  if (!isComposed_) return;
  const Filling filling(isFilling_);
  contact_.name = ComposedName(contact_, window_.Texts().Id());
  ShowText(window_, IDC_NAME, contact_.name);
}

}  // namespace book
