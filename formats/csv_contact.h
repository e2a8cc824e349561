// The cells of one row as a contact.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/card_reader.h"
#include "formats/contact_csv.h"

namespace formats {

// Takes the cells of a row together.
class CsvContact {
 public:
  explicit CsvContact(Contact* contact) : contact_(*contact) { ClearContact(contact); }

  // Types must be there before what they are of.
  void AddType(const CsvColumn& column, const std::string& cell);
  void Add(const CsvColumn& column, const std::string& cell);
  // What nobody knows the meaning of is kept as a line of the card.
  void AddUnknown(std::string_view column, std::string_view cell);
  bool Finish();

 private:
  void AddText(CsvField field, const std::string& cell);
  void AddNumbers(const CsvColumn& column, std::string_view cell);
  void AddEmails(const CsvColumn& column, std::string_view cell);
  void AddPrefix(std::string_view cell);
  void AddOther(std::string_view name, std::string_view cell);
  void SetAddressPart(const CsvColumn& column, const std::string& cell);
  std::string* TextOf(CsvField field);
  std::string* PartOf(CsvField field, ContactAddress& address);
  std::string TypeOf(CsvField field, unsigned ordinal) const;
  ContactAddress& AddressAt(Place place, unsigned ordinal);
  void NoteCell(const CsvColumn& column, const ContactNumber& number);
  void OrderNumbers();
  bool TakeNumber(std::size_t cell, bool isPreferred, std::vector<ContactNumber>* ordered);

  Contact& contact_;
  std::map<std::pair<CsvField, unsigned>, std::string> types_;
  std::vector<std::pair<Place, unsigned>> addressKeys_;
  std::string order_;
  std::vector<std::size_t> cells_;  // of each number, as the order names it; 0 once it has its place
  std::size_t lines_ = 0;
};

}  // namespace formats
