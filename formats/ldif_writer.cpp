// Contacts as the entries of an LDIF file.
#include <algorithm>

#include "formats/base64.h"
#include "formats/contact_ldif.h"
#include "formats/losing_writer.h"
#include "formats/reader_base.h"
#include "formats/text_codec.h"
#include "formats/vcard_lines.h"

namespace formats {
namespace {

constexpr std::size_t kLongestLine = 76;

bool IsSafe(std::string_view value) {
  if (value.empty()) return true;
  constexpr std::string_view kUnsafeFirst = " :<";
  if (kUnsafeFirst.find(value.front()) != std::string_view::npos || value.back() == ' ') return false;
  return std::all_of(value.begin(), value.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

std::string_view OptionOf(Place place) {
  switch (place) {
    case Place::kWork:
      return ";x-work";
    case Place::kHome:
      return ";x-home";
    case Place::kOther:
      return ";x-other";
    case Place::kNone:
      break;
  }
  return ";x-none";
}

class EntryWriter {
 public:
  EntryWriter(const Contact& contact, std::string& out) : contact_(contact), out_(out) {}

  // Hands lines of the card that no attribute can hold to `lose`.
  template <class Lose>
  void Write(Lose lose) {
    ContactMember self;
    self.uid = contact_.uid;
    if (contact_.uid.empty()) self.name = contact_.name;
    Append("dn", DnOfMember(self));
    contact_.isList ? WriteClasses({"top", "groupOfNames"})
                    : WriteClasses({"top", "person", "organizationalPerson", "inetOrgPerson"});
    WriteTexts();
    for (const ContactNumber& number : contact_.numbers) WriteNumber(number);
    for (const ContactEmail& email : contact_.emails)
      Append(email.place == Place::kNone ? "mail" : "mail" + std::string(OptionOf(email.place)), email.text);
    WriteAddresses();
    Append("description", contact_.note);
    for (const ContactMember& member : contact_.members) Append("member", DnOfMember(member));
    for (const std::string& line : contact_.others) {
      if (!WriteOther(line)) lose(line);
    }
    out_ += '\n';
  }

 private:
  template <std::size_t kCount>
  void WriteClasses(const char* const (&names)[kCount]) {
    for (const char* name : names) Append("objectClass", name);
  }

  void Append(std::string name, std::string_view value) {
    if (value.empty()) return;
    if (IsSafe(value)) {
      name.append(": ").append(value);
    } else {
      name.append(":: ").append(EncodeBase64(value));
    }
    std::string_view line = name;
    for (std::size_t room = kLongestLine; line.size() > room; room = kLongestLine - 1) {
      out_.append(line.substr(0, room)).append("\n ");
      line.remove_prefix(room);
    }
    out_.append(line).append("\n");
  }

  void WriteTexts() {
    Append("cn", contact_.name);
    const bool needsSurname = !contact_.isList && contact_.surname.empty();
    Append("sn", needsSurname ? contact_.name : contact_.surname);
    Append("givenName", contact_.given);
    Append("middleName", contact_.middle);
    Append("personalTitle", contact_.prefix);
    Append("generationQualifier", contact_.suffix);
    Append("o", contact_.company);
    Append("ou", contact_.department);
    Append("title", contact_.title);
    Append("uid", contact_.uid);
  }

  static std::string AttributeOf(const ContactNumber& number, Place* place) {
    *place = Place::kNone;
    switch (number.kind) {
      case NumberKind::kFax:
        *place = Place::kWork;
        return "facsimileTelephoneNumber";
      case NumberKind::kMobile:
        return "mobile";
      case NumberKind::kPager:
        return "pager";
      case NumberKind::kOther:
        if (number.rest == ";TYPE=telex") return "telexNumber";
        if (number.rest == ";TYPE=isdn") return "internationalISDNNumber";
        break;
      case NumberKind::kPhone:
        break;
    }
    *place = number.place == Place::kHome ? Place::kHome : Place::kWork;
    const std::string name = *place == Place::kHome ? "homePhone" : "telephoneNumber";
    return number.kind == NumberKind::kOther ? name + ";x-number" : name;
  }

  void WriteNumber(const ContactNumber& number) {
    Place usual;
    std::string name = AttributeOf(number, &usual);
    if (number.place != usual) name += OptionOf(number.place);
    if (number.isPreferred) name += ";x-pref";
    Append(std::move(name), number.text);
  }

  void WriteAddresses() {
    FirstOfPlace isFirst;
    for (const ContactAddress& address : contact_.addresses) {
      if (!isFirst(address)) continue;
      const std::string option(address.place == Place::kWork ? std::string_view() : OptionOf(address.place));
      Append("postOfficeBox" + option, address.postOfficeBox);
      Append("street" + option, StreetOf(address));
      Append("l" + option, address.locality);
      Append("st" + option, address.region);
      Append("postalCode" + option, address.postalCode);
      Append("co" + option, address.country);
    }
  }

  static std::string StreetOf(const ContactAddress& address) {
    if (address.extended.empty() || address.street.empty()) return address.street + address.extended;
    return address.street + "\n" + address.extended;
  }

  bool WriteOther(const std::string& line) {
    const auto parts = SplitVCardLine(line);
    if (!parts || !parts->params.empty()) return false;
    constexpr std::string_view kPicture = "data:image/jpeg;base64,";
    if (parts->name == "PHOTO" && parts->value.substr(0, kPicture.size()) == kPicture) {
      Append("jpegPhoto", DecodeBase64(parts->value.substr(kPicture.size())));
      return true;
    }
    if (parts->name.substr(0, kLdifLinePrefix.size()) != kLdifLinePrefix) return false;
    Append(FoldAscii(parts->name.substr(kLdifLinePrefix.size())),
           UnescapeVCardText(parts->value, VCardVersion::k30OrLater));
    return true;
  }

  const Contact& contact_;
  std::string& out_;
};

class LdifWriter final : public LosingWriter {
 public:
  explicit LdifWriter(ByteSink& sink) : sink_(sink) {}

  bool Write(const Contact& contact) override {
    out_.assign(hasBegun_ ? "" : "version: 1\n\n");
    hasBegun_ = true;
    BeginLosses(contact);
    EntryWriter(contact, out_).Write([this](const std::string& line) { LoseLine(line); });
    return works_ = works_ && sink_.Write(out_);
  }

  bool Finish() override {
    if (!hasBegun_) works_ = sink_.Write("version: 1\n");
    return works_;
  }

 private:
  ByteSink& sink_;
  std::string out_;
  bool hasBegun_ = false, works_ = true;
};

}  // namespace

std::unique_ptr<ContactWriter> CreateLdifWriter(ByteSink& sink) { return std::make_unique<LdifWriter>(sink); }

}  // namespace formats
