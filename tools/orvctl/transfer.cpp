// Importing files into a book and exporting a book into a file.
#include "diag/names.h"
#include "formats/contact_io.h"
#include "tools/orvctl/byte_streams.h"
#include "tools/orvctl/commands.h"
#include "tools/orvctl/container_choice.h"
#include "tools/orvctl/editable_book.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/new_contacts.h"
#include "tools/orvctl/transfer_report.h"
#include "tools/orvctl/unknown_columns.h"

namespace orvctl {
namespace {

static_assert(ORV_FORMAT_VCARD == 1 && ORV_FORMAT_VCARD30 == 2 && ORV_FORMAT_CSV == 3 &&
              ORV_FORMAT_LDIF == 4);

constexpr double kMillisecondsPerSecond = 1000;

double SecondsSince(ULONGLONG start) {
  return static_cast<double>(GetTickCount64() - start) / kMillisecondsPerSecond;
}

[[noreturn]] void ThrowNotWhole(const Book& book, const std::string& name, const std::string& doing) {
  std::string others;
  for (const Container& each : book.ReadContainers()) {
    if (OpenContacts(book, each, 0)) others += (others.empty() ? "'" : ", '") + each.name + "'";
  }
  if (name.empty() && others.empty())
    throw CommandError(kFailed, "no container of the profile can be " + doing +
                                    " as a whole; 'orvctl service add' adds a personal book");
  throw CommandError(kFailed,
                     "'" + name + "' cannot be " + doing + " as a whole" +
                         (others.empty() ? "; no container of the profile can" : "; this can: " + others),
                     MAPI_E_NO_SUPPORT);
}

void Add(OrvContactCounts& all, const OrvContactCounts& counts) {
  all.cRead += counts.cRead;
  all.cAdded += counts.cAdded;
  all.cUpdated += counts.cUpdated;
  all.cEqual += counts.cEqual;
  all.cRejected += counts.cRejected;
  all.cLists += counts.cLists;
}

// What a code of importing means, where it says more than the code.
std::string WhyNotImported(HRESULT result) {
  if (result == MAPI_E_CORRUPT_DATA)
    return ", it is no contact file, or none whose columns are known; 'orvctl file check' tells, --format "
           "and --map "
           "help";
  if (result == MAPI_E_USER_CANCEL) return "; what was imported before is kept";
  if (result == MAPI_E_NOT_ENOUGH_DISK)
    return "; what is counted is kept: make room on the drive of the book, then import the file again";
  if (result == MAPI_E_UNKNOWN_CPID)
    return ", its character set is not known: --charset takes names such as utf-8, windows-1252, iso-8859-2, "
           "shift_jis, gb18030, koi8-r";
  if (result == MAPI_E_BAD_COLUMN)
    return ", a line of --map does not fit: COLUMN=FIELD, with a column of the file";
  return {};
}

// What is wrong with an option is found where the file is read.
ExitCode ExitCodeOfImport(HRESULT result) {
  return result == MAPI_E_UNKNOWN_CPID || result == MAPI_E_BAD_COLUMN ? kUsage : ExitCodeOf(result);
}

// One run over all files: what was counted, and the failure that ended it.
class Importing {
 public:
  Importing(const Options& options, const EditableBook& book, IOrvContacts* contacts)
      : options_(options),
        book_(book),
        contacts_(contacts),
        rejections_(options.reportFile),
        map_(MapOf(options)),
        columns_(ToWide(map_)),
        charset_(ToWide(options.charset)) {}

  void Run() {
    for (const std::string& file : options_.files) {
      const HRESULT result = RunOne(file);
      if (FAILED(result)) return Fail(file, result);
    }
    if (counts_.cRead == 0)
      throw CommandError(kFailed, "nothing was imported: " +
                                      (options_.files.size() == 1 ? "'" + options_.files.front() + "' holds"
                                                                  : std::string("the files hold")) +
                                      " no contact");
  }

  Report Told() && {
    rejections_.Commit();
    Report report = Report::Done(Sentence(), Data());
    report.messages = rejections_.Messages();
    report.messages.insert(report.messages.end(), unknownTold_.begin(), unknownTold_.end());
    for (const std::string& file : empty_) report.Warn("'" + file + "' holds no contact");
    if (options_.strict && counts_.cRejected != 0) report.messages.push_back(TellOfStrict(counts_.cRejected));
    if (!failure_.text.empty()) report.messages.push_back(failure_);
    return report;
  }

 private:
  HRESULT RunOne(const std::string& file) {
    OrvImportOptions options = {};
    options.cbSize = sizeof(options);
    options.ulFormat = options_.format.empty() ? ORV_FORMAT_FOUND : FindFormat(options_.format)->whole;
    options.ulFlags = ORV_IMPORT_TELL_ALL | (options_.dryRun ? ORV_IMPORT_DRY_RUN : 0);
    options.lpszCharset = charset_.empty() ? nullptr : charset_.c_str();
    options.lpszColumns = columns_.empty() ? nullptr : columns_.c_str();
    ProgressBar bar("importing", SizeOf(file));
    const auto report = ComPtr<TransferReport>::Adopt(new TransferReport(file, rejections_, bar));
    Overheard overheard;
    const ComPtr<IStream> stream = StreamFrom(overheard.Pass(OpenSource(file)));
    OrvContactCounts counts = {};
    const HRESULT result = Foreign("import '" + file + "'", [&] {
      return contacts_->Import(stream.Get(), &options, report.Get(), &counts);
    });
    Add(counts_, counts);
    if (counts.cRead == 0) empty_.push_back(file);
    if (SUCCEEDED(result)) TellOfUnknown(file, overheard.UnknownColumns(ReadingOf(options_, map_)));
    return result;
  }

  void TellOfUnknown(const std::string& file, const std::vector<std::string>& columns) {
    if (columns.empty()) return;
    unknown_.insert(unknown_.end(), columns.begin(), columns.end());
    unknownTold_.push_back(TellOfColumns(file, columns, Columns::kKept));
  }

  // Where nothing was read there is nothing to tell but the failure.
  void Fail(const std::string& file, HRESULT result) {
    const std::string text = "cannot import '" + file + "'" + WhyNotImported(result);
    if (counts_.cRead == 0) throw CommandError(ExitCodeOfImport(result), text, result);
    failure_ = {text, diag::ResultName(static_cast<uint32_t>(result)), ExitCodeOfImport(result)};
  }

  std::string Sentence() const {
    const auto text = [](ULONGLONG count) { return std::to_string(count); };
    return std::string(options_.dryRun ? "Would import" : "Imported") + " into '" + book_.name() +
           "': " + text(counts_.cRead) + " read, " + text(counts_.cAdded) + " added, " +
           text(counts_.cUpdated) + " updated, " + text(counts_.cEqual) + " equal, " +
           text(counts_.cRejected) + " rejected, " + text(counts_.cLists) + " of them lists.";
  }

  Json Data() const {
    return {{"read", counts_.cRead},           {"added", counts_.cAdded},
            {"updated", counts_.cUpdated},     {"equal", counts_.cEqual},
            {"rejected", counts_.cRejected},   {"lists", counts_.cLists},
            {"seconds", SecondsSince(start_)}, {"container", book_.name()},
            {"unknownColumns", unknown_},      {"sharedUids", rejections_.shared()},
            {"dryRun", options_.dryRun}};
  }

  const Options& options_;
  const EditableBook& book_;
  IOrvContacts* const contacts_;
  Rejections rejections_;
  const std::string map_;
  const WideString columns_, charset_;
  OrvContactCounts counts_ = {};
  Message failure_;
  std::vector<std::string> empty_, unknown_;
  std::vector<Message> unknownTold_;
  const ULONGLONG start_ = GetTickCount64();
};

// The container named, or that of new contacts, else the first whose book can be had as a whole.
Container ChooseWhole(const Book& book, const std::string& wanted, ComPtr<IOrvContacts>& contacts) {
  std::vector<Container> containers = ContainersNamed(book, wanted);
  const auto usual = wanted.empty() ? BookOfNewContacts(book, containers) : std::nullopt;
  if (usual) containers.insert(containers.begin(), *usual);
  for (Container& each : containers) {
    contacts = OpenContacts(book, each, 0);
    if (contacts) return std::move(each);
  }
  ThrowNotWhole(book, wanted, "exported");
}

// A book that cannot be read says why better than the code.
void TellObstacle(const Book& book, const Container& container, const std::string& doing) {
  const Obstacle obstacle = ObstacleToChanges(book, container);
  if (obstacle.text.empty() || obstacle.result == MAPI_E_NO_ACCESS) return;
  throw CommandError(ExitCodeOf(obstacle.result), "cannot " + doing + ": " + obstacle.text, obstacle.result);
}

}  // namespace

Report ImportFiles(const Library& library, const Options& options) {
  const Book session(library, options.profile);
  const EditableBook book(library, session, options.container);
  const ComPtr<IOrvContacts> contacts = book.Contacts();
  if (!contacts) ThrowNotWhole(session, book.name(), "imported into");
  const Interruption interruption;
  Importing importing(options, book, contacts.Get());
  importing.Run();
  return std::move(importing).Told();
}

Report ExportBook(const Library& library, const Options& options) {
  const Book session(library, options.profile);
  ComPtr<IOrvContacts> contacts;
  const Container container = ChooseWhole(session, options.container, contacts);
  const FormatName& format = *FormatOf(options.format, options.file);
  const Interruption interruption;
  const ULONGLONG start = GetTickCount64();
  TargetFile target(options.file, options.dryRun);
  Rejections rejections("");
  ProgressBar bar("exporting", 0);
  const auto report = ComPtr<TransferReport>::Adopt(new TransferReport(container.name, rejections, bar));
  const ComPtr<IStream> stream = StreamInto(target.sink());
  const OrvExportOptions exporting{sizeof(OrvExportOptions), format.whole};
  OrvContactCounts counts = {};
  const std::string doing = "export '" + container.name + "'";
  const HRESULT result =
      Foreign(doing, [&] { return contacts->Export(stream.Get(), &exporting, report.Get(), &counts); });
  if (result == STG_E_WRITEFAULT || result == STG_E_MEDIUMFULL) target.Fail();
  if (FAILED(result)) TellObstacle(session, container, doing);
  Check(result, doing);
  target.Commit();
  Report told = Report::Done((options.dryRun ? "Would export " : "Exported ") +
                                 Counted(counts.cRead, "entry", "entries") + " of '" + container.name +
                                 "' to '" + options.file + "'.",
                             {{"written", counts.cRead},
                              {"lists", counts.cLists},
                              {"lost", report->losses().Fields()},
                              {"seconds", SecondsSince(start)},
                              {"format", format.name},
                              {"container", container.name},
                              {"dryRun", options.dryRun}});
  told.isSilent = target.IsStandardOutput() && !options.dryRun;
  told.messages = report->losses().Messages(format.title);
  return told;
}

}  // namespace orvctl
