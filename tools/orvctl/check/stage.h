// A provider on trial: its library loaded and logged on to as the address book library does it, and the few calls that
// every check makes of it.
#pragma once

#include <memory>
#include <vector>

#include "tools/orvctl/check/ledger.h"
#include "tools/orvctl/check/objects.h"
#include "tools/orvctl/check/probe.h"

namespace orvctl::check {

using orv::sdk::Buffer;
using orv::sdk::ComPtr;
using orv::sdk::RowSet;
using orv::sdk::ValueView;
using Tags = std::vector<ULONG>;

// Tags in the shape that the methods take.
class TagList {
 public:
  explicit TagList(const Tags& tags) : numbers_{static_cast<ULONG>(tags.size())} {
    numbers_.insert(numbers_.end(), tags.begin(), tags.end());
  }
  LPSPropTagArray Get() { return reinterpret_cast<LPSPropTagArray>(numbers_.data()); }

 private:
  Tags numbers_;
};

class Module {
 public:
  explicit Module(Probe& probe);
  ~Module() { Free(); }
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  void Free();
  LPABPROVIDEROPEN open() const { return open_; }
  // A finding of the file's exports where it holds no such function.
  void RequireEntry(const Probe& probe) const;
  // Calls the entry function with a fresh support object; a reference to it or the section that stays is a finding.
  HRESULT CallEntry(Probe& probe, ULONG context, Section* section, ULONG count = 0,
                    LPSPropValue values = nullptr);
  // The extra configuration string.
  HRESULT Configure(Probe& probe, Section* section, const std::string& text);

 private:
  HMODULE module_ = nullptr;
  LPABPROVIDEROPEN open_ = nullptr;
  LPORVSERVICEENTRY entry_ = nullptr;
};

// What a service has in its section when nothing of the provider's is there. The UID is always the same.
Profile NewProfile(const Request& request);

// One logon. What it handed out must be released before it.
class Session {
 public:
  explicit Session(Profile& profile) : support(true), section(profile) {}

  HRESULT TryLogOn(Probe& probe, const Module& module);
  void LogOn(Probe& probe, const Module& module);
  // As the library does: nothing of the session answers any more when the provider object goes.
  void End();
  // References to the support object and section that others hold.
  ULONG held() const { return support.held() + section.held(); }

  Support support;
  Section section;
  ComPtr<IAddrBook> book;
};

// All that it takes to look at entries: loaded, created, configured, logged on.
class Stage {
 public:
  explicit Stage(Probe& probe);
  ~Stage() { EndSession(); }

  void LogOnAgain();

  IAddrBook* book() const { return session->book.Get(); }

  Probe& probe;
  Profile profile;
  Module module;
  std::unique_ptr<Session> session;

 private:
  // It is leaked where somebody still holds parts of it.
  void EndSession();
};

// Loads the profile as `service add` would: created, and configured where --config is given.
void CreateService(Probe& probe, Module& module, Profile& profile);

struct Answer {
  Buffer<SPropValue> values{Ledger::FreeRoot};
  ULONG count = 0;
  HRESULT result = S_OK;

  ValueView view() const { return {values.Get(), count}; }
};
// Null tags: all. What a failing call hands out is not looked at.
Answer GetProps(Probe& probe, IMAPIProp* object, const Tags* tags, ULONG flags = MAPI_UNICODE);
// The same where a failure or a wrong count is a finding.
Answer RequireProps(Probe& probe, IMAPIProp* object, const Tags& tags);

struct Opened {
  ComPtr<IUnknown> object;
  ULONG type = 0;
  HRESULT result = S_OK;

  ComPtr<IMAPIProp> props() const { return object.As<IMAPIProp>(IID_IMAPIProp); }
  ComPtr<IABContainer> container() const { return object.As<IABContainer>(IID_IABContainer); }
};
Opened Open(Probe& probe, IAddrBook* book, const Bytes& id, ULONG flags = 0);
// The same where a failure is a finding.
Opened RequireOpen(Probe& probe, IAddrBook* book, const Bytes& id, ULONG flags = 0);

// Empty where the object has no such table.
ComPtr<IMAPITable> ContentsOf(Probe& probe, const ComPtr<IUnknown>& container);
ComPtr<IMAPITable> HierarchyOf(Probe& probe, const ComPtr<IUnknown>& container);
RowSet QueryRows(Probe& probe, IMAPITable* table, LONG count, ULONG flags = 0);
ULONG RowCount(Probe& probe, IMAPITable* table);
void SetColumns(Probe& probe, IMAPITable* table, const Tags& columns);
// Returns how far it went.
LONG Seek(Probe& probe, IMAPITable* table, BOOKMARK origin, LONG rows);

// Points into the text.
SPropValue TextValue(ULONG tag, WideString& text);
Bytes BytesOf(SBinary bytes);

}  // namespace orvctl::check
