// What the entries of a book are found by. An entry identifier holds a key made from what its record says, so that it
// finds the same entry after the file has changed, and never another one.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formats/vcard.h"
#include "orv/orv.h"

namespace sample {

// A record has two keys, and its identifier holds the narrower one that fits no other record of the file:
//   narrow  the UID alone, or of a record without one its name, first address and numbers: what may change in a
//           record that stays the same entry is not in it
//   exact   the whole record, for those whose narrow key several records share
// A key that several records share even so, or share now, finds none of them: nobody can tell which was meant.
class KeyIndex {
 public:
  // Reads every record of the file once.
  explicit KeyIndex(const formats::VCardFile& file);

  // What an identifier of the record holds.
  ULONGLONG KeyOf(size_t record) const;
  // The one record that has the key.
  std::optional<size_t> FindRecord(ULONGLONG key) const;
  // A group's member that no record has; null when no group names it any more.
  const std::u16string* FindAddress(ULONGLONG key) const;

 private:
  struct Keys {
    ULONGLONG narrow, exact;
  };
  static constexpr size_t kSeveral = ~size_t{0};

  void AddKey(ULONGLONG key, size_t record);
  void AddAddresses(const formats::VCardFile& file, size_t group);

  std::vector<Keys> keys_;                         // by record
  std::unordered_map<ULONGLONG, size_t> records_;  // by key
  std::unordered_map<ULONGLONG, std::u16string> addresses_;
};

ULONGLONG KeyOfAddress(std::u16string_view address);

}  // namespace sample
