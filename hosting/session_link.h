// What ties the providers' support objects to their session: its address book, and the problems that are to be told to
// whoever uses it. Providers may call on threads of theirs, whatever the session does meanwhile.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "orv/orvtypes.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"
#include "platform/lock.h"
#include "platform/win.h"

struct IAddrBook;

namespace orv {

// A service as a problem names it.
struct ServiceIdentity {
  // By its UID alone, where nothing more is known.
  ServiceIdentity(const MAPIUID& serviceUid, WString name = {}, WString file = {})
      : uid(serviceUid), displayName(std::move(name)), library(std::move(file)) {}

  MAPIUID uid;
  WString displayName;
  WString library;
};

class SessionLink {
 public:
  SessionLink() = default;
  SessionLink(const SessionLink&) = delete;
  SessionLink& operator=(const SessionLink&) = delete;

  // The session's own, between whose two calls the book lives.
  void Open(IAddrBook& book) noexcept;
  void Close() noexcept;

  // Null before and after.
  ComPtr<IAddrBook> Book() const noexcept;

  // Keeps the newest ones. Problems that a provider reports itself are taken while there is a book, those that the
  // library sees at any time. May throw std::bad_alloc.
  HRESULT ReportFromProvider(const ServiceIdentity& service, HRESULT code, WStringView text);
  // What is kept already is not kept again: one fault is seen whenever somebody asks.
  void Report(const ServiceIdentity& service, HRESULT code, WStringView text);

  // One row a problem, oldest first. May throw std::bad_alloc.
  HRESULT MakeRows(RowSetPtr& rows) const;

 private:
  struct Problem {
    ServiceIdentity service;
    HRESULT code;
    WString text;

    bool IsSameAs(const Problem& other) const noexcept;
  };
  void KeepLocked(Problem problem);

  mutable Lock lock_;
  IAddrBook* book_ = nullptr;
  std::vector<Problem> problems_;
};

}  // namespace orv
