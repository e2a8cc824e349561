// Writing what the command line says of a person into an entry.
#pragma once

#include <vector>

#include "tools/orvctl/contact_fields.h"
#include "tools/orvctl/editable_book.h"
#include "tools/orvctl/listing.h"

namespace orvctl {

class ContactWriter {
 public:
  ContactWriter(const EditableBook& book, const ContactFields& fields);

  // Sets and takes away what was said; what the book has no place for is noted, to be told.
  void Write(IMAPIProp* entry);
  // Afterwards, when the entry is saved, adds the numbers that no property is for, through its whole card.
  void AddRest(const Match& entry);
  // A warning for each of what the book did not take.
  std::vector<Message> TakeMessages();

 private:
  void Set(IMAPIProp* entry, std::vector<FieldValue> values);
  void Remove(IMAPIProp* entry, const std::vector<FieldValue>& values);
  void SetAddress(IMAPIProp* entry);

  const EditableBook& book_;
  const ContactFields& fields_;
  std::vector<FieldValue> refused_;
  bool hasAddress_ = false;
};

}  // namespace orvctl
