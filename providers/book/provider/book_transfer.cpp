#include "providers/book/provider/book_transfer.h"

#include <algorithm>
#include <optional>

#include "formats/contact_io.h"
#include "orv/kit/boundary.hpp"
#include "providers/book/text.h"

namespace book {
namespace {

using formats::ContactReader;
using formats::OpenResult;
using formats::ReadResult;

class StreamSource final : public formats::ByteSource {
 public:
  explicit StreamSource(IStream& stream) : stream_(stream) {}

  std::optional<size_t> Read(char* bytes, size_t size) override {
    ULONG read = 0;
    const auto wanted = static_cast<ULONG>(std::min<size_t>(size, 1 << 20));
    failure_ = orv::kit::CallForeign([&] { return stream_.Read(bytes, wanted, &read); });
    if (FAILED(failure_) || read > wanted) return std::nullopt;
    return read;
  }
  HRESULT Failure() const { return FAILED(failure_) ? failure_ : MAPI_E_DISK_ERROR; }

 private:
  IStream& stream_;
  HRESULT failure_ = S_OK;
};

class StreamSink final : public formats::ByteSink {
 public:
  explicit StreamSink(IStream& stream) : stream_(stream) {}

  bool Write(std::string_view bytes) override {
    while (!bytes.empty()) {
      ULONG written = 0;
      const auto size = static_cast<ULONG>(std::min<size_t>(bytes.size(), 1 << 20));
      failure_ = orv::kit::CallForeign([&] { return stream_.Write(bytes.data(), size, &written); });
      if (FAILED(failure_) || written == 0 || written > size) return false;
      bytes.remove_prefix(written);
      total_ += written;
    }
    return true;
  }
  HRESULT Failure() const { return FAILED(failure_) ? failure_ : MAPI_E_DISK_ERROR; }
  uint64_t Total() const { return total_; }

 private:
  IStream& stream_;
  HRESULT failure_ = S_OK;
  uint64_t total_ = 0;
};

// What the caller hears, as often as he was promised.
class Report {
 public:
  Report(IOrvContactReport* report, bool tellsAll) : report_(report), tellsAll_(tellsAll) {}

  HRESULT Record(ULONG outcome, uint64_t line, const std::string& name, const std::string& reason) {
    const bool isTold = outcome == ORV_RECORD_REJECTED || outcome == ORV_RECORD_REDUCED || tellsAll_;
    if (report_ == nullptr || !isTold) return S_OK;
    return orv::kit::CallForeign(
        [&] { return report_->Record(outcome, line, ToWide(name).c_str(), ToWide(reason).c_str()); });
  }
  HRESULT Progress(uint64_t bytes, uint64_t records, bool isLast) {
    constexpr ULONGLONG kPause = 200;  // milliseconds
    const ULONGLONG now = GetTickCount64();
    if (report_ == nullptr || (!isLast && now - told_ < kPause)) return S_OK;
    told_ = now;
    return orv::kit::CallForeign([&] { return report_->Progress(bytes, records); });
  }

 private:
  IOrvContactReport* const report_;
  const bool tellsAll_;
  ULONGLONG told_ = GetTickCount64();
};

std::optional<formats::FileFormat> FormatOf(ULONG format) {
  switch (format) {
    case ORV_FORMAT_VCARD:
    case ORV_FORMAT_VCARD30:
      return formats::FileFormat::kVCard;
    case ORV_FORMAT_CSV:
      return formats::FileFormat::kCsv;
    case ORV_FORMAT_LDIF:
      return formats::FileFormat::kLdif;
    default:
      return std::nullopt;
  }
}

formats::WriteFormat WriteFormatOf(ULONG format) {
  switch (format) {
    case ORV_FORMAT_VCARD30:
      return formats::WriteFormat::kVCard30;
    case ORV_FORMAT_CSV:
      return formats::WriteFormat::kCsv;
    case ORV_FORMAT_LDIF:
      return formats::WriteFormat::kLdif;
    default:
      return formats::WriteFormat::kVCard40;
  }
}

// Lines "column=field"; a column may have the sign in its name.
void AddColumns(std::string_view lines, formats::ReadOptions* options) {
  while (!lines.empty()) {
    const size_t end = std::min(lines.find_first_of("\r\n"), lines.size());
    const std::string_view line = lines.substr(0, end);
    const size_t sign = line.rfind('=');
    if (sign != line.npos)
      options->columns.emplace_back(std::string(line.substr(0, sign)), std::string(line.substr(sign + 1)));
    lines.remove_prefix(std::min(end + 1, lines.size()));
  }
}

formats::ReadOptions ReadOptionsOf(const OrvImportOptions* given) {
  formats::ReadOptions options;
  if (given == nullptr) return options;
  options.format = FormatOf(given->ulFormat);
  if (given->lpszCharset != nullptr) options.charset = ToUtf8(given->lpszCharset);
  if (given->lpszColumns != nullptr) AddColumns(ToUtf8(given->lpszColumns), &options);
  return options;
}

HRESULT CodeOf(OpenResult result, const StreamSource& source) {
  switch (result) {
    case OpenResult::kEmpty:
    case OpenResult::kUnknownFormat:
    case OpenResult::kUnknownColumns:
      return MAPI_E_CORRUPT_DATA;
    case OpenResult::kBadColumns:
      return MAPI_E_BAD_COLUMN;
    case OpenResult::kUnknownCharset:
      return MAPI_E_UNKNOWN_CPID;
    case OpenResult::kFailed:
      return source.Failure();
    default:
      return S_OK;
  }
}

ULONG OutcomeOf(PutResult result) {
  switch (result) {
    case PutResult::kAdded:
      return ORV_RECORD_ADDED;
    case PutResult::kUpdated:
      return ORV_RECORD_UPDATED;
    case PutResult::kEqual:
      return ORV_RECORD_EQUAL;
    default:
      return ORV_RECORD_REJECTED;
  }
}

void Count(ULONG outcome, bool isList, OrvContactCounts& counts) {
  ULONGLONG* const places[] = {&counts.cAdded, &counts.cUpdated, &counts.cEqual, &counts.cRejected};
  ++counts.cRead;
  ++*places[outcome - ORV_RECORD_ADDED];
  if (isList && outcome != ORV_RECORD_REJECTED) ++counts.cLists;
}

// One import: records go from the reader into the book until either fails.
class ImportRun {
 public:
  ImportRun(ContactReader& reader, const StreamSource& source, Import& import, Report& report,
            OrvContactCounts& counts)
      : reader_(reader), source_(source), import_(import), report_(report), counts_(counts) {}

  HRESULT Run() {
    HRESULT hr = S_OK;
    for (bool isOver = false; SUCCEEDED(hr) && !isOver;) hr = Step(&isOver);
    // What was told to be stored is stored, whatever came behind it.
    const HRESULT committed = import_.Commit();
    if (isLost_ || (FAILED(committed) && import_.HasPending())) counts_ = kept_;
    if (SUCCEEDED(hr)) hr = committed;
    if (SUCCEEDED(hr) && !reader_.hasRecognised()) hr = MAPI_E_CORRUPT_DATA;
    return SUCCEEDED(hr) ? report_.Progress(reader_.bytesRead(), counts_.cRead, true) : hr;
  }

 private:
  HRESULT Step(bool* isOver) {
    const ReadResult result = reader_.Next(&contact_);
    *isOver = result == ReadResult::kEnd;
    if (*isOver) return S_OK;
    if (result == ReadResult::kFailed) return source_.Failure();
    const HRESULT hr = result == ReadResult::kRecord ? Put() : Reject(reader_.rejection());
    if (!import_.HasPending() && !isLost_) kept_ = counts_;
    return SUCCEEDED(hr) ? report_.Progress(reader_.bytesRead(), counts_.cRead, false) : hr;
  }

  HRESULT Put() {
    PutResult result = PutResult::kRejected;
    const HRESULT hr = import_.Put(contact_, &result, nullptr);
    isLost_ = FAILED(hr);
    if (FAILED(hr)) return hr;
    if (result == PutResult::kRejected)
      return Reject({reader_.line(), {}, "it has no name or is too large", contact_.name});
    const ULONG outcome = OutcomeOf(result);
    Count(outcome, contact_.isList, counts_);
    const char* const reason =
        import_.SharesUid() ? "it has the UID of an earlier record with another name" : "";
    return report_.Record(outcome, reader_.line(), contact_.name, reason);
  }

  HRESULT Reject(const formats::Rejection& why) {
    Count(ORV_RECORD_REJECTED, false, counts_);
    return report_.Record(ORV_RECORD_REJECTED, why.line, why.name, why.text);
  }

  ContactReader& reader_;
  const StreamSource& source_;
  Import& import_;
  Report& report_;
  OrvContactCounts& counts_;
  OrvContactCounts kept_{};  // of what is in the file
  bool isLost_ = false;      // the last record failed, and with it those that were not in the file
  formats::Contact contact_;
};

// Writes entries sorted by name and then by UID; namesakes come from the book by age.
class ExportRun {
 public:
  ExportRun(View& view, formats::ContactWriter& writer, const StreamSink& sink, Report& report,
            OrvContactCounts& counts)
      : view_(view), writer_(writer), sink_(sink), report_(report), counts_(counts) {}

  HRESULT Run() {
    constexpr size_t kWindow = 256;
    std::vector<Row> rows;
    uint64_t first = 0;
    do {
      if (const HRESULT hr = view_.Window(first, kWindow, &rows); FAILED(hr)) return hr;
      for (const Row& each : rows) {
        if (const HRESULT hr = Take(each); FAILED(hr)) return hr;
      }
      first += rows.size();
    } while (!rows.empty());
    if (const HRESULT hr = WriteNamesakes(); FAILED(hr)) return hr;
    if (!writer_.Finish()) return sink_.Failure();
    return report_.Progress(sink_.Total(), counts_.cRead, true);
  }

 private:
  static bool IsNamesake(const Row& one, const std::string& name) {
    const std::wstring a = ToWide(one.name), b = ToWide(name);
    return CompareStringEx(LOCALE_NAME_USER_DEFAULT, NORM_LINGUISTIC_CASING | LINGUISTIC_IGNORECASE, a.data(),
                           static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), nullptr, nullptr,
                           0) == CSTR_EQUAL;
  }

  HRESULT Take(const Row& row) {
    if (row.isGone || row.key.entry == last_) return S_OK;  // a further number of the same contact
    if (!namesakes_.empty() && !IsNamesake(row, namesakes_.front().contact.name)) {
      if (const HRESULT hr = WriteNamesakes(); FAILED(hr)) return hr;
    }
    last_ = row.key.entry;
    const HRESULT hr = view_.Read(row.key.entry, &namesakes_.emplace_back());
    if (hr == MAPI_E_NOT_FOUND) namesakes_.pop_back();
    return hr == MAPI_E_NOT_FOUND ? S_OK : hr;
  }

  HRESULT WriteNamesakes() {
    std::sort(namesakes_.begin(), namesakes_.end(),
              [](const Entry& one, const Entry& other) { return one.contact.uid < other.contact.uid; });
    for (const Entry& each : namesakes_) {
      if (!writer_.Write(each.contact)) return sink_.Failure();
      if (const HRESULT hr = TellLosses(each.contact.name); FAILED(hr)) return hr;
      ++counts_.cRead;
      counts_.cLists += each.contact.isList;
    }
    namesakes_.clear();
    return report_.Progress(sink_.Total(), counts_.cRead, false);
  }

  HRESULT TellLosses(const std::string& name) {
    std::string lines;
    for (const std::string& each : writer_.lost()) lines.append(lines.empty() ? "" : "\n").append(each);
    return lines.empty() ? S_OK : report_.Record(ORV_RECORD_REDUCED, 0, name, lines);
  }

  View& view_;
  formats::ContactWriter& writer_;
  const StreamSink& sink_;
  Report& report_;
  OrvContactCounts& counts_;
  EntryKey last_{};
  std::vector<Entry> namesakes_;
};

// Told whatever comes of the call.
struct CountsKeeper {
  explicit CountsKeeper(OrvContactCounts* out) : out_(out) {}
  ~CountsKeeper() {
    if (out_ != nullptr) *out_ = counts;
  }
  CountsKeeper(const CountsKeeper&) = delete;
  CountsKeeper& operator=(const CountsKeeper&) = delete;

  OrvContactCounts counts{};

 private:
  OrvContactCounts* const out_;
};

}  // namespace

HRESULT ImportInto(Store& store, IStream& stream, const OrvImportOptions* options, IOrvContactReport* told,
                   OrvContactCounts* counts) {
  if (options != nullptr && options->cbSize != sizeof *options) return MAPI_E_INVALID_PARAMETER;
  CountsKeeper kept(counts);
  const ULONG flags = options != nullptr ? options->ulFlags : 0;
  StreamSource source(stream);
  OpenResult result = OpenResult::kOk;
  const auto reader = ContactReader::Open(source, ReadOptionsOf(options), &result);
  if (!reader) return CodeOf(result, source);
  std::unique_ptr<Import> import;
  if (const HRESULT hr = store.BeginImport((flags & ORV_IMPORT_DRY_RUN) != 0, &import); FAILED(hr)) return hr;
  import->SetScope(reader->scope());
  Report report(told, (flags & ORV_IMPORT_TELL_ALL) != 0);
  return ImportRun(*reader, source, *import, report, kept.counts).Run();
}

HRESULT ExportFrom(Store& store, IStream& stream, const OrvExportOptions* options, IOrvContactReport* told,
                   OrvContactCounts* counts) {
  if (options != nullptr && options->cbSize != sizeof *options) return MAPI_E_INVALID_PARAMETER;
  CountsKeeper kept(counts);
  StreamSink sink(stream);
  std::unique_ptr<View> view;
  if (const HRESULT hr = store.OpenView(&view); FAILED(hr)) return hr;
  const auto writer = formats::ContactWriter::Create(
      sink, WriteFormatOf(options != nullptr ? options->ulFormat : ORV_FORMAT_VCARD));
  Report report(told, false);
  return ExportRun(*view, *writer, sink, report, kept.counts).Run();
}

}  // namespace book
