// What a fake provider is and does. The script belongs to the test, which changes it at any time; the
// provider, in its own library, only reads it and reports back through the virtual functions, so that nothing
// is allocated on one side and freed on the other. Needs include/orv alone.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <functional>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "orv/orv.h"

namespace orv::test {

using FakeText = std::basic_string<WCHAR>;

enum class Throws { kNothing, kInteger, kBadAlloc, kRuntimeError };

// How one operation answers: a result, or an exception that leaves the provider.
struct FakeAnswer {
  HRESULT result = S_OK;
  Throws throws = Throws::kNothing;
};

// What is wrong with the values and rows that a provider hands out, with success; kNothing: none, nor an object. Rows
// alone can be missing, be counted wrong, be junk beside a failure or begin again and again; every operation can throw.
enum class FakeLie {
  kNone,
  kNoArray,
  kNoValues,
  kShort,
  kNulls,
  kNothing,
  kNoSet,
  kTooMany,
  kJunk,
  kThrows,
  kEndless
};

// A container, list or user. Its entry identifier is four zero bytes, the script's UID, then the key's bytes.
struct FakeNode {
  ULONG type = MAPI_MAILUSER;
  FakeText name;
  FakeText addressType;
  ULONG containerFlags = 0;
  // Containers: rows of the contents table, by key. Lists: the members. A key without a node is a user of
  // that name.
  std::vector<std::string> contents;
  // Containers: depth in the provider's own hierarchy.
  ULONG depth = 0;
  // Answered by GetProps and tables besides what follows from the fields above.
  std::map<ULONG, FakeText> texts = {};
  std::map<ULONG, LONG> numbers = {};
  FakeLie lie = FakeLie::kNone;  // of its contents
};

// The arguments of the last "ABProviderOpen".
struct FakeOpenCall {
  HINSTANCE resources = nullptr;
  ULONG_PTR uiParam = 0;
  ULONG flags = 0;
  ULONG_PTR callerContext = 0;
  LPALLOCATEBUFFER allocateBuffer = nullptr;
  LPALLOCATEMORE allocateMore = nullptr;
  LPFREEBUFFER freeBuffer = nullptr;
};

// The arguments of one call of the service entry function.
struct FakeServiceCall {
  HINSTANCE resources = nullptr;
  ULONG_PTR uiParam = 0;
  ULONG flags = 0;
  ULONG context = 0;
  ULONG valueCount = 0;
  ULONG firstTag = 0;
  FakeText firstText;  // of context ORV_SERVICE_EXTRA_CONFIG
  bool hasSection = false;
  bool hasSupport = false;
  ULONG_PTR callerContext = 0;
};

// Lines "name.operation" of all the scripts that share it, in order.
struct FakeLog {
  std::vector<std::string> lines;

  std::size_t Count(const std::string& line) const {
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
  }
};

class FakeScript {
 public:
  FakeScript() = default;
  FakeScript(std::string scriptName, const MAPIUID& providerUid, FakeLog* sharedLog)
      : name(std::move(scriptName)), uid(providerUid), log(sharedLog), registered{providerUid} {}
  virtual ~FakeScript() = default;
  FakeScript(const FakeScript&) = delete;
  FakeScript& operator=(const FakeScript&) = delete;

  std::string name;
  MAPIUID uid{};
  FakeLog* log = nullptr;

  // At "ABProviderOpen": UIDs to register; whether to keep the support object and the section, or give no
  // object.
  std::vector<MAPIUID> registered;
  bool keepsSupport = false;
  bool keepsSection = false;
  bool givesNoObject = false;
  HRESULT registration = S_OK;  // of the last UID
  IOrvSupport* keptSupport = nullptr;
  IProfSect* keptSection = nullptr;

  // Key "" is the provider's root container, whose row GetProps of the provider answers.
  std::unordered_map<std::string, FakeNode> nodes;
  // Containers in the order of the provider's hierarchy table, without the root.
  std::vector<std::string> hierarchy;

  // By operation: "ABProviderOpen", "ServiceEntry", a method of the provider ("OpenEntry") or, after a colon,
  // of an object ("Object:GetContentsTable") or table ("Table:QueryRows"). Absent: success.
  std::map<std::string, FakeAnswer> answers;
  FakeLie lie = FakeLie::kNone;
  // By operation, instead of `lie`: "OpenEntry", "NewEntry", "Object:GetProps", "Object:GetContentsTable",
  // "Object:GetHierarchyTable", "Table:QueryRows"; to throw, any.
  std::map<std::string, FakeLie> lies;

  // What GetLastError of the provider and its objects tells of a result.
  std::map<HRESULT, FakeText> words;

  // By operation: what the test does inside it, on the caller's thread.
  std::map<std::string, std::function<void()>> during;

  // Seen so far.
  FakeOpenCall opened;
  std::vector<FakeServiceCall> serviceCalls;
  std::vector<std::string> deleted;  // keys
  std::atomic<long> liveObjects{0};
  struct Registration {
    ULONG connection;
    std::string key;
    ULONG events;
    IMAPIAdviseSink* sink;
  };
  std::vector<Registration> advises;

  // An entry identifier of this provider.
  std::vector<BYTE> EntryId(const std::string& key) const {
    std::vector<BYTE> bytes(ORV_MIN_ENTRYID + key.size());
    std::memcpy(bytes.data() + ORV_ENTRYID_UID_OFFSET, &uid, sizeof uid);
    std::memcpy(bytes.data() + ORV_MIN_ENTRYID, key.data(), key.size());
    return bytes;
  }

  // Called by the provider.
  virtual FakeAnswer OnCall(const char* operation) {
    if (const auto act = during.find(operation); act != during.end()) act->second();
    if (log != nullptr) log->lines.push_back(name + "." + operation);
    if (const auto it = lies.find(operation); it != lies.end() && it->second == FakeLie::kThrows)
      return {S_OK, Throws::kRuntimeError};
    const auto answer = answers.find(operation);
    return answer == answers.end() ? FakeAnswer{} : answer->second;
  }
  virtual void OnService(const FakeServiceCall& call, IProfSect*, IOrvSupport*) {
    serviceCalls.push_back(call);
  }
  virtual void OnPrepare(ADRLIST*) {}
  virtual void OnDelete(const std::string& key) { deleted.push_back(key); }
  virtual ULONG OnAdvise(const std::string& key, ULONG events, IMAPIAdviseSink* sink) {
    sink->AddRef();
    advises.push_back({++lastConnection_, key, events, sink});
    return lastConnection_;
  }
  virtual HRESULT OnUnadvise(ULONG connection) {
    const auto made = std::find_if(advises.begin(), advises.end(),
                                   [&](const Registration& one) { return one.connection == connection; });
    if (made == advises.end()) return MAPI_E_NOT_FOUND;
    made->sink->Release();
    advises.erase(made);
    return S_OK;
  }
  // The key of the entry made in a container after a template; null is refused. NewEntry makes "new".
  virtual const char* OnCreate(const std::string&, const std::string&) { return "new"; }
  virtual void OnSet(const std::string&, const SPropValue*, ULONG) {}
  virtual void OnSave(const std::string&) {}

 private:
  ULONG lastConnection_ = 0;
};

// The scripted result of the operation, or its exception, which is thrown in whoever calls this.
inline HRESULT PlayFake(FakeScript& script, const char* operation) {
  const FakeAnswer answer = script.OnCall(operation);
  if (answer.throws == Throws::kInteger) throw 7;
  if (answer.throws == Throws::kBadAlloc) throw std::bad_alloc();
  if (answer.throws == Throws::kRuntimeError) throw std::runtime_error("scripted");
  return answer.result;
}

// A UID whose sixteen bytes are all `fill`.
inline MAPIUID FakeUid(BYTE fill) {
  MAPIUID uid;
  std::memset(&uid, fill, sizeof uid);
  return uid;
}

// The buffer functions that a provider is given.
struct FakeBuffers {
  LPALLOCATEBUFFER allocate = nullptr;
  LPALLOCATEMORE allocateMore = nullptr;
  LPFREEBUFFER free = nullptr;
};

// A provider object with one reference; also for tests that need no library of its own.
IAddrBook* MakeFakeProvider(FakeScript* script, const FakeBuffers& buffers);

// Exports of the library.
using FakeProviderUse = void(STDAPICALLTYPE*)(FakeScript* script);
inline constexpr const char* kFakeUseName = "FakeProviderUse";
inline constexpr const char* kFakeServiceEntryName = "FakeServiceEntry";

}  // namespace orv::test
