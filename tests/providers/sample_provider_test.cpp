// The sample provider through its two exports, as the library calls them, with the library's own buffers and support
// object. What it leaks is alive at the end of the program.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <thread>

#include "platform/win.h"

#include <commctrl.h>

#include "hosting/open_entry.h"
#include "hosting/orv_support.h"
#include "hosting/provider_list.h"
#include "orv/orvbase.hpp"
#include "platform/faults.h"
#include "platform/identity.h"
#include "platform/module.h"
#include "props/base_prop.h"
#include "props/table_reader.h"
#include "providers/sample/resource.h"
#include "tests/props/samples.h"
#include "tests/support/dialog_driver.h"

namespace orv::test {
namespace {

using Texts = std::vector<std::wstring>;

constexpr const char* kBook =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:ada\r\nFN:Ada\r\nN:Byron;Ada;;;\r\nTEL;TYPE=FAX,WORK:+44 1\r\n"
    "EMAIL:ada@example.org\r\nADR:;;Kai 4;Hamburg;;20457;\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Bo\r\nEMAIL:bo@example.org\r\nEMAIL:bo@home\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:broken, without an end\r\n"
    "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nUID:urn:uuid:ALL\r\nFN:Everybody\r\nTEL;TYPE=FAX:5\r\n"
    "MEMBER:urn:uuid:ada\r\nMEMBER:MAILTO:Bo@Home?subject=x\r\nMEMBER:mailto:out@example.org\r\n"
    "MEMBER:nobody\r\nMEMBER:all\r\nEND:VCARD\r\n";

struct Person {
  std::string uid, name, fax, title;
};

std::string FileOf(const std::vector<Person>& people) {
  std::string file;
  for (const Person& each : people) {
    file += "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:" + each.name + "\r\nTITLE:" + each.title + "\r\n";
    if (!each.uid.empty()) file += "UID:" + each.uid + "\r\n";
    if (!each.fax.empty()) file += "TEL;TYPE=FAX:" + each.fax + "\r\n";
    file += "END:VCARD\r\n";
  }
  return file;
}

// What is written one after another, as Shown writes values.
template <class... Parts>
std::wstring Line(const Parts&... parts) {
  std::wostringstream out;
  ((out << parts << L'|'), ...);
  return out.str();
}

// Texts and numbers; nothing for bytes, "-" for an error.
std::wstring Shown(const SPropValue& value) {
  const ULONG type = PROP_TYPE(value.ulPropTag);
  if (type == PT_UNICODE) return Line(value.Value.lpszW);
  if (type == PT_LONG) return Line(value.Value.l);
  if (type == PT_MV_UNICODE) return Line(value.Value.MVszW.lppszW[0], value.Value.MVszW.cValues);
  return type == PT_ERROR ? L"-|" : L"|";
}

std::wstring Show(IMAPIProp* object, Tags tags) {
  PropValues values;
  EXPECT_TRUE(SUCCEEDED(object->GetProps(tags.Get(), MAPI_UNICODE, &values.count, values.values.Put())));
  std::wstring shown;
  for (ULONG i = 0; i < values.count; ++i) shown += Shown(values.values[i]);
  return shown;
}

// The first columns of the rows that a read gives.
Texts Read(IMAPITable& table, LONG count, ULONG flags = 0, ULONG columns = 1) {
  RowSetPtr rows;
  EXPECT_EQ(table.QueryRows(count, flags, rows.Put()), S_OK);
  Texts texts(rows ? rows->cRows : 0);
  for (ULONG i = 0; i < texts.size(); ++i) {
    for (ULONG column = 0; column < columns; ++column) texts[i] += Shown(rows->aRow[i].lpProps[column]);
  }
  return texts;
}

Bytes IdOf(const ForeignValues& values) {
  const SBinary* id = BinaryOf(values.At(0, PR_ENTRYID));
  return id != nullptr ? Bytes(id->lpb, id->lpb + id->cb) : Bytes();
}
Bytes IdOf(IMAPIProp* object) {
  PropValues values;
  EXPECT_EQ(ReadProps(*object, TagArray(PR_ENTRYID), values), S_OK);
  return IdOf(ForeignValues(values));
}

// Entry identifiers of a table's rows, in order.
std::vector<Bytes> Identifiers(const ComPtr<IMAPITable>& table) {
  TableReader reader;
  EXPECT_EQ(reader.Open(table, TagArray(PR_ENTRYID), 1000), S_OK);
  std::vector<Bytes> ids;
  while (reader.Next() == S_OK) ids.push_back(IdOf(reader.Row()));
  return ids;
}

// The settings of a service, in memory.
class Section final : public PropObject<IProfSect> {
 public:
  std::optional<std::wstring> saved;

  Section() {
    const SPropValue id[] = {Binary(PR_ENTRYID, "section")};
    EXPECT_EQ(LoadLocked(id), S_OK);
  }
  void Set(SPropValue value) { EXPECT_EQ(SetProps(1, &value, nullptr), S_OK); }
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override {
    saved = Show(this, {PR_ORV_BOOK_FILE_W});
    return S_OK;
  }

 private:
  bool Supports(REFIID iid) const override { return IsOneOf(iid, IID_IMAPIProp, IID_IProfSect); }
};

class SampleProviderTest : public testing::Test {
 protected:
  SampleProviderTest() {
    section_->Set(Unicode(PR_DISPLAY_NAME, L"My contacts"));
    section_->Set(Binary(PR_SERVICE_UID, std::string(sizeof(MAPIUID), 0x5A)));
  }
  ~SampleProviderTest() override {
    provider_.Reset();
    std::filesystem::remove(file_);
    library_ = {};
    EXPECT_EQ(GetModuleHandleW(L"sample_provider.dll"), nullptr) << "the library stays loaded";
  }

  HRESULT Open(LPALLOCATEBUFFER allocate = &OrvAllocateBuffer) {
    const auto open = library_.Find<LPABPROVIDEROPEN>(ORV_PROVIDER_OPEN_NAME);
    return open(nullptr, support_.Get(), section_.Get(), 0, MAPI_UNICODE, allocate, &OrvAllocateMore,
                &OrvFreeBuffer, provider_.Put(), 0);
  }
  // A logon of its own with this file.
  void OpenFile(const std::wstring& path) {
    section_->Set(Unicode(PR_ORV_BOOK_FILE_W, path.c_str()));
    record_ = std::make_unique<ProviderRecord>(Module(), MAPIUID());
    ASSERT_EQ(CreateSupport(list_.Get(), record_.get(), support_.Put()), S_OK);
    ASSERT_EQ(Open(), S_OK);
  }
  void OpenBook(const std::string& text = kBook) {
    std::ofstream(file_, std::ios::binary) << text;
    OpenFile(file_.wstring());
  }

  template <class Interface = IABContainer>
  ComPtr<Interface> OpenEntry(Bytes id, HRESULT expected = S_OK, ULONG type = MAPI_ABCONT) {
    ULONG found = 0;
    LPUNKNOWN object = nullptr;
    EXPECT_EQ(provider_->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<LPENTRYID>(id.data()),
                                   nullptr, 0, &found, &object),
              expected);
    EXPECT_EQ(found, SUCCEEDED(expected) ? type : 0);
    EXPECT_EQ(object == nullptr, FAILED(expected));
    return ComPtr<Interface>::Adopt(static_cast<Interface*>(object));
  }
  std::wstring ShowUser(const Bytes& id, const Tags& tags) {
    return Show(OpenEntry<IMailUser>(id, S_OK, MAPI_MAILUSER).Get(), tags);
  }
  ComPtr<IDistList> OpenEverybody() { return OpenEntry<IDistList>(ContactIds().at(2), S_OK, MAPI_DISTLIST); }

  ComPtr<IMAPITable> Contents(IMAPIContainer* container) {
    ComPtr<IMAPITable> table;
    EXPECT_EQ(container->GetContentsTable(MAPI_UNICODE, table.Put()), S_OK);
    return table;
  }
  // The one container, reached as a client reaches it: root, hierarchy table, entry.
  ComPtr<IABContainer> OpenContacts() {
    ComPtr<IMAPITable> table;
    EXPECT_EQ(
        OpenEntry(IdOf(provider_.Get()))->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put()),
        S_OK);
    const std::vector<Bytes> containers = Identifiers(table);
    EXPECT_EQ(containers.size(), 1u);
    return OpenEntry(containers.at(0));
  }
  ComPtr<IMAPITable> ContactsTable() { return Contents(OpenContacts().Get()); }
  std::vector<Bytes> ContactIds() { return Identifiers(ContactsTable()); }

  Module library_ = Module::Load(PathBeside(nullptr, L"sample_provider.dll"));
  std::filesystem::path file_ = std::filesystem::temp_directory_path() /
                                (L"sample " + std::to_wstring(GetCurrentProcessId()) + L" ü.vcf");
  ComPtr<CABServiceList> list_ = CABServiceList::Create();
  std::unique_ptr<ProviderRecord> record_;
  ComPtr<IOrvSupport> support_;
  ComPtr<Section> section_ = ComPtr<Section>::Adopt(new Section);
  ComPtr<IAddrBook> provider_;
};

TEST_F(SampleProviderTest, EntriesShowWhatTheFileSays) {
  OpenBook();
  const auto contacts = OpenContacts();
  const auto list = OpenEverybody();
  const auto members = Identifiers(Contents(list.Get())), ids = ContactIds();
  EXPECT_EQ(Show(provider_.Get(), {PR_DISPLAY_NAME, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH}),
            Line(L"My contacts", MAPI_ABCONT, AB_SUBCONTAINERS | AB_UNMODIFIABLE, 0));
  EXPECT_EQ(Show(contacts.Get(), {PR_CONTENT_COUNT, PR_ORV_SKIPPED_RECORDS, PR_CONTAINER_FLAGS,
                                  PR_ORV_BOOK_STATUS, PR_ORV_BOOK_FILE_W}),
            Line(3, 1, AB_RECIPIENTS | AB_UNMODIFIABLE, S_OK, file_.wstring()));
  // People are reached by fax before mail.
  EXPECT_EQ(ShowUser(ids.at(0), {PR_ADDRTYPE, PR_EMAIL_ADDRESS, PR_BUSINESS_FAX_NUMBER, PR_SMTP_ADDRESS,
                                 PR_CONTACT_EMAIL_ADDRESSES}),
            Line(L"FAX", L"+44 1", L"+44 1", L"ada@example.org", L"ada@example.org", 1));
  EXPECT_EQ(ShowUser(ids.at(1), {PR_ADDRTYPE, PR_EMAIL_ADDRESS, PR_TITLE}),
            Line(L"SMTP", L"bo@example.org", L"-"));
  // Lists show records and addresses and themselves; one entry has one identifier, wherever it is listed.
  EXPECT_EQ(Read(*Contents(list.Get()), 10), (Texts{L"Ada|", L"Bo|", L"out@example.org|", L"Everybody|"}));
  EXPECT_EQ((std::vector<Bytes>{members.at(0), members.at(1), members.at(3)}), ids);
  const auto outside = OpenEntry<IMailUser>(members.at(2), S_OK, MAPI_MAILUSER);
  EXPECT_EQ(Show(outside.Get(), {PR_EMAIL_ADDRESS}), L"out@example.org|");
  EXPECT_EQ(IdOf(outside.Get()), members.at(2));
  // They survive changes of the file. Groups are written in two ways, and the first record of a UID is meant.
  OpenBook(
      FileOf({{"", "New", "", ""}}) + kBook + FileOf({{"ada", "Twin", "", ""}}) +
      "BEGIN:VCARD\r\nX-ADDRESSBOOKSERVER-KIND:Group\r\nN:Old\r\nX-ADDRESSBOOKSERVER-MEMBER:urn:uuid:A\r\n "
      "da\r\nEND:VCARD\r\n");
  EXPECT_EQ(ShowUser(members.at(2), {PR_DISPLAY_NAME}), L"out@example.org|");
  const auto old = OpenEntry<IDistList>(ContactIds().at(4), S_OK, MAPI_DISTLIST);
  EXPECT_EQ(Read(*Contents(old.Get()), 10), Texts{L"Ada|"});
  OpenBook(FileOf({{"", "New", "", ""}}));
  OpenEntry(members.at(2), MAPI_E_NOT_FOUND);
}

// Clients keep identifiers for years: the bytes are a stored format.
TEST_F(SampleProviderTest, IdentifiersAreMadeOfUidKindPlaceAndKey) {
  OpenBook();
  const auto ids = ContactIds();
  const auto tail = [](const Bytes& id) { return Bytes(id.begin() + 20, id.end()); };
  EXPECT_EQ(tail(ids.at(0)), (Bytes{2, 0, 0, 0, 0, 0, 0, 0, 0x3B, 0xE1, 0x30, 0x05, 0x19, 0xC0, 0x0B, 0xE7}));
  EXPECT_EQ(tail(ids.at(1)), (Bytes{2, 0, 0, 0, 1, 0, 0, 0, 0x89, 0xC9, 0x25, 0xFD, 0x27, 0xDE, 0x54, 0x0C}));
  // The library routes by what the provider registered.
  const auto* uid = reinterpret_cast<const MAPIUID*>(ids.at(0).data() + ORV_ENTRYID_UID_OFFSET);
  EXPECT_TRUE(record_->Registered().Has(*uid));
  EXPECT_EQ(uid->ab[15], 0x5A);
}

TEST_F(SampleProviderTest, TablesAndDirectoriesAreServedAsCardsAre) {
  for (const char* book :
       {"name;fax;e-mail\nAda;1;\nBo;;b@x\n",
        "version: 1\n\ndn: cn=Ada\ncn: Ada\nsn: Ada\nfax: 1\n\ndn: cn=Bo\ncn: Bo\nmail: b@x\n"}) {
    OpenBook(book);
    const auto table = ContactsTable();
    ASSERT_EQ(table->SetColumns(Tags{PR_DISPLAY_NAME, PR_ADDRTYPE, PR_EMAIL_ADDRESS}.Get(), 0), S_OK);
    EXPECT_EQ(Read(*table, 9, 0, 3), (Texts{L"Ada|FAX|1|", L"Bo|SMTP|b@x|"})) << book;
  }
}

TEST_F(SampleProviderTest, EntriesComeAsPeopleLookForThem) {
  OpenBook("name;fax\nZoe;1\nbo;2\n\xC3\x96zil;3\nBo;4\nOtto;5\nAda;6\n");
  EXPECT_EQ(Read(*ContactsTable(), 9), (Texts{L"Ada|", L"bo|", L"Bo|", L"Otto|", L"Özil|", L"Zoe|"}));
}

TEST_F(SampleProviderTest, ListsNameTheirMembersInEveryWay) {
  OpenBook(FileOf({{"u", "Ada", "+44 1", ""}, {"", "Bo", "2", ""}}) +
           "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nFN:Everybody\r\nMEMBER:tel:+441\r\nMEMBER:Bo\r\n"
           "MEMBER:tel:+33 7\r\nMEMBER:urn:uuid:U\r\nMEMBER:Cy\r\nEND:VCARD\r\n");
  const auto members = Contents(OpenEverybody().Get());
  ASSERT_EQ(members->SetColumns(Tags{PR_DISPLAY_NAME, PR_ADDRTYPE, PR_EMAIL_ADDRESS}.Get(), 0), S_OK);
  EXPECT_EQ(Read(*members, 9, 0, 3),
            (Texts{L"Ada|FAX|+44 1|", L"Bo|FAX|2|", L"+33 7|FAX|+33 7|", L"Ada|FAX|+44 1|"}));
}

TEST_F(SampleProviderTest, BooksThatCannotBeReadLogOnEmptyAndSayWhy) {
  const std::wstring noContacts = file_.wstring() + L".txt", empty = file_.wstring() + L".empty";
  std::ofstream(std::filesystem::path(noContacts)) << "just a text\n";
  std::ofstream(std::filesystem::path(empty)).close();
  const std::pair<std::wstring, HRESULT> cases[] = {{L"", S_OK},
                                                    {file_.wstring() + L".gone", MAPI_E_NOT_FOUND},
                                                    {L"C:\\windows", MAPI_E_DISK_ERROR},
                                                    {noContacts, MAPI_E_CORRUPT_DATA},
                                                    {empty, MAPI_E_CORRUPT_DATA}};
  OpenBook();
  const Bytes ada = ContactIds().at(0);
  for (const auto& [file, status] : cases) {
    OpenFile(file);
    EXPECT_EQ(Show(OpenContacts().Get(), {PR_CONTENT_COUNT, PR_ORV_BOOK_STATUS}), Line(0, status));
    const std::wstring shown = Show(OpenContacts().Get(), {PR_DISPLAY_NAME}),
                       plain = Show(OpenContacts().Get(), {PR_TRANSMITABLE_DISPLAY_NAME});
    // Behind the plain name stands the reason, in words.
    EXPECT_EQ(shown.find(plain.substr(0, plain.size() - 1)), 0u) << file.c_str();
    EXPECT_EQ(shown.size() > plain.size() + 5, FAILED(status)) << shown.c_str();
    EXPECT_EQ(Read(*ContactsTable(), 5), Texts{});
    OpenEntry(ada, MAPI_E_NOT_FOUND);
    // It could not be chosen either.
    const auto entry = library_.Find<LPORVSERVICEENTRY>("SampleServiceEntry");
    SPropValue path = Unicode(PR_ORV_BOOK_FILE_W, file.c_str());
    EXPECT_EQ(entry(nullptr, 0, MAPI_UNICODE, MSG_SERVICE_CONFIGURE, 1, &path, section_.Get(), nullptr, 0),
              status);
  }
  std::filesystem::remove(noContacts);
  std::filesystem::remove(empty);
}

// The lines of a report list of two columns, cells and lines set apart by bars.
std::wstring LinesOf(DialogScript& script, HWND list) {
  std::wstring lines;
  const LRESULT count = script.Send(list, LVM_GETITEMCOUNT);
  for (int cell = 0; cell < 2 * count; ++cell) {
    wchar_t text[100] = L"";
    LVITEMW item{};
    item.iSubItem = cell % 2;
    item.pszText = text;
    item.cchTextMax = static_cast<int>(std::size(text));
    script.Send(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(cell / 2), reinterpret_cast<LPARAM>(&item));
    lines.append(text).append(L"|");
  }
  return lines;
}

TEST_F(SampleProviderTest, DetailsShowWhatIsKnownAndNothingToChange) {
  OpenBook();
  const auto ids = ContactIds();
  const struct {
    size_t entry;
    std::wstring name, lines;
  } kCases[] = {
      {0, L"Ada", L"Fax|+44 1|E-mail|ada@example.org|Address|Kai 4||20457 Hamburg|"},
      {1, L"Bo", L"E-mail|bo@example.org|E-mail|bo@home|"},
      {2, L"Everybody", L"Fax|5|Members|Ada||Bo||out@example.org||Everybody|"},
  };
  for (const auto& [entry, name, lines] : kCases) {
    Bytes id = ids.at(entry);
    ULONG_PTR owner = 0;
    DialogDriver driver([&name = name, &lines = lines](DialogScript& script) {
      const HWND window = script.NextDialog();
      EXPECT_EQ(WindowText(window), name);
      EXPECT_EQ(LinesOf(script, GetDlgItem(window, IDC_FACTS)), lines);
      script.Close(window, IDCANCEL);
    });
    EXPECT_EQ(
        provider_->Details(&owner, nullptr, nullptr, static_cast<ULONG>(id.size()),
                           reinterpret_cast<LPENTRYID>(id.data()), nullptr, nullptr, nullptr, DIALOG_MODAL),
        S_OK);
  }
}

TEST_F(SampleProviderTest, LogonFailsOnlyWhereNothingCouldBeRouted) {
  OpenBook();
  EXPECT_EQ(Open(nullptr), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(Open(), MAPI_E_COLLISION);
  section_->Set(Binary(PR_SERVICE_UID, std::string(15, 'x')));
  EXPECT_EQ(Open(), MAPI_E_INVALID_OBJECT);
}

TEST_F(SampleProviderTest, PositionsFollowSeeksAndReads) {
  OpenBook();
  const auto table = ContactsTable();
  const std::wstring ada = L"Ada|", bo = L"Bo|", all = L"Everybody|";
  const struct {
    BOOKMARK origin;
    LONG seek, moved, read;
    Texts names;
    ULONG position;
  } steps[] = {
      {BOOKMARK_BEGINNING, 0, 0, 2, {ada, bo}, 2},
      {BOOKMARK_CURRENT, 0, 0, 5, {all}, 3},
      {BOOKMARK_END, 0, 0, -2, {bo, all}, 1},
      {BOOKMARK_CURRENT, 0, 0, -9, {ada}, 0},
      {BOOKMARK_BEGINNING, 100, 3, -1, {all}, 2},
      {BOOKMARK_CURRENT, -100, -2, MAXLONG, {ada, bo, all}, 3},
      {BOOKMARK_END, -1, -1, -MAXLONG - 1, {ada, bo}, 0},
  };
  for (const auto& step : steps) {
    SCOPED_TRACE(&step - steps);
    LONG moved = 99;
    ULONG row = 99, numerator = 99, denominator = 99;
    EXPECT_EQ(table->SeekRow(step.origin, step.seek, &moved), S_OK);
    EXPECT_EQ(moved, step.moved);
    EXPECT_EQ(Read(*table, step.read), step.names);
    EXPECT_EQ(table->QueryPosition(&row, &numerator, &denominator), S_OK);
    EXPECT_EQ(row, step.position);
    EXPECT_EQ(denominator, 3u);
  }
  EXPECT_EQ(table->SeekRow(3, 0, nullptr), MAPI_E_INVALID_BOOKMARK);
  EXPECT_EQ(table->SeekRowApprox(2, 3), S_OK);
  for (int twice = 0; twice < 2; ++twice) EXPECT_EQ(Read(*table, 1, TBL_NOADVANCE), Texts{all});
  RowSetPtr rows;
  EXPECT_EQ(table->QueryRows(0, 0, rows.Put()), MAPI_E_INVALID_PARAMETER);
}

TEST_F(SampleProviderTest, ColumnsComeAsAskedFor) {
  OpenBook("BEGIN:VCARD\r\nVERSION:3.0\r\nN:Byron;Ada;;;\r\nTEL;TYPE=FAX:1\r\nEND:VCARD\r\n" +
           std::string(kBook));
  const auto table = ContactsTable();
  EXPECT_EQ(Read(*table, 2, TBL_NOADVANCE), (Texts{L"Ada|", L"Ada Byron|"}));
  Tags tags{PR_SURNAME, PR_NULL, PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_ADDRTYPE)), PR_EMAIL_ADDRESS};
  ASSERT_EQ(table->SetColumns(tags.Get(), 0), S_OK);
  EXPECT_EQ(Read(*table, 9, 0, 4),
            (Texts{L"Byron||FAX|+44 1|", L"Byron||FAX|1|", L"-||SMTP|bo@example.org|", L"-||MAPIPDL|-|"}));
  MapiBuffer<SPropTagArray> columns;
  ASSERT_EQ(table->QueryColumns(0, columns.Put()), S_OK);
  EXPECT_EQ(List(columns.Get()), List(tags.Get()));
  EXPECT_EQ(table->SetColumns(Tags{}.Get(), 0), MAPI_E_INVALID_PARAMETER);
}

TEST_F(SampleProviderTest, AnIdentifierNeverOpensAnotherPerson) {
  const Person bo{"", "Bo", "1", "a"}, namesake{"", "Bo", "2", "b"}, twin{"", "Bo", "1", "c"};
  const Person ada{"u", "Ada", "1", "a"}, eve{"u", "Eve", "2", "b"}, other{"", "Cy", "", "c"};
  const struct {
    const char* what;
    std::vector<Person> before;
    size_t asked;  // of those before
    std::vector<Person> after;
    const wchar_t* title;  // of who is opened then; null: nobody
  } cases[] = {
      {"moved", {bo}, 0, {other, bo}, L"a"},
      {"deleted", {bo, other}, 0, {other}, nullptr},
      {"namesake stays", {bo, namesake}, 0, {namesake}, nullptr},
      {"namesake takes the place", {bo}, 0, {namesake}, nullptr},
      {"renamed without UID", {bo}, 0, {{"", "Bob", "1", "a"}}, nullptr},
      {"renamed with UID", {ada}, 0, {other, {"u", "Ada B.", "1", "a"}}, L"a"},
      {"other number with UID", {ada}, 0, {{"u", "Ada", "3", "n"}}, L"n"},
      {"other title", {bo}, 0, {{"", "Bo", "1", "n"}}, L"n"},
      {"one of two with one UID goes", {ada, eve}, 0, {eve}, nullptr},
      {"one of two with one UID stays", {ada, eve}, 0, {other, ada}, L"a"},
      {"a second with the UID comes", {ada}, 0, {ada, eve}, nullptr},
      {"twins", {bo, twin}, 0, {bo, twin}, L"a"},
      {"one of twins goes", {bo, twin}, 0, {twin}, nullptr},
      {"twins like one another", {bo, bo}, 0, {bo, bo}, nullptr},
      {"a twin comes", {bo}, 0, {bo, twin}, nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    OpenBook(FileOf(c.before));
    const Bytes id = ContactIds().at(c.asked);
    OpenBook(FileOf(c.after));
    if (c.title == nullptr) {
      OpenEntry(id, MAPI_E_NOT_FOUND);
    } else {
      EXPECT_EQ(ShowUser(id, {PR_TITLE}), Line(c.title));
    }
  }
}

TEST_F(SampleProviderTest, ForeignIdentifiersAreRefused) {
  OpenBook();
  const Bytes good = ContactIds().at(0);
  const auto changed = [&](size_t at, BYTE by, BYTE kind) {
    Bytes id = good;
    id[at] ^= by;
    id[20] = kind;
    return id;
  };
  for (size_t size = 1; size < good.size(); ++size) {
    OpenEntry({good.data(), good.data() + size}, MAPI_E_INVALID_ENTRYID);
  }
  OpenEntry(changed(4, 1, 2), MAPI_E_INVALID_ENTRYID);
  for (const BYTE kind : {BYTE{3}, BYTE{4}, BYTE{255}}) OpenEntry(changed(30, 1, kind), MAPI_E_NOT_FOUND);
  const auto compare = [&](Bytes one, Bytes other) {
    ULONG same = 9;
    const HRESULT hr = provider_->CompareEntryIDs(36, reinterpret_cast<LPENTRYID>(one.data()),
                                                  static_cast<ULONG>(other.size()),
                                                  reinterpret_cast<LPENTRYID>(other.data()), 0, &same);
    return std::pair(hr, same);
  };
  EXPECT_EQ(compare(good, good), std::pair(S_OK, 1ul));
  EXPECT_EQ(compare(good, changed(30, 1, 2)), std::pair(S_OK, 0ul));
  EXPECT_EQ(compare(good, Bytes(19)), std::pair(MAPI_E_UNKNOWN_ENTRYID, 9ul));
}

TEST_F(SampleProviderTest, InterfacesAndFlagsAreChecked) {
  OpenBook();
  ULONG type = 77;
  LPUNKNOWN object = nullptr;
  const auto root = OpenEntry({});
  ComPtr<IMAPITable> table;
  PropValues values;
  const std::pair<HRESULT, HRESULT> answers[] = {
      {provider_->OpenEntry(36, nullptr, nullptr, 0, &type, &object), MAPI_E_INVALID_ENTRYID},
      {provider_->OpenEntry(0, nullptr, &IID_IMailUser, 0, &type, &object), MAPI_E_INTERFACE_NOT_SUPPORTED},
      {provider_->OpenEntry(0, nullptr, nullptr, MAPI_MODIFY, &type, &object), MAPI_E_NO_ACCESS},
      {root->GetContentsTable(MAPI_UNICODE, table.Put()), MAPI_E_NO_SUPPORT},
      {root->GetHierarchyTable(0, table.Put()), MAPI_E_BAD_CHARWIDTH},
      {root->OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPIProp, 0, 0, &object),
       MAPI_E_INTERFACE_NOT_SUPPORTED},
      {root->GetProps(nullptr, 0, &values.count, values.values.Put()), MAPI_E_BAD_CHARWIDTH},
      {root->GetProps(Tags{}.Get(), MAPI_UNICODE, &values.count, values.values.Put()),
       MAPI_E_INVALID_PARAMETER},
  };
  for (const auto& answer : answers) EXPECT_EQ(answer.first, answer.second) << &answer - answers;
  EXPECT_EQ(type, 77u);
  EXPECT_EQ(object, nullptr);
  ASSERT_EQ(root->OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, &object), S_OK);
  object->Release();
}

TEST_F(SampleProviderTest, CopiesAreTheLibrarysWork) {
  OpenBook();
  const auto list = OpenEverybody();
  EXPECT_EQ(
      list->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IProfSect, section_.Get(), MAPI_UNICODE, nullptr),
      S_OK);
  EXPECT_EQ(Show(section_.Get(), {PR_DISPLAY_NAME}), L"Everybody|");
  EXPECT_EQ(OpenContacts()->CopyProps(Tags{PR_DISPLAY_NAME}.Get(), 0, nullptr, &IID_IProfSect, section_.Get(),
                                      MAPI_UNICODE, nullptr),
            S_OK);
  EXPECT_EQ(Show(section_.Get(), {PR_DISPLAY_NAME}), Line(file_.stem().wstring()));
}

TEST_F(SampleProviderTest, RecipientsGetWhatIsAskedForAndKeepWhatTheyHave) {
  OpenBook();
  const Bytes ada = ContactIds().at(0), foreign(36);
  Tags tags{PR_DISPLAY_NAME, PR_TITLE};
  const struct {
    const BYTE* id;  // null: a value of bytes without them
    ULONG given;     // values: identifier, type, and one of a type that cannot be copied
    std::wstring shown;
  } cases[] = {{ada.data(), 2, L"Ada|-||2|"},
               {foreign.data(), 2, L"|2|"},
               {ada.data(), 3, L"|2||"},
               {nullptr, 2, L"|2|"}};
  for (const auto& c : cases) {
    MapiBuffer<SPropValue> given;
    ASSERT_EQ(given.AllocateArray(3), S_OK);
    given[0] = Binary(PR_ENTRYID, c.id, 36);
    given[1] = Long(PR_RECIPIENT_TYPE, MAPI_CC);
    given[2] = String8(PR_DISPLAY_NAME_A, "narrow");
    ADRLIST list{1, {{0, c.given, given.Detach()}}};
    EXPECT_EQ(provider_->PrepareRecips(0, tags.Get(), &list), S_OK);
    const MapiBuffer<SPropValue> owner(list.aEntries[0].rgPropVals);
    std::wstring shown;
    for (ULONG i = 0; i < list.aEntries[0].cValues; ++i) shown += Shown(owner[i]);
    EXPECT_EQ(shown, c.shown);
  }
  ADRLIST empty{}, lying{1, {{0, 5, nullptr}}};
  EXPECT_EQ(provider_->PrepareRecips(0, tags.Get(), &empty), S_OK);
  EXPECT_EQ(provider_->PrepareRecips(0, tags.Get(), &lying), S_OK);
  EXPECT_EQ(lying.aEntries[0].rgPropVals, nullptr);
}

TEST_F(SampleProviderTest, ServiceEntryStoresTheFile) {
  std::ofstream(file_, std::ios::binary) << kBook;
  const std::wstring good = file_.wstring();
  const SPropValue none = Value(PR_NULL);  // no value at all
  const struct {
    ULONG context, flags;
    SPropValue value;
    HRESULT result;
    std::optional<std::wstring> saved;
  } cases[] = {
      {MSG_SERVICE_INSTALL, SERVICE_UI_ALLOWED, none, S_OK, {}},
      {MSG_SERVICE_PROVIDER_CREATE, 0, none, MAPI_E_NO_SUPPORT, {}},
      {ORV_SERVICE_EXTRA_CONFIG, 0, Unicode(0, good.c_str()), S_OK, good + L'|'},
      {ORV_SERVICE_EXTRA_CONFIG, 0, Unicode(0, L"C:\\windows"), MAPI_E_DISK_ERROR, {}},
      {ORV_SERVICE_EXTRA_CONFIG, 0, Unicode(0, nullptr), MAPI_E_INVALID_PARAMETER, {}},
      {ORV_SERVICE_EXTRA_CONFIG, 0, none, MAPI_E_INVALID_PARAMETER, {}},
      {MSG_SERVICE_CONFIGURE, 0, Unicode(PR_ORV_BOOK_FILE_W, good.c_str()), S_OK, good + L'|'},
      {MSG_SERVICE_CONFIGURE, 0, Unicode(PR_ORV_BOOK_FILE_W, L""), S_OK, L"|"},
      {MSG_SERVICE_CONFIGURE, SERVICE_UI_ALLOWED, none, S_OK, {}},
      {MSG_SERVICE_CONFIGURE, SERVICE_UI_ALWAYS, none, MAPI_E_USER_CANCEL, {}},
  };
  const auto entry = library_.Find<LPORVSERVICEENTRY>("SampleServiceEntry");
  const auto call = [&](ULONG context, ULONG flags, SPropValue value) {
    const ULONG count = value.ulPropTag == PR_NULL ? 0 : 1;
    return entry(nullptr, 0, MAPI_UNICODE | flags, context, count, count != 0 ? &value : nullptr,
                 section_.Get(), nullptr, 0);
  };
  for (const auto& c : cases) {
    section_->saved.reset();
    // The window that comes up is cancelled.
    const DialogDriver driver({});
    EXPECT_EQ(call(c.context, c.flags, c.value), c.result) << &c - cases;
    EXPECT_EQ(section_->saved, c.saved) << &c - cases;
  }
  // In the window the file is chosen.
  {
    section_->saved.reset();
    DialogDriver driver([&](DialogScript& script) {
      constexpr int kFileName = 0x47C;
      const HWND box = script.NextDialog();
      script.Send(GetDlgItem(box, kFileName), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(good.c_str()));
      script.Close(box, IDOK);
    });
    EXPECT_EQ(call(MSG_SERVICE_CONFIGURE, SERVICE_UI_ALWAYS, none), S_OK);
    EXPECT_EQ(section_->saved, good + L'|');
  }
  // Where the caller stands now is not where the session will stand.
  const auto former = std::filesystem::current_path();
  std::filesystem::current_path(file_.parent_path());
  EXPECT_EQ(call(ORV_SERVICE_EXTRA_CONFIG, 0, Unicode(0, file_.filename().c_str())), S_OK);
  std::filesystem::current_path(former);
  EXPECT_EQ(section_->saved, good + L'|');
}

TEST_F(SampleProviderTest, EveryFailingAllocationIsReportedAndLeaksNothing) {
  OpenBook();
  const auto contacts = OpenContacts();
  const auto table = Contents(contacts.Get());
  const auto readAll = [&] {
    RowSetPtr rows;
    PropValues values;
    MapiBuffer<SPropTagArray> tags;
    HRESULT hr = table->QueryRows(10, TBL_NOADVANCE, rows.Put());
    if (SUCCEEDED(hr)) hr = contacts->GetProps(nullptr, MAPI_UNICODE, &values.count, values.values.Put());
    if (SUCCEEDED(hr)) hr = contacts->GetPropList(MAPI_UNICODE, tags.Put());
    for (ULONG i = 0; tags && i < tags->cValues; ++i)
      EXPECT_EQ(values.values[i].ulPropTag, tags->aulPropTag[i]);
    EXPECT_EQ(tags ? tags->cValues : 0, SUCCEEDED(hr) ? values.count : 0);
    return hr;
  };
  const long blocks = faults::LiveTaskBlocks();
  size_t nth = 0;
  do {
    faults::Arm(faults::Site::kTaskAllocation, ++nth);
    const HRESULT hr = readAll();
    EXPECT_EQ(hr, faults::Fired(faults::Site::kTaskAllocation) ? MAPI_E_NOT_ENOUGH_MEMORY : S_OK);
    EXPECT_EQ(faults::LiveTaskBlocks(), blocks);
  } while (faults::Fired(faults::Site::kTaskAllocation));
  EXPECT_GT(nth, 5u);
  faults::Arm(faults::Site::kTaskAllocation, 0);
}

TEST_F(SampleProviderTest, ThreadsShareATableWithoutLosingRows) {
  OpenBook(FileOf(std::vector<Person>(400, {"", "P", "", ""})));
  const auto table = ContactsTable();
  std::atomic<int> read = 0;
  std::vector<std::thread> threads(4);
  for (std::thread& thread : threads) {
    thread = std::thread([&] {
      while (Read(*table, 1).size() == 1) ++read;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(read, 400);
}

}  // namespace
}  // namespace orv::test
