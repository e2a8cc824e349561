// A contact as a canonical card.
#include <charconv>

#include "formats/card_groups.h"
#include "formats/card_params.h"
#include "formats/card_text.h"
#include "formats/card_uris.h"
#include "formats/contact_io.h"
#include "formats/vcard_lines.h"

namespace formats {
namespace {

std::string_view TypeOf(NumberKind kind) {
  switch (kind) {
    case NumberKind::kFax:
      return "fax";
    case NumberKind::kMobile:
      return "cell";
    case NumberKind::kPager:
      return "pager";
    case NumberKind::kOther:
      return kOtherKindType;
    case NumberKind::kPhone:
      break;
  }
  return {};
}

std::string_view TypeOf(Place place) {
  switch (place) {
    case Place::kWork:
      return "work";
    case Place::kHome:
      return "home";
    case Place::kOther:
      return "other";
    case Place::kNone:
      break;
  }
  return {};
}

// Whether a line of `others` holds the parameters of a text, which are written with the text.
bool IsParamsOnly(std::string_view line) {
  if (line.empty() || line.back() != ':') return false;
  const auto parts = SplitVCardLine(line);
  return parts && parts->value.empty();
}

class CardWriter {
 public:
  CardWriter(const Contact& contact, std::string& out) : contact_(contact), out_(out) {}

  void Write() {
    out_.assign("BEGIN:VCARD\nVERSION:4.0\n");
    if (contact_.isList) out_ += "KIND:group\n";
    WriteTexts();
    for (const ContactNumber& number : contact_.numbers) WriteNumber(number);
    for (const ContactEmail& email : contact_.emails) WriteEmail(email);
    for (const ContactAddress& address : contact_.addresses) WriteAddress(address);
    for (const ContactMember& member : contact_.members) WriteMember(member);
    for (const std::string& line : contact_.others) {
      if (!IsParamsOnly(line)) out_.append(line).append("\n");
    }
    out_ += "END:VCARD\n";
  }

 private:
  void WriteTexts() {
    if (!contact_.uid.empty()) {
      BeginText("UID");
      if (IsUuid(contact_.uid)) out_ += "urn:uuid:";
      EndText(contact_.uid);
    }
    WriteText("FN", contact_.name);
    WriteParts("N",
               {&contact_.surname, &contact_.given, &contact_.middle, &contact_.prefix, &contact_.suffix});
    if (contact_.department.empty()) {
      WriteText("ORG", contact_.company);
    } else {
      WriteParts("ORG", {&contact_.company, &contact_.department});
    }
    WriteText("TITLE", contact_.title);
    WriteText("NOTE", contact_.note);
  }

  void BeginText(std::string_view name) {
    out_ += name;
    for (const std::string& line : contact_.others) {
      const bool isOfName =
          line.size() > name.size() && line[name.size()] == ';' && line.compare(0, name.size(), name) == 0;
      if (!isOfName || !IsParamsOnly(line)) continue;
      out_.append(line, name.size());
      return;
    }
    out_ += ':';
  }

  void EndText(std::string_view text) {
    AppendEscaped(&out_, text);
    out_ += '\n';
  }

  void WriteText(std::string_view name, const std::string& text) {
    if (text.empty()) return;
    BeginText(name);
    EndText(text);
  }

  template <std::size_t kCount>
  void AppendParts(const std::string* const (&parts)[kCount]) {
    for (std::size_t i = 0; i < kCount; ++i) {
      if (i > 0) out_ += ';';
      AppendEscaped(&out_, *parts[i]);
    }
    out_ += '\n';
  }

  template <std::size_t kCount>
  void WriteParts(std::string_view name, const std::string* const (&parts)[kCount]) {
    bool isEmpty = true;
    for (const std::string* part : parts) isEmpty = isEmpty && part->empty();
    if (isEmpty) return;
    BeginText(name);
    AppendParts(parts);
  }

  // The name with its group, which stands first in `rest`; what is left of that is given back.
  std::string_view BeginItem(std::string_view name, std::string_view rest) {
    if (const std::string_view group = GroupOf(rest); !group.empty()) {
      out_.append(group).append(".");
      rest.remove_prefix(1 + kGroupParam.size() + 1 + group.size());
    }
    out_ += name;
    return rest;
  }

  void AppendTypes(std::string_view kind, std::string_view place, bool isPreferred) {
    if (!kind.empty() || !place.empty()) out_ += ";TYPE=";
    out_ += kind;
    if (!kind.empty() && !place.empty()) out_ += ',';
    out_ += place;
    if (isPreferred) out_ += ";PREF=1";
  }

  void WriteNumber(const ContactNumber& number) {
    const std::string_view rest = BeginItem("TEL", number.rest);
    AppendTypes(TypeOf(number.kind), TypeOf(number.place), number.isPreferred);
    if (number.key != 0) {
      char digits[16];
      const auto end = std::to_chars(std::begin(digits), std::end(digits), number.key).ptr;
      AppendParam(&out_, kKeyParam, std::string_view(digits, static_cast<std::size_t>(end - digits)));
    }
    out_.append(rest).append(":");
    EndText(number.text);
  }

  void WriteEmail(const ContactEmail& email) {
    const std::string_view rest = BeginItem("EMAIL", email.rest);
    AppendTypes({}, TypeOf(email.place), email.isPreferred);
    out_.append(rest).append(":");
    EndText(email.text);
  }

  void WriteAddress(const ContactAddress& address) {
    const std::string_view rest = BeginItem("ADR", address.rest);
    AppendTypes({}, TypeOf(address.place), address.isPreferred);
    out_.append(rest).append(":");
    AppendParts({&address.postOfficeBox, &address.extended, &address.street, &address.locality,
                 &address.region, &address.postalCode, &address.country});
  }

  // The value is what other programs know best; the rest of what is known goes into parameters.
  void WriteMember(const ContactMember& member) {
    const bool isBare =
        !member.uid.empty() && member.uid == member.name && !HasScheme(member.uid) && !IsUuid(member.uid);
    const bool asNumber = member.uid.empty() && !member.number.empty();
    const bool asEmail = member.uid.empty() && !asNumber && !member.email.empty();
    out_ += "MEMBER";
    if (!member.name.empty() && !isBare) AppendParam(&out_, kNameParam, member.name);
    if (!member.number.empty() && !asNumber) AppendParam(&out_, kNumberParam, member.number);
    if (!member.email.empty() && !asEmail) AppendParam(&out_, kEmailParam, member.email);
    if (!member.entryId.empty()) AppendEntryId(member.entryId);
    out_.append(member.rest).append(asNumber ? ":tel:" : asEmail ? ":mailto:" : ":");
    if (!member.uid.empty() && !isBare) out_ += "urn:uuid:";
    EndText(asNumber ? member.number : asEmail ? member.email : member.uid);
  }

  void AppendEntryId(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string hex;
    for (const char c : bytes) {
      const auto byte = static_cast<unsigned char>(c);
      hex += kDigits[byte >> 4];
      hex += kDigits[byte & 15];
    }
    AppendParam(&out_, kEntryIdParam, hex);
  }

  const Contact& contact_;
  std::string& out_;
};

}  // namespace

void WriteCard(const Contact& contact, std::string* out) { CardWriter(contact, *out).Write(); }

}  // namespace formats
