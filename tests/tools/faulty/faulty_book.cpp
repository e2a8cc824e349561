#include "faulty_book.h"

#include <algorithm>
#include <cstring>

namespace faulty {

bool Has(std::string_view fault) {
  static char name[32] = {};  // found again by every thread alike
  if (name[0] == 0) {
    HMODULE self = nullptr;
    WCHAR path[MAX_PATH] = {};
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&Has), &self);
    GetModuleFileNameW(self, path, MAX_PATH);
    const std::wstring_view whole(path);
    const std::wstring_view stem = whole.substr(whole.find_last_of(L"\\/") + 1);
    std::transform(stem.begin(),
                   stem.begin() + static_cast<ptrdiff_t>(std::min(stem.find(L'.'), sizeof(name) - 1)), name,
                   [](WCHAR c) { return static_cast<char>(c); });
  }
  return fault == name;
}

namespace {

// A character for byte 0 that means nothing in a file.
constexpr wchar_t kFirstByte = 0x100;

// The same for as long as the library stays loaded.
ULONG LoadTime() {
  static const ULONG time = GetTickCount() & 0xFFFF0;
  return time;
}

}  // namespace

Book::~Book() {
  for (const Listener& each : listeners) each.sink->Release();
  if (!Has("leakobj")) kept->Release();
}

Bytes Book::MakeId(const Ref& ref) const {
  Bytes id(ORV_MIN_ENTRYID + 5);
  if (Has("idflags")) id[0] = 1;
  std::memcpy(id.data() + ORV_ENTRYID_UID_OFFSET, &uid, sizeof(uid));
  id[ORV_MIN_ENTRYID] = ref.kind;
  const ULONG key = ref.kind == kFixedEntry && Has("idclock") ? ref.key ^ LoadTime() : ref.key;
  std::memcpy(id.data() + ORV_MIN_ENTRYID + 1, &key, sizeof(key));
  return id;
}

bool Book::ReadId(ULONG size, const ENTRYID* given, Ref* ref) const {
  const auto* id = reinterpret_cast<const BYTE*>(given);
  if (Has("idnull") && id[0] == 0xFF) return false;
  const bool isLong = size == ORV_MIN_ENTRYID + 5 || (Has("idshort") && size > ORV_MIN_ENTRYID + 1);
  if (id == nullptr || !isLong) return false;
  if (Has("idalign") && reinterpret_cast<ULONG_PTR>(id) % 8 != 0) return false;
  const ULONG flags = id[0] | id[1] | id[2] | id[3];
  if (flags != 0 && !Has("idflags")) return false;
  if (!Has("idforeign") && std::memcmp(id + ORV_ENTRYID_UID_OFFSET, &uid, sizeof(uid)) != 0) return false;
  ref->kind = static_cast<Kind>(id[ORV_MIN_ENTRYID]);
  std::memcpy(&ref->key, id + ORV_MIN_ENTRYID + 1, size - ORV_MIN_ENTRYID - 1);
  if (Has("idclock") && ref->kind == kFixedEntry) ref->key ^= LoadTime();
  if (Has("idtwo")) ref->key &= 0xFFFFFF;
  if (Has("idwild") && ref->kind == kFixedEntry) ref->key %= kFixedEntries;
  return ref->kind <= kOwnEntry && (ref->kind >= kFixedEntry || ref->key == 0) &&
         (ref->kind != kOwn || !path.empty());
}

bool Book::IsThere(const Ref& ref) {
  if (ref.kind == kRoot && Has("rootdead")) return false;
  if (ref.kind == kFixedEntry && Has("iddead") && ref.key % 2 == 0) return false;
  if (ref.kind == kFixedEntry) return ref.key < kFixedEntries;
  const std::lock_guard guard(lock);
  return ref.kind != kOwnEntry || records.count(ref.key) != 0;
}

Properties Book::PropertiesOf(const Ref& ref) {
  const Bytes id = MakeId(ref);
  Properties all = {{PR_ENTRYID, 0, {}, id}, {PR_INSTANCE_KEY, 0, {}, id}};
  if (ref.kind < kFixedEntry) {
    constexpr ULONG kFlags[] = {AB_SUBCONTAINERS | AB_UNMODIFIABLE, AB_RECIPIENTS | AB_UNMODIFIABLE,
                                AB_RECIPIENTS | AB_MODIFIABLE};
    const wchar_t* names[] = {L"Faulty", L"Fixed", L"Own"};
    all.push_back({PR_OBJECT_TYPE, static_cast<LONG>(MAPI_ABCONT)});
    all.push_back({PR_DISPLAY_NAME_W, 0, names[ref.kind]});
    all.push_back({PR_CONTAINER_FLAGS, static_cast<LONG>(kFlags[ref.kind])});
    all.push_back({PR_DEPTH, 0});
    if (ref.kind == kOwn) all.push_back({PR_DEF_CREATE_DL, 0, {}, MakeId({kListTemplate})});
    return all;
  }
  Record record{L"Entry " + std::to_wstring(ref.key), L"+49 40 " + std::to_wstring(ref.key)};
  if (ref.kind == kOwnEntry) {
    const std::lock_guard guard(lock);
    const auto found = records.find(ref.key);
    record = found != records.end() ? found->second : Record{};
  }
  if (!Has("noname"))
    all.push_back({PR_OBJECT_TYPE, static_cast<LONG>(record.isList ? MAPI_DISTLIST : MAPI_MAILUSER)});
  all.push_back({PR_DISPLAY_NAME_W, 0, record.name});
  all.push_back({PR_ADDRTYPE_W, 0, record.isList ? L"MAPIPDL" : L"FAX"});
  all.push_back({PR_EMAIL_ADDRESS_W, 0, record.number});
  return all;
}

bool Book::IsList(const Ref& ref) {
  const std::lock_guard guard(lock);
  const auto found = records.find(ref.key);
  return ref.kind == kOwnEntry && found != records.end() && found->second.isList;
}

std::vector<Ref> Book::RowsOf(const Ref& container) {
  std::vector<Ref> rows;
  if (container.kind == kRoot) {
    rows.push_back({kFixed});
    if (!path.empty()) rows.push_back({kOwn});
    return rows;
  }
  const std::lock_guard guard(lock);
  for (ULONG key = 0; container.kind == kFixed && key < kFixedEntries; ++key)
    rows.push_back({kFixedEntry, key});
  if (container.kind == kOwn) {
    for (const auto& [key, record] : records) rows.push_back({kOwnEntry, key});
  }
  if (container.kind == kOwnEntry) {
    for (const Bytes& each : records[container.key].members) {
      Ref ref;
      const bool isOurs =
          ReadId(static_cast<ULONG>(each.size()), reinterpret_cast<const ENTRYID*>(each.data()), &ref);
      if (isOurs && (ref.kind != kOwnEntry || records.count(ref.key) != 0)) rows.push_back(ref);
    }
  }
  return rows;
}

namespace {

std::vector<std::wstring> Split(const std::wstring& text, wchar_t at) {
  std::vector<std::wstring> parts(1);
  for (const wchar_t each : text) {
    if (each == at) {
      parts.emplace_back();
    } else {
      parts.back() += each;
    }
  }
  return parts;
}

}  // namespace

// A line a record, with tabs between: key, name and number; of a list its members behind them, a character a byte.
void Book::Load() {
  const HANDLE file =
      CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return;
  std::wstring text(GetFileSize(file, nullptr) / sizeof(WCHAR), L'\0');
  DWORD read = 0;
  ReadFile(file, text.data(), static_cast<DWORD>(text.size() * sizeof(WCHAR)), &read, nullptr);
  CloseHandle(file);
  for (const std::wstring& line : Split(text, L'\n')) {
    const std::vector<std::wstring> parts = Split(line, L'\t');
    if (parts.size() < 3) continue;
    const ULONG key = std::stoul(line);
    Record& record = records[key];
    record = {parts[1], parts[2], parts.size() > 3};
    for (size_t i = 4; i < parts.size(); ++i) {
      record.members.emplace_back();
      for (const wchar_t each : parts[i])
        record.members.back().push_back(static_cast<BYTE>(each - kFirstByte));
    }
    nextKey = std::max(nextKey, key + 1);
  }
}

void Book::Store() {
  if (Has("memory")) return;
  std::wstring text;
  for (const auto& [key, record] : records) {
    text += std::to_wstring(key) + L"\t" + record.name + L"\t" + record.number;
    if (record.isList) text += L"\t";
    for (const Bytes& each : record.members) {
      text += L"\t";
      for (const BYTE byte : each) text += static_cast<wchar_t>(kFirstByte + byte);
    }
    text += L"\n";
  }
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  DWORD written = 0;
  WriteFile(file, text.data(), static_cast<DWORD>(text.size() * sizeof(WCHAR)), &written, nullptr);
  CloseHandle(file);
}

void Book::Tell(ULONG event, const Bytes& id) {
  if (Has("silent")) return;
  std::vector<Listener> called;
  {
    const std::lock_guard guard(lock);
    for (const Listener& each : listeners) {
      if (each.isGone && !Has("talks")) continue;
      each.sink->AddRef();
      called.push_back(each);
    }
  }
  Bytes copy = id;
  NOTIFICATION notification{};
  notification.ulEventType = event;
  notification.info.obj.cbEntryID = static_cast<ULONG>(copy.size());
  notification.info.obj.lpEntryID = reinterpret_cast<LPENTRYID>(copy.data());
  if (Has("locks")) lock.lock();
  for (const Listener& each : called) each.sink->OnNotify(1, &notification);
  if (Has("locks")) lock.unlock();
  for (const Listener& each : called) each.sink->Release();
}

const Property* Find(const Properties& properties, ULONG tag) {
  const auto found = std::find_if(properties.begin(), properties.end(),
                                  [tag](const Property& each) { return PROP_ID(each.tag) == PROP_ID(tag); });
  return found != properties.end() ? &*found : nullptr;
}

std::wstring NameOf(const Properties& properties) {
  const Property* name = Find(properties, PR_DISPLAY_NAME_W);
  return name != nullptr ? name->text : std::wstring();
}

namespace {

void CopyValue(const Allocator& allocator, void* root, void** last, const Property& from, SPropValue* to) {
  static wchar_t own[] = L"Faulty";
  to->ulPropTag = from.tag;
  void* parent = Has("chains") && *last != nullptr ? *last : root;
  switch (PROP_TYPE(from.tag)) {
    case PT_UNICODE:
      to->Value.lpszW = Has("ownptr") ? own : allocator.CopyText(parent, from.text);
      *last = to->Value.lpszW;
      if (Has("overrun")) to->Value.lpszW[from.text.size() + 1] = L'!';
      break;
    case PT_BINARY:
      to->Value.bin = allocator.CopyBytes(parent, from.bytes.data(), from.bytes.size());
      *last = to->Value.bin.lpb;
      break;
    default:
      to->Value.l = from.number;
  }
}

}  // namespace

Allocator::Root CopyValues(const Allocator& allocator, const Properties& properties,
                           const std::vector<ULONG>& tags) {
  Allocator::Root root = allocator.AllocateRoot(tags.size() * sizeof(SPropValue));
  auto* value = static_cast<SPropValue*>(root.get());
  void* last = nullptr;
  for (const ULONG tag : tags) {
    const Property* found = Find(properties, tag);
    if (tag == PR_NULL && !Has("nulltag")) {
      value->ulPropTag = PR_NULL;
    } else if (found == nullptr) {
      value->ulPropTag = CHANGE_PROP_TYPE(tag, PT_ERROR);
      value->Value.err = MAPI_E_NOT_FOUND;
    } else {
      try {
        CopyValue(allocator, root.get(), &last, *found, value);
      } catch (const std::bad_alloc&) {
        if (!Has("failing")) throw;
        value->ulPropTag = CHANGE_PROP_TYPE(tag, PT_ERROR);
      }
    }
    ++value;
  }
  return root;
}

}  // namespace faulty
