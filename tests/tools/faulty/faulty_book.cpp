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

Book::~Book() {
  for (const Listener& each : listeners) each.sink->Release();
  if (!Has("leakobj")) kept->Release();
}

Bytes Book::MakeId(const Ref& ref) const {
  Bytes id(ORV_MIN_ENTRYID + 5);
  if (Has("idflags")) id[0] = 1;
  std::memcpy(id.data() + ORV_ENTRYID_UID_OFFSET, &uid, sizeof(uid));
  id[ORV_MIN_ENTRYID] = ref.kind;
  std::memcpy(id.data() + ORV_MIN_ENTRYID + 1, &ref.key, sizeof(ref.key));
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
  if (Has("idtwo")) ref->key &= 0xFFFFFF;
  if (Has("idwild") && ref->kind == kFixedEntry) ref->key %= kFixedEntries;
  return ref->kind <= kOwnEntry && (ref->kind >= kFixedEntry || ref->key == 0) &&
         (ref->kind != kOwn || !path.empty());
}

bool Book::IsThere(const Ref& ref) {
  if (ref.kind == kRoot && Has("rootdead")) return false;
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
    return all;
  }
  Record record{L"Entry " + std::to_wstring(ref.key), L"+49 40 " + std::to_wstring(ref.key)};
  if (ref.kind == kOwnEntry) {
    const std::lock_guard guard(lock);
    const auto found = records.find(ref.key);
    record = found != records.end() ? found->second : Record{};
  }
  if (!Has("noname")) all.push_back({PR_OBJECT_TYPE, static_cast<LONG>(MAPI_MAILUSER)});
  all.push_back({PR_DISPLAY_NAME_W, 0, record.name});
  all.push_back({PR_ADDRTYPE_W, 0, L"FAX"});
  all.push_back({PR_EMAIL_ADDRESS_W, 0, record.number});
  return all;
}

std::vector<Ref> Book::RowsOf(Kind container) {
  std::vector<Ref> rows;
  if (container == kRoot) {
    rows.push_back({kFixed});
    if (!path.empty()) rows.push_back({kOwn});
    return rows;
  }
  const std::lock_guard guard(lock);
  for (ULONG key = 0; container == kFixed && key < kFixedEntries; ++key) rows.push_back({kFixedEntry, key});
  if (container == kOwn) {
    for (const auto& [key, record] : records) rows.push_back({kOwnEntry, key});
  }
  return rows;
}

// A line a record: key, name, number, with tabs between.
void Book::Load() {
  const HANDLE file =
      CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return;
  std::wstring text(GetFileSize(file, nullptr) / sizeof(WCHAR), L'\0');
  DWORD read = 0;
  ReadFile(file, text.data(), static_cast<DWORD>(text.size() * sizeof(WCHAR)), &read, nullptr);
  CloseHandle(file);
  for (size_t at = 0, end = 0; (end = text.find(L'\n', at)) != std::wstring::npos; at = end + 1) {
    const std::wstring line = text.substr(at, end - at);
    const size_t one = line.find(L'\t'), two = line.find(L'\t', one + 1);
    const ULONG key = std::stoul(line);
    records[key] = {line.substr(one + 1, two - one - 1), line.substr(two + 1)};
    nextKey = std::max(nextKey, key + 1);
  }
}

void Book::Store() {
  if (Has("memory")) return;
  std::wstring text;
  for (const auto& [key, record] : records)
    text += std::to_wstring(key) + L"\t" + record.name + L"\t" + record.number + L"\n";
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
