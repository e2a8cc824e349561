// The sample provider through its two exports, as the library calls them, with the library's own buffers.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <thread>

#include "hosting/open_entry.h"
#include "orv/orvbase.hpp"
#include "platform/faults.h"
#include "platform/module.h"
#include "props/base_prop.h"
#include "props/table_reader.h"

namespace orv::test {
namespace {

using Bytes = std::vector<BYTE>;
using Texts = std::vector<std::wstring>;

constexpr const char* kBook =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:ada\r\nFN:Ada\r\nN:Byron;Ada;;;\r\nTEL;TYPE=FAX,WORK:+44 1\r\n"
    "EMAIL:ada@example.org\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Bo\r\nEMAIL:bo@example.org\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:broken, without an end\r\n"
    "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nUID:all\r\nFN:Everybody\r\nMEMBER:ada\r\n"
    "MEMBER:mailto:bo@example.org\r\nMEMBER:mailto:out@example.org\r\nMEMBER:nobody\r\nMEMBER:all\r\nEND:"
    "VCARD\r\n";

// The settings of a service, in memory. A test may put an answer of its own in the place of GetProps.
class Section final : public PropObject<IProfSect> {
 public:
  std::optional<std::wstring> saved;
  std::function<HRESULT(ULONG* count, LPSPropValue* values)> answer;

  void SetText(ULONG tag, std::wstring text) {
    SPropValue value{tag, 0, {}};
    value.Value.lpszW = text.data();
    EXPECT_EQ(SetProps(1, &value, nullptr), S_OK);
  }
  void SetUid(ULONG size, BYTE fill) {
    Bytes uid(size, fill);
    SPropValue value{PR_SERVICE_UID, 0, {}};
    value.Value.bin = {size, uid.data()};
    EXPECT_EQ(SetProps(1, &value, nullptr), S_OK);
  }
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count,
                                     LPSPropValue* values) override {
    return answer ? answer(count, values) : PropObject::GetProps(tags, flags, count, values);
  }
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override;

 private:
  bool Supports(REFIID) const override { return false; }
};

class Support final : public sdk::Object<IOrvSupport> {
 public:
  std::vector<MAPIUID> registered;
  HRESULT registerResult = S_OK;
  std::vector<GUID> copiedFrom;  // interface of the source of each copy

  ORV_REFUSE(GetLastError, S_OK, HRESULT, ULONG, LPMAPIERROR*)
  ORV_REFUSE(Reserved7, MAPI_E_NO_SUPPORT)
  ORV_REFUSE(Reserved10, MAPI_E_NO_SUPPORT)
  ORV_REFUSE(GetMemAllocRoutines, MAPI_E_NO_SUPPORT, LPALLOCATEBUFFER*, LPALLOCATEMORE*, LPFREEBUFFER*)
  HRESULT STDMETHODCALLTYPE SetProviderUID(const MAPIUID* uid) override {
    if (SUCCEEDED(registerResult)) registered.push_back(*uid);
    return registerResult;
  }
  HRESULT STDMETHODCALLTYPE DoCopyTo(LPCIID source, LPVOID, ULONG, LPCIID, LPSPropTagArray, ULONG_PTR,
                                     LPMAPIPROGRESS, LPCIID, LPVOID, ULONG, LPSPropProblemArray*) override {
    copiedFrom.push_back(*source);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE DoCopyProps(LPCIID, LPVOID, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID,
                                        LPVOID, ULONG, LPSPropProblemArray*) override {
    throw 7;  // no provider may let it through
  }
};

std::wstring TextAt(const ForeignValues& values, ULONG position, ULONG tag) {
  const WCHAR* text = TextOf(values.At(position, tag));
  return text != nullptr ? text : L"(none)";
}

template <class... Tags>
PropValues Get(IMAPIProp* object, Tags... tags) {
  PropValues values;
  EXPECT_TRUE(SUCCEEDED(ReadProps(*object, TagArray(tags...), values)));
  return values;
}

std::wstring TextOfEntry(IMAPIProp* object, ULONG tag) {
  return TextAt(ForeignValues(Get(object, tag)), 0, tag);
}

LONG NumberOfEntry(IMAPIProp* object, ULONG tag) {
  return static_cast<LONG>(NumberOf(ForeignValues(Get(object, tag)).At(0, tag), 0xBAD));
}

HRESULT STDMETHODCALLTYPE Section::SaveChanges(ULONG) {
  saved = TextOfEntry(this, PR_ORV_BOOK_FILE_W);
  return S_OK;
}

Bytes BytesAt(const ForeignValues& values, ULONG position, ULONG tag) {
  const SBinary* bin = BinaryOf(values.At(position, tag));
  return bin != nullptr ? Bytes(bin->lpb, bin->lpb + bin->cb) : Bytes();
}

// Display names of a table that shows its own columns.
Texts Names(IMAPITable* table, LONG count) {
  RowSetPtr rows;
  if (FAILED(table->QueryRows(count, 0, rows.Put()))) return {L"(failed)"};
  Texts names;
  for (ULONG i = 0; i < rows->cRows; ++i) {
    names.push_back(TextAt(ForeignValues(rows->aRow[i]), 0, PR_DISPLAY_NAME));
  }
  return names;
}

// Entry identifiers of a table's rows, in order.
std::vector<Bytes> Identifiers(const ComPtr<IMAPITable>& table) {
  TableReader reader;
  EXPECT_EQ(reader.Open(table, TagArray(PR_ENTRYID), 1000), S_OK);
  std::vector<Bytes> ids;
  while (reader.Next() == S_OK) ids.push_back(BytesAt(reader.Row(), 0, PR_ENTRYID));
  return ids;
}

ULONG References(IUnknown* object) {
  object->AddRef();
  return object->Release();
}

class SampleProviderTest : public testing::Test {
 protected:
  SampleProviderTest() {
    section_->SetText(PR_DISPLAY_NAME, L"My contacts");
    section_->SetUid(sizeof(MAPIUID), 0x5A);
    blocks_ = faults::LiveTaskBlocks();
  }
  ~SampleProviderTest() override {
    provider_.Reset();
    EXPECT_EQ(faults::LiveTaskBlocks(), blocks_);
    EXPECT_EQ(References(support_.Get()), 1u);
    EXPECT_EQ(References(section_.Get()), 1u);
    std::filesystem::remove(file_);
    library_ = {};
    EXPECT_EQ(GetModuleHandleW(L"sample_provider.dll"), nullptr) << "the library stays loaded";
  }

  HRESULT Open(LPALLOCATEBUFFER allocate = &OrvAllocateBuffer) {
    const auto open = library_.Find<LPABPROVIDEROPEN>(ORV_PROVIDER_OPEN_NAME);
    return open(nullptr, support_.Get(), section_.Get(), 0, MAPI_UNICODE, allocate, &OrvAllocateMore,
                &OrvFreeBuffer, provider_.Put(), 0);
  }
  void OpenBook(const std::string& text = kBook) {
    std::ofstream(file_, std::ios::binary) << text;
    section_->SetText(PR_ORV_BOOK_FILE_W, file_.wstring());
    ASSERT_EQ(Open(), S_OK);
  }

  HRESULT Entry(ULONG context, ULONG flags, const wchar_t* text, ULONG tag) {
    std::wstring copy = text != nullptr ? text : L"";
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.lpszW = text != nullptr ? copy.data() : nullptr;
    const auto entry = library_.Find<LPORVSERVICEENTRY>("SampleServiceEntry");
    return entry(nullptr, 0, MAPI_UNICODE | flags, context, tag == PR_NULL ? 0 : 1,
                 tag == PR_NULL ? nullptr : &value, section_.Get(), support_.Get(), 0);
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
  ComPtr<IMailUser> OpenUser(const Bytes& id) { return OpenEntry<IMailUser>(id, S_OK, MAPI_MAILUSER); }
  ComPtr<IDistList> OpenEverybody() { return OpenEntry<IDistList>(ContactIds().at(2), S_OK, MAPI_DISTLIST); }

  ComPtr<IMAPITable> Contents(IMAPIContainer* container) {
    ComPtr<IMAPITable> table;
    EXPECT_EQ(container->GetContentsTable(MAPI_UNICODE, table.Put()), S_OK);
    return table;
  }
  // The one container, reached as a client reaches it: provider, root, hierarchy table, entry.
  ComPtr<IABContainer> OpenContacts() {
    const auto root = OpenEntry(BytesAt(ForeignValues(Get(provider_.Get(), PR_ENTRYID)), 0, PR_ENTRYID));
    ComPtr<IMAPITable> table;
    EXPECT_EQ(root->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put()), S_OK);
    const std::vector<Bytes> containers = Identifiers(table);
    EXPECT_EQ(containers.size(), 1u);
    return OpenEntry(containers.at(0));
  }
  std::vector<Bytes> ContactIds() { return Identifiers(Contents(OpenContacts().Get())); }

  Module library_ = Module::Load(L"sample_provider.dll");
  std::filesystem::path file_ = std::filesystem::temp_directory_path() /
                                (L"sample " + std::to_wstring(GetCurrentProcessId()) + L" ü.vcf");
  ComPtr<Support> support_ = ComPtr<Support>::Adopt(new Support);
  ComPtr<Section> section_ = ComPtr<Section>::Adopt(new Section);
  ComPtr<IAddrBook> provider_;
  long blocks_ = 0;
};

TEST_F(SampleProviderTest, AnswersTheColumnsOfItsRowInTheRootContainer) {
  OpenBook();
  const PropValues values =
      Get(provider_.Get(), PR_DISPLAY_NAME, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH);
  const ForeignValues row(values);
  EXPECT_EQ(row.Count(), 5u);
  EXPECT_EQ(TextAt(row, 0, PR_DISPLAY_NAME), L"My contacts");
  EXPECT_EQ(NumberOf(row.At(2, PR_OBJECT_TYPE)), MAPI_ABCONT);
  EXPECT_EQ(NumberOf(row.At(3, PR_CONTAINER_FLAGS)), AB_SUBCONTAINERS | AB_UNMODIFIABLE);
  EXPECT_EQ(NumberOf(row.At(4, PR_DEPTH), 9), 0u);
  // Bytes 4 to 19 are what the library routes by: what the provider registered.
  const Bytes id = BytesAt(row, 1, PR_ENTRYID);
  ASSERT_EQ(id.size(), 36u);
  ASSERT_EQ(support_->registered.size(), 1u);
  EXPECT_EQ(std::memcmp(id.data() + ORV_ENTRYID_UID_OFFSET, &support_->registered[0], sizeof(MAPIUID)), 0);
  EXPECT_EQ(support_->registered[0].ab[15], 0x5A);
}

TEST_F(SampleProviderTest, OneContainerHoldsEveryReadableRecordAndTellsWhatItLeftOut) {
  OpenBook();
  const auto contacts = OpenContacts();
  EXPECT_EQ(NumberOfEntry(contacts.Get(), PR_CONTENT_COUNT), 3);
  EXPECT_EQ(NumberOfEntry(contacts.Get(), PR_ORV_SKIPPED_RECORDS), 1);
  EXPECT_EQ(NumberOfEntry(contacts.Get(), PR_CONTAINER_FLAGS),
            static_cast<LONG>(AB_RECIPIENTS | AB_UNMODIFIABLE));
  EXPECT_EQ(NumberOfEntry(contacts.Get(), PR_ORV_BOOK_STATUS), S_OK);
  EXPECT_EQ(TextOfEntry(contacts.Get(), PR_ORV_BOOK_FILE_W), file_.wstring());
  EXPECT_EQ(Names(Contents(contacts.Get()).Get(), 10), (Texts{L"Ada", L"Bo", L"Everybody"}));
  ComPtr<IMAPITable> none;
  EXPECT_EQ(OpenEntry({})->GetContentsTable(MAPI_UNICODE, none.Put()), MAPI_E_NO_SUPPORT);
}

TEST_F(SampleProviderTest, BooksThatCannotBeReadLogOnEmptyAndSayWhy) {
  const std::pair<std::wstring, HRESULT> cases[] = {
      {L"", S_OK}, {file_.wstring() + L".gone", MAPI_E_NOT_FOUND}, {L"C:\\windows", MAPI_E_DISK_ERROR}};
  OpenBook();
  const Bytes ada = ContactIds().at(0);
  for (const auto& [file, status] : cases) {
    section_->SetText(PR_ORV_BOOK_FILE_W, file);
    ASSERT_EQ(Open(), S_OK);
    const auto contacts = OpenContacts();
    EXPECT_EQ(NumberOfEntry(contacts.Get(), PR_CONTENT_COUNT), 0);
    EXPECT_EQ(NumberOfEntry(contacts.Get(), PR_ORV_BOOK_STATUS), status);
    EXPECT_TRUE(Names(Contents(contacts.Get()).Get(), 5).empty());
    OpenEntry(ada, MAPI_E_NOT_FOUND);
  }
}

TEST_F(SampleProviderTest, LogonFailsOnlyWhereNothingCouldBeRouted) {
  EXPECT_EQ(Open(nullptr), MAPI_E_INVALID_PARAMETER);
  section_->SetUid(15, 1);
  EXPECT_EQ(Open(), MAPI_E_INVALID_OBJECT);
  section_->SetUid(16, 1);
  support_->registerResult = MAPI_E_COLLISION;
  EXPECT_EQ(Open(), MAPI_E_COLLISION);
}

TEST_F(SampleProviderTest, NothingThatASectionAnswersIsBelieved) {
  // Values without what they claim to have.
  const auto lie = [](ULONG claimed, ULONG uidSize, HRESULT result) {
    return [=](ULONG* count, LPSPropValue* values) {
      MapiBuffer<SPropValue> array;
      if (uidSize != 0 && SUCCEEDED(array.AllocateArray(3))) array[0] = {PR_SERVICE_UID, 0, {}};
      if (array) array[0].Value.bin.cb = uidSize;
      *count = claimed;
      *values = array.Detach();
      return result;
    };
  };
  const std::pair<decltype(section_->answer), HRESULT> cases[] = {
      {lie(3, 0, S_OK), MAPI_E_INVALID_OBJECT},
      {lie(1, 16, S_OK), MAPI_E_INVALID_OBJECT},
      {lie(3, 16, S_OK), MAPI_E_INVALID_OBJECT},
      {lie(0, 0, MAPI_E_NO_ACCESS), MAPI_E_NO_ACCESS},
      {[](ULONG*, LPSPropValue*) -> HRESULT { throw 7; }, MAPI_E_CALL_FAILED},
  };
  for (const auto& [answer, result] : cases) {
    section_->answer = answer;
    EXPECT_EQ(Open(), result);
  }
}

TEST_F(SampleProviderTest, PositionsFollowSeeksAndReads) {
  OpenBook();
  const auto table = Contents(OpenContacts().Get());
  struct Step {
    BOOKMARK origin;
    LONG seek;
    LONG moved;
    LONG read;
    Texts names;
    ULONG position;
  };
  const Step steps[] = {
      {BOOKMARK_BEGINNING, 0, 0, 2, {L"Ada", L"Bo"}, 2},
      {BOOKMARK_CURRENT, 0, 0, 5, {L"Everybody"}, 3},
      {BOOKMARK_END, 0, 0, -2, {L"Bo", L"Everybody"}, 1},
      {BOOKMARK_CURRENT, 0, 0, -9, {L"Ada"}, 0},
      {BOOKMARK_BEGINNING, 100, 3, -1, {L"Everybody"}, 2},
      {BOOKMARK_CURRENT, -100, -2, MAXLONG, {L"Ada", L"Bo", L"Everybody"}, 3},
      {BOOKMARK_END, -1, -1, -MAXLONG - 1, {L"Ada", L"Bo"}, 0},
  };
  for (const Step& step : steps) {
    LONG moved = 99;
    ULONG row = 99, numerator = 99, denominator = 99;
    EXPECT_EQ(table->SeekRow(step.origin, step.seek, &moved), S_OK);
    EXPECT_EQ(moved, step.moved);
    EXPECT_EQ(Names(table.Get(), step.read), step.names);
    EXPECT_EQ(table->QueryPosition(&row, &numerator, &denominator), S_OK);
    EXPECT_EQ(row, step.position);
    EXPECT_EQ(denominator, 3u);
  }
  EXPECT_EQ(table->SeekRow(3, 0, nullptr), MAPI_E_INVALID_BOOKMARK);
  EXPECT_EQ(table->SeekRowApprox(2, 3), S_OK);
  EXPECT_EQ(Names(table.Get(), 1), Texts{L"Everybody"});
  RowSetPtr rows;
  EXPECT_EQ(table->QueryRows(0, 0, rows.Put()), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
  for (int twice = 0; twice < 2; ++twice) {
    ASSERT_EQ(table->QueryRows(1, TBL_NOADVANCE, rows.Put()), S_OK);
    EXPECT_EQ(TextAt(ForeignValues(rows->aRow[0]), 0, PR_DISPLAY_NAME), L"Ada");
  }
}

// Records are read for the columns asked alone, which must not show.
TEST_F(SampleProviderTest, ColumnsComeAsAskedFor) {
  OpenBook("BEGIN:VCARD\r\nVERSION:3.0\r\nN:Byron;Ada;;;\r\nTEL;TYPE=FAX:1\r\nEND:VCARD\r\n" +
           std::string(kBook));
  const auto table = Contents(OpenContacts().Get());
  EXPECT_EQ(Names(table.Get(), 2), (Texts{L"Ada Byron", L"Ada"}));
  TagArray tags(PR_SURNAME, PR_NULL, PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_ADDRTYPE)));
  ASSERT_EQ(table->SetColumns(tags.Get(), 0), S_OK);
  RowSetPtr rows;
  ASSERT_EQ(table->QueryRows(-1, TBL_NOADVANCE, rows.Put()), S_OK);
  const ForeignValues ada(rows->aRow[0]);
  EXPECT_EQ(TextAt(ada, 0, PR_SURNAME), L"Byron");
  EXPECT_NE(ada.At(1, PR_NULL), nullptr);
  EXPECT_EQ(TextAt(ada, 2, PR_ADDRTYPE), L"FAX");
  ASSERT_EQ(table->QueryRows(1, 0, rows.Put()), S_OK);
  const SPropValue* none = ForeignValues(rows->aRow[0]).At(0, CHANGE_PROP_TYPE(PR_SURNAME, PT_ERROR));
  ASSERT_NE(none, nullptr);
  EXPECT_EQ(none->Value.err, MAPI_E_NOT_FOUND);
  MapiBuffer<SPropTagArray> columns;
  ASSERT_EQ(table->QueryColumns(0, columns.Put()), S_OK);
  EXPECT_EQ(columns->cValues, 3u);
  SPropTagArray empty{};
  EXPECT_EQ(table->SetColumns(&empty, 0), MAPI_E_INVALID_PARAMETER);
}

TEST_F(SampleProviderTest, PeopleAreReachedByFaxBeforeMail) {
  OpenBook();
  const auto ids = ContactIds();
  const auto ada = OpenUser(ids.at(0)), bo = OpenUser(ids.at(1));
  const auto reached = [](IMAPIProp* user) {
    return TextOfEntry(user, PR_ADDRTYPE) + L" " + TextOfEntry(user, PR_EMAIL_ADDRESS);
  };
  EXPECT_EQ(reached(ada.Get()), L"FAX +44 1");
  EXPECT_EQ(reached(bo.Get()), L"SMTP bo@example.org");
  EXPECT_EQ(TextOfEntry(ada.Get(), PR_BUSINESS_FAX_NUMBER), L"+44 1");
  EXPECT_EQ(TextOfEntry(ada.Get(), PR_SMTP_ADDRESS), L"ada@example.org");
  EXPECT_EQ(TextOfEntry(bo.Get(), PR_TITLE), L"(none)");
  const PropValues mails = Get(ada.Get(), PR_CONTACT_EMAIL_ADDRESSES);
  ASSERT_EQ(mails.values->Value.MVszW.cValues, 1u);
  EXPECT_STREQ(mails.values->Value.MVszW.lppszW[0], L"ada@example.org");

  MapiBuffer<SPropTagArray> tags;
  ASSERT_EQ(ada->GetPropList(MAPI_UNICODE, tags.Put()), S_OK);
  PropValues all;
  ASSERT_EQ(ada->GetProps(nullptr, MAPI_UNICODE, &all.count, all.values.Put()), S_OK);
  ASSERT_EQ(all.count, tags->cValues);
  for (ULONG i = 0; i < all.count; ++i) EXPECT_EQ(all.values[i].ulPropTag, tags->aulPropTag[i]);
}

TEST_F(SampleProviderTest, ListsShowRecordsAndAddressesAndThemselves) {
  OpenBook();
  const auto table = Contents(OpenEverybody().Get());
  EXPECT_EQ(Names(table.Get(), 10), (Texts{L"Ada", L"Bo", L"out@example.org", L"Everybody"}));
  const auto members = Identifiers(table), contacts = ContactIds();
  // One entry has one identifier, wherever it is listed.
  EXPECT_EQ((std::vector<Bytes>{members.at(0), members.at(1), members.at(3)}), contacts);
  const auto outside = OpenUser(members.at(2));
  EXPECT_EQ(TextOfEntry(outside.Get(), PR_EMAIL_ADDRESS), L"out@example.org");
  EXPECT_EQ(BytesAt(ForeignValues(Get(outside.Get(), PR_ENTRYID)), 0, PR_ENTRYID), members.at(2));
}

// Clients keep identifiers for years: the bytes are a stored format.
TEST_F(SampleProviderTest, IdentifiersAreMadeOfKindPlaceAndKey) {
  OpenBook();
  const auto tail = [](const Bytes& id) { return Bytes(id.begin() + 20, id.end()); };
  const auto ids = ContactIds();
  EXPECT_EQ(tail(ids.at(0)), (Bytes{2, 0, 0, 0, 0, 0, 0, 0, 0x3B, 0xE1, 0x30, 0x05, 0x19, 0xC0, 0x0B, 0xE7}));
  EXPECT_EQ(tail(ids.at(1)), (Bytes{2, 0, 0, 0, 1, 0, 0, 0, 0x89, 0xC9, 0x25, 0xFD, 0x27, 0xDE, 0x54, 0x0C}));
}

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

TEST_F(SampleProviderTest, AnIdentifierNeverOpensAnotherPerson) {
  const Person bo{"", "Bo", "1", "a"}, namesake{"", "Bo", "2", "b"}, twin{"", "Bo", "1", "c"};
  const Person ada{"u", "Ada", "1", "a"}, eve{"u", "Eve", "2", "b"}, other{"", "Cy", "", "c"};
  struct Case {
    const char* what;
    std::vector<Person> before;
    size_t asked;  // of those before
    std::vector<Person> after;
    const wchar_t* title;  // of who is opened then; null: nobody
  };
  const Case cases[] = {
      {"unchanged", {other, bo}, 1, {other, bo}, L"a"},
      {"moved", {bo}, 0, {other, bo}, L"a"},
      {"deleted", {bo, other}, 0, {other}, nullptr},
      {"namesake stays", {bo, namesake}, 0, {namesake}, nullptr},
      {"namesake goes", {bo, namesake}, 1, {namesake}, L"b"},
      {"namesakes change places", {bo, namesake}, 0, {namesake, bo}, L"a"},
      {"namesake takes the place", {bo}, 0, {namesake}, nullptr},
      {"renamed without UID", {bo}, 0, {{"", "Bob", "1", "a"}}, nullptr},
      {"renamed with UID", {ada}, 0, {other, {"u", "Ada B.", "1", "a"}}, L"a"},
      {"other number with UID", {ada}, 0, {{"u", "Ada", "3", "n"}}, L"n"},
      {"other title", {bo}, 0, {{"", "Bo", "1", "n"}}, L"n"},
      {"two with one UID", {ada, eve}, 1, {ada, eve}, L"b"},
      {"one of two with one UID goes", {ada, eve}, 0, {eve}, nullptr},
      {"one of two with one UID stays", {ada, eve}, 0, {other, ada}, L"a"},
      {"a second with the UID comes", {ada}, 0, {ada, eve}, nullptr},
      {"twins", {bo, twin}, 0, {bo, twin}, L"a"},
      {"one of twins goes", {bo, twin}, 0, {twin}, nullptr},
      {"twins like one another", {bo, bo}, 0, {bo, bo}, nullptr},
      {"a twin comes", {bo}, 0, {bo, twin}, nullptr},
      {"empty file", {bo}, 0, {}, nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    OpenBook(FileOf(c.before));
    const Bytes id = ContactIds().at(c.asked);
    OpenBook(FileOf(c.after));
    if (c.title == nullptr) {
      OpenEntry(id, MAPI_E_NOT_FOUND);
    } else {
      EXPECT_EQ(TextOfEntry(OpenUser(id).Get(), PR_TITLE), c.title);
    }
  }
}

TEST_F(SampleProviderTest, AddressesOfGroupsSurviveChangesOfTheFile) {
  OpenBook();
  const Bytes outside = Identifiers(Contents(OpenEverybody().Get())).at(2);
  OpenBook(FileOf({{"", "New", "", ""}}) + kBook);
  EXPECT_EQ(TextOfEntry(OpenUser(outside).Get(), PR_DISPLAY_NAME), L"out@example.org");
  OpenBook(FileOf({{"", "New", "", ""}}));
  OpenEntry(outside, MAPI_E_NOT_FOUND);
}

// Reading the whole file for each would take minutes.
TEST_F(SampleProviderTest, StaleIdentifiersCostOneLookUpEach) {
  std::vector<Person> people;
  for (int i = 0; i < 10'000; ++i) people.push_back({"", "P" + std::to_string(i), "", ""});
  OpenBook(FileOf(people));
  Bytes id = ContactIds().at(0);
  id[35] ^= 1;
  const auto start = std::chrono::steady_clock::now();
  for (id[28] = 1; id[28] != 0; ++id[28]) {
    for (id[20] = 2; id[20] < 4; ++id[20]) OpenEntry(id, MAPI_E_NOT_FOUND);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(SampleProviderTest, ForeignIdentifiersAreRefused) {
  OpenBook();
  const Bytes good = ContactIds().at(0);
  for (size_t size = 1; size < good.size(); ++size) {
    OpenEntry({good.begin(), good.begin() + static_cast<ptrdiff_t>(size)}, MAPI_E_INVALID_ENTRYID);
  }
  ULONG type = 0;
  LPUNKNOWN object = nullptr;
  EXPECT_EQ(provider_->OpenEntry(36, nullptr, nullptr, 0, &type, &object), MAPI_E_INVALID_ENTRYID);
  Bytes id = good;
  id[4] ^= 1;
  OpenEntry(id, MAPI_E_INVALID_ENTRYID);
  for (const BYTE kind : {BYTE{3}, BYTE{4}, BYTE{255}}) {
    id = good;
    id[20] = kind;
    id[30] ^= 1;
    OpenEntry(id, MAPI_E_NOT_FOUND);
  }
  const auto compare = [&](Bytes one, Bytes other, ULONG* same) {
    return provider_->CompareEntryIDs(static_cast<ULONG>(one.size()), reinterpret_cast<LPENTRYID>(one.data()),
                                      static_cast<ULONG>(other.size()),
                                      reinterpret_cast<LPENTRYID>(other.data()), 0, same);
  };
  ULONG same = 9;
  EXPECT_EQ(compare(good, good, &same), S_OK);
  EXPECT_EQ(same, 1u);
  EXPECT_EQ(compare(good, id, &same), S_OK);
  EXPECT_EQ(same, 0u);
  EXPECT_EQ(compare(good, {good.begin(), good.begin() + 19}, &same), MAPI_E_UNKNOWN_ENTRYID);
}

TEST_F(SampleProviderTest, InterfacesAndFlagsAreChecked) {
  OpenBook();
  ULONG type = 77;
  LPUNKNOWN object = nullptr;
  EXPECT_EQ(provider_->OpenEntry(0, nullptr, &IID_IMailUser, 0, &type, &object),
            MAPI_E_INTERFACE_NOT_SUPPORTED);
  EXPECT_EQ(provider_->OpenEntry(0, nullptr, nullptr, MAPI_MODIFY, &type, &object), MAPI_E_NO_ACCESS);
  EXPECT_EQ(type, 77u);
  const auto root = OpenEntry({});
  ComPtr<IMAPITable> table;
  EXPECT_EQ(root->GetHierarchyTable(0, table.Put()), MAPI_E_BAD_CHARWIDTH);
  EXPECT_EQ(root->OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPIProp, 0, 0, &object),
            MAPI_E_INTERFACE_NOT_SUPPORTED);
  ASSERT_EQ(root->OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, &object), S_OK);
  object->Release();
  PropValues values;
  EXPECT_EQ(root->GetProps(nullptr, 0, &values.count, values.values.Put()), MAPI_E_BAD_CHARWIDTH);
  SPropTagArray empty{};
  EXPECT_EQ(root->GetProps(&empty, MAPI_UNICODE, &values.count, values.values.Put()),
            MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(root->DeleteEntries(nullptr, 0), MAPI_E_NO_ACCESS);
}

TEST_F(SampleProviderTest, CopiesAreTheLibrarysWork) {
  OpenBook();
  const auto list = OpenEverybody();
  EXPECT_EQ(list->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IDistList, list.Get(), 0, nullptr), S_OK);
  ASSERT_EQ(support_->copiedFrom.size(), 1u);
  EXPECT_TRUE(IsEqualGUID(support_->copiedFrom[0], IID_IDistList));
  EXPECT_EQ(list->CopyProps(nullptr, 0, nullptr, &IID_IDistList, list.Get(), 0, nullptr), MAPI_E_CALL_FAILED);
}

TEST_F(SampleProviderTest, RecipientsGetWhatIsAskedForAndKeepWhatTheyHave) {
  OpenBook();
  const Bytes ada = ContactIds().at(0);
  Bytes foreign = ada;
  foreign[4] ^= 1;
  struct Case {
    const Bytes* id;  // null: a value of bytes without them
    ULONG given;      // values: identifier, type, and one of a type that cannot be copied
    ULONG count;      // afterwards
  };
  for (const Case& c : {Case{&ada, 2, 4}, Case{&foreign, 2, 2}, Case{&ada, 3, 3}, Case{nullptr, 2, 2}}) {
    MapiBuffer<SPropValue> given;
    ASSERT_EQ(given.AllocateArray(3), S_OK);
    given[0].ulPropTag = PR_ENTRYID;
    given[0].Value.bin = {36, c.id != nullptr ? const_cast<BYTE*>(c.id->data()) : nullptr};
    given[1].ulPropTag = PR_RECIPIENT_TYPE;
    given[1].Value.l = MAPI_CC;
    given[2].ulPropTag = PR_DISPLAY_NAME_A;
    given[2].Value.lpszA = const_cast<char*>("narrow");
    ADRLIST list{1, {{0, c.given, given.Detach()}}};
    TagArray tags(PR_DISPLAY_NAME, PR_TITLE);
    EXPECT_EQ(provider_->PrepareRecips(0, tags.Get(), &list), S_OK);
    const MapiBuffer<SPropValue> owner(list.aEntries[0].rgPropVals);
    const ForeignValues values(list.aEntries[0]);
    EXPECT_EQ(values.Count(), c.count);
    if (c.count != 4) continue;
    EXPECT_EQ(TextAt(values, 0, PR_DISPLAY_NAME), L"Ada");
    EXPECT_NE(values.At(1, CHANGE_PROP_TYPE(PR_TITLE, PT_ERROR)), nullptr);
    EXPECT_NE(values.At(2, PR_ENTRYID), nullptr);
    EXPECT_EQ(NumberOf(values.At(3, PR_RECIPIENT_TYPE)), MAPI_CC);
  }
  ADRLIST empty{}, lying{1, {{0, 5, nullptr}}};
  TagArray title(PR_TITLE);
  EXPECT_EQ(provider_->PrepareRecips(0, title.Get(), &empty), S_OK);
  EXPECT_EQ(provider_->PrepareRecips(0, title.Get(), &lying), S_OK);
  EXPECT_EQ(lying.aEntries[0].rgPropVals, nullptr);
}

TEST_F(SampleProviderTest, ServiceEntryStoresTheFile) {
  std::ofstream(file_, std::ios::binary) << kBook;
  const std::wstring good = file_.wstring(), gone = good + L".gone";
  struct Case {
    ULONG context;
    ULONG flags;
    ULONG tag;  // of the value, PR_NULL: no value
    const wchar_t* text;
    HRESULT result;
    std::optional<std::wstring> saved;
  };
  const Case cases[] = {
      {MSG_SERVICE_INSTALL, SERVICE_UI_ALLOWED, PR_NULL, nullptr, S_OK, {}},
      {MSG_SERVICE_CREATE, SERVICE_UI_ALWAYS, PR_NULL, nullptr, S_OK, {}},
      {MSG_SERVICE_PROVIDER_CREATE, 0, PR_NULL, nullptr, MAPI_E_NO_SUPPORT, {}},
      {ORV_SERVICE_EXTRA_CONFIG, 0, 0, good.c_str(), S_OK, good},
      {ORV_SERVICE_EXTRA_CONFIG, 0, 0, gone.c_str(), MAPI_E_NOT_FOUND, {}},
      {ORV_SERVICE_EXTRA_CONFIG, 0, 0, L"C:\\windows", MAPI_E_DISK_ERROR, {}},
      {ORV_SERVICE_EXTRA_CONFIG, 0, 0, nullptr, MAPI_E_INVALID_PARAMETER, {}},
      {ORV_SERVICE_EXTRA_CONFIG, 0, PR_NULL, nullptr, MAPI_E_INVALID_PARAMETER, {}},
      {MSG_SERVICE_CONFIGURE, SERVICE_UI_ALLOWED, PR_ORV_BOOK_FILE_W, good.c_str(), S_OK, good},
      {MSG_SERVICE_CONFIGURE, 0, PR_ORV_BOOK_FILE_W, gone.c_str(), MAPI_E_NOT_FOUND, {}},
      {MSG_SERVICE_CONFIGURE, 0, PR_ORV_BOOK_FILE_W, L"", S_OK, L""},
      {MSG_SERVICE_CONFIGURE, SERVICE_UI_ALLOWED, PR_NULL, nullptr, S_OK, {}},
      {MSG_SERVICE_CONFIGURE, SERVICE_UI_ALWAYS, PR_NULL, nullptr, MAPI_E_USER_CANCEL, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "context " << c.context << " tag " << c.tag << " flags " << c.flags);
    section_->saved.reset();
    EXPECT_EQ(Entry(c.context, c.flags, c.text, c.tag), c.result);
    EXPECT_EQ(section_->saved, c.saved);
  }
  // Where the caller stands now is not where the session will stand.
  const auto former = std::filesystem::current_path();
  std::filesystem::current_path(file_.parent_path());
  EXPECT_EQ(Entry(ORV_SERVICE_EXTRA_CONFIG, 0, file_.filename().c_str(), 0), S_OK);
  std::filesystem::current_path(former);
  EXPECT_EQ(section_->saved, good);
}

// The call that fails after `successes` allocations, and all that it has made is gone again.
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
    return SUCCEEDED(hr) ? contacts->GetPropList(MAPI_UNICODE, tags.Put()) : hr;
  };
  const long blocks = faults::LiveTaskBlocks();
  size_t nth = 0;
  do {
    faults::Arm(faults::Site::kTaskAllocation, ++nth);
    const HRESULT hr = readAll();
    EXPECT_EQ(hr, faults::Fired(faults::Site::kTaskAllocation) ? MAPI_E_NOT_ENOUGH_MEMORY : S_OK);
    EXPECT_EQ(faults::LiveTaskBlocks(), blocks);
  } while (faults::Fired(faults::Site::kTaskAllocation));
  EXPECT_GT(nth, 20u);
  faults::Arm(faults::Site::kTaskAllocation, 0);
}

TEST_F(SampleProviderTest, ThreadsShareATableWithoutLosingRows) {
  OpenBook(FileOf(std::vector<Person>(400, {"", "P", "", ""})));
  const auto table = Contents(OpenContacts().Get());
  std::atomic<int> read = 0;
  std::vector<std::thread> threads(4);
  for (std::thread& thread : threads) {
    thread = std::thread([&] {
      while (Names(table.Get(), 1).size() == 1) ++read;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(read, 400);
}

}  // namespace
}  // namespace orv::test
