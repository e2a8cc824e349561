// What the entries of a book are found by. An entry identifier holds a key made from what its contact says, so that it
// finds the same entry after the file has changed, and never another one.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "contact_cards.h"
#include "formats/contact.h"
#include "orv/orv.h"

namespace sample {

// A contact has two keys, and its identifier holds the narrower one that fits no other contact of the file:
//   narrow  the UID alone, or of a contact without one its name, first address and numbers: what may change in a
//           contact that stays the same entry is not in it
//   exact   the whole card, for those whose narrow key several contacts share
// A key that several contacts share even so, or share now, finds none of them: nobody can tell which was meant.
class KeyIndex {
 public:
  // Reads every card once, where there are lists twice.
  explicit KeyIndex(const ContactCards& cards);

  // What an identifier of the contact holds.
  ULONGLONG KeyOf(size_t contact) const;
  // The one contact that has the key.
  std::optional<size_t> FindContact(ULONGLONG key) const;
  // The first contact that a list may mean.
  std::optional<size_t> FindMember(const formats::ContactMember& member) const;
  // What a list names by an address or a number that no contact has; null when none does any more.
  const formats::Contact* FindOutsider(ULONGLONG key) const;

 private:
  struct Keys {
    ULONGLONG narrow, exact;
  };
  static constexpr size_t kNobody = ~size_t{0};

  void AddKey(ULONGLONG key, size_t contact);
  void FindMeant(const ContactCards& cards);
  void AddOutsiders(const formats::Contact& list);

  std::vector<Keys> keys_;                          // by contact
  std::unordered_map<ULONGLONG, size_t> contacts_;  // by key; kNobody where several have it
  std::unordered_map<ULONGLONG, size_t> meant_;     // by what lists say of their members
  std::unordered_map<ULONGLONG, formats::Contact> outsiders_;
};

// A contact made of the address or number alone by which a list names it; no value where it names neither.
std::optional<formats::Contact> OutsiderOf(const formats::ContactMember& member);
ULONGLONG KeyOfOutsider(const formats::Contact& outsider);

}  // namespace sample
