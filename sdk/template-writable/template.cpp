// A provider to start from that can be changed: people in a text file in UTF-8, a line each, "number;name;fax
// number;stamp". It creates, changes and deletes, and tells who has advised. What to replace: ReadPeople and
// WritePeople by your store, Describe and PersonOf by what an entry is.
//
// In this folder, with mingw-w64 (CMakeLists.txt does the same):
//   x86_64-w64-mingw32-g++-posix -std=c++20 -O2 -s -shared -static template.cpp template.def -I ../../../include
//       -L ../../../lib -lorvkit -o ../../../bin/xhttpwa.dll
#include <map>
#include <string>

#include "orv/kit/provider.hpp"

namespace {

using namespace orv;

struct Person {
  std::wstring name, fax;
  ULONGLONG stamp = 0;  // of the last change, as a FILETIME
};
// By the number that stands in an entry's identifier; one that was given away is never used again.
using People = std::map<ULONGLONG, Person>;
using PeoplePtr = std::shared_ptr<const People>;

struct CloseFile {
  void operator()(HANDLE file) const { CloseHandle(file); }
};
using File = std::unique_ptr<void, CloseFile>;

// Null when the system refuses; GetLastError tells why.
File OpenFile(const std::wstring& path, DWORD access, DWORD share, DWORD creation, DWORD attributes = 0) {
  const HANDLE file = CreateFileW(path.c_str(), access, share, nullptr, creation, attributes, nullptr);
  return File(file != INVALID_HANDLE_VALUE ? file : nullptr);
}

std::wstring FromUtf8(const std::string& bytes) {
  const int size = static_cast<int>(bytes.size());
  std::wstring text(bytes.size(), 0);
  text.resize(MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.data(), size));
  if (text.starts_with(0xFEFF)) text.erase(0, 1);  // the mark that some editors begin a file with
  return text;
}

std::string ToUtf8(const std::wstring& text) {
  constexpr size_t kMostPerUnit = 3;
  const int size = static_cast<int>(text.size());
  std::string bytes(text.size() * kMostPerUnit, 0);
  bytes.resize(WideCharToMultiByte(CP_UTF8, 0, text.data(), size, bytes.data(),
                                   static_cast<int>(bytes.size()), nullptr, nullptr));
  return bytes;
}

void ParseLine(const std::wstring& line, People& people) {
  const size_t name = line.find(L';'), fax = line.find(L';', name + 1), stamp = line.find(L';', fax + 1);
  const ULONGLONG number = wcstoull(line.c_str(), nullptr, 10);
  if (name == line.npos || fax == line.npos || number == 0) return;
  const ULONGLONG changed = stamp != line.npos ? wcstoull(line.c_str() + stamp + 1, nullptr, 10) : 0;
  people[number] = {line.substr(name + 1, fax - name - 1), line.substr(fax + 1, stamp - fax - 1), changed};
}

// A file that is not there yet holds nobody, in a folder that is there. `people` is filled on success only.
HRESULT ReadPeople(const std::wstring& path, People* people) {
  constexpr DWORD kMost = 64 << 20;
  const File file = OpenFile(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, OPEN_EXISTING);
  const DWORD error = file == nullptr ? GetLastError() : ERROR_SUCCESS;
  if (error == ERROR_PATH_NOT_FOUND) return MAPI_E_NOT_FOUND;
  if (file == nullptr) return error == ERROR_FILE_NOT_FOUND ? S_OK : MAPI_E_DISK_ERROR;
  LARGE_INTEGER size{};
  DWORD read = 0;
  if (!GetFileSizeEx(file.get(), &size) || size.QuadPart > kMost) return MAPI_E_DISK_ERROR;
  std::string bytes(static_cast<size_t>(size.QuadPart), 0);
  if (!ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr))
    return MAPI_E_DISK_ERROR;
  const std::wstring text = FromUtf8(bytes);
  for (size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
    end = std::min(text.find_first_of(L"\r\n", begin), text.size());
    ParseLine(text.substr(begin, end - begin), *people);
  }
  return S_OK;
}

// Beside the file first, then in its place: whenever the power fails there is an old file or a new one, never half.
HRESULT WritePeople(const std::wstring& path, const People& people) {
  const std::wstring next = path + L".new";
  std::wstring text;
  for (const auto& [number, person] : people)
    text += std::to_wstring(number) + L';' + person.name + L';' + person.fax + L';' +
            std::to_wstring(person.stamp) + L"\r\n";
  const std::string bytes = ToUtf8(text);
  const DWORD size = static_cast<DWORD>(bytes.size());
  DWORD written = 0;
  {
    const File file = OpenFile(next, GENERIC_WRITE, 0, CREATE_ALWAYS);
    const bool ok = file != nullptr && WriteFile(file.get(), bytes.data(), size, &written, nullptr) &&
                    written == size && FlushFileBuffers(file.get());
    if (!ok) return MAPI_E_DISK_ERROR;
  }
  const DWORD how = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  return MoveFileExW(next.c_str(), path.c_str(), how) ? S_OK : MAPI_E_DISK_ERROR;
}

// Programs that change one file take turns: who holds this file beside it may. Null after two seconds.
File WaitForTurn(const std::wstring& path) {
  constexpr int kTries = 100;
  constexpr DWORD kPause = 20;
  for (int i = 0; i < kTries; ++i) {
    File turn = OpenFile(path + L".lock", GENERIC_WRITE, 0, OPEN_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE);
    if (turn != nullptr) return turn;
    Sleep(kPause);
  }
  return nullptr;
}

// Later than all before.
ULONGLONG NewStamp(const People& people) {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  ULONGLONG stamp = ULARGE_INTEGER{{now.dwLowDateTime, now.dwHighDateTime}}.QuadPart;
  for (const auto& [number, person] : people) stamp = std::max({stamp, number + 1, person.stamp + 1});
  return stamp;
}

void Describe(const Person& person, kit::PropList& values) {
  const ULARGE_INTEGER stamp{.QuadPart = person.stamp};
  values.Set(PR_DISPLAY_NAME, person.name);
  values.Set(PR_ADDRTYPE, L"FAX");
  values.Set(PR_EMAIL_ADDRESS, person.fax);
  values.Set(PR_PRIMARY_FAX_NUMBER, person.fax);
  values.Set(PR_LAST_MODIFICATION_TIME, FILETIME{stamp.LowPart, stamp.HighPart});
}

ULONGLONG StampOf(const kit::PropList& values) {
  const SPropValue* time = values.Find(PR_LAST_MODIFICATION_TIME);
  if (time == nullptr || time->ulPropTag != PR_LAST_MODIFICATION_TIME) return 0;
  return ULARGE_INTEGER{{time->Value.ft.dwLowDateTime, time->Value.ft.dwHighDateTime}}.QuadPart;
}

// What would end a field or a line of the file.
std::wstring Field(std::wstring_view text) {
  std::wstring field(text);
  for (WCHAR& each : field) {
    if (each == L';' || each < L' ') each = L' ';
  }
  return field;
}

// The number is told by either property; the one that was set counts. An address of another kind is none.
Person PersonOf(const kit::Changes& changes, ULONGLONG stamp) {
  const auto wasSet = [&](ULONG tag) {
    return std::find(changes.set.begin(), changes.set.end(), tag) != changes.set.end();
  };
  const std::wstring_view type = changes.values.Text(PR_ADDRTYPE);
  const bool isFax = type.empty() || type == L"FAX";
  const bool isTold = wasSet(PR_EMAIL_ADDRESS) || !wasSet(PR_PRIMARY_FAX_NUMBER);
  const ULONG tag = isFax && isTold ? PR_EMAIL_ADDRESS : PR_PRIMARY_FAX_NUMBER;
  return {Field(changes.values.Text(PR_DISPLAY_NAME)), Field(changes.values.Text(tag)), stamp};
}

class Book final : public kit::Book {
 public:
  // Kinds of entries; 0 is the root container. They stand in identifiers: never renumber them.
  enum Kind : ULONG { kPeople = 1, kPerson = 2 };

  explicit Book(const kit::Logon& logon)
      : kit::Book(logon, {kit::kNoKey, kit::kNoKey, kit::kNumberKey}),
        path_(logon.settings.Text(PR_ORV_BOOK_FILE_W)) {}

  // A file that cannot be read is an empty book that cannot be changed, and that says why: PR_ORV_BOOK_STATUS.
  HRESULT Open() override {
    auto people = std::make_shared<People>();
    if (!path_.empty()) status_ = ReadPeople(path_, people.get());
    canChange_ = !path_.empty() && SUCCEEDED(status_);
    people_ = std::move(people);
    return S_OK;
  }

  std::vector<kit::EntryRef> Containers(const kit::EntryRef& parent) override {
    if (parent != Root()) return {};
    return {kit::EntryRef(kPeople)};
  }

  kit::RowsPtr Contents(const kit::EntryRef& container) override {
    if (container.kind != kPeople) return nullptr;
    return RowsOf([this] {
      std::vector<kit::EntryRef> entries;
      for (const auto& [number, person] : *Now()) entries.emplace_back(kPerson, number);
      return entries;
    });
  }

  HRESULT Read(const kit::EntryRef& entry, std::span<const ULONG>, kit::PropList& values) override {
    if (entry.kind == kPeople) {
      DescribeContainer(values, L"People", AB_RECIPIENTS | (canChange_ ? AB_MODIFIABLE : AB_UNMODIFIABLE));
      values.Set(PR_ORV_BOOK_STATUS, status_);
      values.Set(PR_ORV_BOOK_FILE_W, path_);
      return S_OK;
    }
    const PeoplePtr people = Now();
    const auto found = people->find(entry.Number());
    if (found == people->end()) return MAPI_E_NOT_FOUND;
    Describe(found->second, values);
    return S_OK;
  }

  kit::Access AccessTo(const kit::EntryRef& entry) override {
    return canChange_ && entry != Root() ? kit::Access::kModify : kit::Access::kRead;
  }

  // What the file has no place for is refused rather than lost.
  HRESULT CheckSet(const SPropValue& value) override {
    switch (value.ulPropTag) {
      case PR_DISPLAY_NAME:
      case PR_ADDRTYPE:
      case PR_EMAIL_ADDRESS:
      case PR_PRIMARY_FAX_NUMBER:
        return S_OK;
      default:
        return MAPI_E_NO_SUPPORT;
    }
  }

  HRESULT Create(const kit::EntryRef&, ULONG, ULONG flags, kit::Changes& changes,
                 kit::EntryRef* made) override {
    return Update([&](People& people) {
      const ULONGLONG number = NewStamp(people);
      const Person person = PersonOf(changes, number);
      const auto isSame = [&](const auto& each) { return each.second.name == person.name; };
      const bool isTwin = std::any_of(people.begin(), people.end(), isSame);
      if (isTwin && (flags & CREATE_CHECK_DUP_STRICT) != 0) return MAPI_E_COLLISION;
      people[number] = person;
      Describe(person, changes.values);
      *made = kit::EntryRef(kPerson, number);
      return S_OK;
    });
  }

  HRESULT Change(const kit::EntryRef& entry, kit::Changes& changes) override {
    return Update([&](People& people) {
      const auto found = people.find(entry.Number());
      if (found == people.end()) return MAPI_E_OBJECT_DELETED;
      if (!changes.force && found->second.stamp != StampOf(changes.values)) return MAPI_E_OBJECT_CHANGED;
      found->second = PersonOf(changes, NewStamp(people));
      Describe(found->second, changes.values);
      return S_OK;
    });
  }

  HRESULT Delete(const kit::EntryRef& entry) override {
    return Update(
        [&](People& people) { return people.erase(entry.Number()) != 0 ? S_OK : MAPI_E_NOT_FOUND; });
  }

  // The kit tells of what is created, changed and deleted through its objects, to these and to who has advised.
  kit::TableSet* TablesOf(const kit::EntryRef& container) override {
    return container.kind == kPeople ? &tables_ : nullptr;
  }
  kit::EntryRef ParentOf(const kit::EntryRef& entry) override {
    return entry.kind == kPerson ? kit::EntryRef(kPeople) : Root();
  }
  bool TellsOfChanges() const override { return true; }

 private:
  PeoplePtr Now() {
    const std::lock_guard guard(lock_);
    return people_;
  }

  // One change at a time: reads what is stored now, changes it, stores it. A failure leaves all as it was.
  template <class Action>
  HRESULT Update(Action action) {
    const std::lock_guard one(changing_);
    const File turn = WaitForTurn(path_);
    if (turn == nullptr) return MAPI_E_BUSY;
    auto people = std::make_shared<People>();
    if (const HRESULT hr = ReadPeople(path_, people.get()); FAILED(hr)) return hr;
    if (const HRESULT hr = action(*people); FAILED(hr)) return hr;
    if (const HRESULT hr = WritePeople(path_, *people); FAILED(hr)) return hr;
    const std::lock_guard guard(lock_);
    people_ = std::move(people);
    return S_OK;
  }

  const std::wstring path_;
  HRESULT status_ = S_OK;  // of reading the file
  bool canChange_ = false;
  kit::TableSet tables_;
  sdk::Lock changing_;  // held while the file is written
  sdk::Lock lock_;      // guards people_
  PeoplePtr people_;    // what it points to never changes
};

// A wrong setting is refused where somebody can correct it.
HRESULT CheckFile(const SPropValue& path) {
  People people;
  return ReadPeople(path.Value.lpszW, &people);
}

kit::Settings MySettings() { return kit::Settings().Path(PR_ORV_BOOK_FILE_W, CheckFile); }

}  // namespace

ORV_SERVICE_ENTRY(TemplateServiceEntry, kit::ServiceHandler(MySettings()))
ORV_PROVIDER(Book, MySettings())
