// An address book over scripted providers and settings that lie in memory.
#pragma once

#include <map>

#include "addrbook/addr_book.h"
#include "hosting/provider_list.h"
#include "orv/orvbase.hpp"
#include "tests/addrbook/address_lists.h"

namespace orv::test {

inline ENTRYID* Id(Bytes& bytes) { return reinterpret_cast<ENTRYID*>(bytes.data()); }
inline ULONG Size(const Bytes& bytes) { return static_cast<ULONG>(bytes.size()); }
inline SBinary Binary(Bytes& bytes) { return {Size(bytes), bytes.data()}; }

// What a profile would hold: what is loaded, and what the book wrote of it. Outlives the book.
struct FakeProfile {
  // By tag: one identifier, or those of the search path.
  std::map<ULONG, std::vector<Bytes>> settings;
  HRESULT saveResult = S_OK;

  int saves = 0;
  std::vector<ULONG> savedTags;
  bool isOpen = false;  // while the book holds the store

  std::unique_ptr<SettingsStore> Open();
};

// A sink that tells how often it is held.
class FakeSink final : public sdk::Object<IMAPIAdviseSink> {
 public:
  ULONG STDMETHODCALLTYPE OnNotify(ULONG, LPNOTIFICATION) override { return 0; }
  ULONG References() { return AddRef(), Release(); }
};

// Providers "A", "B" and so on with UIDs of sixteen times their letter, loaded in the order of Load.
class BookTest : public testing::Test {
 protected:
  BookTest();
  ~BookTest() override;

  // A provider whose root lists `containers` (key, flags, depth); keys are also names.
  struct Container {
    std::string key;
    ULONG flags = 0;
    ULONG depth = 0;
  };
  template <class Script = FakeScript>
  Script& Load(const std::string& name, const std::vector<Container>& containers = {}) {
    auto* script = new Script(name, FakeUid(static_cast<BYTE>(name.front())), &log);
    LoadScript(std::unique_ptr<FakeScript>(script), containers);
    return *script;
  }
  // A record with this object, or none, instead of a scripted one.
  ProviderRecord& LoadObject(IAddrBook* provider, BYTE uid);

  // Opens the book on `profile`; EndSession() or the end of the test shuts it down.
  CAddrBook& Open();
  // As the session does: the book is told, let go of, and the providers are unloaded.
  void EndSession();

  FakeLog log;
  FakeProfile profile;
  ComPtr<CABServiceList> list;
  ComPtr<CAddrBook> book;

 private:
  void LoadScript(std::unique_ptr<FakeScript> script, const std::vector<Container>& containers);

  std::vector<std::unique_ptr<FakeScript>> scripts_;
};

}  // namespace orv::test
