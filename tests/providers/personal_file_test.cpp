// Where a personal book lies and what becomes of it: settings, files that cannot be read, identifiers that outlive
// all of it, whole books in and out.
#include <filesystem>
#include <fstream>
#include <optional>

#include "orv/orvspi.h"
#include "platform/module.h"
#include "tests/providers/personal_fixture.h"

template <>
inline constexpr GUID orv::sdk::kIidOf<IOrvContacts> = IID_IOrvContacts;
template <>
inline constexpr GUID orv::sdk::kIidOf<IOrvContactReport> = IID_IOrvContactReport;

namespace orv::test {
namespace {

std::string FileBytes(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class PersonalFile : public PersonalTest {
 protected:
  // The number of the format stands in the header.
  void MakeNewer() {
    std::string bytes = FileBytes(Path(L"own.orvab"));
    bytes.at(63) = 99;
    installation_.WriteTextFile(L"own.orvab", bytes);
  }

  PersonalFile() {
    installation_.CopyIn(L"xhtpaba.dll", L"xhtpabA.dll");
    installation_.WriteCatalogue(
        "[Services]\nPersonalBook=Personal\n[PersonalBook]\nPR_DISPLAY_NAME=Personal\n"
        "PR_SERVICE_DLL_NAME=xhtpab%c.dll\nPR_SERVICE_ENTRY_NAME=PersonalServiceEntry\n"
        "PR_SERVICE_SUPPORT_FILES=xhtpab%c.dll\n");
  }

  // Problems that the session was told of.
  static Names Problems(Client& client) {
    const auto session = client.SessionAs<IOrvSession2>();
    sdk::RowSet rows(&OrvFreeBuffer);
    EXPECT_EQ(session->GetProblems(0, rows.Put()), S_OK);
    Names problems;
    for (ULONG i = 0; i < rows->cRows; ++i)
      problems.emplace_back(sdk::ValueView(rows->aRow[i]).Text(PR_ORV_PROBLEM_TEXT_W));
    return problems;
  }

  // A book with one entry, closed again.
  void MakeBook() { Add(Client().Open(), {{PR_DISPLAY_NAME, L"A"}, {PR_EMAIL_ADDRESS, L"1"}}); }

  void SpoilBook() {
    std::string bytes = FileBytes(Path(L"own.orvab"));
    ASSERT_GT(bytes.size(), 8192u);
    std::fill(bytes.begin() + 100, bytes.end(), '\x5A');
    installation_.WriteTextFile(L"own.orvab", bytes);
  }
};

// A stream over a text, and what was written to one.
sdk::ComPtr<IStream> StreamOf(const std::string& text) {
  sdk::ComPtr<IStream> stream;
  EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
  EXPECT_EQ(stream->Write(text.data(), static_cast<ULONG>(text.size()), nullptr), S_OK);
  EXPECT_EQ(stream->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
  return stream;
}
std::string TextIn(IStream& stream) {
  std::string text;
  char part[512];
  ULONG read = 0;
  EXPECT_EQ(stream.Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
  while (stream.Read(part, sizeof part, &read) == S_OK && read != 0) text.append(part, read);
  return text;
}

sdk::ComPtr<IOrvContacts> WholeBook(const Container& container, ULONG flags = MAPI_MODIFY) {
  sdk::ComPtr<IOrvContacts> whole;
  EXPECT_EQ(container->OpenProperty(PR_ORV_CONTACTS, &IID_IOrvContacts, 0, flags, whole.PutUnknown()), S_OK);
  return whole;
}

class Report final : public sdk::Object<IOrvContactReport> {
 public:
  HRESULT STDMETHODCALLTYPE Record(ULONG outcome, ULONGLONG line, LPCWSTR name, LPCWSTR reason) override {
    if (outcome == ORV_RECORD_REJECTED) reasons += reason;
    told.push_back(std::to_wstring(outcome) + L" " + std::to_wstring(line) + L" " + name);
    return told.size() < most ? S_OK : MAPI_E_USER_CANCEL;
  }
  HRESULT STDMETHODCALLTYPE Progress(ULONGLONG, ULONGLONG) override { return S_OK; }

  Names told;
  std::wstring reasons;
  size_t most = 100;
};

OrvBookHealth HealthOf(const Container& container) {
  OrvBookHealth health{};
  health.cbSize = sizeof health;
  EXPECT_EQ(WholeBook(container, 0)->GetHealth(0, &health), S_OK);
  return health;
}

TEST_F(PersonalFile, ABookThatCannotBeReadSaysWhy) {
  const struct {
    const wchar_t* what;
    HRESULT status;
    const wchar_t *shown, *wayOn;
  } cases[] = {
      {L"damaged", MAPI_E_CORRUPT_STORE, L"own (damaged)", L"Repair it into a new file"},
      {L"foreign", MAPI_E_INVALID_OBJECT, L"own (not an address book)", L"Name the file of a book"},
      {L"missing", MAPI_E_NOT_FOUND, L"own (file is missing)", L"bring the file back"},
      {L"newer", MAPI_E_VERSION, L"own (made by a newer version)", L"Update this program"},
      {L"held", MAPI_E_BUSY, L"own (in use)", L"try again later"},
  };
  MakeBook();
  const std::wstring file = Path(L"own.orvab"), kept = Path(L"kept.orvab");
  ASSERT_TRUE(CopyFileW(file.c_str(), kept.c_str(), FALSE));
  for (const auto& each : cases) {
    std::filesystem::remove(file);
    if (each.status == MAPI_E_INVALID_OBJECT)
      installation_.WriteTextFile(L"own.orvab", std::string(5000, 'x'));
    const bool isThere = each.status != MAPI_E_INVALID_OBJECT && each.status != MAPI_E_NOT_FOUND;
    ASSERT_EQ(isThere && !CopyFileW(kept.c_str(), file.c_str(), FALSE), false);
    if (each.status == MAPI_E_CORRUPT_STORE) SpoilBook();
    if (each.status == MAPI_E_VERSION) MakeNewer();
    std::optional<OtherProcess> holder;
    if (each.status == MAPI_E_BUSY) holder.emplace(L"book_maker.exe hold \"" + file + L"\"", L"held");
    Client client;
    const Container container = client.Open(each.shown);
    ASSERT_TRUE(container) << each.what;
    const PropList values = Props(*container.Get());
    EXPECT_EQ(values.Number(PR_ORV_BOOK_STATUS), each.status) << each.what;
    EXPECT_EQ(values.Text(PR_TRANSMITABLE_DISPLAY_NAME), L"own") << "the plain name stays";
    EXPECT_EQ(values.Number(PR_CONTAINER_FLAGS), LONGLONG{AB_RECIPIENTS | AB_UNMODIFIABLE});
    EXPECT_EQ(Shown(container), Names{});
    const Names problems = Problems(client);
    ASSERT_EQ(problems.size(), 1u) << each.what << L": told once";
    EXPECT_NE(problems[0].find(file), std::wstring::npos) << "with the file's name";
    EXPECT_NE(problems[0].find(each.wayOn), std::wstring::npos) << problems[0];
    const OrvBookHealth health = HealthOf(container);
    EXPECT_EQ(health.hrStatus, each.status) << each.what;
    EXPECT_NE(std::wstring(health.szText).find(each.wayOn), std::wstring::npos) << health.szText;
    // It comes back, and the session goes on with it.
    holder.reset();
    std::filesystem::remove(file);
    ASSERT_TRUE(CopyFileW(kept.c_str(), file.c_str(), FALSE));
    Sleep(2100);
    EXPECT_EQ(Shown(client.Open(L"own")), Names{L"A"}) << each.what;
  }
}

// Both books have the same contact, by the same UID: only the book tells their identifiers apart.
TEST_F(PersonalFile, AnotherBookInTheSamePlaceIsToldAndNeverTakenForTheFormerOne) {
  const std::wstring file = Path(L"own.orvab"), former = Path(L"former"), other = Path(L"other.orvab");
  const std::string card = "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:a\r\nFN:Ada\r\nTEL;TYPE=FAX:1\r\nEND:VCARD\r\n";
  AddService(2, other, L"Another");
  Bytes id, ofOther;
  for (const wchar_t* profile : {L"P", L"Another"}) {
    Client client(profile);
    const Container book = client.Open(profile[0] == L'P' ? L"own" : L"other");
    ASSERT_EQ(WholeBook(book)->Import(StreamOf(card).Get(), nullptr, nullptr, nullptr), S_OK);
    (id.empty() ? id : ofOther) = Ids(book).at(0);
  }
  ASSERT_TRUE(MoveFileW(file.c_str(), former.c_str()));
  const auto told = [this](Client& client, const wchar_t* text) {
    const Names problems = Problems(client);
    return std::count_if(problems.begin(), problems.end(), [&](const std::wstring& each) {
      return each.find(Path(L"own.orvab")) != each.npos && each.find(text) != each.npos;
    });
  };
  {
    // Within a session that knows which book it was.
    Client client;
    EXPECT_TRUE(client.Open(L"own (file is missing)"));
    ASSERT_TRUE(CopyFileW(other.c_str(), file.c_str(), FALSE));
    Sleep(2100);
    const Container own = client.Open(L"own (another address book)");
    ASSERT_TRUE(own);
    EXPECT_EQ(Props(*own.Get()).Number(PR_ORV_BOOK_STATUS), MAPI_E_OBJECT_CHANGED);
    EXPECT_EQ(Shown(own), Names{});
    EXPECT_EQ(told(client, L"Log on again to use it"), 1);
    EXPECT_NE(std::wstring(HealthOf(own).szText).find(L"Log on again"), std::wstring::npos);
    client.OpenEntry<IMailUser>(id, MAPI_E_NOT_FOUND);
    EXPECT_EQ(Props(*own.Get()).Number(PR_CONTAINER_FLAGS), LONGLONG{AB_RECIPIENTS | AB_UNMODIFIABLE});
  }
  {
    // The next one takes what is there, and says so once.
    Client client;
    const Container own = client.Open();
    ASSERT_TRUE(own);
    EXPECT_EQ(Shown(own), Names{L"Ada"});
    EXPECT_EQ(Ids(own), std::vector<Bytes>{ofOther});
    EXPECT_EQ(Props(*own.Get()).Number(PR_ORV_BOOK_STATUS), S_OK);
    EXPECT_EQ(told(client, L"until its file is back"), 1);
    client.OpenEntry<IMailUser>(id, MAPI_E_NOT_FOUND);
  }
  {
    Client client;
    EXPECT_TRUE(client.Open());
    EXPECT_EQ(told(client, L""), 0);
  }
  ASSERT_TRUE(MoveFileExW(former.c_str(), file.c_str(), MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(Client().Text(id), L"Ada");
}

// An empty table would let a message go to nobody.
TEST_F(PersonalFile, RowsThatCannotBeReadAreAFailure) {
  MakeBook();
  Client client;
  const Container own = client.Open();
  const Bytes list = Add(own, {{PR_DISPLAY_NAME, L"List"}}, S_OK, true);
  const auto open = client.OpenEntry<IDistList>(list);
  ASSERT_EQ(open->CopyEntries(Entries({Ids(own)[0]}).Get(), 0, nullptr, 0), S_OK);
  // So many that the next one has to read the file itself.
  std::vector<Table> tables;
  for (int i = 0; i < 8; ++i) tables.push_back(Contents(own));
  SpoilBook();
  for (IMAPIContainer* each :
       {static_cast<IMAPIContainer*>(own.Get()), static_cast<IMAPIContainer*>(open.Get())}) {
    Table table;
    ULONG count = 0;
    sdk::RowSet rows(&OrvFreeBuffer);
    ASSERT_EQ(each->GetContentsTable(MAPI_UNICODE, table.Put()), S_OK);
    EXPECT_EQ(table->GetRowCount(0, &count), MAPI_E_CORRUPT_STORE);
    EXPECT_EQ(table->QueryRows(1, 0, rows.Put()), MAPI_E_CORRUPT_STORE);
  }
  EXPECT_TRUE(client.Open(L"own (damaged)"));
  const Names problems = Problems(client);
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_NE(problems[0].find(L"Repair it into a new file"), std::wstring::npos) << problems[0];
}

TEST_F(PersonalFile, AFileThatMayOnlyBeReadIsServed) {
  MakeBook();
  const std::wstring file = Path(L"own.orvab");
  ASSERT_TRUE(SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY));
  {
    Client client;
    const Container own = client.Open();
    EXPECT_EQ(Shown(own), Names{L"A"});
    const PropList values = Props(*own.Get());
    EXPECT_EQ(values.Number(PR_CONTAINER_FLAGS), LONGLONG{AB_RECIPIENTS | AB_UNMODIFIABLE});
    EXPECT_EQ(values.Number(PR_ORV_BOOK_STATUS), S_OK);
    sdk::ComPtr<IUnknown> whole;
    EXPECT_EQ(own->OpenProperty(PR_ORV_CONTACTS, &IID_IOrvContacts, 0, MAPI_MODIFY, whole.Put()),
              MAPI_E_NO_ACCESS);
    client.OpenEntry<IMailUser>(Ids(own)[0], MAPI_E_NO_ACCESS, MAPI_MODIFY);
    EXPECT_EQ(own->DeleteEntries(Entries(Ids(own)).Get(), 0), MAPI_E_NO_ACCESS);
  }
  ASSERT_TRUE(SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL));
}

// However a path comes into the profile: through the service with and without its windows, as the text of its creator,
// past the service.
TEST_F(PersonalFile, PathsAreCheckedHoweverTheyAreGiven) {
  installation_.WriteTextFile(L"text.txt", "no book, but quite a lot of text " + std::string(4000, '.'));
  CreateDirectoryW(Path(L"folder").c_str(), nullptr);
  // What the draft of a book is called: with a folder in its place nothing can be written there.
  const std::wstring draft = L"shut.orvab." + std::to_wstring(GetCurrentProcessId()) + L".new";
  CreateDirectoryW(Path(draft).c_str(), nullptr);
  SetEnvironmentVariableW(L"ORV_TEST_BOOKS", Path(L"folder").c_str());
  SetCurrentDirectoryW(Path(L"folder").c_str());
  const struct {
    std::wstring path;
    HRESULT result;
    std::wstring stored, container;
  } cases[] = {
      {Path(L"new"), S_OK, Path(L"new"), L"new"},
      {L"here", S_OK, Path(L"folder\\here"), L"here"},
      {L"%ORV_TEST_BOOKS%\\variable", S_OK, L"%ORV_TEST_BOOKS%\\variable", L"variable"},
      {Path(L"text.txt"), MAPI_E_INVALID_OBJECT, {}, L"text (not an address book)"},
      {Path(L"folder"), MAPI_E_INVALID_OBJECT, {}, L"folder (not an address book)"},
      {Path(L"no\\such\\place"), MAPI_E_NOT_FOUND, {}, L"place (file is missing)"},
      {L"\\\\orv-no-such-server\\share\\own", MAPI_E_NOT_FOUND, {}, L"own (file is missing)"},
      {Path(std::wstring(230, L'x')),
       MAPI_E_STRING_TOO_LONG,
       {},
       std::wstring(230, L'x') + L" (cannot be read)"},
      {Path(L"shut.orvab"), MAPI_E_NO_ACCESS, {}, L"shut (no access)"},
  };
  sdk::ComPtr<IABServiceAdmin> services;
  Client client;
  ASSERT_EQ(client.Session()->AdminServices(0, services.Put()), S_OK);
  const std::string own(sizeof(MAPIUID), '\1');
  auto* uid = reinterpret_cast<MAPIUID*>(const_cast<char*>(own.data()));
  const auto configure = [&](const std::wstring& path, ULONG flags) {
    SPropValue value = Unicode(PR_ORV_BOOK_FILE_W, path.c_str());
    sdk::ComPtr<IProfSect> used;
    return services->ConfigureMsgService(uid, 0, MAPI_UNICODE | flags, 1, &value, used.Put());
  };
  for (const auto& each : cases) {
    // Every way makes its own file, where it makes one.
    const bool isGood = each.result == S_OK;
    const auto with = [&](const std::wstring& text, const wchar_t* end) {
      return isGood ? text + end : text;
    };
    EXPECT_EQ(configure(with(each.path, L"1.orvab"), SERVICE_UI_ALLOWED), each.result) << each.path;
    EXPECT_EQ(services->CreateMsgService(L"PersonalBook", L"Another", with(each.path, L"2.orvab").c_str(), 0,
                                         0, MAPI_UNICODE),
              each.result)
        << each.path;
    EXPECT_EQ(configure(with(each.path, L"3.orvab"), 0), S_OK) << "the service is not asked";
    Client later;
    const Container container = later.Open(with(each.container, L"3"));
    ASSERT_TRUE(container) << each.path;
    EXPECT_EQ(Props(*container.Get()).Number(PR_ORV_BOOK_STATUS), each.result) << each.path;
    if (!isGood) continue;
    sdk::ComPtr<IABServiceAdmin> stored;
    sdk::ComPtr<IProfSect> section;
    ASSERT_EQ(later.Session()->AdminServices(0, stored.Put()), S_OK);
    ASSERT_EQ(stored->OpenProfileSection(uid, nullptr, 0, section.Put()), S_OK);
    EXPECT_EQ(Props(*section.Get()).Text(PR_ORV_BOOK_FILE_W), each.stored + L"3.orvab");
  }
  SetCurrentDirectoryW(installation_.Folder().c_str());
}

TEST_F(PersonalFile, IdentifiersOutliveNamesProfilesAndFiles) {
  Bytes id, home;
  std::string file;
  {
    Client client;
    const Container own = client.Open();
    Add(own, {{PR_DISPLAY_NAME, L"A"}, {PR_BUSINESS_FAX_NUMBER, L"1"}, {PR_HOME_FAX_NUMBER, L"2"}});
    id = Add(own, {{PR_DISPLAY_NAME, L"B"}, {PR_EMAIL_ADDRESS, L"3"}});
    home = Ids(own)[1];
    EXPECT_EQ(Set(*client.OpenEntry<IMailUser>(id).Get(), {{PR_DISPLAY_NAME, L"Renamed"}}), S_OK);
    const auto out = StreamOf({});
    ASSERT_EQ(WholeBook(own)->Export(out.Get(), nullptr, nullptr, nullptr), S_OK);
    file = TextIn(*out.Get());
    // Gone, and there again as the file names it.
    ASSERT_EQ(own->DeleteEntries(Entries(Ids(own)).Get(), 0), S_OK);
    client.OpenEntry<IMailUser>(id, MAPI_E_NOT_FOUND);
    ASSERT_EQ(WholeBook(own)->Import(StreamOf(file).Get(), nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(client.Text(id), L"Renamed");
    EXPECT_EQ(client.Text(home, PR_EMAIL_ADDRESS), L"2");
    const auto again = StreamOf({});
    ASSERT_EQ(WholeBook(own)->Export(again.Get(), nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(TextIn(*again.Get()), file);
  }
  AddService(7, Path(L"own.orvab"), L"Another");
  Client another(L"Another");
  EXPECT_EQ(another.Text(id), L"Renamed");
  EXPECT_EQ(another.Text(home), L"A (home fax)");
}

TEST_F(PersonalFile, AWholeBookComesInAndTellsOfEveryRecord) {
  const std::string cards =
      "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:a\r\nFN:Ada\r\nTEL;TYPE=FAX:1\r\nEND:VCARD\r\n"
      "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:cut\r\n"
      "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nUID:g\r\nFN:All\r\nMEMBER:urn:uuid:a\r\nMEMBER:tel:+"
      "99\r\nEND:VCARD\r\n";
  Client client;
  const Container own = client.Open();
  const auto whole = WholeBook(own);
  const auto report = sdk::ComPtr<Report>::Adopt(new Report);
  OrvContactCounts counts{};
  OrvImportOptions options{sizeof options, ORV_FORMAT_FOUND, ORV_IMPORT_TELL_ALL | ORV_IMPORT_DRY_RUN,
                           nullptr, nullptr};
  const Names first{L"1 1 Ada", L"4 7 cut", L"1 10 All"};
  EXPECT_EQ(whole->Import(StreamOf(cards).Get(), &options, report.Get(), &counts), S_OK);
  EXPECT_EQ(report->told, first);
  EXPECT_EQ(Shown(own), Names{}) << "a trial stores nothing";
  options.ulFlags = ORV_IMPORT_TELL_ALL;
  report->told.clear();
  EXPECT_EQ(whole->Import(StreamOf(cards).Get(), &options, report.Get(), &counts), S_OK);
  EXPECT_EQ(report->told, first);
  EXPECT_EQ(counts.cRead, 3u);
  EXPECT_EQ(counts.cAdded, 2u);
  EXPECT_EQ(counts.cRejected, 1u);
  EXPECT_EQ(counts.cLists, 1u);
  EXPECT_EQ(Shown(own), (Names{L"Ada", L"All"}));
  const auto list = client.OpenEntry<IDistList>(Ids(own)[1]);
  EXPECT_EQ(Shown(list, PR_EMAIL_ADDRESS), (Names{L"1", L"+99"}));
  EXPECT_EQ(client.Text(Ids(list)[1], PR_EMAIL_ADDRESS), L"+99");
  EXPECT_EQ(whole->Import(StreamOf(cards).Get(), nullptr, nullptr, &counts), S_OK);
  EXPECT_EQ(counts.cEqual, 2u);
  // Broken off by the caller; no contact file at all.
  report->most = 1;
  EXPECT_EQ(whole->Import(StreamOf(cards).Get(), &options, report.Get(), &counts), MAPI_E_USER_CANCEL);
  EXPECT_EQ(whole->Import(StreamOf("%PDF-1.7\nnothing of the kind").Get(), nullptr, nullptr, &counts),
            MAPI_E_CORRUPT_DATA);
  EXPECT_EQ(WholeBook(own, 0)->Import(StreamOf(cards).Get(), nullptr, nullptr, nullptr), MAPI_E_NO_ACCESS);
}

// The book refuses such lists, but a file may have them.
TEST_F(PersonalFile, ListsOfAFileThatHaveEachOtherComeInAndAreExpandedOnce) {
  const std::string cards =
      "BEGIN:VCARD\nVERSION:4.0\nUID:a\nFN:Ada\nTEL;TYPE=fax:1\nEND:VCARD\n"
      "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nUID:g\nFN:One\nMEMBER:urn:uuid:g\nMEMBER:urn:uuid:h\nEND:VCARD\n"
      "BEGIN:VCARD\nVERSION:4.0\nKIND:group\nUID:h\nFN:Two\nMEMBER:urn:uuid:g\nMEMBER:urn:uuid:a\nEND:"
      "VCARD\n";
  Client client;
  const Container own = client.Open();
  OrvContactCounts counts{};
  for (const bool isAgain : {false, true}) {
    ASSERT_EQ(WholeBook(own)->Import(StreamOf(cards).Get(), nullptr, nullptr, &counts), S_OK);
    EXPECT_EQ(isAgain ? counts.cEqual : counts.cAdded, 3u);
  }
  for (const size_t list : {1u, 2u}) {
    const Bytes id = Ids(own).at(list);
    ADRLIST* const recipients = Expand(client, id);
    EXPECT_EQ(NamesIn(*recipients), Names{L"Ada"});
    OrvFreePadrlist(recipients);
    EXPECT_EQ(Set(*client.OpenEntry<IDistList>(id).Get(), {{PR_DISPLAY_NAME, L"Two"}}), S_OK);
  }
}

TEST_F(PersonalFile, DeletedEntriesComeBack) {
  Client client;
  const Container own = client.Open();
  const Bytes id = Add(own, {{PR_DISPLAY_NAME, L"A"}, {PR_EMAIL_ADDRESS, L"1"}});
  const auto list = client.OpenEntry<IDistList>(Add(own, {{PR_DISPLAY_NAME, L"List"}}, S_OK, true));
  ASSERT_EQ(list->CopyEntries(Entries({id}).Get(), 0, nullptr, 0), S_OK);
  const auto whole = WholeBook(own);
  ASSERT_EQ(own->DeleteEntries(Entries({id}).Get(), 0), S_OK);
  Table deleted;
  ASSERT_EQ(whole->GetDeletedTable(MAPI_UNICODE, deleted.Put()), S_OK);
  const std::vector<PropList> rows = Rows(*deleted.Get(), {PR_ENTRYID, PR_DISPLAY_NAME, PR_ORV_DELETED_TIME});
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(IdOf(rows[0]), id);
  EXPECT_EQ(rows[0].Text(PR_DISPLAY_NAME), L"A");
  OrvBookHealth health{};
  health.cbSize = sizeof health;
  for (const ULONG deep : {0ul, 1ul}) {
    ASSERT_EQ(whole->GetHealth(deep, &health), S_OK);
    EXPECT_EQ(health.hrStatus, S_OK) << health.szText;
    EXPECT_EQ(health.cEntries, 1u);
    EXPECT_EQ(health.cDeleted, 1u);
  }
  EXPECT_EQ(Shown(list, PR_EMAIL_ADDRESS), Names{L""});
  EXPECT_EQ(whole->RestoreEntries(Entries({id}).Get(), 0), S_OK);
  EXPECT_EQ(client.Text(id), L"A");
  EXPECT_EQ(Shown(list, PR_EMAIL_ADDRESS), Names{L"1"}) << "a member as before";
  EXPECT_EQ(whole->RestoreEntries(Entries({id}).Get(), 0), MAPI_E_NOT_FOUND);
}

TEST_F(PersonalFile, FilesAreCheckedAndRepairedWithoutASession) {
  MakeBook();
  const Module library = Module::Load(Path(L"xhtpaba.dll"));
  auto* const check = library.Find<ORVCHECKBOOK*>(ORV_CHECK_BOOK_NAME);
  auto* const repair = library.Find<ORVREPAIRBOOK*>(ORV_REPAIR_BOOK_NAME);
  OrvBookHealth health{};
  EXPECT_EQ(check(Path(L"own.orvab").c_str(), &health, nullptr), MAPI_E_INVALID_PARAMETER);
  health.cbSize = sizeof health;
  ASSERT_EQ(check(Path(L"own.orvab").c_str(), &health, nullptr), S_OK);
  EXPECT_EQ(health.hrStatus, S_OK) << health.szText;
  EXPECT_EQ(health.cEntries, 1u);
  EXPECT_GT(health.ulFormat, 0u);
  ULONGLONG saved = 0, lost = 0;
  EXPECT_EQ(repair(Path(L"own.orvab").c_str(), Path(L"own.orvab").c_str(), nullptr, &saved, &lost),
            MAPI_E_COLLISION);
  EXPECT_EQ(repair(Path(L"own.orvab").c_str(), Path(L"mended.orvab").c_str(), nullptr, &saved, &lost), S_OK);
  EXPECT_EQ(saved, 1u);
  EXPECT_EQ(lost, 0u);
  AddService(2, Path(L"mended.orvab"));
  EXPECT_EQ(Shown(Client().Open(L"mended")), Names{L"A"});
  SpoilBook();
  const auto report = sdk::ComPtr<Report>::Adopt(new Report);
  ASSERT_EQ(check(Path(L"own.orvab").c_str(), &health, report.Get()), S_OK);
  EXPECT_EQ(health.hrStatus, MAPI_E_CORRUPT_STORE);
  EXPECT_STRNE(health.szText, L"");
  EXPECT_NE(report->reasons.find(L"Repair the book into a new file."), std::wstring::npos) << report->reasons;
  // Nothing can be saved of it: no empty book that looks like it.
  EXPECT_EQ(repair(Path(L"own.orvab").c_str(), Path(L"none.orvab").c_str(), report.Get(), &saved, &lost),
            MAPI_E_CORRUPT_DATA);
  EXPECT_FALSE(std::filesystem::exists(Path(L"none.orvab")));
}

}  // namespace
}  // namespace orv::test
