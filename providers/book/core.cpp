// Each connection is used by one thread at a time: the writer under its lock, readers by whoever took them.
#include "providers/book/core.h"

#include <algorithm>

#include "providers/book/backup.h"
#include "providers/book/change_log.h"
#include "providers/book/schema.h"

namespace book {
namespace {

constexpr std::size_t kReadersKept = 4;
constexpr int kWriterKilobytes = 4096;
constexpr int64_t kDeletedKept = 30 * kDay;

void PurgeDeleted(Database& database) {
  const int64_t before = Now() - kDeletedKept;
  Execute(database, "DELETE FROM card WHERE entry IN (SELECT id FROM entry WHERE deleted < ?)", before);
  Execute(database, "DELETE FROM member WHERE list IN (SELECT id FROM entry WHERE deleted < ?)", before);
  Execute(database, "DELETE FROM entry WHERE deleted < ?", before);
}

}  // namespace

Core::Core(std::wstring path, const FileFacts& facts, const Options& options)
    : path_(std::move(path)),
      identity_(facts.identity),
      isLocal_(facts.isLocal && !options.isRemote),
      keepsBackups_(options.keepsBackups),
      isReadOnly_(options.isReadOnly || !facts.isWritable) {
  Prepare(facts, options.names);
  watch_ = TakeReader();
  const std::string uid = MetaText(*watch_, "uid");
  if (uid.empty()) Fail(MAPI_E_CORRUPT_STORE);
  uid_ = KeyOfUid(uid);
  lastChange_ = book::LastChange(*watch_);
}

// An older format and the way of writing are seen to before anybody reads.
void Core::Prepare(const FileFacts& facts, NameForm form) {
  if (facts.format > kFormat) Fail(MAPI_E_VERSION);
  if (isReadOnly_ && facts.format < kFormat) Fail(MAPI_E_NO_ACCESS);
  if (isReadOnly_) return;
  Database database(path_, Database::Access::kWrite);
  ConfigureWriter(database, kWriterKilobytes);
  // Shared memory tells processes of one computer what is new in a file; between computers only locks do.
  database.Run(isLocal_ ? "PRAGMA journal_mode = WAL" : "PRAGMA journal_mode = DELETE");
  Upgrade(database, path_, form);
}

// A connection of its own, since the writer knows the arrangements that it found. Nobody is kept out of a book that
// another program holds, or whose disk is full.
void Core::ArrangeFor(NameForm form) {
  if (isReadOnly_) return;
  static_cast<void>(Answer([&] {
    Database database(path_, Database::Access::kWrite);
    ConfigureWriter(database, kWriterKilobytes);
    Arrange(database, form);
  }));
  const std::lock_guard guard(writeLock_);
  if (std::find(forms_.begin(), forms_.end(), form) == forms_.end()) forms_.push_back(form);
}

std::unique_ptr<Database> Core::OpenReader() {
  if (!isReadOnly_) return std::make_unique<Database>(path_, Database::Access::kRead);
  try {
    auto reader = std::make_unique<Database>(path_, Database::Access::kRead);
    reader->Number("SELECT count(*) FROM meta");
    return reader;
  } catch (const Failure&) {
    // Where nothing may be written, not even locks can be kept; a change that waits beside the file must not be lost.
    if (FileExists(path_ + L"-wal")) throw;
    return std::make_unique<Database>(path_, Database::Access::kReadImmutable);
  }
}

std::unique_ptr<Database> Core::TakeReader() {
  {
    const std::lock_guard guard(readersLock_);
    if (!readers_.empty()) {
      std::unique_ptr<Database> reader = std::move(readers_.back());
      readers_.pop_back();
      return reader;
    }
  }
  return OpenReader();
}

void Core::GiveReader(std::unique_ptr<Database> reader) noexcept {
  reader->Rollback();
  const std::lock_guard guard(readersLock_);
  if (readers_.size() < kReadersKept) readers_.push_back(std::move(reader));
}

Writer& Core::WriterLocked(ULONGLONG patience) {
  if (writer_ == nullptr) writer_ = std::make_unique<Writer>(path_, kWriterKilobytes);
  writer_->database().SetPatience(patience);
  return *writer_;
}

void Core::RequireWritable() const {
  if (isReadOnly_) Fail(MAPI_E_NO_ACCESS);
}

void Core::Listen(const std::shared_ptr<Listener>& listener) {
  const std::lock_guard guard(listenersLock_);
  std::erase_if(listeners_, [](const std::weak_ptr<Listener>& each) { return each.expired(); });
  listeners_.push_back(listener);
}

void Core::Tell(const Changes& changes) {
  if (changes.entries.empty() && !changes.isEverything) return;
  std::vector<std::weak_ptr<Listener>> listeners;
  {
    const std::lock_guard guard(listenersLock_);
    listeners = listeners_;
  }
  for (const std::weak_ptr<Listener>& each : listeners) {
    if (const std::shared_ptr<Listener> listener = each.lock()) listener->BookChanged(changes);
  }
}

void Core::Poll() {
  Changes changes;
  {
    const std::lock_guard guard(watchLock_);
    const int64_t version = watch_->Number("PRAGMA data_version");
    if (version == seenVersion_) return;
    changes = ReadChanges(*watch_, &lastChange_, true);
    seenVersion_ = version;
  }
  Tell(changes);
}

int64_t Core::LastChange() {
  const std::lock_guard guard(watchLock_);
  return book::LastChange(*watch_);
}

void Core::PurgeOnceADay(ULONGLONG patience) {
  const std::lock_guard guard(writeLock_);
  Database& database = WriterLocked(patience).database();
  const std::string today = std::to_string(Now() / kDay);
  if (MetaText(database, "purged") == today) return;
  Transaction transaction(database);
  PurgeDeleted(database);
  DropUnused(database, forms_);
  SetMeta(database, "purged", today);
  transaction.Commit();
  writer_->Abandon();  // what it knows of arrangements may be no more
}

void Core::Tend(ULONGLONG patience) {
  if (isReadOnly_) return;
  PurgeOnceADay(patience);
  if (!keepsBackups_) return;
  const Borrowed reader(*this);
  KeepDailyBackup(*reader.database, path_);
}

}  // namespace book
