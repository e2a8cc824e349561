#include "providers/book/windows/contact_kinds.h"

#include <algorithm>
#include <iterator>

#include "providers/book/text.h"
#include "providers/book/windows/controls.h"
#include "providers/book/windows/resource.h"

namespace book {
namespace {

using formats::NumberKind;
using formats::Place;

constexpr UINT kNumberTexts[] = {IDS_KIND_BUSINESS_FAX, IDS_KIND_HOME_FAX,    IDS_KIND_OTHER_FAX,
                                 IDS_KIND_FAX,          IDS_KIND_PHONE,       IDS_KIND_BUSINESS_PHONE,
                                 IDS_KIND_HOME_PHONE,   IDS_KIND_OTHER_PHONE, IDS_KIND_MOBILE,
                                 IDS_KIND_PAGER,        IDS_KIND_OTHER_NUMBER};

struct Sort {
  NumberKind kind;
  Place place;
};
constexpr Sort kSorts[] = {{NumberKind::kFax, Place::kWork},    {NumberKind::kFax, Place::kHome},
                           {NumberKind::kFax, Place::kOther},   {NumberKind::kFax, Place::kNone},
                           {NumberKind::kPhone, Place::kNone},  {NumberKind::kPhone, Place::kWork},
                           {NumberKind::kPhone, Place::kHome},  {NumberKind::kPhone, Place::kOther},
                           {NumberKind::kMobile, Place::kNone}, {NumberKind::kPager, Place::kNone},
                           {NumberKind::kOther, Place::kNone}};
static_assert(std::size(kSorts) == std::size(kNumberTexts));

constexpr UINT kPlaceTexts[] = {IDS_PLACE_BUSINESS, IDS_PLACE_HOME, IDS_PLACE_OTHER, IDS_PLACE_NONE};
constexpr Place kPlaces[] = {Place::kWork, Place::kHome, Place::kOther, Place::kNone};

bool HasPlaces(NumberKind kind) { return kind == NumberKind::kFax || kind == NumberKind::kPhone; }

std::wstring WithKind(std::wstring text, const std::wstring& kind) { return text + L" (" + kind + L')'; }

}  // namespace

std::span<const UINT> NumberKinds() { return kNumberTexts; }

int KindOf(const formats::ContactNumber& number) {
  const auto fits = [&](const Sort& each) {
    return each.kind == number.kind && (each.place == number.place || !HasPlaces(number.kind));
  };
  const auto found = std::find_if(std::begin(kSorts), std::end(kSorts), fits);
  return static_cast<int>((found != std::end(kSorts) ? found : std::end(kSorts) - 1) - std::begin(kSorts));
}

void SetKind(formats::ContactNumber* number, int kind) {
  if (kind < 0 || kind == KindOf(*number)) return;
  number->kind = kSorts[kind].kind;
  number->place = kSorts[kind].place;
}

bool IsFaxKind(int kind) { return kind >= 0 && kSorts[kind].kind == NumberKind::kFax; }

std::span<const UINT> Places() { return kPlaceTexts; }

int IndexOf(Place place) {
  return static_cast<int>(std::find(std::begin(kPlaces), std::end(kPlaces) - 1, place) - std::begin(kPlaces));
}

Place PlaceAt(int index) { return index < 0 ? Place::kNone : kPlaces[index]; }

std::wstring LineOf(const kit::Language& language, const formats::ContactNumber& number) {
  return WithKind(InItsOrder(language, ToWide(number.text)), language.Text(kNumberTexts[KindOf(number)]));
}

std::wstring LineOf(const kit::Language& language, const formats::ContactEmail& email) {
  const std::wstring text = InItsOrder(language, ToWide(email.text));
  return email.place == Place::kNone ? text
                                     : WithKind(text, language.Text(kPlaceTexts[IndexOf(email.place)]));
}

std::wstring LineOf(const kit::Language& language, const formats::ContactAddress& address) {
  std::string line;
  const auto add = [&line](const std::string& part, const char* before) {
    if (const std::string text = Trimmed(part); !text.empty()) line += (line.empty() ? "" : before) + text;
  };
  for (const std::string* each : {&address.street, &address.extended, &address.postOfficeBox})
    add(*each, ", ");
  std::string city = address.postalCode;
  if (!address.locality.empty()) city += (city.empty() ? "" : " ") + address.locality;
  for (const std::string& each : {city, address.region, address.country}) add(each, ", ");
  std::replace(line.begin(), line.end(), '\n', ' ');
  const std::wstring text = line.empty() ? language.Text(IDS_EMPTY_ADDRESS) : ToWide(line);
  return WithKind(text, language.Text(kPlaceTexts[IndexOf(address.place)]));
}

std::wstring LineOf(const kit::Language&, const formats::ContactMember& member) {
  const std::string& address = member.number.empty() ? member.email : member.number;
  return ToWide(member.name.empty() ? address : member.name);
}

std::wstring LineOf(const kit::Language&, const std::string& line) { return ToWide(line); }

}  // namespace book
