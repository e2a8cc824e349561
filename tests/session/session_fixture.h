// A registry and an installation of the test's own, profiles made of stored service rows, and fake providers.
#pragma once

#include <memory>

#include "orv/orv.h"
#include "platform/com_ptr.h"
#include "profiles/registry_store.h"
#include "tests/props/samples.h"
#include "tests/support/fake_provider/fake_library.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::test {

// One stored service. Rows load in the order of their UIDs.
struct ServiceRow {
  BYTE uidFill = 1;
  ULONG uidSize = sizeof(MAPIUID);
  WString library;
  std::string entryName = kFakeServiceEntryName;
  // A column that is left out, or stored under another type of the same identifier.
  ULONG without = 0;
  ULONG mistyped = 0;
};

inline void StoreProfile(const WString& profile, const std::vector<ServiceRow>& services) {
  RowList rows;
  for (const ServiceRow& service : services) {
    std::vector<BYTE> uid(service.uidSize, service.uidFill);
    std::vector<SPropValue> values = {Binary(PR_SERVICE_UID, uid.data(), uid.size()),
                                      Unicode(PR_SERVICE_DLL_NAME_W, service.library.c_str()),
                                      String8(PR_SERVICE_ENTRY_NAME, service.entryName.c_str())};
    std::erase_if(values, [&](const SPropValue& value) { return value.ulPropTag == service.without; });
    for (SPropValue& value : values) {
      if (value.ulPropTag == service.mistyped) value.ulPropTag = CHANGE_PROP_TYPE(value.ulPropTag, PT_I8);
    }
    ASSERT_EQ(rows.Add({0, static_cast<ULONG>(values.size()), values.data()}, rows.Count()), S_OK);
  }
  ASSERT_EQ(registry_store::SaveServiceRows(rows, profile), S_OK);
}

// A provider of a test: its script, its library in the installation, and its row.
class Provider {
 public:
  Provider(const Installation& installation, BYTE fill, FakeLog* log)
      : script(std::string(1, static_cast<char>('a' + fill - 1)), FakeUid(fill), log),
        library(installation.Path(Name(fill)), &script),
        row{fill, sizeof(MAPIUID), Name(fill), kFakeServiceEntryName, 0, 0} {
    script.nodes[""] = {
        MAPI_ABCONT, FakeText(1, static_cast<WCHAR>(L'A' + fill - 1)), {}, AB_RECIPIENTS, {}, 0, {}, {}};
  }

  FakeScript script;
  FakeLibrary library;
  ServiceRow row;

 private:
  static WString Name(BYTE fill) { return L"fake" + std::to_wstring(fill) + L".dll"; }
};

class SessionTest : public testing::Test {
 protected:
  static constexpr ULONG_PTR kContext = 0x5EED;

  Provider& AddProvider() {
    providers_.push_back(
        std::make_unique<Provider>(installation_, static_cast<BYTE>(providers_.size() + 1), &log_));
    return *providers_.back();
  }
  // The profile "P" with all providers added so far, and behind them the rows given.
  void StoreProviders(std::initializer_list<ServiceRow> more = {}) {
    std::vector<ServiceRow> rows;
    for (const auto& provider : providers_) rows.push_back(provider->row);
    rows.insert(rows.end(), more);
    StoreProfile(L"P", rows);
  }

  HRESULT LogOn(ComPtr<IOrvSession>& session, ULONG flags = MAPI_UNICODE, const WCHAR* profile = L"P") {
    return OrvOpen(0, profile, flags, nullptr, nullptr, nullptr, nullptr, session.Put(), kContext);
  }

  // The lines that end in one of the operations, in order.
  std::vector<std::string> Lines(std::initializer_list<std::string> operations) const {
    std::vector<std::string> found;
    for (const std::string& line : log_.lines) {
      for (const std::string& operation : operations) {
        if (line.size() > 2 && line.compare(2, std::string::npos, operation) == 0) found.push_back(line);
      }
    }
    return found;
  }

  // Nobody holds a library or an object of the providers any more.
  void ExpectAllGone() {
    for (const auto& provider : providers_) {
      EXPECT_EQ(provider->script.liveObjects, 0) << provider->script.name;
      EXPECT_TRUE(provider->library.UnloadsWithUs()) << provider->script.name;
    }
  }

  RedirectedRegistry registry_;
  Installation installation_;
  FakeLog log_;
  std::vector<std::unique_ptr<Provider>> providers_;
};

}  // namespace orv::test
