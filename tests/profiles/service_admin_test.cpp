// Services of a profile: creating, configuring and deleting them through scripted provider libraries, and their
// profile sections.
#include "profiles/service_admin.h"

#include <thread>

#include "hosting/service_entry.h"
#include "platform/process.h"
#include "props/base_prop.h"
#include "tests/profiles/profiles_fixture.h"

namespace orv::test {
namespace {

constexpr ULONG kOwnText = 0x6600001F;

void SaveText(IProfSect& section, const WCHAR* text) {
  SPropValue value = Unicode(kOwnText, text);
  EXPECT_EQ(section.SetProps(1, &value, nullptr), S_OK);
  EXPECT_EQ(section.SaveChanges(KEEP_OPEN_READWRITE), S_OK);
}

// A section of the caller's own that says it has values and gives none.
class LyingSection final : public PropObject<IProfSect> {
 public:
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG, ULONG* count, LPSPropValue*) override {
    *count = tags->cValues;
    return S_OK;
  }

 private:
  bool Supports(REFIID) const override { return false; }
};

class ServiceAdminTest : public ServicesTest {
 protected:
  ComPtr<IMAPITable> Table() {
    ComPtr<IMAPITable> table;
    EXPECT_EQ(services_->GetMsgServiceTable(MAPI_UNICODE, table.Put()), S_OK);
    return table;
  }
  Names ServiceNames() { return Column(Table(), PR_SERVICE_NAME_W); }

  ComPtr<IProfSect> Section(const MAPIUID& uid) {
    ComPtr<IProfSect> section;
    EXPECT_EQ(services_->OpenProfileSection(&uid, nullptr, MAPI_MODIFY, section.Put()), S_OK);
    return section;
  }
  static WString Text(const ComPtr<IProfSect>& section, ULONG tag) {
    ULONG count = 0;
    MapiBuffer<SPropValue> values;
    EXPECT_GE(section->GetProps(Tags{tag}.Get(), MAPI_UNICODE, &count, values.Put()), 0);
    const WCHAR* text = TextOf(ForeignValues(values.Get(), count).Find(tag));
    return text == nullptr ? L"(none)" : text;
  }
};

TEST_F(ServiceAdminTest, ANewServiceIsStoredCalledAndFirstInTheNextTable) {
  HRESULT registered = S_OK;
  script_.act = [&](IProfSect* section, IOrvSupport* support) {
    registered = support->SetProviderUID(&script_.uid);
    SaveText(*section, L"file");
  };
  ASSERT_EQ(Create(L"One", L"path to file", 0x00020000), S_OK);
  EXPECT_EQ(registered, MAPI_E_NO_SUPPORT);
  ASSERT_EQ(Create(L"Single", L"", 0x00010000), S_OK);
  ASSERT_EQ(script_.serviceCalls.size(), 3u);
  const FakeServiceCall& created = script_.serviceCalls[0];
  EXPECT_EQ(created.context, MSG_SERVICE_CREATE);
  EXPECT_EQ(created.flags, MAPI_UNICODE | SERVICE_UI_ALWAYS);
  EXPECT_EQ(created.uiParam, 7u);
  EXPECT_EQ(created.valueCount, 0u);
  EXPECT_EQ(created.callerContext, process::CallerContext());
  const FakeServiceCall& configured = script_.serviceCalls[1];
  EXPECT_EQ(configured.context, ORV_SERVICE_EXTRA_CONFIG);
  EXPECT_EQ(configured.valueCount, 1u);
  EXPECT_EQ(configured.firstText, L"path to file");

  RowSetPtr rows;
  ASSERT_EQ(Table()->QueryRows(2, 0, rows.Put()), S_OK);
  const std::pair<const WCHAR*, LONG> expected[] = {{L"Given", 0x00010002}, {L"Display", 0x00020000}};
  for (ULONG i = 0; i < 2; ++i) {
    const SRow& row = (&rows->aRow[0])[i];
    ASSERT_EQ(row.cValues, 10u);
    EXPECT_STREQ(row.lpProps[3].Value.lpszW, expected[i].first);
    EXPECT_STREQ(row.lpProps[4].Value.lpszW, L"fakeA.dll");
    EXPECT_EQ(row.lpProps[9].Value.l, expected[i].second);
  }
  // Ten columns and the service's own property.
  for (const WString& key : SubkeyNames(kP)) EXPECT_EQ(ValueNames(kP + L"\\" + key).size(), 11u);
}

TEST_F(ServiceAdminTest, AServiceThatCannotBeSetUpIsTakenOutAgain) {
  ASSERT_EQ(Create(L"Single"), S_OK);
  const auto before = DumpKey(kP);
  const struct {
    const WCHAR* service;
    HRESULT result;
    FakeAnswer answer = {};
  } cases[] = {
      {L"Single", MAPI_E_COLLISION},
      {L"single", MAPI_E_NOT_FOUND},
      {L"NoFile", MAPI_E_NOT_FOUND},
      {L"NoEntry", MAPI_E_CALL_FAILED},
      {L"Outside", MAPI_E_NOT_FOUND},
      {L"One", MAPI_E_USER_CANCEL, {MAPI_E_USER_CANCEL}},
      {L"One", MAPI_E_CALL_FAILED, {S_OK, Throws::kInteger}},
      {nullptr, MAPI_E_INVALID_PARAMETER},
  };
  for (const auto& c : cases) {
    script_.answers["ServiceEntry"] = c.answer;
    EXPECT_EQ(Create(c.service), c.result);
    EXPECT_EQ(DumpKey(kP), before);
    EXPECT_EQ(ServiceNames(), Names{L"Single"});
  }
  EXPECT_EQ(services_->CreateMsgService(L"One", L"", nullptr, 0, 0, 0), MAPI_E_BAD_CHARWIDTH);
  installation_.WriteCatalogue("[Services]\r\nOne=First\r\n");
  EXPECT_EQ(Create(L"One"), MAPI_E_INVALID_PARAMETER);
}

TEST_F(ServiceAdminTest, AProfileThatCannotBeReadWholeStillReportsASingleCopy) {
  ComPtr<IABServiceAdmin> other;
  ASSERT_EQ(Create(L"Single"), S_OK);
  // Enumerated behind the good row, whose name is hexadecimal.
  WriteRegValue(kP + L"\\zz", L"bad", REG_BINARY, {});
  EXPECT_EQ(Create(L"Single"), MAPI_E_COLLISION);
  EXPECT_EQ(Create(L"One"), MAPI_E_CALL_FAILED);
  EXPECT_EQ(admin_->AdminServices(L"P", MAPI_UNICODE, other.Put()), MAPI_E_CALL_FAILED);
}

TEST_F(ServiceAdminTest, EveryFailureOfTheTableIsOneCode) {
  ComPtr<IMAPITable> table = Table();
  EXPECT_EQ(services_->GetMsgServiceTable(0, table.Put()), MAPI_E_CALL_FAILED);
  DeleteKey(kP);
  EXPECT_EQ(services_->GetMsgServiceTable(MAPI_UNICODE, table.Put()), MAPI_E_CALL_FAILED);
  EXPECT_FALSE(table);
}

TEST_F(ServiceAdminTest, DeletingTakesOneServiceAndAsksNobody) {
  const MAPIUID first = Created(L"One");
  ASSERT_EQ(Create(L"Single"), S_OK);
  const ComPtr<IProfSect> section = Section(first);
  const std::size_t calls = script_.serviceCalls.size();
  EXPECT_EQ(services_->DeleteMsgService(&first), S_OK);
  EXPECT_EQ(services_->DeleteMsgService(&first), MAPI_E_NOT_FOUND);
  EXPECT_EQ(ServiceNames(), Names{L"Single"});
  EXPECT_EQ(script_.serviceCalls.size(), calls);
  // What is gone is not made again, the profile neither.
  EXPECT_EQ(section->SaveChanges(0), MAPI_E_NOT_FOUND);
  EXPECT_EQ(SubkeyNames(kP).size(), 1u);
  ASSERT_EQ(admin_->DeleteProfile(L"P", MAPI_UNICODE), S_OK);
  EXPECT_EQ(section->SaveChanges(0), MAPI_E_NOT_FOUND);
  EXPECT_FALSE(KeyExists(kP));
}

TEST_F(ServiceAdminTest, ASectionIsACopyThatSaveChangesMergesBack) {
  const MAPIUID uid = Created(L"One");
  const auto before = DumpKey(kP);
  const ComPtr<IProfSect> section = Section(uid), other = Section(uid);
  SPropValue changes[] = {Unicode(PR_DISPLAY_NAME_W, L"New"), Unicode(kOwnText, L"own")};
  EXPECT_EQ(section->SetProps(2, changes, nullptr), S_OK);
  EXPECT_EQ(section->DeleteProps(Tags{PR_SERVICE_NAME_W}.Get(), nullptr), S_OK);
  EXPECT_EQ(DumpKey(kP), before);
  EXPECT_EQ(section->SaveChanges(0), S_OK);
  EXPECT_EQ(Text(other, PR_DISPLAY_NAME_W), L"Display");

  const ComPtr<IProfSect> again = Section(uid);
  EXPECT_EQ(Text(again, PR_DISPLAY_NAME_W), L"New");
  EXPECT_EQ(Text(again, kOwnText), L"own");
  EXPECT_EQ(Text(again, PR_SERVICE_NAME_W), L"One");
  // What a section saves is in the loaded copy of the services too.
  EXPECT_EQ(Column(Table(), PR_DISPLAY_NAME_W), Names{L"New"});

  // A section keeps its administration alive.
  services_.Reset();
  admin_.Reset();
  MapiBuffer<SPropTagArray> all;
  EXPECT_EQ(again->SaveChanges(0), S_OK);
  ASSERT_EQ(again->GetPropList(MAPI_UNICODE, all.Put()), S_OK);
  EXPECT_EQ(again->DeleteProps(all.Get(), nullptr), S_OK);
  EXPECT_EQ(again->SaveChanges(0), MAPI_E_NOT_FOUND);
}

TEST_F(ServiceAdminTest, SectionsCopyWhatIsAskedForOrNotExcluded) {
  const ComPtr<IProfSect> source = Section(Created(L"One"));
  const ComPtr<IProfSect> target = Section(Created(L"Single"));
  Tags some{PR_DISPLAY_NAME_W, PR_SERVICE_UID};
  const auto copy = [&](SPropTagArray* excluded, ULONG flags) {
    return source->CopyTo(0, nullptr, excluded, 0, nullptr, &IID_IProfSect, target.Get(), flags, nullptr);
  };
  EXPECT_EQ(source->CopyProps(some.Get(), 0, nullptr, &IID_IMAPIProp, target.Get(), 0, nullptr), S_OK);
  EXPECT_EQ(Text(target, PR_DISPLAY_NAME_W), L"Display");
  EXPECT_EQ(Text(target, PR_SERVICE_NAME_W), L"Single");
  // Exclusions are kept from the copy; all of them leave an empty list, which no section reads.
  EXPECT_EQ(copy(nullptr, 0), MAPI_E_BAD_CHARWIDTH);
  EXPECT_EQ(copy(some.Get(), MAPI_UNICODE), S_OK);
  EXPECT_EQ(Text(target, PR_SERVICE_NAME_W), L"One");
  MapiBuffer<SPropTagArray> all;
  ASSERT_EQ(source->GetPropList(MAPI_UNICODE, all.Put()), S_OK);
  EXPECT_EQ(copy(all.Get(), MAPI_UNICODE), MAPI_E_INVALID_PARAMETER);
}

TEST_F(ServiceAdminTest, ConfiguringAsksTheServiceOrWritesTheValues) {
  const MAPIUID uid = Created(L"One"), second = Created(L"Single"), unknown = FakeUid(1);
  constexpr ULONG kAsk = MAPI_UNICODE | SERVICE_UI_ALWAYS;
  SPropValue value = Unicode(PR_DISPLAY_NAME_W, L"New");
  ComPtr<IProfSect> section;
  script_.serviceCalls.clear();

  const struct {
    const MAPIUID* uid;
    ULONG flags, count;
    SPropValue* values;
    HRESULT result;
  } cases[] = {
      {&uid, 0, 1, &value, MAPI_E_BAD_CHARWIDTH},
      {&uid, MAPI_UNICODE, 0, &value, MAPI_E_INVALID_PARAMETER},
      {&unknown, MAPI_UNICODE, 1, &value, MAPI_E_NOT_FOUND},
      {&unknown, kAsk, 0, nullptr, MAPI_E_NOT_FOUND},
      {&uid, MAPI_UNICODE, 1, &value, S_OK},
  };
  for (const auto& [service, flags, count, values, result] : cases) {
    EXPECT_EQ(services_->ConfigureMsgService(service, 9, flags, count, values, section.Put()), result);
    EXPECT_FALSE(section);
  }
  EXPECT_TRUE(script_.serviceCalls.empty());
  EXPECT_EQ(Text(Section(uid), PR_DISPLAY_NAME_W), L"New");

  script_.answers["ServiceEntry"].result = MAPI_E_USER_CANCEL;
  EXPECT_EQ(services_->ConfigureMsgService(&uid, 9, kAsk, 1, &value, section.Put()), MAPI_E_USER_CANCEL);
  ASSERT_TRUE(section);
  ASSERT_EQ(script_.serviceCalls.size(), 1u);
  const FakeServiceCall& call = script_.serviceCalls[0];
  EXPECT_EQ(call.context, MSG_SERVICE_CONFIGURE);
  EXPECT_EQ(call.uiParam, 9u);
  EXPECT_EQ(call.firstTag, PR_DISPLAY_NAME_W);

  // A section brought along is the one that is used, even for another service.
  script_.answers.clear();
  script_.act = [](IProfSect* used, IOrvSupport*) { SaveText(*used, L"kept"); };
  const auto configure = [&](const MAPIUID& service, IProfSect* given) {
    IProfSect* const brought = given;
    const HRESULT hr = services_->ConfigureMsgService(&service, 9, kAsk, 0, nullptr, &given);
    EXPECT_EQ(given, brought);
    return hr;
  };
  EXPECT_EQ(configure(second, section.Get()), S_OK);
  EXPECT_EQ(Text(Section(uid), kOwnText), L"kept");
  EXPECT_EQ(Text(Section(second), kOwnText), L"(none)");
  EXPECT_EQ(section->DeleteProps(Tags{PR_SERVICE_DLL_NAME_W}.Get(), nullptr), S_OK);
  EXPECT_EQ(configure(uid, section.Get()), MAPI_E_INVALID_OBJECT);
  EXPECT_EQ(configure(uid, ComPtr<IProfSect>::Adopt(new LyingSection).Get()), MAPI_E_INVALID_OBJECT);
}

TEST_F(ServiceAdminTest, SectionsSaveAndServicesGoWhileAnEntryFunctionRuns) {
  const MAPIUID uid = Created(L"One");
  const ComPtr<IProfSect> section = Section(uid);
  // Another thread at work while the entry function waits for it under the object's lock.
  script_.act = [&](IProfSect*, IOrvSupport*) {
    std::thread([&] {
      EXPECT_EQ(section->SaveChanges(0), S_OK);
      EXPECT_EQ(services_->DeleteMsgService(&uid), S_OK);
    }).join();
  };
  EXPECT_EQ(Create(L"Single"), S_OK);
  EXPECT_EQ(ServiceNames(), Names{L"Single"});
}

TEST_F(ServiceAdminTest, TheOneShotCallTakesTheLibraryFromTheFolderGiven) {
  installation_.CopyIn(L"orv_stub.dll", L"thrower.dll");
  // What it needs lies in the current folder and beside the program, where nobody must look.
  installation_.CopyIn(L"orv_needing.dll", L"needing.dll");
  const WString& folder = installation_.Folder();
  const struct {
    WString folder;
    const WCHAR* library;
    const char* entry;
    HRESULT result;
  } cases[] = {
      {folder, L"fakeA.dll", "FakeServiceEntry", S_OK},
      {folder, L"fakeA.dll", "Other", MAPI_E_CALL_FAILED},
      {folder, L"..\\fakeA.dll", "FakeServiceEntry", MAPI_E_NOT_FOUND},
      {folder, L"..", "FakeServiceEntry", MAPI_E_NOT_FOUND},
      {WString(260, L'x'), L"fakeA.dll", "FakeServiceEntry", MAPI_E_NOT_FOUND},
      {folder, L"thrower.dll", "ThrowingServiceEntry", MAPI_E_CALL_FAILED},
      {{}, L"fakeA.dll", "FakeServiceEntry", MAPI_E_NOT_FOUND},
      {folder, L"needing.dll", "NeedingServiceEntry", MAPI_E_NOT_FOUND},
  };
  const ServiceEntryCall call{3, MAPI_UNICODE | SERVICE_UI_ALLOWED, MSG_SERVICE_INSTALL, 0, nullptr};
  for (const auto& c : cases) {
    EXPECT_EQ(CallServiceEntryOnce(c.folder, c.library, c.entry, call), c.result) << &c - cases;
  }
  installation_.CopyIn(L"orv_needed.dll", L"orv_needed.dll");
  EXPECT_EQ(CallServiceEntryOnce(folder, L"needing.dll", "NeedingServiceEntry", call), S_OK);
  EXPECT_EQ(GetModuleHandleW(L"thrower.dll"), nullptr);
  ASSERT_EQ(script_.serviceCalls.size(), 1u);
  EXPECT_EQ(script_.serviceCalls[0].context, MSG_SERVICE_INSTALL);
  EXPECT_FALSE(script_.serviceCalls[0].hasSection);
  EXPECT_TRUE(fake_.UnloadsWithUs());
}

}  // namespace
}  // namespace orv::test
