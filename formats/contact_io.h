// Contact files of every format, read and written record by record in little memory: nothing here ever holds more than
// one record. Memory exhaustion is the only exception.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/contact.h"
#include "formats/source_scope.h"

namespace formats {

// Where bytes come from: a file, a pipe, memory.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  // Fills some of `size` bytes, which is not 0, and says how many; 0 at the end, no value when reading failed.
  virtual std::optional<std::size_t> Read(char* bytes, std::size_t size) = 0;
};

class ByteSink {
 public:
  virtual ~ByteSink() = default;
  // Takes all of the bytes, or fails.
  virtual bool Write(std::string_view bytes) = 0;
};

// `bytes` must outlive the source.
class MemorySource final : public ByteSource {
 public:
  explicit MemorySource(std::string_view bytes) : left_(bytes) {}
  std::optional<std::size_t> Read(char* bytes, std::size_t size) override;

 private:
  std::string_view left_;
};

class StringSink final : public ByteSink {
 public:
  bool Write(std::string_view bytes) override;
  std::string bytes;
};

enum class FileFormat : std::uint8_t { kVCard, kCsv, kLdif };

struct ReadOptions {
  std::optional<FileFormat> format;  // found by the content where there is none
  // The character set of what names none itself. Without one it is UTF-8, or UTF-16, where it is that, else the
  // system's code page.
  std::string charset;
  // For tables: name of a column, or its number from 1, and the field that it holds, as FieldNames() spells it. They go
  // before what the header row says; a table without a header row is read by numbers.
  std::vector<std::pair<std::string, std::string>> columns;
};

enum class OpenResult : std::uint8_t {
  kOk,
  kEmpty,           // no character but blanks: a format cannot be told
  kUnknownFormat,   // not a contact file
  kUnknownColumns,  // a table of which no column is known to hold a name, a number or an address
  kBadColumns,      // ReadOptions::columns names a field that there is not
  kUnknownCharset,
  kFailed,  // the source failed
};

enum class ReadResult : std::uint8_t { kRecord, kRejected, kEnd, kFailed };

enum class RejectReason : std::uint8_t {
  kTooLarge,     // over kMaxRecordSize
  kNameless,     // nothing in it to call it by
  kNoEnd,        // the next record begins, or the file ends, within it
  kNotARecord,   // text between records
  kMalformed,    // a line that its format does not know
  kUnsupported,  // asks for what is not done: a value behind a URL, a change other than an addition
};

struct Rejection {
  std::uint64_t line = 0;  // the record's first, from 1, as an editor counts them
  RejectReason reason = RejectReason::kMalformed;
  std::string text;       // a plain English sentence without a full stop
  std::string name = {};  // of the record, where one could be read
};

inline constexpr std::size_t kMaxRecordSize = std::size_t{4} << 20;

class ContactReader {
 public:
  virtual ~ContactReader() = default;

  // The source must outlive the reader. Null unless the result is kOk.
  static std::unique_ptr<ContactReader> Open(ByteSource& source, const ReadOptions& options,
                                             OpenResult* result);

  // kRecord: `contact` holds the next one. kRejected: it was passed over, and rejection() says why. After kEnd and
  // kFailed it stays so. A contact that is handed in again keeps its memory, which is quicker.
  virtual ReadResult Next(Contact* contact) = 0;

  virtual FileFormat format() const = 0;
  // The first line of what Next has last given.
  virtual std::uint64_t line() const = 0;
  virtual const Rejection& rejection() const = 0;
  // How far the source has been read, for a progress bar.
  virtual std::uint64_t bytesRead() const = 0;
  // Whether anything of the format has come so far, be it a record that was rejected or the beginning of a file that
  // has none. A source of which this is false at its end is no contact file.
  virtual bool hasRecognised() const = 0;
  // Of a table: the columns that nobody knows and that have held something so far, by name or, where they have none, by
  // number from 1. What they hold is kept as lines of the card.
  virtual std::vector<std::string> unknownColumns() const { return {}; }
  // What its records can say.
  virtual SourceScope scope() const { return {}; }
};

enum class WriteFormat : std::uint8_t { kVCard40, kVCard30, kVCard21, kCsv, kLdif };

// The same records make the same bytes. What is read of them by ContactReader is the same contact in version 4.0 of
// vCard. Tables and directories cannot hold: the keys and the parameters of numbers, addresses and members, which of
// the addresses of either sort is preferred, a second postal address of one place, members that are entries of other
// providers, and lines of cards; contact_csv.h and contact_ldif.h tell what else each of them cannot, or can.
class ContactWriter {
 public:
  virtual ~ContactWriter() = default;

  // The sink must outlive the writer.
  static std::unique_ptr<ContactWriter> Create(ByteSink& sink, WriteFormat format);

  // False once the sink has failed.
  virtual bool Write(const Contact& contact) = 0;
  // What of the last contact has no place in the format: names of lines of its card, "ADR" and "MEMBER" among them, and
  // of columns that a table had besides those that are known; each once.
  virtual const std::vector<std::string>& lost() const;
  // Writes what is still held back; nothing may be written afterwards.
  virtual bool Finish() = 0;
};

// The canonical card that books keep: version 4.0, lines ended by a line feed and not folded. It replaces what `out`
// held, whose memory is used again.
void WriteCard(const Contact& contact, std::string* out);
// Reads any single card, quickest a canonical one. False, with a contact that is good for nothing, where the text has
// no readable card. Of what a reader gave WriteCard and ReadCard make the same again.
bool ReadCard(std::string_view card, Contact* contact);

// The names of fields for ReadOptions::columns, "name" and "fax work" among them.
std::vector<std::string_view> FieldNames();

}  // namespace formats
