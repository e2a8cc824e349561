// What a fake provider is and does. The script belongs to the test, which changes it at any time; the
// provider, in its own library, only reads it and reports back through the virtual functions, so that nothing
// is allocated on one side and freed on the other. Needs include/orv alone.
#pragma once

#include <cstddef>
#include <cstring>
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

// How one operation answers: a result, or an exception that leaves the provider.
struct FakeAnswer {
  enum class Throws { kNothing, kInteger, kBadAlloc, kRuntimeError };
  HRESULT result = S_OK;
  Throws throws = Throws::kNothing;
};

// What is wrong with the values and rows that a provider hands out, with success; kNothing: none, nor an object.
enum class FakeLie { kNone, kNoArray, kNoValues, kShort, kNullPointers, kNothing };

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
  std::map<ULONG, FakeText> texts;
  std::map<ULONG, LONG> numbers;
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
    std::size_t count = 0;
    for (const std::string& candidate : lines) count += candidate == line;
    return count;
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
  // "Object:GetHierarchyTable", "Table:QueryRows".
  std::map<std::string, FakeLie> lies;

  // Seen so far.
  FakeOpenCall opened;
  std::vector<FakeServiceCall> serviceCalls;
  std::vector<ULONG> preparedCounts;  // entries of each PrepareRecips
  std::vector<std::string> deleted;   // keys
  long liveObjects = 0;
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
    if (log != nullptr) log->lines.push_back(name + "." + operation);
    const auto answer = answers.find(operation);
    return answer == answers.end() ? FakeAnswer{} : answer->second;
  }
  virtual void OnOpen(const FakeOpenCall& call) { opened = call; }
  virtual void OnService(const FakeServiceCall& call, IProfSect*, IOrvSupport*) {
    serviceCalls.push_back(call);
  }
  virtual void OnPrepare(ADRLIST* list) { preparedCounts.push_back(list == nullptr ? 0 : list->cEntries); }
  virtual void OnDelete(const std::string& key) { deleted.push_back(key); }
  virtual ULONG OnAdvise(const std::string& key, ULONG events, IMAPIAdviseSink* sink) {
    sink->AddRef();
    advises.push_back({++lastConnection_, key, events, sink});
    return lastConnection_;
  }
  virtual HRESULT OnUnadvise(ULONG connection) {
    for (auto at = advises.begin(); at != advises.end(); ++at) {
      if (at->connection != connection) continue;
      at->sink->Release();
      advises.erase(at);
      return S_OK;
    }
    return MAPI_E_NOT_FOUND;
  }
  // NewEntry: the key of the entry made.
  virtual const char* OnNewEntry() { return "new"; }
  // CreateEntry: likewise, in a container after a template; null is refused.
  virtual const char* OnCreate(const std::string&, const std::string&) { return OnNewEntry(); }
  virtual void OnSet(const std::string&, const SPropValue*, ULONG) {}
  virtual void OnSave(const std::string&) {}
  virtual void OnObject(long change) { liveObjects += change; }

 private:
  ULONG lastConnection_ = 0;
};

// The scripted result of the operation, or its exception, which is thrown in whoever calls this.
inline HRESULT PlayFake(FakeScript& script, const char* operation) {
  const FakeAnswer answer = script.OnCall(operation);
  switch (answer.throws) {
    case FakeAnswer::Throws::kInteger:
      throw 7;
    case FakeAnswer::Throws::kBadAlloc:
      throw std::bad_alloc();
    case FakeAnswer::Throws::kRuntimeError:
      throw std::runtime_error("scripted");
    case FakeAnswer::Throws::kNothing:
      break;
  }
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
