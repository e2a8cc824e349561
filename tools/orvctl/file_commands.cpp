// Contact files looked at and converted by themselves: no profile, no library.
#include <algorithm>
#include <unordered_map>

#include "formats/text_codec.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/contact_files.h"
#include "tools/orvctl/progress.h"
#include "tools/orvctl/transfer_report.h"
#include "tools/orvctl/unknown_columns.h"

namespace orvctl {
namespace {

using formats::ContactReader;
using formats::OpenResult;
using formats::ReadResult;

const char* WhyNotOpened(OpenResult result) {
  switch (result) {
    case OpenResult::kEmpty:
      return "it is empty";
    case OpenResult::kUnknownColumns:
      return "none of its columns is known to hold a name, a number or an address; --map FILE names them";
    case OpenResult::kBadColumns:
      return "--map names a field that there is not";
    case OpenResult::kUnknownCharset:
      return "--charset names no known character set";
    case OpenResult::kFailed:
      return "reading it failed";
    default:
      return "it is no contact file; --format FORMAT says which it is";
  }
}

const char* NameOf(formats::FileFormat format) {
  switch (format) {
    case formats::FileFormat::kCsv:
      return "csv";
    case formats::FileFormat::kLdif:
      return "ldif";
    case formats::FileFormat::kVCard:
      break;
  }
  return "vcard";
}

// Of the records that can be read.
struct Figures {
  ULONGLONG read = 0, lists = 0, faxNumbers = 0;
};

void Count(const formats::Contact& contact, Figures& figures) {
  ++figures.read;
  figures.lists += contact.isList ? 1 : 0;
  for (const formats::ContactNumber& number : contact.numbers)
    figures.faxNumbers += formats::IsFaxNumber(number) ? 1 : 0;
}

// The names under which a file has its UIDs, both as hashes: a file may hold very many.
class UidNames {
 public:
  // Whether an earlier record has its UID and another name.
  bool IsShared(const formats::Contact& contact) {
    if (contact.uid.empty()) return false;
    const std::hash<std::string> hash;
    const size_t name = hash(contact.name);
    return names_.emplace(hash(formats::FoldAscii(contact.uid)), name).first->second != name;
  }

 private:
  std::unordered_map<size_t, size_t> names_;
};

// A file that is gone through record by record.
class Reading {
 public:
  Reading(const Options& options, const std::string& file)
      : file_(file), source_(OpenSource(file)), rejections_(options.reportFile) {
    OpenResult result = OpenResult::kOk;
    reader_ = ContactReader::Open(*source_, ReadingOf(options, MapOf(options)), &result);
    if (reader_) return;
    const bool isUsage = result == OpenResult::kBadColumns || result == OpenResult::kUnknownCharset;
    throw CommandError(isUsage ? kUsage : kDamaged, "cannot read '" + file + "': " + WhyNotOpened(result));
  }

  // Hands every readable record to `use`.
  template <class Use>
  void ForEach(const char* doing, Use use) {
    const Interruption interruption;
    ProgressBar bar(doing, SizeOf(file_));
    formats::Contact contact;
    for (;;) {
      const ReadResult result = reader_->Next(&contact);
      if (result == ReadResult::kEnd) break;
      if (result == ReadResult::kFailed)
        throw CommandError(kFailed, "cannot read '" + file_ + "' to its end");
      if (Interruption::IsWanted()) throw CommandError(kCancelled, "interrupted");
      if (result == ReadResult::kRejected) {
        const formats::Rejection& why = reader_->rejection();
        rejections_.Add(file_, why.line, why.name, why.text);
        continue;
      }
      Count(contact, figures_);
      if (uids_.IsShared(contact)) rejections_.AddShared(file_, reader_->line(), contact.name, kSharesUid);
      use(contact);
      bar.Show(reader_->bytesRead(), figures_.read);
    }
    rejections_.Commit();
  }

  const Figures& figures() const { return figures_; }
  const Rejections& rejections() const { return rejections_; }
  std::vector<std::string> unknownColumns() const { return reader_->unknownColumns(); }
  // What was left out, and what was not understood.
  std::vector<Message> Messages(Columns columns) const {
    std::vector<Message> messages = rejections_.Messages();
    if (!unknownColumns().empty()) messages.push_back(TellOfColumns(file_, unknownColumns(), columns));
    return messages;
  }
  const char* format() const { return NameOf(reader_->format()); }

 private:
  const std::string file_;
  std::unique_ptr<formats::ByteSource> source_;
  std::unique_ptr<ContactReader> reader_;
  Rejections rejections_;
  UidNames uids_;
  Figures figures_;
};

std::string Describe(const Figures& figures, ULONGLONG rejected) {
  return Counted(figures.read + rejected, "record") + ", " + std::to_string(figures.lists) +
         " of them lists, " + Counted(figures.faxNumbers, "fax number") + ", " + std::to_string(rejected) +
         " rejected";
}

}  // namespace

Report CheckFile(const Options& options) {
  Reading reading(options, options.file);
  reading.ForEach("checking", [](const formats::Contact&) {});
  const Figures& figures = reading.figures();
  const ULONGLONG rejected = reading.rejections().count();
  Report report = Report::Done(
      std::string("'") + options.file + "' is " + reading.format() + ": " + Describe(figures, rejected) + ".",
      {{"file", options.file},
       {"format", reading.format()},
       {"read", figures.read + rejected},
       {"lists", figures.lists},
       {"faxNumbers", figures.faxNumbers},
       {"rejected", rejected},
       {"sharedUids", reading.rejections().shared()},
       {"unknownColumns", reading.unknownColumns()}});
  report.messages = reading.Messages(Columns::kKept);
  if (rejected != 0) report.messages.push_back({"records of the file cannot be read", {}, kProblems});
  if (rejected == 0 && figures.read == 0)
    report.messages.push_back({"'" + options.file + "' holds no contact", {}, kProblems});
  return report;
}

Report ConvertFile(const Options& options) {
  if (AreOneFile(options.file, options.target))
    throw CommandError(kUsage,
                       "'" + options.file + "' cannot be written over while it is read; name another file");
  Reading reading(options, options.file);
  const FormatName& format = *FormatOf(options.toFormat, options.target);
  TargetFile target(options.target, options.dryRun);
  const auto writer = formats::ContactWriter::Create(target.sink(), format.written);
  if (!writer) throw CommandError(kFailed, std::string("cannot write ") + format.name);
  Losses losses;
  reading.ForEach("converting", [&](const formats::Contact& contact) {
    if (!writer->Write(contact)) target.Fail();
    if (!writer->lost().empty()) losses.Add(writer->lost());
  });
  if (!writer->Finish()) target.Fail();
  target.Commit();
  const Figures& figures = reading.figures();
  const ULONGLONG rejected = reading.rejections().count();
  Report report =
      Report::Done((options.dryRun ? "Would convert '" : "Converted '") + options.file + "' to '" +
                       options.target + "' as " + format.name + ": " + Describe(figures, rejected) + ".",
                   {{"read", figures.read + rejected},
                    {"written", figures.read},
                    {"lists", figures.lists},
                    {"rejected", rejected},
                    {"lost", losses.Fields()},
                    {"unknownColumns", reading.unknownColumns()},
                    {"format", format.name},
                    {"dryRun", options.dryRun}});
  report.isSilent = target.IsStandardOutput() && !options.dryRun;
  const bool isCard = format.read == formats::FileFormat::kVCard;
  report.messages = reading.Messages(isCard ? Columns::kKept : Columns::kLeftOut);
  for (Message& message : losses.Messages(format.title)) report.messages.push_back(std::move(message));
  if (options.strict && rejected != 0) report.messages.push_back(TellOfStrict(rejected));
  return report;
}

}  // namespace orvctl
