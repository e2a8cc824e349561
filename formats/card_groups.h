// What several lines of a card say together: labels beside the lines of their group, and preferences among the lines of
// one kind.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formats/contact.h"

namespace formats {

enum class Item : uint8_t { kNumber, kEmail, kAddress };

// The group that stands first in an item's `rest`; empty where there is none.
std::string_view GroupOf(std::string_view rest);

class CardGroups {
 public:
  // Of the item that was added last.
  void NotePreference(Item item, std::size_t index, int value) {
    preferences_.push_back({item, index, value});
  }
  void NoteGroup() { hasGroups_ = true; }
  // Its line stands in `others` at that place.
  void NoteLabel(std::string_view group, std::string text, std::size_t other);

  void Settle(Contact* contact);

 private:
  struct Preference {
    Item item;
    std::size_t index;
    int value;
  };
  struct Label {
    std::string text;
    std::size_t other;
    bool isOne = true;  // where a group has several the first counts and all stay
  };

  void ApplyLabels(Contact& contact);
  template <class Labelled>
  void ApplyLabel(Labelled& item);
  void DropSpentLabels(Contact& contact);
  void SettlePreferences(Contact& contact) const;

  std::vector<Preference> preferences_;
  std::unordered_map<std::string, Label> labels_;  // by folded group
  std::vector<std::size_t> spent_;
  bool hasGroups_ = false;
};

}  // namespace formats
