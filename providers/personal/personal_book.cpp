// The personal address book: its settings, which book it opens, and the functions of the library.
#include <algorithm>

#include "orv/kit/provider.hpp"
#include "orv/orvbook.h"
#include "providers/book/provider/book_health.h"
#include "providers/book/provider/local_book.h"
#include "providers/personal/configure_window.h"
#include "providers/personal/place.h"

namespace personal {
namespace {

namespace kit = orv::kit;
namespace sdk = orv::sdk;

// What the container is called; empty: after the file that was chosen, else as the service is.
constexpr ULONG kBookName = PROP_TAG(PT_UNICODE, 0x6700);

kit::Settings PersonalSettings() {
  return kit::Settings()
      .Text(PR_ORV_BOOK_FILE_W)
      .Flag(PR_ORV_BOOK_BACKUPS, true)
      .Number(PR_ORV_BOOK_NAMES, ORV_NAMES_AS_WRITTEN, ORV_NAMES_AS_WRITTEN, ORV_NAMES_LAST_FIRST)
      .Uid(PR_ORV_BOOK_UID)
      .Text(PR_ORV_BOOK_FOUND_W)
      .Text(kBookName);
}

std::wstring NameOf(const kit::PropList& settings) {
  const std::wstring given(settings.Text(kBookName)), stored(settings.Text(PR_ORV_BOOK_FILE_W));
  if (!given.empty()) return given;
  return stored.empty() ? std::wstring(settings.Text(PR_DISPLAY_NAME)) : StemOf(ReadyPath(stored));
}

book::NameForm FormIn(const kit::PropList& settings) {
  const bool isLastFirst = settings.Number(PR_ORV_BOOK_NAMES) == ORV_NAMES_LAST_FIRST;
  return isLastFirst ? book::NameForm::kLastFirst : book::NameForm::kAsWritten;
}

HRESULT ReadSettings(const kit::ServiceCall& call, kit::PropList* settings) {
  LPALLOCATEBUFFER allocate = nullptr;
  LPALLOCATEMORE more = nullptr;
  LPFREEBUFFER free = nullptr;
  if (call.section == nullptr || call.support == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (const HRESULT hr = call.support->GetMemAllocRoutines(&allocate, &more, &free); FAILED(hr)) return hr;
  return PersonalSettings().Read(*call.section, sdk::Allocator(allocate, more, free), settings);
}

bool IsSet(const MAPIUID& uid) {
  return std::any_of(std::begin(uid.ab), std::end(uid.ab), [](BYTE each) { return each != 0; });
}

MAPIUID UidOf(const book::Store& store) {
  MAPIUID uid{};
  std::copy(store.Uid().begin(), store.Uid().end(), uid.ab);
  return uid;
}

MAPIUID UidIn(const kit::PropList& settings) {
  MAPIUID uid{};
  const SBinary bytes = settings.Bytes(PR_ORV_BOOK_UID);
  if (bytes.cb == sizeof uid) std::copy_n(bytes.lpb, sizeof uid, uid.ab);
  return uid;
}

BookChoice ChoiceOf(const kit::PropList& settings) {
  const std::wstring stored(settings.Text(PR_ORV_BOOK_FILE_W));
  return {stored.empty() ? UsualPath() : stored, NameOf(settings), FormIn(settings),
          settings.Number(PR_ORV_BOOK_BACKUPS) != 0, IsSet(UidIn(settings))};
}

// Nothing is there, and there is a place for it.
bool IsToBeMade(const std::wstring& path) { return !IsThere(path) && IsThere(FolderOf(path)); }

// What is chosen must be a book, or become one in a folder that is there: it is made at once, which shows whether it
// can be.
HRESULT TryBook(const std::wstring& stored, MAPIUID* uid) {
  const std::wstring path = ReadyPath(stored);
  if (path.empty()) return MAPI_E_INVALID_PARAMETER;
  if (!IsThere(path) && path.size() < MAX_PATH && !IsThere(FolderOf(path))) return MAPI_E_NOT_FOUND;
  std::shared_ptr<book::Store> store;
  const HRESULT hr =
      book::Store::Open(path, {.create = true, .isReadOnly = false, .keepsBackups = false}, &store);
  if (SUCCEEDED(hr)) *uid = UidOf(*store);
  return hr;
}

class Service final : public kit::ServiceHandler {
 public:
  Service() : ServiceHandler(PersonalSettings()) {}

 protected:
  HRESULT ApplyText(const kit::ServiceCall& call, LPCWSTR text) override {
    if (text == nullptr) return MAPI_E_INVALID_PARAMETER;
    kit::PropList values;
    values.Set(PR_ORV_BOOK_FILE_W, text);
    return Apply(call, values);
  }

  HRESULT Configure(const kit::ServiceCall& call) override {
    if (call.values.begin() == call.values.end())
      return (call.flags & SERVICE_UI_ALWAYS) != 0 ? ShowSettings(call) : S_OK;
    if (const HRESULT hr = CheckForms(call.values); FAILED(hr)) return hr;
    kit::PropList values(call.values);
    return Apply(call, values);
  }

 private:
  HRESULT ShowSettings(const kit::ServiceCall& call) {
    kit::PropList settings;
    if (const HRESULT hr = ReadSettings(call, &settings); FAILED(hr)) return hr;
    const BookChoice before = ChoiceOf(settings);
    const kit::Language language(kit::ModuleOf(reinterpret_cast<const void*>(&ReadSettings)), call.resource);
    return ShowConfigure(reinterpret_cast<HWND>(call.window), language, before,
                         [&](const BookChoice& chosen) { return ApplyChoice(call, before, chosen); });
  }

  // What the user left as it was is not written: a name that follows the file goes on to do so.
  HRESULT ApplyChoice(const kit::ServiceCall& call, const BookChoice& before, const BookChoice& chosen) {
    kit::PropList values;
    values.Set(PR_ORV_BOOK_BACKUPS, chosen.keepsBackups);
    values.Set(PR_ORV_BOOK_NAMES,
               chosen.names == book::NameForm::kLastFirst ? ORV_NAMES_LAST_FIRST : ORV_NAMES_AS_WRITTEN);
    if (chosen.path != before.path || IsToBeMade(ReadyPath(chosen.path)))
      values.Set(PR_ORV_BOOK_FILE_W, chosen.path == UsualPath() ? std::wstring() : chosen.path);
    if (chosen.name != before.name) values.Set(kBookName, chosen.name);
    return Apply(call, values);
  }

  // A text without a pointer would be the empty one in a list, which stands for the usual place.
  static HRESULT CheckForms(sdk::ValueView values) {
    const auto isNothing = [](const SPropValue& each) {
      return each.ulPropTag == PR_ORV_BOOK_FILE_W && each.Value.lpszW == nullptr;
    };
    return std::any_of(values.begin(), values.end(), isNothing) ? MAPI_E_INVALID_PARAMETER : S_OK;
  }

  // Which book it is is noted beside its place, so that its entries are known while it cannot be opened.
  HRESULT Apply(const kit::ServiceCall& call, kit::PropList& values) {
    const SPropValue* path = values.Find(PR_ORV_BOOK_FILE_W);
    if (path != nullptr && path->ulPropTag == PR_ORV_BOOK_FILE_W) {
      const std::wstring stored = StoredPath(path->Value.lpszW);
      MAPIUID uid{};
      const HRESULT hr = stored.empty() ? S_OK : TryBook(stored, &uid);
      if (FAILED(hr)) return hr;
      values.Set(PR_ORV_BOOK_FILE_W, stored);
      values.Set(PR_ORV_BOOK_UID, uid);
      values.Set(PR_ORV_BOOK_FOUND_W, stored);
    }
    return GetSettings().Store(call.section, values.View(), call.Free());
  }
};

struct Place {
  std::shared_ptr<book::BookFile> file;
  std::wstring stored;
  std::wstring name;  // empty: the service's
};

// Written into the profile past the service, which checks a path and makes it an absolute one.
bool IsUnchecked(const kit::PropList& settings) {
  return !IsSet(UidIn(settings)) || settings.Text(PR_ORV_BOOK_FOUND_W) != settings.Text(PR_ORV_BOOK_FILE_W);
}

// A book that was found before is not made anew when it is missing, and only the usual place is made with its folders.
Place PlaceOf(const kit::PropList& settings) {
  const std::wstring typed(settings.Text(PR_ORV_BOOK_FILE_W));
  const bool isUnchecked = IsUnchecked(settings);
  const std::wstring stored = isUnchecked ? StoredPath(typed.c_str()) : typed;
  const std::wstring path = stored.empty() ? UsualPath() : ReadyPath(stored);
  book::Options options;
  options.create = isUnchecked && (stored.empty() || IsThere(FolderOf(path)));
  options.names = FormIn(settings);
  options.keepsBackups = settings.Number(PR_ORV_BOOK_BACKUPS) != 0;
  const std::wstring given(settings.Text(kBookName));
  const std::wstring ofFile = stored.empty() ? std::wstring() : StemOf(path);
  return {std::make_shared<book::BookFile>(path, options), stored, given.empty() ? ofFile : given};
}

void NotePlace(const kit::OpenCall& call, const std::wstring& stored, const MAPIUID& uid) {
  kit::PropList noted;
  noted.Set(PR_ORV_BOOK_UID, uid);
  noted.Set(PR_ORV_BOOK_FILE_W, stored);
  noted.Set(PR_ORV_BOOK_FOUND_W, stored);
  static_cast<void>(PersonalSettings().Store(call.section, noted.View(), call.free));
}

struct Identity {
  MAPIUID uid{};
  bool isReplaced = false;  // another book lies where one was found before
};

// The book's own UID; while it cannot be opened the one that was found there last, if there is one.
Identity Identify(const kit::OpenCall& call, const kit::PropList& settings, const Place& place) {
  const MAPIUID known = UidIn(settings);
  const bool isUnchecked = IsUnchecked(settings);
  std::shared_ptr<book::Store> store;
  if (FAILED(place.file->Open(&store))) return {isUnchecked ? MAPIUID{} : known};
  const MAPIUID uid = UidOf(*store);
  const bool isOther = !std::equal(std::begin(uid.ab), std::end(uid.ab), known.ab);
  if (isUnchecked || isOther) NotePlace(call, place.stored, uid);
  return {uid, isOther && !isUnchecked};
}

HRESULT OpenBook(const kit::OpenCall& call) {
  const bool canRead = call.section != nullptr && call.allocate != nullptr && call.allocateMore != nullptr &&
                       call.free != nullptr;
  if (!canRead) return MAPI_E_INVALID_PARAMETER;
  const sdk::Allocator buffers(call.allocate, call.allocateMore, call.free);
  kit::PropList settings;
  if (const HRESULT hr = PersonalSettings().Read(*call.section, buffers, &settings); FAILED(hr)) return hr;
  const Place place = PlaceOf(settings);
  const Identity found = Identify(call, settings, place);
  const auto make = [&](const kit::Logon& logon) {
    const std::wstring service(logon.settings.Text(PR_DISPLAY_NAME));
    return std::make_shared<book::LocalBook>(logon, place.file, place.name.empty() ? service : place.name,
                                             found.isReplaced);
  };
  return kit::OpenProvider(call, PersonalSettings(), make, IsSet(found.uid) ? &found.uid : nullptr);
}

}  // namespace
}  // namespace personal

ORV_SERVICE_ENTRY(PersonalServiceEntry, personal::Service())

extern "C" HRESULT STDAPICALLTYPE ABProviderOpen(HINSTANCE resource, LPORVSUPPORT support, LPPROFSECT section,
                                                 ULONG_PTR, ULONG flags, LPALLOCATEBUFFER allocate,
                                                 LPALLOCATEMORE allocateMore, LPFREEBUFFER free,
                                                 LPADRBOOK* provider, ULONG_PTR) {
  return orv::sdk::Guarded([&] {
    return personal::OpenBook({support, section, flags, allocate, allocateMore, free, provider, resource});
  });
}

extern "C" HRESULT STDAPICALLTYPE OrvCheckBook(LPCWSTR file, OrvBookHealth* health,
                                               IOrvContactReport* report) {
  const bool isComplete = file != nullptr && health != nullptr && health->cbSize == sizeof *health;
  if (!isComplete) return MAPI_E_INVALID_PARAMETER;
  return orv::sdk::Guarded([&] { return book::CheckWhole(personal::ReadyPath(file), health, report); });
}

extern "C" HRESULT STDAPICALLTYPE OrvRepairBook(LPCWSTR file, LPCWSTR newFile, IOrvContactReport* report,
                                                ULONGLONG* saved, ULONGLONG* lost) {
  if (file == nullptr || newFile == nullptr) return MAPI_E_INVALID_PARAMETER;
  return orv::sdk::Guarded([&] {
    book::Salvage salvage;
    const HRESULT hr =
        book::RepairInto(personal::ReadyPath(file), personal::ReadyPath(newFile), report, &salvage);
    if (saved != nullptr) *saved = salvage.saved;
    if (lost != nullptr) *lost = salvage.lost | (salvage.isMoreLost ? ORV_LOST_MORE : 0);
    return hr;
  });
}

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID processEnds) {
  if (reason != DLL_PROCESS_DETACH || processEnds != nullptr) return TRUE;
  book::EndStores();
  orv::sdk::GiveBackRunTime(library);
  return TRUE;
}
