// What all sessions of a process that use one file share: connections, the one who writes, who is told of changes.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "orv/orvbase.hpp"
#include "providers/book/file.h"
#include "providers/book/store.h"
#include "providers/book/writer.h"

namespace book {

class Core {
 public:
  Core(std::wstring path, const FileFacts& facts, const Options& options);

  const std::wstring& path() const { return path_; }
  const EntryKey& uid() const { return uid_; }
  const FileIdentity& identity() const { return identity_; }
  bool isReadOnly() const { return isReadOnly_; }

  std::unique_ptr<Database> TakeReader();
  // In any state; never fails.
  void GiveReader(std::unique_ptr<Database> reader) noexcept;

  // One change: `body` is handed the writer within a transaction. `patience`: how long it waits for other programs.
  template <class Body>
  HRESULT Write(ULONGLONG patience, Body&& body) {
    return Answer([&] {
      RequireWritable();
      Changes changes;
      WriteAlone(patience, body, &changes);
      Tell(changes);
    });
  }
  // `body` is handed a connection that reads.
  template <class Body>
  HRESULT Look(Body&& body) {
    return Answer([&] {
      const Borrowed reader(*this);
      reader.database->Run("BEGIN");
      body(*reader.database);
    });
  }
  void RequireWritable() const;

  void Listen(const std::shared_ptr<Listener>& listener);
  void Tell(const Changes& changes);
  void Poll();
  int64_t LastChange();
  // Makes sure that rows are there in the user's order; without one those of the most alike are shown.
  void ArrangeFor(NameForm form);
  // What is due once a day.
  void Tend(ULONGLONG patience);

 private:
  std::unique_ptr<Database> OpenReader();
  void Prepare(const FileFacts& facts, NameForm form);
  Writer& WriterLocked(ULONGLONG patience);
  struct Borrowed {
    explicit Borrowed(Core& owner) : core(owner), database(owner.TakeReader()) {}
    ~Borrowed() { core.GiveReader(std::move(database)); }
    Borrowed(const Borrowed&) = delete;
    Borrowed& operator=(const Borrowed&) = delete;
    Core& core;
    std::unique_ptr<Database> database;
  };
  template <class Body>
  void WriteAlone(ULONGLONG patience, Body& body, Changes* changes) {
    const std::lock_guard guard(writeLock_);
    Writer& writer = WriterLocked(patience);
    try {
      writer.Begin();
      body(writer);
      writer.Commit(changes);
    } catch (...) {
      writer.Abandon();
      throw;
    }
  }
  void PurgeOnceADay(ULONGLONG patience);

  const std::wstring path_;
  const FileIdentity identity_;
  const bool isLocal_;
  const bool keepsBackups_;
  bool isReadOnly_;
  EntryKey uid_{};

  orv::sdk::Lock writeLock_;  // guards writer_ and forms_
  std::unique_ptr<Writer> writer_;
  std::vector<NameForm> forms_;  // that somebody looks at the book in

  orv::sdk::Lock readersLock_;  // guards readers_
  std::vector<std::unique_ptr<Database>> readers_;

  orv::sdk::Lock watchLock_;  // guards the next three
  std::unique_ptr<Database> watch_;
  int64_t seenVersion_ = -1;
  int64_t lastChange_ = 0;

  orv::sdk::Lock listenersLock_;  // guards listeners_
  std::vector<std::weak_ptr<Listener>> listeners_;
};

}  // namespace book
