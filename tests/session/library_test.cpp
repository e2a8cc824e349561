// The library as it is delivered: loaded under its names, with and without its companion, entered through its
// exports, called by providers of another module, unloaded.
#include "platform/process.h"
#include "tests/session/session_fixture.h"
#include "tests/support/process_probe.h"

namespace orv::test {
namespace {

class Library : public testing::Test {
 protected:
  ~Library() override { Unload(); }

  void Load(const WString& name = L"xhtaba.dll") {
    Unload();
    installation_.CopyIn(L"xhtaba.dll", name);
    path_ = installation_.Path(name);
    library_ = Module::Load(path_);
    ASSERT_TRUE(library_);
    // The stored rows below are written for the model of this name.
    process::SetInstance(library_.Get());
  }

  // With a profile of one provider.
  void Begin() {
    Load();
    StoreProfile(L"P", {provider_.row});
  }
  // True when that was the last of it.
  bool Unload() {
    process::SetInstance(nullptr);
    Module(std::move(library_));
    return path_.empty() || GetModuleHandleW(path_.c_str()) == nullptr;
  }

  HRESULT Open(ComPtr<IOrvSession>& session, ULONG_PTR context = 0, IAddrBook** book = nullptr) {
    const auto open = library_.Find<LPORVOPEN>("OrvOpen");
    return open(0, L"P", MAPI_UNICODE, nullptr, nullptr, nullptr, book, session.Put(), context);
  }

  RedirectedRegistry registry_;
  // Its own library has no model: only the folder is wanted.
  Installation installation_{L"anchor.dll"};
  Module library_;
  WString path_;
  FakeLog log_;
  Provider provider_{installation_, 1, &log_};
};

TEST_F(Library, LendsProvidersItsResourceLibraryAndFreesItWithItself) {
  installation_.CopyIn(L"XHTFCAUS.dll", L"XHTFCAUS.dll");
  Begin();
  ComPtr<IOrvSession> session;
  ASSERT_EQ(Open(session), S_OK);
  const WString companion = installation_.Path(L"XHTFCAUS.dll");
  const HINSTANCE resources = provider_.script.opened.resources;
  ASSERT_NE(resources, nullptr);
  EXPECT_EQ(resources, GetModuleHandleW(companion.c_str()));
  EXPECT_NE(FindResourceW(resources, MAKEINTRESOURCEW(255), MAKEINTRESOURCEW(5)), nullptr);  // a dialog
  session.Reset();
  EXPECT_TRUE(Unload());
  EXPECT_EQ(GetModuleHandleW(companion.c_str()), nullptr);
  EXPECT_TRUE(provider_.library.UnloadsWithUs());
}

TEST_F(Library, AttachesWithoutItsResourceLibraryAndKeepsTheFirstCallerContext) {
  Begin();
  const auto open = library_.Find<LPORVOPEN>("OrvOpen");
  const auto administer = library_.Find<LPORVADMINPROFILES>("OrvAdminProfiles");
  // Kept from a refused call too, but zero is none.
  EXPECT_EQ(open(0, L"P", MAPI_USE_DEFAULT, nullptr, nullptr, nullptr, nullptr, nullptr, 0),
            MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(administer(MAPI_UNICODE, nullptr, 5), MAPI_E_INVALID_PARAMETER);
  ComPtr<IOrvSession> session;
  ASSERT_EQ(Open(session, 6), S_OK);
  EXPECT_EQ(provider_.script.opened.callerContext, 5u);
  EXPECT_EQ(provider_.script.opened.resources, nullptr);
  session.Reset();
  EXPECT_TRUE(Unload());
}

TEST_F(Library, ServesTheModelOfItsName) {
  Load(L"XHTABB.DLL");
  StoreProfile(L"P", {});
  ComPtr<IOrvSession> session;
  EXPECT_EQ(Open(session), S_OK);
  EXPECT_TRUE(KeyExists(L"Software\\Tovan\\Velmora\\VX200 series\\Orv Profiles\\P"));
  session.Reset();
  // The profile belongs to the other model.
  Load();
  EXPECT_EQ(Open(session), MAPI_E_LOGON_FAILED);
  Load(L"nomodel.dll");
  EXPECT_EQ(Open(session), MAPI_E_CALL_FAILED);
}

TEST_F(Library, StopsExceptionsOfAnotherModuleButAtTheLogon) {
  Begin();
  provider_.script.keepsSupport = true;
  ComPtr<IOrvSession> session;
  ComPtr<IAddrBook> book;
  ASSERT_EQ(Open(session, 0, book.Put()), S_OK);
  auto support = ComPtr<IOrvSupport>::Adopt(std::exchange(provider_.script.keptSupport, nullptr));
  std::vector<BYTE> id = provider_.script.EntryId("x");
  ULONG type = 0;
  ComPtr<IUnknown> object;
  const auto openEntry = [&] {
    return book->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<ENTRYID*>(id.data()), nullptr, 0,
                           &type, object.Put());
  };
  ASSERT_EQ(openEntry(), S_OK);
  for (const char* operation : {"OpenEntry", "Object:GetProps"})
    provider_.script.answers[operation] = {S_OK, Throws::kInteger};
  const IID* const iid = &IID_IMailUser;
  EXPECT_EQ(support->DoCopyProps(iid, object.Get(), Tags{PR_COMMENT_W}.Get(), 0, nullptr, iid, object.Get(),
                                 0, nullptr),
            MAPI_E_CALL_FAILED);
  EXPECT_EQ(openEntry(), MAPI_E_CALL_FAILED);
  support.Reset();
  book.Reset();
  session.Reset();
  provider_.script.answers["ABProviderOpen"] = {S_OK, Throws::kRuntimeError};
  EXPECT_THROW(Open(session), std::runtime_error);
  EXPECT_FALSE(session);
  EXPECT_TRUE(Unload());
}

// The provider is loaded and freed at every logon, and reads its file.
TEST_F(Library, LogonsWithTheSampleProviderLeaveNothing) {
  Load();
  installation_.CopyIn(L"sample_provider.dll", L"sample.dll");
  installation_.WriteTextFile(L"book.vcf", "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ada\r\nEND:VCARD\r\n");
  const WString book = installation_.Path(L"book.vcf");
  const SPropValue values[] = {Binary(PR_SERVICE_UID, std::string(sizeof(MAPIUID), 'u')),
                               Unicode(PR_SERVICE_DLL_NAME_W, L"sample.dll"),
                               String8(PR_SERVICE_ENTRY_NAME, "SampleServiceEntry"),
                               Unicode(PR_ORV_BOOK_FILE_W, book.c_str())};
  RowList rows;
  ASSERT_EQ(rows.Add({0, std::size(values), const_cast<SPropValue*>(values)}, 0), S_OK);
  ASSERT_EQ(registry_store::SaveServiceRows(rows, L"P"), S_OK);
  EXPECT_EQ(LeftEveryTime([&] {
              for (int i = 0; i < 60; ++i) {
                ComPtr<IOrvSession> session;
                EXPECT_EQ(Open(session), S_OK);
              }
            }),
            "");
}

}  // namespace
}  // namespace orv::test
