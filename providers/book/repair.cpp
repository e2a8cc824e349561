// A damaged book is read entry by entry, by number, so that a page that is lost takes along no more than what lies on it.
// When entries are missing, the bytes of the file are gone through for cards that no table leads to any more.
#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string_view>

#include "formats/contact_io.h"
#include "providers/book/damage.h"
#include "providers/book/derived.h"
#include "providers/book/file.h"
#include "providers/book/members.h"
#include "providers/book/schema.h"
#include "providers/book/store.h"

namespace book {
namespace {

constexpr std::string_view kCardBegin = "BEGIN:VCARD\n";
constexpr std::string_view kCardEnd = "END:VCARD\n";

void Require(HRESULT hr) {
  if (FAILED(hr)) Fail(hr);
}

// Tables that cannot be read do not tell of what was in them.
Finding FindingOfUncounted(uint64_t known) {
  const std::string text = known == 0 ? "An unknown number of entries is lost"
                                      : "At least " + std::to_string(known) + " entries are lost";
  return {Fault::kUncounted,
          0,
          {},
          text + ": tables of the file cannot be read.",
          "Compare the new book with a backup."};
}

class FileBytes {
 public:
  explicit FileBytes(const std::wstring& path)
      : file_(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                          OPEN_EXISTING, 0, nullptr)) {
    LARGE_INTEGER size{};
    if (file_ == INVALID_HANDLE_VALUE || !GetFileSizeEx(file_, &size) || size.QuadPart == 0) return;
    mapping_ = CreateFileMappingW(file_, nullptr, PAGE_READONLY, 0, 0, nullptr);
    view_ = mapping_ == nullptr ? nullptr : MapViewOfFile(mapping_, FILE_MAP_READ, 0, 0, 0);
    if (view_ != nullptr) text_ = {static_cast<const char*>(view_), static_cast<std::size_t>(size.QuadPart)};
  }
  ~FileBytes() {
    if (view_ != nullptr) UnmapViewOfFile(view_);
    if (mapping_ != nullptr) CloseHandle(mapping_);
    if (file_ != INVALID_HANDLE_VALUE) CloseHandle(file_);
  }
  FileBytes(const FileBytes&) = delete;
  FileBytes& operator=(const FileBytes&) = delete;
  std::string_view text() const { return text_; }

 private:
  HANDLE file_;
  HANDLE mapping_ = nullptr;
  void* view_ = nullptr;
  std::string_view text_;
};

class Salvager {
 public:
  Salvager(std::wstring damaged, Salvage* salvage) : path_(std::move(damaged)), salvage_(*salvage) {}

  void Run(const std::wstring& path) {
    std::unique_ptr<Database> database = OpenDamaged();
    MakeBook(path, database.get());
    if (database != nullptr) TakeEntries(*database);
    salvage_.isMoreLost = salvage_.isMoreLost || database == nullptr;
    if (salvage_.isMoreLost || !salvage_.findings.empty()) TakeLooseCards();
    salvage_.lost = salvage_.findings.size();
    if (salvage_.saved == 0 && (salvage_.isMoreLost || salvage_.lost != 0)) Fail(MAPI_E_CORRUPT_DATA);
    if (salvage_.isMoreLost) salvage_.findings.push_back(FindingOfUncounted(salvage_.lost));
    Require(import_->Commit());
    import_.reset();
    Require(store_->Remove(deleted_, nullptr));
  }

 private:
  std::unique_ptr<Database> OpenDamaged() const;
  void MakeBook(const std::wstring& path, Database* database);
  void TakeEntries(Database& database);
  bool TakeEntry(Database& database, int64_t id);
  bool Put(const formats::Contact& contact);
  void TakeLooseCards();
  void StrikeOut(const formats::Contact& found);

  const std::wstring path_;
  Salvage& salvage_;
  std::shared_ptr<Store> store_;
  std::unique_ptr<Import> import_;
  std::set<EntryKey> known_;
  std::vector<RowKey> deleted_;
};

// Null where the engine can do nothing with the file.
std::unique_ptr<Database> Salvager::OpenDamaged() const {
  std::unique_ptr<Database> database;
  const bool isReadable = Survives([&] {
    database = std::make_unique<Database>(path_, Database::Access::kRead);
    database->Number("SELECT count(*) FROM meta");
  });
  return isReadable ? std::move(database) : nullptr;
}

// Identifiers and members of lists elsewhere name the book: the new one is the same.
void Salvager::MakeBook(const std::wstring& path, Database* database) {
  std::string uid;
  if (database != nullptr) Survives([&] { uid = MetaText(*database, "uid"); });
  CreateBook(path, NameForm::kAsWritten, uid);
  Options options;
  options.create = false;
  Require(Store::Open(path, options, &store_));
  Require(store_->BeginImport(false, &import_));
}

void Salvager::TakeEntries(Database& database) {
  const LastNumber last = LastEntry(database);
  salvage_.isMoreLost = !last.isSure;
  for (int64_t id = 1; id <= last.entry; ++id) {
    bool isTaken = false;
    const bool isRead = Survives([&] { isTaken = TakeEntry(database, id); });
    const bool isLost = !isRead || (!isTaken && StateOfEntry(database, id) == EntryState::kDamaged);
    if (isLost) salvage_.findings.push_back(FindingOfEntry(database, id));
  }
}

// A card that no table leads to any more is that of its namesake, or of an entry whose name could not be read.
void Salvager::StrikeOut(const formats::Contact& found) {
  std::vector<Finding>& findings = salvage_.findings;
  for (const std::string& name : {found.name, std::string()}) {
    const auto lost = std::find_if(findings.begin(), findings.end(),
                                   [&name](const Finding& each) { return each.name == name; });
    if (lost == findings.end()) continue;
    findings.erase(lost);
    return;
  }
}

bool Salvager::TakeEntry(Database& database, int64_t id) {
  Query card(database, "SELECT text FROM card WHERE entry = ?", id);
  if (!card.Next()) return false;
  formats::Contact contact = ContactOfCard(card.Text(0));
  bool isDeleted = false;
  Survives([&] {
    Query entry(database, "SELECT deleted FROM entry WHERE id = ?", id);
    isDeleted = entry.Next() && !entry.IsNull(0);
  });
  if (contact.isList) {
    Survives([&] {
      for (const Member& member : ReadMembers(database, id, 0, -1))
        contact.members.push_back(ContactMemberOf(member));
    });
  }
  if (isDeleted) deleted_.push_back({KeyOfUid(contact.uid), 0});
  return Put(contact);
}

bool Salvager::Put(const formats::Contact& contact) {
  if (contact.uid.empty() || !known_.insert(KeyOfUid(contact.uid)).second) return false;
  PutResult result{};
  Require(import_->Put(contact, &result, nullptr));
  salvage_.saved += result != PutResult::kRejected;
  return result != PutResult::kRejected;
}

void Salvager::TakeLooseCards() {
  const FileBytes bytes(path_);
  const std::string_view text = bytes.text();
  for (std::size_t begin = text.find(kCardBegin); begin != std::string_view::npos;) {
    const std::size_t next = text.find(kCardBegin, begin + 1);
    const std::size_t end = text.find(kCardEnd, begin);
    formats::Contact contact;
    const bool isWhole = end != std::string_view::npos && end < next;
    if (isWhole && formats::ReadCard(text.substr(begin, end + kCardEnd.size() - begin), &contact) &&
        Put(contact))
      StrikeOut(contact);
    begin = next;
  }
}

}  // namespace

HRESULT Repair(const std::wstring& damaged, const std::wstring& path, Salvage* salvage) {
  *salvage = {};
  return Answer([&] {
    const std::wstring from = ResolvePath(damaged), to = ResolvePath(path);
    if (FileExists(to)) Fail(MAPI_E_NO_ACCESS);
    // A file that never was a book has nothing to give.
    const HRESULT hr = Answer([&] { ExamineFile(from); });
    if (FAILED(hr) && hr != MAPI_E_CORRUPT_STORE) Fail(hr);
    const HRESULT result = Answer([&] { Salvager(from, salvage).Run(to); });
    if (SUCCEEDED(result)) return;
    for (const wchar_t* part : {L"", L"-wal", L"-shm", L"-journal"}) DeleteFileW((to + part).c_str());
    Fail(result);
  });
}

}  // namespace book
