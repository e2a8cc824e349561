// The sample provider through its two exports, as the library calls them.
#include <cstring>
#include <fstream>
#include <thread>

#include "fake_host.h"

namespace orv::test {
namespace {

using sdk::Owned;

constexpr const char* kBook =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:ada\r\nFN:Ada\r\nN:Byron;Ada;;;\r\nTEL;TYPE=FAX,WORK:+44 1\r\n"
    "EMAIL:ada@example.org\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Bo\r\nEMAIL:bo@example.org\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:broken, without an end\r\n"
    "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nUID:all\r\nFN:Everybody\r\nMEMBER:ada\r\n"
    "MEMBER:mailto:bo@example.org\r\nMEMBER:mailto:out@example.org\r\nMEMBER:nobody\r\nMEMBER:all\r\nEND:"
    "VCARD\r\n";

// What a caller sees of a value, in a form that tests compare; the array is freed.
struct Values {
  Buffer<SPropValue> array;
  ULONG count = 0;

  std::wstring Text(ULONG i) const {
    const bool isText = array && PROP_TYPE(array.get()[i].ulPropTag) == PT_UNICODE;
    return isText ? array.get()[i].Value.lpszW : L"(none)";
  }
  LONG Number(ULONG i) const {
    return PROP_TYPE(array.get()[i].ulPropTag) == PT_LONG ? array.get()[i].Value.l : -1;
  }
  std::vector<BYTE> Bytes(ULONG i) const {
    const SBinary& bin = array.get()[i].Value.bin;
    return {bin.lpb, bin.lpb + bin.cb};
  }
};

struct Tags {
  explicit Tags(std::vector<ULONG> tags) : words(std::move(tags)) {
    words.insert(words.begin(), static_cast<ULONG>(words.size()));
  }
  operator LPSPropTagArray() { return reinterpret_cast<LPSPropTagArray>(words.data()); }
  std::vector<ULONG> words;
};

Values Get(IMAPIProp* object, std::vector<ULONG> tags, HRESULT expected = S_OK) {
  Values values;
  LPSPropValue array = nullptr;
  EXPECT_EQ(object->GetProps(Tags(std::move(tags)), MAPI_UNICODE, &values.count, &array), expected);
  values.array.reset(array);
  return values;
}

std::vector<std::wstring> Names(IMAPITable* table, LONG count) {
  LPSRowSet rows = nullptr;
  if (FAILED(table->QueryRows(count, 0, &rows))) return {L"(failed)"};
  const RowSet owner(rows);
  std::vector<std::wstring> names;
  for (ULONG i = 0; i < rows->cRows; ++i) names.push_back(rows->aRow[i].lpProps[0].Value.lpszW);
  return names;
}

class SampleProviderTest : public testing::Test {
 protected:
  SampleProviderTest() { section_->texts[PR_DISPLAY_NAME] = L"My contacts"; }
  ~SampleProviderTest() override {
    provider_.reset();
    EXPECT_EQ(Buffers::LiveRoots(), 0u);
    EXPECT_EQ(References(support_.get()), 1u);
    EXPECT_EQ(References(section_.get()), 1u);
    std::filesystem::remove(file_);
  }

  HRESULT Open() {
    LPADRBOOK provider = nullptr;
    const HRESULT hr =
        library_.open(nullptr, support_.get(), section_.get(), 0, MAPI_UNICODE, &Buffers::Allocate,
                      &Buffers::AllocateMore, &Buffers::Free, &provider, 0);
    provider_.reset(provider);
    return hr;
  }
  void OpenBook(const std::string& text = kBook) {
    std::ofstream(file_, std::ios::binary) << text;
    section_->texts[PR_ORV_BOOK_FILE_W] = file_.wstring();
    ASSERT_EQ(Open(), S_OK);
  }

  HRESULT Entry(ULONG context, ULONG flags, const wchar_t* text, ULONG tag) {
    std::wstring copy = text != nullptr ? text : L"";
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.lpszW = text != nullptr ? copy.data() : nullptr;
    return library_.serviceEntry(nullptr, 0, MAPI_UNICODE | flags, context, tag == PR_NULL ? 0 : 1,
                                 tag == PR_NULL ? nullptr : &value, section_.get(), support_.get(), 0);
  }

  template <class Interface = IABContainer>
  Owned<Interface> OpenEntry(std::vector<BYTE> id, HRESULT expected = S_OK, ULONG type = MAPI_ABCONT) {
    ULONG found = 0;
    LPUNKNOWN object = nullptr;
    EXPECT_EQ(provider_->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<LPENTRYID>(id.data()),
                                   nullptr, 0, &found, &object),
              expected);
    EXPECT_EQ(found, SUCCEEDED(expected) ? type : 0);
    EXPECT_EQ(object == nullptr, FAILED(expected));
    return Owned<Interface>(static_cast<Interface*>(object));
  }

  Owned<IMAPITable> Contents(IMAPIContainer* container) {
    LPMAPITABLE table = nullptr;
    EXPECT_EQ(container->GetContentsTable(MAPI_UNICODE, &table), S_OK);
    return Owned<IMAPITable>(table);
  }
  // Entry identifiers of a table's rows, by display name.
  std::map<std::wstring, std::vector<BYTE>> Identifiers(IMAPITable* table) {
    EXPECT_EQ(table->SetColumns(Tags({PR_DISPLAY_NAME, PR_ENTRYID}), 0), S_OK);
    LPSRowSet rows = nullptr;
    EXPECT_EQ(table->QueryRows(1000, 0, &rows), S_OK);
    const RowSet owner(rows);
    std::map<std::wstring, std::vector<BYTE>> ids;
    for (ULONG i = 0; i < rows->cRows; ++i) {
      const SBinary& id = rows->aRow[i].lpProps[1].Value.bin;
      ids[rows->aRow[i].lpProps[0].Value.lpszW] = {id.lpb, id.lpb + id.cb};
    }
    return ids;
  }
  // The one container, reached as a client reaches it: provider, root, hierarchy table, entry.
  Owned<IABContainer> OpenContacts() {
    const Owned<IABContainer> root = OpenEntry(Get(provider_.get(), {PR_ENTRYID}).Bytes(0));
    LPMAPITABLE table = nullptr;
    EXPECT_EQ(root->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, &table), S_OK);
    const auto containers = Identifiers(Owned<IMAPITable>(table).get());
    EXPECT_EQ(containers.size(), 1u);
    return OpenEntry(containers.begin()->second);
  }
  std::map<std::wstring, std::vector<BYTE>> ContactIds() {
    return Identifiers(Contents(OpenContacts().get()).get());
  }

  Owned<IMailUser> OpenUser(const std::vector<BYTE>& id) {
    return OpenEntry<IMailUser>(id, S_OK, MAPI_MAILUSER);
  }

  ProviderLibrary library_{L"sample_provider.dll", "SampleServiceEntry"};
  std::filesystem::path file_ = std::filesystem::temp_directory_path() /
                                (L"sample " + std::to_wstring(GetCurrentProcessId()) + L" ü.vcf");
  Owned<FakeSupport> support_{new FakeSupport};
  Owned<FakeSection> section_{new FakeSection};
  Owned<IAddrBook> provider_;
};

TEST_F(SampleProviderTest, AnswersTheColumnsOfItsRowInTheRootContainer) {
  OpenBook();
  const Values row =
      Get(provider_.get(), {PR_DISPLAY_NAME, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH});
  ASSERT_EQ(row.count, 5u);
  EXPECT_EQ(row.Text(0), L"My contacts");
  EXPECT_EQ(row.Number(2), static_cast<LONG>(MAPI_ABCONT));
  EXPECT_EQ(row.Number(3), static_cast<LONG>(AB_SUBCONTAINERS | AB_UNMODIFIABLE));
  EXPECT_EQ(row.Number(4), 0);
  // Bytes 4 to 19 are what the library routes by: what the provider registered.
  const std::vector<BYTE> id = row.Bytes(1);
  ASSERT_EQ(id.size(), 36u);
  ASSERT_EQ(support_->registered.size(), 1u);
  EXPECT_EQ(std::memcmp(id.data() + ORV_ENTRYID_UID_OFFSET, &support_->registered[0], sizeof(MAPIUID)), 0);
  EXPECT_EQ(std::memcmp(section_->serviceUid.data(), &support_->registered[0], sizeof(MAPIUID)), 0);
}

TEST_F(SampleProviderTest, OneContainerHoldsEveryReadableRecordAndTellsWhatItLeftOut) {
  OpenBook();
  const Owned<IABContainer> contacts = OpenContacts();
  const Values values = Get(contacts.get(), {PR_CONTENT_COUNT, PR_ORV_SKIPPED_RECORDS, PR_CONTAINER_FLAGS,
                                             PR_ORV_BOOK_STATUS, PR_ORV_BOOK_FILE_W});
  EXPECT_EQ(values.Number(0), 3);
  EXPECT_EQ(values.Number(1), 1);
  EXPECT_EQ(values.Number(2), static_cast<LONG>(AB_RECIPIENTS | AB_UNMODIFIABLE));
  EXPECT_EQ(values.Number(3), S_OK);
  EXPECT_EQ(values.Text(4), file_.wstring());
  EXPECT_EQ(Names(Contents(contacts.get()).get(), 10),
            (std::vector<std::wstring>{L"Ada", L"Bo", L"Everybody"}));
  LPMAPITABLE none = nullptr;
  EXPECT_EQ(OpenEntry(Get(provider_.get(), {PR_ENTRYID}).Bytes(0))->GetContentsTable(MAPI_UNICODE, &none),
            MAPI_E_NO_SUPPORT);
}

TEST_F(SampleProviderTest, BooksThatCannotBeReadLogOnEmptyAndSayWhy) {
  const std::pair<std::wstring, HRESULT> cases[] = {
      {L"", S_OK}, {file_.wstring() + L".gone", MAPI_E_NOT_FOUND}, {L"C:\\windows", MAPI_E_DISK_ERROR}};
  for (const auto& [file, status] : cases) {
    section_->texts[PR_ORV_BOOK_FILE_W] = file;
    ASSERT_EQ(Open(), S_OK);
    const Owned<IABContainer> contacts = OpenContacts();
    const Values values = Get(contacts.get(), {PR_CONTENT_COUNT, PR_ORV_BOOK_STATUS});
    EXPECT_EQ(values.Number(0), 0);
    EXPECT_EQ(values.Number(1), status);
    EXPECT_TRUE(Names(Contents(contacts.get()).get(), 5).empty());
  }
}

TEST_F(SampleProviderTest, LogonFailsOnlyWhereNothingCouldBeRouted) {
  section_->serviceUid.resize(15);
  EXPECT_EQ(Open(), MAPI_E_INVALID_OBJECT);
  section_->serviceUid.assign(16, 1);
  support_->registerResult = MAPI_E_COLLISION;
  EXPECT_EQ(Open(), MAPI_E_COLLISION);
}

TEST_F(SampleProviderTest, PositionsFollowSeeksAndReads) {
  OpenBook();
  const Owned<IMAPITable> table = Contents(OpenContacts().get());
  struct Step {
    BOOKMARK origin;
    LONG seek;
    LONG moved;
    LONG read;
    std::vector<std::wstring> names;
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
    EXPECT_EQ(Names(table.get(), step.read), step.names);
    EXPECT_EQ(table->QueryPosition(&row, &numerator, &denominator), S_OK);
    EXPECT_EQ(row, step.position);
    EXPECT_EQ(denominator, 3u);
  }
  EXPECT_EQ(table->SeekRow(3, 0, nullptr), MAPI_E_INVALID_BOOKMARK);
  EXPECT_EQ(table->SeekRowApprox(2, 3), S_OK);
  EXPECT_EQ(Names(table.get(), 1), std::vector<std::wstring>{L"Everybody"});
  LPSRowSet rows = nullptr;
  EXPECT_EQ(table->QueryRows(0, 0, &rows), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
  for (int twice = 0; twice < 2; ++twice) {
    ASSERT_EQ(table->QueryRows(1, TBL_NOADVANCE, &rows), S_OK);
    EXPECT_STREQ(RowSet(rows)->aRow[0].lpProps[0].Value.lpszW, L"Ada");
  }
}

TEST_F(SampleProviderTest, ColumnsComeAsAskedFor) {
  OpenBook();
  const Owned<IMAPITable> table = Contents(OpenContacts().get());
  ASSERT_EQ(table->SetColumns(Tags({PR_SURNAME, PR_NULL, PROP_TAG(PT_UNSPECIFIED, 0x3002)}), 0), S_OK);
  LPSRowSet rows = nullptr;
  ASSERT_EQ(table->QueryRows(2, 0, &rows), S_OK);
  const RowSet owner(rows);
  EXPECT_STREQ(rows->aRow[0].lpProps[0].Value.lpszW, L"Byron");
  EXPECT_EQ(rows->aRow[0].lpProps[1].ulPropTag, PR_NULL);
  EXPECT_EQ(rows->aRow[0].lpProps[2].ulPropTag, PR_ADDRTYPE);
  EXPECT_EQ(rows->aRow[1].lpProps[0].ulPropTag, CHANGE_PROP_TYPE(PR_SURNAME, PT_ERROR));
  EXPECT_EQ(rows->aRow[1].lpProps[0].Value.err, MAPI_E_NOT_FOUND);
  LPSPropTagArray tags = nullptr;
  ASSERT_EQ(table->QueryColumns(0, &tags), S_OK);
  EXPECT_EQ(Buffer<SPropTagArray>(tags)->cValues, 3u);
  EXPECT_EQ(table->SetColumns(Tags({}), 0), MAPI_E_INVALID_PARAMETER);
}

TEST_F(SampleProviderTest, PeopleAreReachedByFaxBeforeMail) {
  OpenBook();
  const auto ids = ContactIds();
  const Owned<IMailUser> ada = OpenUser(ids.at(L"Ada"));
  const Owned<IMailUser> bo = OpenUser(ids.at(L"Bo"));
  const Values first =
      Get(ada.get(), {PR_ADDRTYPE, PR_EMAIL_ADDRESS, PR_BUSINESS_FAX_NUMBER, PR_SMTP_ADDRESS});
  EXPECT_EQ(first.Text(0) + L" " + first.Text(1), L"FAX +44 1");
  EXPECT_EQ(first.Text(2), L"+44 1");
  EXPECT_EQ(first.Text(3), L"ada@example.org");
  const Values second = Get(bo.get(), {PR_ADDRTYPE, PR_EMAIL_ADDRESS, PR_TITLE}, MAPI_W_ERRORS_RETURNED);
  EXPECT_EQ(second.Text(0) + L" " + second.Text(1), L"SMTP bo@example.org");
  const Values mails = Get(ada.get(), {PR_CONTACT_EMAIL_ADDRESSES});
  ASSERT_EQ(mails.array->Value.MVszW.cValues, 1u);
  EXPECT_STREQ(mails.array->Value.MVszW.lppszW[0], L"ada@example.org");

  LPSPropTagArray tags = nullptr;
  ASSERT_EQ(ada->GetPropList(MAPI_UNICODE, &tags), S_OK);
  const Buffer<SPropTagArray> owner(tags);
  ULONG count = 0;
  LPSPropValue all = nullptr;
  ASSERT_EQ(ada->GetProps(nullptr, MAPI_UNICODE, &count, &all), S_OK);
  const Buffer<SPropValue> values(all);
  ASSERT_EQ(count, tags->cValues);
  for (ULONG i = 0; i < count; ++i) EXPECT_EQ(all[i].ulPropTag, tags->aulPropTag[i]);
}

TEST_F(SampleProviderTest, ListsShowRecordsAndAddressesAndThemselves) {
  OpenBook();
  const auto list = OpenEntry<IDistList>(ContactIds().at(L"Everybody"), S_OK, MAPI_DISTLIST);
  const Owned<IMAPITable> table = Contents(list.get());
  EXPECT_EQ(Names(table.get(), 10),
            (std::vector<std::wstring>{L"Ada", L"Bo", L"out@example.org", L"Everybody"}));
  ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
  const auto members = Identifiers(table.get()), contacts = ContactIds();
  EXPECT_EQ(members.at(L"Ada"), contacts.at(L"Ada"));  // one entry has one identifier, wherever it is listed
  EXPECT_EQ(members.at(L"Everybody"), contacts.at(L"Everybody"));
  const auto outside = OpenUser(members.at(L"out@example.org"));
  EXPECT_EQ(Get(outside.get(), {PR_EMAIL_ADDRESS}).Text(0), L"out@example.org");
}

TEST_F(SampleProviderTest, IdentifiersSurviveChangesOfTheFile) {
  OpenBook();
  auto ids = ContactIds();
  ids.merge(
      Identifiers(Contents(OpenEntry<IDistList>(ids.at(L"Everybody"), S_OK, MAPI_DISTLIST).get()).get()));
  OpenBook("BEGIN:VCARD\r\nVERSION:3.0\r\nFN:New\r\nEND:VCARD\r\n" + std::string(kBook));
  for (const wchar_t* name : {L"Ada", L"Bo", L"out@example.org"}) {
    EXPECT_EQ(Get(OpenUser(ids.at(name)).get(), {PR_DISPLAY_NAME}).Text(0), name);
  }
  OpenBook("BEGIN:VCARD\r\nVERSION:3.0\r\nFN:New\r\nEND:VCARD\r\n");
  OpenEntry(ids.at(L"Ada"), MAPI_E_NOT_FOUND);
  OpenEntry(ids.at(L"out@example.org"), MAPI_E_NOT_FOUND);
}

TEST_F(SampleProviderTest, ForeignIdentifiersAreRefused) {
  OpenBook();
  const std::vector<BYTE> good = ContactIds().at(L"Ada");
  for (size_t size = 1; size < good.size(); ++size) {
    OpenEntry({good.begin(), good.begin() + static_cast<ptrdiff_t>(size)}, MAPI_E_INVALID_ENTRYID);
  }
  std::vector<BYTE> id = good;
  id[4] ^= 1;
  OpenEntry(id, MAPI_E_INVALID_ENTRYID);
  for (const BYTE kind : {BYTE{3}, BYTE{4}, BYTE{255}}) {
    id = good;
    id[20] = kind;
    id[30] ^= 1;
    OpenEntry(id, MAPI_E_NOT_FOUND);
  }
  const auto compare = [&](std::vector<BYTE> one, std::vector<BYTE> other, ULONG* same) {
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
  ASSERT_EQ(provider_->OpenEntry(0, nullptr, &IID_IMAPIContainer, MAPI_BEST_ACCESS, &type, &object), S_OK);
  Owned<IABContainer> root(static_cast<IABContainer*>(object));
  LPMAPITABLE table = nullptr;
  EXPECT_EQ(root->GetHierarchyTable(0, &table), MAPI_E_BAD_CHARWIDTH);
  EXPECT_EQ(root->OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPIProp, 0, 0, &object),
            MAPI_E_INTERFACE_NOT_SUPPORTED);
  ASSERT_EQ(root->OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, &object), S_OK);
  object->Release();
  ULONG count = 0;
  LPSPropValue values = nullptr;
  EXPECT_EQ(root->GetProps(nullptr, 0, &count, &values), MAPI_E_BAD_CHARWIDTH);
  EXPECT_EQ(root->GetProps(Tags({}), MAPI_UNICODE, &count, &values), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(root->DeleteEntries(nullptr, 0), MAPI_E_NO_ACCESS);
}

TEST_F(SampleProviderTest, CopiesAreTheLibrarysWork) {
  OpenBook();
  const auto list = OpenEntry<IDistList>(ContactIds().at(L"Everybody"), S_OK, MAPI_DISTLIST);
  EXPECT_EQ(list->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IDistList, list.get(), 0, nullptr), S_OK);
  EXPECT_EQ(list->CopyProps(nullptr, 0, nullptr, &IID_IDistList, list.get(), 0, nullptr), S_OK);
  ASSERT_EQ(support_->copiedFrom.size(), 2u);
  for (const GUID& source : support_->copiedFrom) EXPECT_TRUE(IsEqualGUID(source, IID_IDistList));
}

// A recipient of one identifier, which must outlive it, and, when a type is given, that type and a value of a type that cannot be copied.
LPADRLIST MakeRecipient(std::vector<BYTE>& id, bool withForeignType) {
  const sdk::Allocator allocator(&Buffers::Allocate, &Buffers::AllocateMore, &Buffers::Free);
  auto* value = static_cast<LPSPropValue>(allocator.AllocateRoot(3 * sizeof(SPropValue)).release());
  value[0].ulPropTag = PR_ENTRYID;
  value[0].Value.bin = {static_cast<ULONG>(id.size()), id.data()};
  value[1].ulPropTag = PR_RECIPIENT_TYPE;
  value[1].Value.l = MAPI_CC;
  value[2].ulPropTag = PR_DISPLAY_NAME_A;
  value[2].Value.lpszA = const_cast<char*>("narrow");
  auto* result = static_cast<LPADRLIST>(allocator.AllocateRoot(CbNewADRLIST(1)).release());
  result->cEntries = 1;
  result->aEntries[0] = {0, withForeignType ? 3u : 2u, value};
  return result;
}

TEST_F(SampleProviderTest, RecipientsGetWhatIsAskedForAndKeepWhatTheyHave) {
  OpenBook();
  std::vector<BYTE> ada = ContactIds().at(L"Ada"), foreign = ada;
  foreign[4] ^= 1;
  struct Case {
    std::vector<BYTE>& id;
    bool withForeignType;
    ULONG count;
  };
  for (const Case& c : {Case{ada, false, 4}, Case{foreign, false, 2}, Case{ada, true, 3}}) {
    Buffer<ADRLIST> list(MakeRecipient(c.id, c.withForeignType));
    EXPECT_EQ(provider_->PrepareRecips(0, Tags({PR_DISPLAY_NAME, PR_TITLE}), list.get()), S_OK);
    const Buffer<SPropValue> values(list->aEntries[0].rgPropVals);
    ASSERT_EQ(list->aEntries[0].cValues, c.count);
    if (c.count != 4) continue;
    EXPECT_STREQ(values.get()[0].Value.lpszW, L"Ada");
    EXPECT_EQ(values.get()[1].ulPropTag, CHANGE_PROP_TYPE(PR_TITLE, PT_ERROR));
    EXPECT_EQ(values.get()[2].ulPropTag, PR_ENTRYID);
    EXPECT_EQ(values.get()[3].Value.l, MAPI_CC);
  }
  ADRLIST empty{};
  EXPECT_EQ(provider_->PrepareRecips(0, Tags({PR_TITLE}), &empty), S_OK);
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
    const wchar_t* saved;  // null: nothing
  };
  const Case cases[] = {
      {MSG_SERVICE_INSTALL, SERVICE_UI_ALLOWED, PR_NULL, nullptr, S_OK, nullptr},
      {MSG_SERVICE_CREATE, SERVICE_UI_ALWAYS, PR_NULL, nullptr, S_OK, nullptr},
      {MSG_SERVICE_PROVIDER_CREATE, 0, PR_NULL, nullptr, MAPI_E_NO_SUPPORT, nullptr},
      {ORV_SERVICE_EXTRA_CONFIG, 0, 0, good.c_str(), S_OK, good.c_str()},
      {ORV_SERVICE_EXTRA_CONFIG, 0, 0, gone.c_str(), MAPI_E_NOT_FOUND, nullptr},
      {ORV_SERVICE_EXTRA_CONFIG, 0, 0, L"C:\\windows", MAPI_E_DISK_ERROR, nullptr},
      {ORV_SERVICE_EXTRA_CONFIG, 0, PR_NULL, nullptr, MAPI_E_INVALID_PARAMETER, nullptr},
      {MSG_SERVICE_CONFIGURE, SERVICE_UI_ALLOWED, PR_ORV_BOOK_FILE_W, good.c_str(), S_OK, good.c_str()},
      {MSG_SERVICE_CONFIGURE, SERVICE_UI_ALLOWED, PR_ORV_BOOK_FILE_W, gone.c_str(), MAPI_E_NOT_FOUND,
       nullptr},
      {MSG_SERVICE_CONFIGURE, SERVICE_UI_ALLOWED, PR_ORV_BOOK_FILE_W, L"", S_OK, L""},
      {MSG_SERVICE_CONFIGURE, SERVICE_UI_ALLOWED, PR_NULL, nullptr, S_OK, nullptr},
      {MSG_SERVICE_CONFIGURE, SERVICE_UI_ALWAYS, PR_NULL, nullptr, MAPI_E_USER_CANCEL, nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "context " << c.context << " tag " << c.tag << " flags " << c.flags);
    section_->texts.clear();
    section_->saved.clear();
    EXPECT_EQ(Entry(c.context, c.flags, c.text, c.tag), c.result);
    EXPECT_EQ(section_->saved.size(), c.saved != nullptr ? 1u : 0u);
    EXPECT_EQ(section_->saved[PR_ORV_BOOK_FILE_W], c.saved != nullptr ? c.saved : L"");
  }
  // Where the caller stands now is not where the session will stand.
  const auto former = std::filesystem::current_path();
  std::filesystem::current_path(file_.parent_path());
  EXPECT_EQ(Entry(ORV_SERVICE_EXTRA_CONFIG, 0, file_.filename().c_str(), 0), S_OK);
  std::filesystem::current_path(former);
  EXPECT_EQ(section_->saved[PR_ORV_BOOK_FILE_W], good);
}

TEST_F(SampleProviderTest, EveryFailingAllocationIsReportedAndLeaksNothing) {
  OpenBook();
  const Owned<IABContainer> contacts = OpenContacts();
  const Owned<IMAPITable> table = Contents(contacts.get());
  const size_t roots = Buffers::LiveRoots();
  int failures = -1;
  HRESULT hr = MAPI_E_NOT_ENOUGH_MEMORY;
  while (hr == MAPI_E_NOT_ENOUGH_MEMORY && failures < 1000) {
    Buffers::FailAfter(++failures);
    LPSRowSet rows = nullptr;
    hr = table->QueryRows(10, TBL_NOADVANCE, &rows);
    const RowSet rowOwner(rows);
    ULONG count = 0;
    LPSPropValue values = nullptr;
    if (SUCCEEDED(hr)) hr = contacts->GetProps(nullptr, MAPI_UNICODE, &count, &values);
    const Buffer<SPropValue> valueOwner(values);
    LPSPropTagArray tags = nullptr;
    if (SUCCEEDED(hr)) hr = contacts->GetPropList(MAPI_UNICODE, &tags);
    const Buffer<SPropTagArray> tagOwner(tags);
  }
  EXPECT_EQ(hr, S_OK);
  EXPECT_GT(failures, 20);
  EXPECT_EQ(Buffers::LiveRoots(), roots);
  // At logon the settings are the one buffer.
  Buffers::FailAfter(0);
  EXPECT_EQ(Open(), MAPI_E_NOT_ENOUGH_MEMORY);
  Buffers::FailAfter(-1);
}

TEST_F(SampleProviderTest, ThreadsShareATableWithoutLosingRows) {
  std::string book;
  for (int i = 0; i < 400; ++i) {
    book += "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:P" + std::to_string(i) + "\r\nEND:VCARD\r\n";
  }
  OpenBook(book);
  const Owned<IMAPITable> table = Contents(OpenContacts().get());
  std::vector<std::vector<std::wstring>> read(4);
  std::vector<std::thread> threads;
  for (auto& names : read) {
    threads.emplace_back([&names, &table] {
      for (std::vector<std::wstring> one; !(one = Names(table.get(), 1)).empty();) names.push_back(one[0]);
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::multiset<std::wstring> all;
  for (const auto& names : read) all.insert(names.begin(), names.end());
  EXPECT_EQ(all.size(), 400u);
  EXPECT_EQ(std::set<std::wstring>(all.begin(), all.end()).size(), 400u);
}

}  // namespace
}  // namespace orv::test
