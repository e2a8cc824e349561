// Numbers and e-mail addresses as items of their pages.
#include <algorithm>

#include "formats/contact_properties.h"
#include "providers/book/windows/contact_fields.h"
#include "providers/book/windows/contact_kinds.h"
#include "providers/book/windows/items_page.h"
#include "providers/book/windows/resource.h"

namespace book {
namespace {

constexpr ListView::Column kNumberColumns[] = {
    {IDS_COLUMN_NUMBER, 38}, {IDS_COLUMN_KIND, 39}, {IDS_COLUMN_PREFERRED, 23}};
constexpr ListView::Column kEmailColumns[] = {
    {IDS_COLUMN_EMAIL, 52}, {IDS_COLUMN_KIND, 26}, {IDS_COLUMN_PREFERRED, 22}};

template <class Items>
void MakeRoom(Items& items, size_t at) {
  if (at == items.size()) items.emplace_back();
}

bool IsFax(const formats::ContactNumber& number) { return number.kind == formats::NumberKind::kFax; }

// The number keeps what it is known by, whatever is typed for it; no two have the same.
void KeepKeys(std::vector<formats::ContactNumber>& numbers) {
  for (auto each = numbers.begin(); each != numbers.end(); ++each) {
    each->key = formats::KeyOf(*each);
    const auto isTaken = [&](uint32_t key) {
      return key == 0 ||
             std::any_of(numbers.begin(), each, [key](const auto& one) { return one.key == key; });
    };
    while (isTaken(each->key)) ++each->key;
  }
}

}  // namespace

NumbersPage::NumbersPage(kit::Dialog& window, formats::Contact& contact)
    : ItemsPage(window, contact, Field::kNumbers,
                {IDC_NUMBER, IDC_NUMBER_KIND, IDC_NUMBER_PREFERRED, IDC_NUMBER_ADD, IDC_NUMBER_CHANGE,
                 IDC_NUMBERS, IDC_NUMBER_REMOVE, IDC_NUMBER_UP, IDC_NUMBER_DOWN}) {}

std::span<const ListView::Column> NumbersPage::Columns() const { return kNumberColumns; }
std::span<const UINT> NumbersPage::Kinds() const { return NumberKinds(); }
UINT NumbersPage::TwiceFault() const { return IDS_FAULT_NUMBER_TWICE; }
bool NumbersPage::MayBePreferred(int kind) const { return IsFaxKind(kind); }

void NumbersPage::SelectKey(uint32_t key) {
  const auto is = [key](const formats::ContactNumber& each) { return formats::KeyOf(each) == key; };
  const auto found = std::find_if(contact_.numbers.begin(), contact_.numbers.end(), is);
  if (found != contact_.numbers.end()) Select(static_cast<int>(found - contact_.numbers.begin()));
}

ItemsPage::Typed NumbersPage::At(int row) const {
  const formats::ContactNumber& number = contact_.numbers[static_cast<size_t>(row)];
  return {number.text, KindOf(number), &number == formats::MainFax(contact_)};
}

void NumbersPage::Store(int row, const Typed& typed) {
  KeepKeys(contact_.numbers);
  const auto at = static_cast<size_t>(row);
  MakeRoom(contact_.numbers, at);
  formats::ContactNumber& number = contact_.numbers[at];
  const bool wasFax = IsFax(number);
  number.text = typed.text;
  SetKind(&number, typed.kind);
  if (wasFax || IsFax(number)) number.isPreferred = IsFax(number) && typed.isPreferred;
  KeepKeys(contact_.numbers);
  PreferOne(&contact_, number.isPreferred && IsFax(number) ? &number : nullptr);
}

void NumbersPage::Remove(int row) {
  contact_.numbers.erase(contact_.numbers.begin() + row);
  PreferOne(&contact_, nullptr);
}

void NumbersPage::Swap(int row, int other) {
  PreferOne(&contact_, nullptr);
  std::swap(contact_.numbers[static_cast<size_t>(row)], contact_.numbers[static_cast<size_t>(other)]);
}

UINT NumbersPage::FaultOf(const std::string& text) const {
  return formats::CanonicalNumber(text).empty() ? IDS_FAULT_NO_DIGIT : 0;
}

bool NumbersPage::IsSame(const Typed& one, const Typed& other) const {
  return one.kind == other.kind && formats::CanonicalNumber(one.text) == formats::CanonicalNumber(other.text);
}

EmailsPage::EmailsPage(kit::Dialog& window, formats::Contact& contact)
    : ItemsPage(window, contact, Field::kEmails,
                {IDC_EMAIL, IDC_EMAIL_KIND, IDC_EMAIL_PREFERRED, IDC_EMAIL_ADD, IDC_EMAIL_CHANGE, IDC_EMAILS,
                 IDC_EMAIL_REMOVE, IDC_EMAIL_UP, IDC_EMAIL_DOWN}) {}

std::span<const ListView::Column> EmailsPage::Columns() const { return kEmailColumns; }
std::span<const UINT> EmailsPage::Kinds() const { return Places(); }
UINT EmailsPage::TwiceFault() const { return IDS_FAULT_EMAIL_TWICE; }

ItemsPage::Typed EmailsPage::At(int row) const {
  const formats::ContactEmail& email = contact_.emails[static_cast<size_t>(row)];
  return {email.text, IndexOf(email.place), email.isPreferred};
}

void EmailsPage::Store(int row, const Typed& typed) {
  const auto at = static_cast<size_t>(row);
  MakeRoom(contact_.emails, at);
  if (typed.isPreferred) {
    for (formats::ContactEmail& each : contact_.emails) each.isPreferred = false;
  }
  formats::ContactEmail& email = contact_.emails[at];
  email.text = typed.text;
  email.place = PlaceAt(typed.kind);
  email.isPreferred = typed.isPreferred;
}

void EmailsPage::Remove(int row) { contact_.emails.erase(contact_.emails.begin() + row); }

void EmailsPage::Swap(int row, int other) {
  std::swap(contact_.emails[static_cast<size_t>(row)], contact_.emails[static_cast<size_t>(other)]);
}

UINT EmailsPage::FaultOf(const std::string& text) const {
  const size_t at = text.find('@');
  return at == text.npos || at == 0 || at + 1 == text.size() ? IDS_FAULT_NO_AT : 0;
}

bool EmailsPage::IsSame(const Typed& one, const Typed& other) const { return one.text == other.text; }

}  // namespace book
