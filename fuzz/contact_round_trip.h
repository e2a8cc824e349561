// What holds of whatever a reader of contact files makes of any bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "formats/contact_io.h"
#include "formats/text_codec.h"

namespace fuzz {

inline void Demand(bool condition) {
  if (!condition) std::abort();
}

inline bool IsClean(std::string_view text, bool isOneLine) {
  for (const char c : text) {
    if (c == 0x7F || (static_cast<unsigned char>(c) < 0x20 && (isOneLine || c != '\n'))) return false;
  }
  return formats::IsUtf8(text);
}

inline void CheckTexts(const formats::Contact& contact) {
  Demand(!contact.name.empty() && IsClean(contact.note, false));
  for (const std::string* text :
       {&contact.name, &contact.uid, &contact.given, &contact.middle, &contact.surname, &contact.prefix,
        &contact.suffix, &contact.company, &contact.department, &contact.title})
    Demand(IsClean(*text, true));
  for (const auto& number : contact.numbers)
    Demand(!number.text.empty() && IsClean(number.text, true) && IsClean(number.rest, true));
  for (const auto& email : contact.emails) Demand(!email.text.empty() && IsClean(email.text, true));
  for (const auto& address : contact.addresses) Demand(IsClean(address.street, false));
  for (const std::string& line : contact.others) Demand(!line.empty() && IsClean(line, true));
}

inline std::vector<formats::Contact> ReadAll(std::string_view bytes, formats::FileFormat format) {
  formats::MemorySource source(bytes);
  formats::ReadOptions options;
  options.format = format;
  formats::OpenResult opened;
  std::vector<formats::Contact> contacts;
  const auto reader = formats::ContactReader::Open(source, options, &opened);
  formats::Contact contact;
  std::uint64_t line = 0;
  while (reader) {
    const formats::ReadResult result = reader->Next(&contact);
    Demand(result != formats::ReadResult::kFailed);
    if (result == formats::ReadResult::kEnd) break;
    Demand(reader->line() > 0 && (line = reader->line()) > 0);
    contact.keepsOrder = false;  // what a record says of an entry that is there, no part of a card
    if (result == formats::ReadResult::kRecord) contacts.push_back(contact);
  }
  return contacts;
}

inline std::string WriteAll(const std::vector<formats::Contact>& contacts, formats::WriteFormat format) {
  formats::StringSink sink;
  const auto writer = formats::ContactWriter::Create(sink, format);
  for (const formats::Contact& contact : contacts) Demand(writer->Write(contact));
  Demand(writer->Finish());
  return sink.bytes;
}

// What was written is read and written again as the same bytes.
inline void CheckExport(const std::vector<formats::Contact>& contacts, formats::WriteFormat written,
                        formats::FileFormat format) {
  const std::string bytes = WriteAll(contacts, written);
  const std::vector<formats::Contact> read = ReadAll(bytes, format);
  Demand(read.size() == contacts.size());
  if (written == formats::WriteFormat::kVCard40) Demand(read == contacts);
  Demand(WriteAll(read, written) == bytes);
}

inline void CheckFile(std::string_view bytes, formats::FileFormat format) {
  const std::vector<formats::Contact> contacts = ReadAll(bytes, format);
  std::string card;
  formats::Contact again;
  for (const formats::Contact& contact : contacts) {
    CheckTexts(contact);
    formats::WriteCard(contact, &card);
    Demand(formats::ReadCard(card, &again) && again == contact);
  }
  CheckExport(contacts, formats::WriteFormat::kVCard40, formats::FileFormat::kVCard);
  CheckExport(contacts, formats::WriteFormat::kVCard30, formats::FileFormat::kVCard);
  if (format == formats::FileFormat::kCsv) CheckExport(contacts, formats::WriteFormat::kCsv, format);
  if (format == formats::FileFormat::kLdif) CheckExport(contacts, formats::WriteFormat::kLdif, format);
}

}  // namespace fuzz
