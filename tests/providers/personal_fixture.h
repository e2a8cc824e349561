// Personal address books as a client has them: services of a profile, sessions, containers, tables.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "orv/kit/restriction.hpp"
#include "orv/orvbook.h"
#include "profiles/registry_store.h"
#include "tests/props/samples.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::test {

using kit::PropList;
using Names = std::vector<std::wstring>;
using Fields = std::initializer_list<std::pair<ULONG, const wchar_t*>>;
using Container = sdk::ComPtr<IABContainer>;
using Table = sdk::ComPtr<IMAPITable>;

inline ENTRYLIST* ListOf(std::vector<SBinary>& ids, const std::vector<Bytes>& entries, ENTRYLIST& list) {
  for (const Bytes& each : entries)
    ids.push_back({static_cast<ULONG>(each.size()), const_cast<BYTE*>(each.data())});
  list = {static_cast<ULONG>(ids.size()), ids.data()};
  return &list;
}

// A list of entries for one call.
class Entries {
 public:
  explicit Entries(const std::vector<Bytes>& entries) : entries_(entries) { ListOf(ids_, entries_, list_); }
  ENTRYLIST* Get() { return &list_; }

 private:
  std::vector<Bytes> entries_;
  std::vector<SBinary> ids_;
  ENTRYLIST list_;
};

// Another program of the build, from its start until it says that it is ready, and on to its end; killed if need be.
class OtherProcess {
 public:
  OtherProcess(std::wstring line, const std::wstring& ready) {
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, ready.c_str());
    STARTUPINFOW start{};
    start.cb = sizeof start;
    EXPECT_TRUE(
        CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process_))
        << line;
    EXPECT_EQ(WaitForSingleObject(event, kLongest), WAIT_OBJECT_0) << line;
    CloseHandle(event);
  }
  ~OtherProcess() {
    TerminateProcess(process_.hProcess, 1);
    WaitForSingleObject(process_.hProcess, INFINITE);
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

 private:
  static constexpr DWORD kLongest = 60000;
  PROCESS_INFORMATION process_{};
};

// All properties, or those of the tags that are there.
inline PropList Props(IMAPIProp& object) {
  sdk::Buffer<SPropValue> values(&OrvFreeBuffer);
  ULONG count = 0;
  EXPECT_TRUE(SUCCEEDED(object.GetProps(nullptr, MAPI_UNICODE, &count, values.Put())));
  return PropList(sdk::ValueView(values.Get(), count));
}
inline Bytes IdOf(const PropList& values) {
  const SBinary id = values.Bytes(PR_ENTRYID);
  return {id.lpb, id.lpb + id.cb};
}

// The rows that are left to read, by these columns; at most `most`.
inline std::vector<PropList> Rows(IMAPITable& table, std::vector<ULONG> columns, size_t most = 100000) {
  columns.insert(columns.begin(), static_cast<ULONG>(columns.size()));
  EXPECT_EQ(table.SetColumns(reinterpret_cast<LPSPropTagArray>(columns.data()), 0), S_OK);
  std::vector<PropList> found;
  while (found.size() < most) {
    sdk::RowSet rows(&OrvFreeBuffer);
    EXPECT_EQ(table.QueryRows(50, 0, rows.Put()), S_OK);
    if (!rows || rows->cRows == 0) break;
    for (ULONG i = 0; i < rows->cRows; ++i) found.emplace_back(sdk::ValueView(rows->aRow[i]));
  }
  return found;
}
inline Names Texts(IMAPITable& table, ULONG column = PR_DISPLAY_NAME) {
  Names texts;
  for (const PropList& each : Rows(table, {column})) texts.emplace_back(each.Text(column));
  return texts;
}
// From the beginning.
inline Names AllTexts(IMAPITable& table, ULONG column = PR_DISPLAY_NAME) {
  EXPECT_TRUE(SUCCEEDED(table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr)));
  return Texts(table, column);
}

template <class Object>
Table Contents(const Object& container) {
  Table table;
  EXPECT_EQ(container->GetContentsTable(MAPI_UNICODE, table.Put()), S_OK);
  return table;
}
template <class Object>
Names Shown(const Object& container, ULONG column = PR_DISPLAY_NAME) {
  const Table table = Contents(container);
  return Texts(*table.Get(), column);
}
template <class Object>
std::vector<Bytes> Ids(const Object& container) {
  const Table table = Contents(container);
  std::vector<Bytes> ids;
  for (const PropList& each : Rows(*table.Get(), {PR_ENTRYID})) ids.push_back(IdOf(each));
  return ids;
}

// A logon.
class Client {
 public:
  explicit Client(const wchar_t* profile = L"P") {
    EXPECT_EQ(OrvOpen(0, profile, MAPI_UNICODE, nullptr, nullptr, nullptr, book_.Put(), session_.Put(), 1),
              S_OK);
  }
  ~Client() { book_.Reset(); }

  IAddrBook* Book() { return book_.Get(); }
  IOrvSession* Session() { return session_.Get(); }
  template <class Interface>
  sdk::ComPtr<Interface> SessionAs() {
    return session_.As<Interface>();
  }

  // The container that is called so.
  Container Open(std::wstring_view name = L"own", ULONG flags = MAPI_BEST_ACCESS) {
    sdk::ComPtr<IABContainer> root = OpenEntry<IABContainer>({});
    Table table;
    EXPECT_EQ(root->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put()), S_OK);
    std::wstring others;
    for (const PropList& each : Rows(*table.Get(), {PR_ENTRYID, PR_DISPLAY_NAME, PR_CONTAINER_FLAGS})) {
      others += L"\n" + std::wstring(each.Text(PR_DISPLAY_NAME));
      const bool isIt =
          (each.Number(PR_CONTAINER_FLAGS) & AB_RECIPIENTS) != 0 && each.Text(PR_DISPLAY_NAME) == name;
      if (isIt) return OpenEntry<IABContainer>(IdOf(each), S_OK, flags);
    }
    ADD_FAILURE() << "no container is called " << std::wstring(name) << ", but" << others;
    return {};
  }

  template <class Interface>
  sdk::ComPtr<Interface> OpenEntry(Bytes id, HRESULT expected = S_OK, ULONG flags = MAPI_BEST_ACCESS) {
    ULONG type = 0;
    sdk::ComPtr<Interface> entry;
    EXPECT_EQ(book_->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<LPENTRYID>(id.data()), nullptr,
                               flags, &type, entry.PutUnknown()),
              expected);
    return entry;
  }
  std::wstring Text(const Bytes& id, ULONG tag = PR_DISPLAY_NAME) {
    return std::wstring(Props(*OpenEntry<IMAPIProp>(id).Get()).Text(tag));
  }

 private:
  sdk::ComPtr<IOrvSession> session_;
  sdk::ComPtr<IAddrBook> book_;
};

// Whom a list stands for; OrvFreePadrlist frees it.
inline ADRLIST* Expand(Client& client, const Bytes& list) {
  SPropValue* row = nullptr;
  ADRLIST* recipients = nullptr;
  EXPECT_EQ(OrvAllocateBuffer(3 * sizeof *row, reinterpret_cast<void**>(&row)), S_OK);
  row[0] = Binary(PR_ENTRYID, list.data(), list.size());
  row[1] = Long(PR_OBJECT_TYPE, MAPI_DISTLIST);
  row[2] = Long(PR_RECIPIENT_TYPE, MAPI_CC);
  EXPECT_EQ(OrvAllocateBuffer(CbNewADRLIST(1), reinterpret_cast<void**>(&recipients)), S_OK);
  recipients->cEntries = 1;
  recipients->aEntries[0] = {0, 3, row};
  EXPECT_EQ(client.Session()->ExpandRecipients(0, &recipients), S_OK);
  return recipients;
}
// Sorted.
inline Names NamesIn(const ADRLIST& recipients) {
  Names names;
  for (ULONG i = 0; i < recipients.cEntries; ++i)
    names.emplace_back(sdk::ValueView(recipients.aEntries[i]).Text(PR_DISPLAY_NAME));
  std::sort(names.begin(), names.end());
  return names;
}

inline HRESULT Set(IMAPIProp& entry, Fields fields, ULONG flags = KEEP_OPEN_READWRITE) {
  PropList values;
  for (const auto& [tag, text] : fields) values.Set(tag, text);
  sdk::Buffer<SPropProblemArray> problems(&OrvFreeBuffer);
  const HRESULT hr = entry.SetProps(static_cast<ULONG>(values.size()),
                                    const_cast<LPSPropValue>(values.View().begin()), problems.Put());
  if (FAILED(hr)) return hr;
  return problems ? problems->aProblem[0].scode : entry.SaveChanges(flags);
}

// A new entry of the container; its identifier.
template <class Object>
Bytes Add(const Object& container, Fields fields, HRESULT expected = S_OK, bool isList = false,
          ULONG flags = 0) {
  const PropList own = Props(*container.Get());
  SBinary form = own.Bytes(isList ? PR_DEF_CREATE_DL : PR_DEF_CREATE_MAILUSER);
  sdk::ComPtr<IMAPIProp> entry;
  EXPECT_EQ(container->CreateEntry(form.cb, reinterpret_cast<LPENTRYID>(form.lpb), flags, entry.Put()), S_OK);
  if (!entry) return {};
  EXPECT_EQ(Set(*entry.Get(), fields), expected);
  return IdOf(Props(*entry.Get()));
}

class PersonalTest : public testing::Test {
 protected:
  PersonalTest() {
    installation_.CopyIn(L"xhtpaba.dll", L"xhtpaba.dll");
    AddService(1, Path(L"own.orvab"));
  }

  std::wstring Path(const std::wstring& name) const { return installation_.Path(name); }

  // One more personal book of profile "P". Books load in the order of these numbers.
  void AddService(BYTE number, const std::wstring& file, const wchar_t* profile = L"P",
                  const char* entry = "PersonalServiceEntry", const wchar_t* library = L"xhtpaba.dll") {
    const std::string uid(sizeof(MAPIUID), static_cast<char>(number));
    const SPropValue values[] = {Binary(PR_SERVICE_UID, uid), Unicode(PR_SERVICE_DLL_NAME_W, library),
                                 String8(PR_SERVICE_ENTRY_NAME, entry), Unicode(PR_DISPLAY_NAME, L"Personal"),
                                 Unicode(PR_ORV_BOOK_FILE_W, file.c_str())};
    RowList& rows = profiles_[profile];
    ASSERT_EQ(rows.Add({0, std::size(values), const_cast<SPropValue*>(values)}, rows.Count()), S_OK);
    ASSERT_EQ(registry_store::SaveServiceRows(rows, profile), S_OK);
  }

  RedirectedRegistry registry_;
  Installation installation_;
  std::map<std::wstring, RowList> profiles_;
};

}  // namespace orv::test
