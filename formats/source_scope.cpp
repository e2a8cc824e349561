#include "formats/source_scope.h"

#include <algorithm>
#include <utility>

#include "formats/vcard_lines.h"

namespace formats {
namespace {

constexpr std::string Contact::*kAllTexts[] = {&Contact::given,      &Contact::middle, &Contact::surname,
                                               &Contact::prefix,     &Contact::suffix, &Contact::company,
                                               &Contact::department, &Contact::title,  &Contact::note};
constexpr std::string ContactAddress::*kAllParts[] = {
    &ContactAddress::postOfficeBox, &ContactAddress::extended, &ContactAddress::street,
    &ContactAddress::locality,      &ContactAddress::region,   &ContactAddress::postalCode,
    &ContactAddress::country};

template <class List, class Value>
bool Holds(const List& list, const Value& value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

std::size_t IndexOfPlace(Place place) { return static_cast<std::size_t>(place); }

const Room& RoomOf(const SourceScope& scope, NumberKind kind) {
  return scope.numbers[static_cast<std::size_t>(kind)];
}

// Values of one slot stand in the same columns.
struct Slot {
  std::size_t index = 0;
  unsigned columns = 0;
};

Slot SlotIn(const Room& room, std::size_t kind, Place place) {
  const std::size_t at = room.tellsPlaces ? IndexOfPlace(place) : IndexOfPlace(Place::kNone);
  return {kind * Room::kPlaces + at, room.columns[at]};
}

bool IsSamePlace(Place stored, Place said, bool tellsPlaces) {
  return stored == said || (said == Place::kNone && !tellsPlaces);
}

void KeepPlace(Place stored, Place* said, bool tellsPlaces) {
  if (*said == Place::kNone && !tellsPlaces) *said = stored;
}

struct NumberRules {
  const SourceScope& scope;
  bool saysOrder;

  bool TellsPlaces(const ContactNumber& number) const {
    return scope.isOpen || scope.allNumbers != 0 || RoomOf(scope, number.kind).tellsPlaces;
  }
  Slot SlotOf(const ContactNumber& number) const {
    if (scope.isOpen) return {static_cast<std::size_t>(number.kind), Room::kAny};
    if (scope.allNumbers != 0) return {0, scope.allNumbers};
    return SlotIn(RoomOf(scope, number.kind), static_cast<std::size_t>(number.kind), number.place);
  }
  bool IsSame(const ContactNumber& stored, const ContactNumber& said) const {
    return stored.kind == said.kind && NumberKey(stored.text) == NumberKey(said.text) &&
           IsSamePlace(stored.place, said.place, TellsPlaces(said));
  }
  void Keep(const ContactNumber& stored, ContactNumber* said) const {
    KeepPlace(stored.place, &said->place, TellsPlaces(*said));
    said->key = stored.key;
    if (said->rest.empty()) said->rest = stored.rest;
    if (!saysOrder) said->isPreferred |= stored.isPreferred;
  }
  void Replace(const ContactNumber& stored, ContactNumber* said) const {
    KeepPlace(stored.place, &said->place, TellsPlaces(*said));
    if (!saysOrder && said->kind == stored.kind) said->isPreferred |= stored.isPreferred;
  }
};

struct EmailRules {
  const SourceScope& scope;

  Slot SlotOf(const ContactEmail&) const { return {0, scope.emails}; }
  bool IsSame(const ContactEmail& stored, const ContactEmail& said) const { return stored.text == said.text; }
  void Keep(const ContactEmail& stored, ContactEmail* said) const {
    KeepPlace(stored.place, &said->place, false);
    said->isPreferred = stored.isPreferred;
    said->rest = stored.rest;
  }
  void Replace(const ContactEmail& stored, ContactEmail* said) const {
    KeepPlace(stored.place, &said->place, false);
    said->isPreferred = stored.isPreferred;
  }
};

// One of a place is the same whatever it says.
struct AddressRules {
  const SourceScope& scope;

  bool TellsPlaces() const { return scope.allAddresses != 0 || scope.addresses.tellsPlaces; }
  Slot SlotOf(const ContactAddress& address) const {
    if (scope.allAddresses != 0) return {0, scope.allAddresses};
    return SlotIn(scope.addresses, 0, address.place);
  }
  bool IsSame(const ContactAddress& stored, const ContactAddress& said) const {
    return IsSamePlace(stored.place, said.place, TellsPlaces());
  }
  void Keep(const ContactAddress& stored, ContactAddress* said) const {
    KeepPlace(stored.place, &said->place, TellsPlaces());
    said->isPreferred = stored.isPreferred;
    said->rest = stored.rest;
    // A source may know but one text for both.
    const char* const between = stored.street.empty() || stored.extended.empty() ? "" : "\n";
    if (said->extended.empty() && said->street == stored.street + between + stored.extended)
      said->street = stored.street;
    for (const auto part : kAllParts) {
      if (!Holds(scope.addressParts, part) && (said->*part).empty()) said->*part = stored.*part;
    }
  }
  void Replace(const ContactAddress& stored, ContactAddress* said) const { Keep(stored, said); }
};

// Lines of one property; those that a source says are said in whole.
struct LineRules {
  static std::string_view NameOf(std::string_view line) {
    const auto parts = SplitVCardLine(line);
    if (!parts) return line;
    return parts->name == kCsvColumnLine ? line.substr(0, line.size() - parts->value.size()) : parts->name;
  }
  static std::string_view ValueOf(std::string_view line) {
    const auto parts = SplitVCardLine(line);
    return parts ? parts->value : line;
  }
  Slot SlotOf(const std::string& line) const { return {std::hash<std::string_view>()(NameOf(line)), 1}; }
  bool IsSame(const std::string& stored, const std::string& said) const {
    return NameOf(stored) == NameOf(said) && ValueOf(stored) == ValueOf(said);
  }
  void Keep(const std::string& stored, std::string* said) const { *said = stored; }
  void Replace(const std::string&, std::string*) const {}
};

// Matches what a record says with what is stored. The order is the stored one, with what is new behind it, save where
// the source says all there is.
template <class T, class Rules>
class Meeting {
 public:
  Meeting(const std::vector<T>& stored, std::vector<T> said, const Rules& rules)
      : stored_(stored), said_(std::move(said)), rules_(rules), isMet_(said_.size()) {}

  // Where nothing is said of a slot `keepsUnsaid` leaves it as it is. `keepsOrder`: the stored one, whatever is said.
  std::vector<T> Run(bool keepsUnsaid, bool keepsOrder) {
    for (const T& each : stored_) met_.push_back(FindSame(each));
    for (std::size_t i = 0; i < stored_.size(); ++i) Take(i, keepsUnsaid);
    if (hasAnyRoom_ && !keepsUnsaid && !keepsOrder) return std::move(said_);
    for (std::size_t i = 0; i < said_.size(); ++i) {
      if (!isMet_[i]) result_.push_back(said_[i]);
    }
    return std::move(result_);
  }

 private:
  static constexpr std::size_t kNone = ~std::size_t{0};

  std::size_t FindSame(const T& stored) {
    for (std::size_t i = 0; i < said_.size(); ++i) {
      if (isMet_[i] || !rules_.IsSame(stored, said_[i])) continue;
      isMet_[i] = true;
      rules_.Keep(stored, &said_[i]);
      return i;
    }
    return kNone;
  }

  std::size_t FindOther(const T& stored) {
    for (std::size_t i = 0; i < said_.size(); ++i) {
      if (isMet_[i] || rules_.SlotOf(said_[i]).index != rules_.SlotOf(stored).index) continue;
      isMet_[i] = true;
      rules_.Replace(stored, &said_[i]);
      return i;
    }
    return kNone;
  }

  bool IsSpokenOf(const Slot& slot) const {
    return std::any_of(said_.begin(), said_.end(),
                       [&](const T& each) { return rules_.SlotOf(each).index == slot.index; });
  }

  // Columns of the slot that hold nothing which is stored already, and have not displaced anything yet.
  bool TakeColumn(const Slot& slot) {
    std::size_t used = static_cast<std::size_t>(std::count(displaced_.begin(), displaced_.end(), slot.index));
    for (std::size_t i = 0; i < stored_.size(); ++i)
      used += met_[i] != kNone && rules_.SlotOf(stored_[i]).index == slot.index ? 1 : 0;
    if (used >= slot.columns) return false;
    displaced_.push_back(slot.index);
    return true;
  }

  void Take(std::size_t index, bool keepsUnsaid) {
    const T& stored = stored_[index];
    const Slot slot = rules_.SlotOf(stored);
    hasAnyRoom_ |= slot.columns == Room::kAny;
    if (met_[index] != kNone) return result_.push_back(said_[met_[index]]);
    if (!TakeColumn(slot)) return result_.push_back(stored);
    const std::size_t other = FindOther(stored);
    if (other != kNone) result_.push_back(said_[other]);
    if (other == kNone && keepsUnsaid && !IsSpokenOf(slot)) result_.push_back(stored);
  }

  const std::vector<T>& stored_;
  std::vector<T> said_;
  const Rules& rules_;
  std::vector<bool> isMet_;
  std::vector<std::size_t> met_;  // for each that is stored
  std::vector<std::size_t> displaced_;
  std::vector<T> result_;
  bool hasAnyRoom_ = false;
};

template <class T, class Rules>
void Meet(const std::vector<T>& stored, std::vector<T>* said, const Rules& rules, bool keepsUnsaid = false,
          bool keepsOrder = false) {
  *said = Meeting<T, Rules>(stored, std::move(*said), rules).Run(keepsUnsaid, keepsOrder);
}

bool HasPreferred(const std::vector<ContactNumber>& numbers) {
  return std::any_of(numbers.begin(), numbers.end(),
                     [](const ContactNumber& each) { return each.isPreferred; });
}

bool HasSameParts(const Contact& a, const Contact& b) {
  return a.given == b.given && a.middle == b.middle && a.surname == b.surname;
}

// Parts of a name belong to that name only.
void KeepTexts(const Contact& stored, Contact* record, const SourceScope& scope) {
  const bool isOtherName = scope.saysName && record->name != stored.name;
  for (const auto text : kAllTexts) {
    const bool isPart = text == &Contact::given || text == &Contact::middle || text == &Contact::surname;
    if (Holds(scope.texts, text) || (isPart && isOtherName)) continue;
    if ((record->*text).empty()) record->*text = stored.*text;
  }
  if (!scope.saysName && HasSameParts(stored, *record)) record->name = stored.name;
}

}  // namespace

SourceScope ScopeOfLdif() {
  SourceScope scope;
  scope.isWhole = false;
  scope.isOpen = scope.saysName = scope.saysMembers = true;
  scope.addressParts.assign(std::begin(kAllParts), std::end(kAllParts));
  std::erase(scope.addressParts, &ContactAddress::extended);
  scope.emails = Room::kAny;
  scope.addresses.tellsPlaces = true;
  scope.addresses.columns.fill(1);
  return scope;
}

Contact WithUnsaid(const Contact& stored, Contact record, const SourceScope& scope) {
  if (scope.isWhole) return record;
  KeepTexts(stored, &record, scope);
  const bool keepsOrder = std::exchange(record.keepsOrder, false);
  const bool saysOrder = !keepsOrder && (scope.saysOrder || (scope.isOpen && HasPreferred(record.numbers)));
  Meet(stored.numbers, &record.numbers, NumberRules{scope, saysOrder}, scope.isOpen, keepsOrder);
  Meet(stored.emails, &record.emails, EmailRules{scope}, scope.isOpen);
  Meet(stored.addresses, &record.addresses, AddressRules{scope}, scope.isOpen);
  Meet(stored.others, &record.others, LineRules{}, /*keepsUnsaid=*/true);
  return record;
}

}  // namespace formats
