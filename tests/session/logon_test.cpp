// The logon: its checks, which profile it takes, in which order providers come and go, what a failure undoes.
#include "tests/props/samples.h"
#include "tests/session/session_fixture.h"

namespace orv::test {
namespace {

using Texts = std::vector<std::string>;

class Logon : public SessionTest {};

TEST_F(Logon, ChecksItsArgumentsInOrder) {
  StoreProviders();
  IOrvSession* const untouched = reinterpret_cast<IOrvSession*>(0x10);
  struct {
    ULONG flags;
    std::size_t reserved;
    bool withOut;
    HRESULT expected;
  } const kCases[] = {{0, 0, false, MAPI_E_INVALID_PARAMETER},
                      {MAPI_USE_DEFAULT, 0, true, MAPI_E_BAD_CHARWIDTH},
                      {MAPI_UNICODE, 0, true, MAPI_E_NO_SUPPORT},
                      {MAPI_UNICODE, 1, true, MAPI_E_NO_SUPPORT},
                      {MAPI_UNICODE, 2, true, MAPI_E_NO_SUPPORT}};
  for (const auto& kCase : kCases) {
    void* arguments[3] = {};
    arguments[kCase.reserved] = this;
    IOrvSession* session = untouched;
    EXPECT_EQ(OrvOpen(0, L"P", kCase.flags, arguments[0], arguments[1], arguments[2], nullptr,
                      kCase.withOut ? &session : nullptr, kContext),
              kCase.expected);
    EXPECT_EQ(session, untouched);
  }
  ComPtr<IOrvProfAdmin> admin;
  EXPECT_EQ(OrvAdminProfiles(0, nullptr, kContext), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(OrvAdminProfiles(0, admin.Put(), kContext), MAPI_E_BAD_CHARWIDTH);
}

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
  for (int i = 0; i < 3; ++i) AddProvider();
  StoreProviders();
  ComPtr<IOrvSession> session;
  ASSERT_EQ(LogOn(session), S_OK);
  EXPECT_EQ(Lines({"ABProviderOpen"}), (Texts{"a.ABProviderOpen", "b.ABProviderOpen", "c.ABProviderOpen"}));
  EXPECT_TRUE(Lines({"Released", "ServiceEntry"}).empty());
  session.Reset();
  EXPECT_EQ(Lines({"Released"}), (Texts{"c.Released", "b.Released", "a.Released"}));
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

TEST_F(Logon, KeepsAServiceThatOpensWithoutAnObject) {
  AddProvider().script.givesNoObject = true;
  StoreProviders();
  ComPtr<IOrvSession> session;
  EXPECT_EQ(LogOn(session), S_OK);
  session.Reset();
  ExpectAllGone();
}

// Every failure of the second service ends the logon with its code and unloads the first one again.
TEST_F(Logon, FailsAsAWholeAndLeavesNothingLoaded) {
  installation_.CopyIn(L"orv_stub.dll", L"stub.dll");
  // There, but behind a path of more than 260 characters.
  const WString longName = WString(240, L'l') + L".dll";
  ASSERT_TRUE(CopyFileW(installation_.Path(L"stub.dll").c_str(),
                        (L"\\\\?\\" + installation_.Path(longName)).c_str(), FALSE));
  const struct {
    const char* name;
    ServiceRow second;
    HRESULT expected;
  } kCases[] = {
      {"missing library", {9, 16, L"nosuch.dll"}, MAPI_E_NOT_FOUND},
      {"long path", {9, 16, longName}, MAPI_E_NOT_FOUND},
      {"empty name", {9, 16, L""}, MAPI_E_NOT_FOUND},
      {"folder in the name", {9, 16, L"..\\fake1.dll"}, MAPI_E_NOT_FOUND},
      {"slash in the name", {9, 16, L"./fake1.dll"}, MAPI_E_NOT_FOUND},
      {"drive in the name", {9, 16, L"c:fake1.dll"}, MAPI_E_NOT_FOUND},
      {"no ABProviderOpen", {9, 16, L"stub.dll"}, MAPI_E_CALL_FAILED},
      {"no such entry", {9, 16, L"fake1.dll", "NoSuchEntry"}, MAPI_E_CALL_FAILED},
      {"short UID", {9, 15, L"fake1.dll"}, MAPI_E_CALL_FAILED},
      {"no library name",
       {9, 16, L"fake1.dll", kFakeServiceEntryName, PR_SERVICE_DLL_NAME_W},
       MAPI_E_CALL_FAILED},
      {"no entry name",
       {9, 16, L"fake1.dll", kFakeServiceEntryName, PR_SERVICE_ENTRY_NAME},
       MAPI_E_CALL_FAILED},
      {"library name is a number",
       {9, 16, L"fake1.dll", kFakeServiceEntryName, 0, PR_SERVICE_DLL_NAME_W},
       MAPI_E_CALL_FAILED},
      {"entry name is a number",
       {9, 16, L"fake1.dll", kFakeServiceEntryName, 0, PR_SERVICE_ENTRY_NAME},
       MAPI_E_CALL_FAILED},
  };
  Provider& first = AddProvider();
  for (const auto& kCase : kCases) {
    StoreProviders({kCase.second});
    log_.lines.clear();
    ComPtr<IOrvSession> session;
    ComPtr<IAddrBook> book;
    EXPECT_EQ(OrvOpen(0, L"P", MAPI_UNICODE, nullptr, nullptr, nullptr, book.Put(), session.Put(), kContext),
              kCase.expected)
        << kCase.name;
    EXPECT_FALSE(session || book) << kCase.name;
    EXPECT_EQ(log_.lines, (Texts{"a.ABProviderOpen", "a.Released"})) << kCase.name;
    EXPECT_EQ(first.script.liveObjects, 0) << kCase.name;
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
  using Throws = FakeAnswer::Throws;
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
