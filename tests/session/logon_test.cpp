// The logon: its checks, which profile it takes, in which order providers come and go, what a failure undoes.
#include "tests/session/session_fixture.h"

namespace orv::test {
namespace {

using Texts = std::vector<std::string>;

class Logon : public SessionTest {};

TEST_F(Logon, TakesTheDefaultOrTheExactName) {
  StoreProfile(L"Other", {});
  StoreProfile(L"P", {});
  const struct {
    const WCHAR* name;
    ULONG flags;
    const WCHAR* byDefault;  // null: none stored
    HRESULT expected;
  } kCases[] = {
      {L"P", 0, nullptr, S_OK},
      {L"p", 0, nullptr, MAPI_E_LOGON_FAILED},
      {L"p", MAPI_LOGON_UI, nullptr, MAPI_E_UNKNOWN_FLAGS},
      {L"P", MAPI_LOGON_UI, nullptr, S_OK},
      {L"", 0, L"P", MAPI_E_LOGON_FAILED},
      {nullptr, 0, L"P", MAPI_E_LOGON_FAILED},
      {nullptr, MAPI_LOGON_UI, L"P", MAPI_E_UNKNOWN_FLAGS},
      {L"No such", MAPI_USE_DEFAULT, L"P", S_OK},
      {L"P", MAPI_USE_DEFAULT, nullptr, MAPI_E_LOGON_FAILED},
      {L"P", MAPI_USE_DEFAULT, L"Gone", MAPI_E_LOGON_FAILED},
      {nullptr, MAPI_USE_DEFAULT, L"p", S_OK},
  };
  for (const auto& kCase : kCases) {
    ASSERT_TRUE(kCase.byDefault == nullptr || SUCCEEDED(registry_store::SetDefaultProfile(kCase.byDefault)));
    ComPtr<IOrvSession> session;
    EXPECT_EQ(LogOn(session, MAPI_UNICODE | kCase.flags, kCase.name), kCase.expected)
        << "case " << (&kCase - kCases);
    if (kCase.byDefault != nullptr) registry_store::SetDefaultProfile(nullptr);
  }
}

TEST_F(Logon, OpensProvidersInTableOrderAndUnloadsThemNewestFirst) {
  for (int i = 0; i < 4; ++i) AddProvider();
  providers_[1]->script.givesNoObject = true;
  StoreProviders();
  ComPtr<IOrvSession> session;
  ASSERT_EQ(LogOn(session), S_OK);
  EXPECT_EQ(Lines({"ABProviderOpen"}),
            (Texts{"a.ABProviderOpen", "b.ABProviderOpen", "c.ABProviderOpen", "d.ABProviderOpen"}));
  EXPECT_TRUE(Lines({"Released", "ServiceEntry"}).empty());
  session.Reset();
  EXPECT_EQ(Lines({"Released"}), (Texts{"d.Released", "c.Released", "a.Released"}));
  ExpectAllGone();
}

TEST_F(Logon, HandsProvidersWhatTheyNeed) {
  Provider& provider = AddProvider();
  provider.script.keepsSection = true;
  StoreProviders();
  ComPtr<IOrvSession> session;
  ASSERT_EQ(OrvOpen(0x77, L"P", MAPI_UNICODE | MAPI_NEW_SESSION, nullptr, nullptr, nullptr, nullptr,
                    session.Put(), kContext),
            S_OK);
  const FakeOpenCall& call = provider.script.opened;
  EXPECT_EQ(call.uiParam, 0x77u);
  EXPECT_EQ(call.flags, MAPI_UNICODE | MAPI_NEW_SESSION);
  EXPECT_EQ(call.callerContext, kContext);
  EXPECT_EQ(call.allocateBuffer, &OrvAllocateBuffer);
  EXPECT_EQ(call.allocateMore, &OrvAllocateMore);
  EXPECT_EQ(call.freeBuffer, &OrvFreeBuffer);

  // The section is the service's own, and stays usable as long as it is held.
  session.Reset();
  ULONG count = 0;
  MapiBuffer<SPropValue> values;
  auto section = ComPtr<IProfSect>::Adopt(provider.script.keptSection);
  ASSERT_EQ(section->GetProps(Tags{PR_SERVICE_DLL_NAME_W}.Get(), MAPI_UNICODE, &count, values.Put()), S_OK);
  EXPECT_EQ(WString(values[0].Value.lpszW), provider.row.library);
}

// Every failure of the second service ends the logon with its code and unloads the first one again.
TEST_F(Logon, FailsAsAWholeAndLeavesNothingLoaded) {
  installation_.CopyIn(L"orv_stub.dll", L"stub.dll");
  // There, but behind a path of more than 260 characters.
  const WString longName = WString(240, L'l') + L".dll";
  ASSERT_TRUE(CopyFileW(installation_.Path(L"stub.dll").c_str(),
                        (L"\\\\?\\" + installation_.Path(longName)).c_str(), FALSE));
  const char* const entry = kFakeServiceEntryName;
  const std::pair<ServiceRow, HRESULT> kCases[] = {
      {{9, 16, L"nosuch.dll"}, MAPI_E_NOT_FOUND},
      {{9, 16, longName}, MAPI_E_NOT_FOUND},
      {{9, 16, L""}, MAPI_E_NOT_FOUND},
      {{9, 16, L"..\\fake1.dll"}, MAPI_E_NOT_FOUND},
      {{9, 16, L"./fake1.dll"}, MAPI_E_NOT_FOUND},
      {{9, 16, L"c:fake1.dll"}, MAPI_E_NOT_FOUND},
      {{9, 16, L"stub.dll"}, MAPI_E_CALL_FAILED},  // without "ABProviderOpen"
      {{9, 16, L"fake1.dll", "NoSuchEntry"}, MAPI_E_CALL_FAILED},
      {{9, 15, L"fake1.dll"}, MAPI_E_CALL_FAILED},
      {{9, 16, L"fake1.dll", entry, PR_SERVICE_DLL_NAME_W}, MAPI_E_CALL_FAILED},
      {{9, 16, L"fake1.dll", entry, PR_SERVICE_ENTRY_NAME}, MAPI_E_CALL_FAILED},
      {{9, 16, L"fake1.dll", entry, 0, PR_SERVICE_DLL_NAME_W}, MAPI_E_CALL_FAILED},
      {{9, 16, L"fake1.dll", entry, 0, PR_SERVICE_ENTRY_NAME}, MAPI_E_CALL_FAILED},
  };
  Provider& first = AddProvider();
  for (const auto& [second, expected] : kCases) {
    SCOPED_TRACE(testing::PrintToString(second.library));
    StoreProviders({second});
    log_.lines.clear();
    ComPtr<IOrvSession> session;
    ComPtr<IAddrBook> book;
    EXPECT_EQ(OrvOpen(0, L"P", MAPI_UNICODE, nullptr, nullptr, nullptr, book.Put(), session.Put(), kContext),
              expected);
    EXPECT_FALSE(session || book);
    EXPECT_EQ(log_.lines, (Texts{"a.ABProviderOpen", "a.Released"}));
    EXPECT_EQ(first.script.liveObjects, 0);
  }
  ExpectAllGone();
}

// A refusal is answered with its code. An exception other than want of memory passes: what was made is gone, only the
// library that threw stays, since its exception does.
TEST_F(Logon, EndsWithAProvidersRefusalOrException) {
  AddProvider();
  Provider& second = AddProvider();
  StoreProviders();
  ComPtr<IOrvSession> session;
  const auto logOn = [&](const FakeAnswer& answer) {
    second.script.answers["ABProviderOpen"] = answer;
    return LogOn(session);
  };
  EXPECT_EQ(logOn({MAPI_E_UNCONFIGURED}), MAPI_E_UNCONFIGURED);
  EXPECT_EQ(logOn({S_OK, Throws::kBadAlloc}), MAPI_E_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(Lines({"Released"}), (Texts{"a.Released", "a.Released"}));
  EXPECT_THROW(logOn({S_OK, Throws::kRuntimeError}), std::runtime_error);
  EXPECT_THROW(logOn({S_OK, Throws::kInteger}), int);
  EXPECT_FALSE(session);
  EXPECT_EQ(Lines({"Released"}).size(), 4u);
  EXPECT_TRUE(providers_[0]->library.UnloadsWithUs());
  EXPECT_FALSE(second.library.UnloadsWithUs());
}

TEST_F(Logon, FailsWhenTheAddressBooksSettingsCannotBeOpened) {
  AddProvider();
  StoreProviders();
  const ReadOnlyKey denied(L"Software\\Tovan\\Velmora\\VX100 series\\Orv Profiles\\P");
  ComPtr<IOrvSession> session;
  EXPECT_EQ(LogOn(session), MAPI_E_CALL_FAILED);
  EXPECT_EQ(Lines({"Released"}), Texts{"a.Released"});
}

TEST_F(Logon, FindsNoRecordForASupportObjectThatOutlivesItsProvider) {
  Provider& provider = AddProvider();
  provider.script.keepsSupport = true;
  StoreProviders();
  ComPtr<IOrvSession> session;
  ASSERT_EQ(LogOn(session), S_OK);
  auto support = ComPtr<IOrvSupport>::Adopt(provider.script.keptSupport);
  const MAPIUID other = FakeUid(0x66);
  EXPECT_EQ(support->SetProviderUID(&provider.script.uid), MAPI_E_COLLISION);
  EXPECT_EQ(support->SetProviderUID(&other), S_OK);
  session.Reset();
  EXPECT_EQ(support->SetProviderUID(&other), MAPI_E_INVALID_PARAMETER);
  support.Reset();

  // The same after a logon that failed.
  provider.script.answers["ABProviderOpen"] = {MAPI_E_CALL_FAILED};
  EXPECT_EQ(LogOn(session), MAPI_E_CALL_FAILED);
  support = ComPtr<IOrvSupport>::Adopt(provider.script.keptSupport);
  EXPECT_EQ(support->SetProviderUID(&other), MAPI_E_INVALID_PARAMETER);
}

}  // namespace
}  // namespace orv::test
