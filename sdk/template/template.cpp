// A provider to start from: people from a text file in UTF-8, a line each, "number;name;fax number". Read-only. What to
// replace: ReadPeople by wherever your entries come from, Read by what an entry's properties are.
//
// In this folder, with mingw-w64 (CMakeLists.txt does the same):
//   x86_64-w64-mingw32-g++-posix -std=c++20 -O2 -s -shared -static template.cpp template.def -I ../../../include
//       -L ../../../lib -lorvkit -o ../../../bin/xhttpla.dll
#include <map>
#include <string>

#include "orv/kit/provider.hpp"

namespace {

using namespace orv;

// An entry is found again, years later, by what stands in its identifier: here the line's number. Take what stays with
// a person (a row's key, a name that is unique), never a place in a list.
struct Person {
  std::wstring name, fax;
};
using People = std::map<ULONGLONG, Person>;

std::wstring FromUtf8(const std::string& bytes) {
  const int size = static_cast<int>(bytes.size());
  std::wstring text(bytes.size(), 0);
  text.resize(MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.data(), size));
  if (text.starts_with(0xFEFF)) text.erase(0, 1);  // the mark that some editors begin a file with
  return text;
}

// Files are read by the system's own calls: a standard stream would leave something behind at every logon.
HRESULT ReadBytes(const WCHAR* path, std::string* bytes) {
  constexpr DWORD kMost = 64 << 20;
  const HANDLE file =
      CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, 0);
  if (file == INVALID_HANDLE_VALUE) return MAPI_E_NOT_FOUND;
  const std::unique_ptr<void, decltype(&CloseHandle)> owner(file, CloseHandle);
  LARGE_INTEGER size{};
  DWORD read = 0;
  if (!GetFileSizeEx(file, &size) || size.QuadPart > kMost) return MAPI_E_DISK_ERROR;
  bytes->resize(static_cast<size_t>(size.QuadPart));
  const bool ok = ReadFile(file, bytes->data(), static_cast<DWORD>(bytes->size()), &read, nullptr);
  return ok && read == bytes->size() ? S_OK : MAPI_E_DISK_ERROR;
}

// Lines that are not of this form are left out.
People ParsePeople(const std::wstring& text) {
  People people;
  for (size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
    end = std::min(text.find_first_of(L"\r\n", begin), text.size());
    const std::wstring line = text.substr(begin, end - begin);
    const size_t name = line.find(L';'), fax = line.find(L';', name + 1);
    const ULONGLONG number = wcstoull(line.c_str(), nullptr, 10);
    if (name == line.npos || fax == line.npos || number == 0) continue;
    people[number] = {line.substr(name + 1, fax - name - 1), line.substr(fax + 1)};
  }
  return people;
}

// A book that cannot be read is an empty one: a failure here would fail the logon to all that the profile holds.
People ReadPeople(const kit::Logon& logon) {
  std::string bytes;
  const HRESULT hr = ReadBytes(logon.settings.Text(PR_ORV_BOOK_FILE_W).data(), &bytes);
  return SUCCEEDED(hr) ? ParsePeople(FromUtf8(bytes)) : People();
}

class Book final : public kit::Book {
 public:
  // Kinds of entries; 0 is the root container. They stand in identifiers: never renumber them.
  enum Kind : ULONG { kPeople = 1, kPerson = 2 };

  explicit Book(const kit::Logon& logon)
      : kit::Book(logon, {kit::kNoKey, kit::kNoKey, kit::kNumberKey}), people_(ReadPeople(logon)) {}

  std::vector<kit::EntryRef> Containers(const kit::EntryRef& parent) override {
    if (parent != Root()) return {};
    return {kit::EntryRef(kPeople)};
  }

  kit::RowsPtr Contents(const kit::EntryRef& container) override {
    if (container.kind != kPeople) return nullptr;
    std::vector<kit::EntryRef> entries;
    for (const auto& [number, person] : people_) entries.emplace_back(kPerson, number);
    return RowsOf(std::move(entries));
  }

  HRESULT Read(const kit::EntryRef& entry, std::span<const ULONG>, kit::PropList& values) override {
    if (entry.kind == kPeople) {
      DescribeContainer(values, L"People", AB_RECIPIENTS | AB_UNMODIFIABLE);
      return S_OK;
    }
    const auto found = people_.find(entry.Number());
    if (found == people_.end()) return MAPI_E_NOT_FOUND;
    const Person& person = found->second;
    values.Set(PR_DISPLAY_NAME, person.name);
    values.Set(PR_ADDRTYPE, L"FAX");
    values.Set(PR_EMAIL_ADDRESS, person.fax);
    values.Set(PR_PRIMARY_FAX_NUMBER, person.fax);
    return S_OK;
  }

 private:
  const People people_;  // never changed, so any number of threads may read it
};

// A wrong setting is refused where somebody can correct it.
HRESULT CheckFile(const SPropValue& path) {
  std::string bytes;
  return ReadBytes(path.Value.lpszW, &bytes);
}

kit::Settings MySettings() { return kit::Settings().Path(PR_ORV_BOOK_FILE_W, CheckFile); }

}  // namespace

ORV_SERVICE_ENTRY(TemplateServiceEntry, kit::ServiceHandler(MySettings()))
ORV_PROVIDER(Book, MySettings())
