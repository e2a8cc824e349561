// A text that both have is the one that was there first.
#include "providers/book/merge.h"

#include <algorithm>
#include <set>

#include "providers/book/members.h"

namespace book {
namespace {

void FillText(std::string* text, const std::string& other) {
  if (text->empty()) *text = other;
}

bool IsSameNumber(const formats::ContactNumber& a, const formats::ContactNumber& b) {
  return a.kind == b.kind && a.place == b.place && formats::NumberKey(a.text) == formats::NumberKey(b.text);
}

template <class T, class Same>
void AddMissing(std::vector<T>* list, const std::vector<T>& others, Same isSame) {
  for (const T& other : others) {
    const bool isThere =
        std::any_of(list->begin(), list->end(), [&](const T& each) { return isSame(each, other); });
    if (!isThere) list->push_back(other);
  }
}

// What a file calls by one text may since have been found under the name.
bool IsNameOnly(const Member& member) {
  if (member.isOurs) return member.uid == member.name;
  return member.foreign.empty() && member.number.empty() && member.email.empty();
}

bool IsMeant(const Member& stored, const Member& said) {
  return IsNameOnly(said) ? stored.name == said.name : IsSameMember(stored, said);
}

void FillTexts(formats::Contact* contact, const formats::Contact& other) {
  using formats::Contact;
  constexpr std::string Contact::*kTexts[] = {&Contact::given,      &Contact::middle, &Contact::surname,
                                              &Contact::prefix,     &Contact::suffix, &Contact::company,
                                              &Contact::department, &Contact::title,  &Contact::note};
  for (const auto text : kTexts) FillText(&(contact->*text), other.*text);
}

}  // namespace

void TakeOverKeys(const formats::Contact& stored, formats::Contact* record) {
  std::vector<bool> isTaken(stored.numbers.size());
  for (formats::ContactNumber& number : record->numbers) {
    for (std::size_t i = 0; i < stored.numbers.size(); ++i) {
      if (isTaken[i] || number.key != 0 || !IsSameNumber(stored.numbers[i], number)) continue;
      number.key = stored.numbers[i].key;
      isTaken[i] = true;
    }
  }
}

formats::Contact Merged(const formats::Contact& stored, const formats::Contact& record) {
  formats::Contact merged = stored;
  FillTexts(&merged, record);
  AddMissing(&merged.numbers, record.numbers, IsSameNumber);
  AddMissing(&merged.emails, record.emails, [](const auto& a, const auto& b) { return a.text == b.text; });
  AddMissing(&merged.addresses, record.addresses, [](const auto& a, const auto& b) { return a == b; });
  AddMissing(&merged.others, record.others, [](const auto& a, const auto& b) { return a == b; });
  return merged;
}

bool AreSameMembers(std::span<const Member> stored, std::span<const Member> record) {
  return std::equal(stored.begin(), stored.end(), record.begin(), record.end(), IsMeant);
}

std::vector<Member> WithForeign(std::span<const Member> stored, std::vector<Member> members) {
  const auto isForeign = [](const Member& each) { return !each.foreign.empty(); };
  if (std::none_of(stored.begin(), stored.end(), isForeign)) return members;
  auto at = members.begin();  // behind the last one of `stored` that is among them
  for (const Member& each : stored) {
    const auto means = [&](const Member& said) { return IsMeant(each, said); };
    auto found = at != members.end() && means(*at) ? at : std::find_if(members.begin(), members.end(), means);
    if (found == members.end() && !isForeign(each)) continue;
    if (found == members.end()) found = members.insert(at, each);
    if (isForeign(each)) *found = each;
    at = found + 1;
  }
  return members;
}

std::vector<Member> WithoutNames(std::span<const Member> members, std::span<const Member> known) {
  std::set<std::string_view> names;
  for (const Member& each : known) names.insert(each.name);
  std::vector<Member> rest;
  for (const Member& member : members) {
    if (!IsNameOnly(member) || !names.contains(member.name)) rest.push_back(member);
  }
  return rest;
}

}  // namespace book
