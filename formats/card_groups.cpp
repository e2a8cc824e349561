#include "formats/card_groups.h"

#include <algorithm>
#include <array>
#include <type_traits>
#include <unordered_set>
#include <utility>

#include "formats/card_params.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

void DropGroup(std::string* rest) {
  if (!GroupOf(*rest).empty()) rest->erase(0, std::min(rest->find(';', 1), rest->size()));
}

// The group of a line of `others`, folded.
std::string GroupOfOther(std::string_view line) {
  const std::string_view name = line.substr(0, line.find_first_of(":;"));
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos ? std::string() : FoldAscii(name.substr(0, dot));
}

template <class Use>
void ForEachItem(Contact& contact, Use use) {
  for (ContactNumber& number : contact.numbers) use(number);
  for (ContactEmail& email : contact.emails) use(email);
  for (ContactAddress& address : contact.addresses) use(address);
}

// A group means something only where other lines share it.
void DropUnsharedGroups(Contact& contact) {
  std::unordered_set<std::string> shared;
  for (const std::string& line : contact.others) {
    if (std::string group = GroupOfOther(line); !group.empty()) shared.insert(std::move(group));
  }
  ForEachItem(contact, [&shared](auto& item) {
    if (!shared.contains(FoldAscii(GroupOf(item.rest)))) DropGroup(&item.rest);
  });
}

bool HasDigit(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Numbers of different kinds are each preferred among their own.
std::size_t ClassOf(const Contact& contact, Item item, std::size_t index) {
  constexpr std::size_t kEmailClass = 5, kAddressClass = 6;
  if (item == Item::kEmail) return kEmailClass;
  if (item == Item::kAddress) return kAddressClass;
  return static_cast<std::size_t>(contact.numbers[index].kind);
}
constexpr std::size_t kClasses = 7;

template <class Preferred>
void SetPreference(Preferred& item, int value, int best) {
  item.isPreferred = value == best;
  if (!item.isPreferred) AppendParam(&item.rest, "PREF", std::to_string(value));
}

}  // namespace

std::string_view GroupOf(std::string_view rest) {
  constexpr std::string_view kStart = ";GROUP=";
  if (rest.substr(0, kStart.size()) != kStart) return {};
  rest.remove_prefix(kStart.size());
  return rest.substr(0, rest.find(';'));
}

void CardGroups::NoteLabel(std::string_view group, std::string text, std::size_t other) {
  const auto [label, isNew] = labels_.emplace(FoldAscii(group), Label{std::move(text), other});
  if (!isNew) label->second.isOne = false;
}

void CardGroups::Settle(Contact* contact) {
  if (hasGroups_ && !labels_.empty()) ApplyLabels(*contact);
  if (hasGroups_) DropUnsharedGroups(*contact);
  if (!preferences_.empty()) SettlePreferences(*contact);
}

// A label such as "item1.X-ABLabel:Fax" is all that some writers say about a number. One that the contact has a field
// for is spent, every other stays.
template <class Labelled>
void CardGroups::ApplyLabel(Labelled& item) {
  const std::string_view group = GroupOf(item.rest);
  const auto found = group.empty() ? labels_.end() : labels_.find(FoldAscii(group));
  if (found == labels_.end()) return;
  const NumberWords words = ReadNumberWords(found->second.text);
  constexpr bool kIsNumber = std::is_same_v<Labelled, ContactNumber>;
  if (item.place == Place::kNone) item.place = words.place();
  if constexpr (kIsNumber) {
    if (words.isFax) item.kind = NumberKind::kFax;
    if (item.kind == NumberKind::kPhone) item.kind = words.kind();
  }
  const bool saysKind = words.HasKind() && kIsNumber, saysOther = words.HasKind() && !kIsNumber;
  const bool saysPlace = words.HasPlace() && words.place() == item.place;
  if (found->second.isOne && words.isWhole && (saysKind || saysPlace) && !saysOther &&
      !HasDigit(found->second.text))
    spent_.push_back(found->second.other);
}

void CardGroups::ApplyLabels(Contact& contact) {
  ForEachItem(contact, [this](auto& item) { ApplyLabel(item); });
  if (!spent_.empty()) DropSpentLabels(contact);
}

void CardGroups::DropSpentLabels(Contact& contact) {
  std::sort(spent_.begin(), spent_.end());
  std::vector<std::string> left;
  for (std::size_t i = 0; i < contact.others.size(); ++i) {
    if (!std::binary_search(spent_.begin(), spent_.end(), i)) left.push_back(std::move(contact.others[i]));
  }
  contact.others = std::move(left);
}

// Those that nothing of their kind goes before are the preferred ones; the rank of the others is kept.
void CardGroups::SettlePreferences(Contact& contact) const {
  std::array<int, kClasses> best;
  best.fill(kNotPreferred);
  for (const Preference& each : preferences_) {
    int& first = best[ClassOf(contact, each.item, each.index)];
    first = std::min(first, each.value);
  }
  for (const Preference& each : preferences_) {
    const int first = best[ClassOf(contact, each.item, each.index)];
    if (each.item == Item::kNumber) SetPreference(contact.numbers[each.index], each.value, first);
    if (each.item == Item::kEmail) SetPreference(contact.emails[each.index], each.value, first);
    if (each.item == Item::kAddress) SetPreference(contact.addresses[each.index], each.value, first);
  }
}

}  // namespace formats
