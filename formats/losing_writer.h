// A writer of a format that cannot hold all that a card can, and tells so.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "formats/contact_io.h"

namespace formats {

class LosingWriter : public ContactWriter {
 public:
  const std::vector<std::string>& lost() const final { return lost_; }

 protected:
  // Of a new contact; members that are entries of other providers have a name at most, and of the addresses of one
  // place only the first is written.
  void BeginLosses(const Contact& contact);
  void LoseLine(std::string_view line);

 private:
  void Lose(std::string_view name);

  std::vector<std::string> lost_;
};

// Goes through a contact's addresses: whether this is the first one of its place.
class FirstOfPlace {
 public:
  bool operator()(const ContactAddress& address) {
    return !std::exchange(isTaken_[static_cast<std::size_t>(address.place)], true);
  }

 private:
  std::array<bool, 4> isTaken_{};
};

}  // namespace formats
