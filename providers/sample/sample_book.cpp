// A provider that serves one contact file, read-only: its settings, its book, and the two functions of the library.
#include <algorithm>
#include <mutex>

#include "contact_cards.h"
#include "entry_window.h"
#include "formats/contact_properties.h"
#include "formats/text_codec.h"
#include "orv/kit/provider.hpp"
#include "sample_keys.h"
#include "sample_windows.h"

namespace sample {
namespace {

enum Kind : ULONG { kRoot, kContacts, kContact, kOutsider };

// Behind the kind: where the contact lay when the identifier was made (of an outsider: its list), which only tells
// identifiers apart, and the key by which the entry is found.
constexpr kit::KeyForm kForm = kit::KeyOfBytes(12, 12);

kit::EntryRef RefOf(Kind kind, size_t place = 0, ULONGLONG key = 0) {
  const auto hint = static_cast<ULONG>(place);
  BYTE bytes[kForm.most];
  std::memcpy(bytes, &hint, sizeof hint);
  std::memcpy(bytes + sizeof hint, &key, sizeof key);
  return {kind, bytes};
}

ULONGLONG KeyOf(const kit::EntryRef& entry) {
  ULONGLONG key = 0;
  std::memcpy(&key, entry.key.data() + sizeof(ULONG), sizeof key);
  return key;
}

// The file's name without its extension.
std::wstring StemOf(const std::wstring& path) {
  const size_t begin = path.find_last_of(L"\\/:") + 1;
  const size_t dot = path.rfind(L'.');
  return path.substr(begin, dot == std::wstring::npos || dot <= begin ? dot : dot - begin);
}

// The file has to be a contact file when it is chosen.
kit::Settings SampleSettings() {
  return kit::Settings().Path(PR_ORV_BOOK_FILE_W,
                              [](const SPropValue& path) { return ContactCards::Check(path.Value.lpszW); });
}

std::string SortKeyOf(const std::string& name) {
  constexpr DWORD kAsPeopleSort = LCMAP_SORTKEY | NORM_IGNORECASE | SORT_STRINGSORT;
  const auto utf16 = formats::ToUtf16(name);
  const std::wstring text(utf16.begin(), utf16.end());
  const auto map = [&](char* key, int room) {
    return LCMapStringEx(LOCALE_NAME_USER_DEFAULT, kAsPeopleSort, text.c_str(), static_cast<int>(text.size()),
                         reinterpret_cast<LPWSTR>(key), room, nullptr, nullptr, 0);
  };
  std::string key(static_cast<size_t>(map(nullptr, 0)), '\0');
  map(key.data(), static_cast<int>(key.size()));
  return key;
}

// As the user's language sorts; those of one name as they come in the file.
std::vector<size_t> OrderByName(const ContactCards& cards) {
  std::vector<std::pair<std::string, size_t>> keys;
  for (size_t i = 0; i < cards.size(); ++i) keys.emplace_back(SortKeyOf(cards.Name(i)), i);
  std::sort(keys.begin(), keys.end());
  std::vector<size_t> order;
  for (const auto& [key, contact] : keys) order.push_back(contact);
  return order;
}

// What the file said when it was first asked for, which never changes. One that cannot be read leaves the book empty: a
// failure would fail the logon to everything.
struct Content {
  explicit Content(const std::wstring& path)
      : status(path.empty() ? S_OK : ContactCards::Read(path, &cards)),
        keys(cards),
        order(OrderByName(cards)) {}

  ContactCards cards;
  const HRESULT status;
  const KeyIndex keys;
  const std::vector<size_t> order;  // of the table
};

// A contact of the file, or what a list names that is none.
struct Member {
  std::optional<size_t> contact;
  formats::Contact outsider;
};

class Book final : public kit::Book {
 public:
  explicit Book(const kit::Logon& logon)
      : kit::Book(logon, {kForm, kForm, kForm, kForm}),
        path_(logon.settings.Text(PR_ORV_BOOK_FILE_W)),
        language_(kit::ModuleOf(&kForm), logon.resource) {}

  std::vector<kit::EntryRef> Containers(const kit::EntryRef& parent) override {
    if (parent != Root()) return {};
    return {RefOf(kContacts)};
  }
  HRESULT Read(const kit::EntryRef& entry, std::span<const ULONG> columns, kit::PropList& values) override;
  kit::RowsPtr Contents(const kit::EntryRef& container) override;
  HRESULT ShowDetails(HWND owner, const kit::EntryRef& entry, ULONG flags) override;

 private:
  void ReadContainer(kit::PropList& values) const;
  void ReadContact(size_t contact, kit::PropList& values) const;
  void ReadOutsider(const formats::Contact& outsider, const kit::EntryRef& entry,
                    kit::PropList& values) const;
  std::vector<Member> MembersOf(size_t list) const;
  std::optional<size_t> FindContact(const kit::EntryRef& entry) const;
  const Content& File() const;

  const std::wstring path_;
  const kit::Language language_;
  mutable orv::sdk::Lock lock_;  // guards the reading of
  mutable std::unique_ptr<const Content> file_;
};

// This is the address book of a fax driver: a fax number comes before an e-mail address.
void SetContact(const formats::Contact& contact, kit::PropList& values) {
  const formats::ContactNumber* fax = contact.isList ? nullptr : formats::MainFax(contact);
  const formats::ContactEmail* email = formats::MainEmail(contact);
  formats::SetProperties(formats::ContactProperties(contact, fax), values);
  if (contact.isList || fax != nullptr || email == nullptr) return;
  values.Set(PR_ADDRTYPE, L"SMTP");
  values.Set(PR_EMAIL_ADDRESS, formats::ToUtf16(email->text));
}

HRESULT Book::Read(const kit::EntryRef& entry, std::span<const ULONG>, kit::PropList& values) {
  const bool isOutsider = entry.kind == kOutsider;
  const formats::Contact* outsider = isOutsider ? File().keys.FindOutsider(KeyOf(entry)) : nullptr;
  if (entry.kind == kContacts) {
    ReadContainer(values);
  } else if (const std::optional<size_t> contact = FindContact(entry)) {
    ReadContact(*contact, values);
  } else if (outsider != nullptr) {
    ReadOutsider(*outsider, entry, values);
  } else {
    return MAPI_E_NOT_FOUND;
  }
  return S_OK;
}

void Book::ReadContainer(kit::PropList& values) const {
  const Content& file = File();
  const std::wstring name = path_.empty() ? std::wstring(Name()) : StemOf(path_);
  const bool isRead = SUCCEEDED(file.status);
  // Why there is nothing in it stands where everybody looks.
  DescribeContainer(values, isRead ? name : name + L" (" + ReasonFor(file.status) + L")",
                    AB_RECIPIENTS | AB_UNMODIFIABLE);
  values.Set(PR_TRANSMITABLE_DISPLAY_NAME, name);
  values.Set(PR_CONTENT_COUNT, file.cards.size());
  values.Set(PR_ORV_SKIPPED_RECORDS, file.cards.rejected());
  values.Set(PR_ORV_BOOK_STATUS, file.status);
  values.Set(PR_ORV_BOOK_FILE_W, path_);
}

// The identifier says where the contact lies now.
void Book::ReadContact(size_t contact, kit::PropList& values) const {
  SetContact(File().cards.Contact(contact), values);
  Ids().Identify(RefOf(kContact, contact, File().keys.KeyOf(contact)), values);
}

void Book::ReadOutsider(const formats::Contact& outsider, const kit::EntryRef& entry,
                        kit::PropList& values) const {
  SetContact(outsider, values);
  Ids().Identify(entry, values);
}

kit::RowsPtr Book::Contents(const kit::EntryRef& container) {
  if (container.kind == kContacts) {
    return kit::RowsMadeBy(File().cards.size(), [this](size_t row, auto, auto& values) {
      ReadContact(File().order[row], values);
      return S_OK;
    });
  }
  const std::optional<size_t> list = FindContact(container);
  if (!list) return nullptr;
  const std::vector<Member> members = MembersOf(*list);
  return kit::RowsMadeBy(members.size(), [=, this](size_t row, auto, auto& values) {
    const auto& [contact, outsider] = members[row];
    if (contact) {
      ReadContact(*contact, values);
    } else {
      ReadOutsider(outsider, RefOf(kOutsider, *list, KeyOfOutsider(outsider)), values);
    }
    return S_OK;
  });
}

// Nothing can be changed, so the window is only closed.
HRESULT Book::ShowDetails(HWND owner, const kit::EntryRef& entry, ULONG) {
  const std::optional<size_t> shown = FindContact(entry);
  const formats::Contact* outsider =
      entry.kind == kOutsider ? File().keys.FindOutsider(KeyOf(entry)) : nullptr;
  if (!shown && outsider == nullptr) return MAPI_E_NOT_FOUND;
  const formats::Contact contact = shown ? File().cards.Contact(*shown) : *outsider;
  std::vector<std::string> members;
  for (const Member& each : shown ? MembersOf(*shown) : std::vector<Member>())
    members.push_back(each.contact ? File().cards.Name(*each.contact) : each.outsider.name);
  return ShowEntry(owner, language_, contact, members);
}

// In file order, without those that nothing is known of.
std::vector<Member> Book::MembersOf(size_t list) const {
  std::vector<Member> members;
  for (const formats::ContactMember& each : File().cards.Contact(list).members) {
    const std::optional<size_t> contact = File().keys.FindMember(each);
    std::optional<formats::Contact> outsider = OutsiderOf(each);
    if (contact || outsider) members.push_back({contact, std::move(outsider).value_or(formats::Contact())});
  }
  return members;
}

// Nothing when it has left the file, or when nobody can tell which one is meant any more.
std::optional<size_t> Book::FindContact(const kit::EntryRef& entry) const {
  return entry.kind == kContact ? File().keys.FindContact(KeyOf(entry)) : std::nullopt;
}

// Read when it is first asked for: logging on must not wait for it.
const Content& Book::File() const {
  const std::lock_guard guard(lock_);
  if (!file_) file_ = std::make_unique<const Content>(path_);
  return *file_;
}

class Service final : public kit::ServiceHandler {
 public:
  Service() : ServiceHandler(SampleSettings()) {}

 protected:
  // Values are stored; asked for its window the service lets the user choose the file.
  HRESULT Configure(const kit::ServiceCall& call) override {
    const bool hasValues = call.values.begin() != call.values.end();
    if (hasValues || (call.flags & SERVICE_UI_ALWAYS) == 0) return ServiceHandler::Configure(call);
    const auto owner = reinterpret_cast<HWND>(call.window);
    std::wstring path;
    if (const HRESULT hr = ChooseFile(owner, &path); FAILED(hr)) return hr;
    const HRESULT hr = ApplyText(call, path.c_str());
    if (FAILED(hr)) TellFailure(owner, path, hr);
    return hr;
  }
};

}  // namespace
}  // namespace sample

ORV_SERVICE_ENTRY(SampleServiceEntry, sample::Service())
ORV_PROVIDER(sample::Book, sample::SampleSettings())
