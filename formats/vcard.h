// Reader of vCard contact files, versions 2.1, 3.0 and 4.0. What a file holds is gone through once, and where its
// records lie is noted; a record is taken apart only when it is asked for. A file is immutable: any number of threads
// may read it. Memory exhaustion is the only exception.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace formats {

enum class VCardPlace { kUnknown, kHome, kWork };

struct VCardPhone {
  std::u16string number;     // as written, without the "tel:" of a URI
  std::u16string extension;  // of a URI that names one
  VCardPlace place = VCardPlace::kUnknown;
  bool fax = false;  // by type, by URI scheme or by a label that says fax
  bool mobile = false;
  bool pager = false;
};

struct VCardAddress {
  std::u16string postOfficeBox, extended, street, locality, region, postalCode, country;
  VCardPlace place = VCardPlace::kUnknown;
};

// A member of a group: the identifier of another record, or an e-mail address that no record need have.
struct VCardMember {
  enum class Kind { kUid, kEmail };
  Kind kind = Kind::kUid;
  std::u16string value;
};

struct VCard {
  std::u16string
      displayName;  // never empty in a served record: the first of name, organisation, address, number
  std::u16string familyName, givenName;
  std::u16string organisation, department, title;
  std::u16string note;
  std::u16string uid;                  // without "urn:uuid:"
  std::vector<std::u16string> emails;  // preferred ones first, else in file order
  std::vector<VCardPhone> phones;      // the same
  std::vector<VCardAddress> addresses;
  bool isGroup = false;
  std::vector<VCardMember> members;
};

// Parts of a record. What is not asked for is not read, and stays empty.
using VCardFields = uint32_t;
enum : VCardFields {
  kVCardDisplayName = 1 << 0,
  kVCardNameParts = 1 << 1,
  kVCardOrganisation = 1 << 2,  // and department
  kVCardTitle = 1 << 3,
  kVCardNote = 1 << 4,
  kVCardUid = 1 << 5,
  kVCardEmails = 1 << 6,
  kVCardPhones = 1 << 7,
  kVCardAddresses = 1 << 8,
  kVCardMembers = 1 << 9,
  kVCardEverything = ~VCardFields{0},
};

class VCardFile {
 public:
  static constexpr size_t kMaxFileSize = size_t{1} << 30;

  // `bytes` are at most kMaxFileSize. Without a readable record the size is 0.
  static VCardFile FromBytes(std::string bytes);

  size_t size() const { return records_.size(); }
  // Records without end or without anything to call them by, and stretches of text that are no record.
  size_t skipped() const { return skipped_; }

  // `index` must be below size().
  bool IsGroup(size_t index) const { return records_[index].isGroup; }
  VCard Parse(size_t index, VCardFields fields = kVCardEverything) const;
  // The lines of the record as they lie in the file, in UTF-8.
  std::string_view Text(size_t index) const { return TextOf(records_[index]); }

  // The first record that has the identifier or address; letter case and "urn:uuid:" do not matter.
  std::optional<size_t> FindByUid(std::u16string_view uid) const;
  std::optional<size_t> FindByEmail(std::u16string_view email) const;
  std::optional<size_t> FindMember(const VCardMember& member) const;

 private:
  friend class VCardIndexer;

  struct Record {
    uint32_t begin = 0;
    uint32_t length = 0;
    bool isVersion21 = false;
    bool isGroup = false;
  };
  // A folded identifier or address in keyText_, sorted by hash, text and record.
  struct Key {
    uint32_t hash = 0;
    uint32_t begin = 0;
    uint32_t length = 0;
    uint32_t record = 0;
  };

  VCardFile() = default;
  std::string_view TextOf(const Record& record) const;
  std::string_view TextOf(const Key& key) const;
  std::optional<size_t> FindKey(const std::vector<Key>& keys, std::string_view text) const;

  std::string text_;
  std::string keyText_;
  std::vector<Record> records_;
  std::vector<Key> uids_;
  std::vector<Key> emails_;
  size_t skipped_ = 0;
};

}  // namespace formats
