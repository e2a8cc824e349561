// Eight threads on one object of each interface.
#include <cstdio>
#include <set>
#include <thread>

#include "soak/busy_provider.h"
#include "soak/library.h"

namespace orv::soak {
namespace {

constexpr unsigned kThreads = 8;
constexpr const WCHAR* kProfile = L"soak threads";

class Sink final : public sdk::Object<IMAPIAdviseSink> {
 public:
  ULONG STDMETHODCALLTYPE OnNotify(ULONG, LPNOTIFICATION) override { return 0; }
};

// What the threads share.
struct Scene {
  BusyProvider provider;
  ComPtr<IOrvSession> session;
  ComPtr<IAddrBook> book;
  ComPtr<IABServiceAdmin> services = ServicesOf(kProfile);
  ComPtr<IOrvProfAdmin> profiles = Profiles();
  ComPtr<IMAPIContainer> root;
  ComPtr<IMAPITable> hierarchy;
  Uid uid{};
  sdk::Lock lock;  // of what follows, and of calls that the caller has to serialise
  std::set<Uid> kept;
  unsigned wrong = 0;
  std::atomic<unsigned> names{0};

  ~Scene() { Leave(); }

  void Enter() {
    session = LogOn(kProfile);
    book = BookOf(session);
    provider.Use(book.Get());
    ComPtr<IUnknown> object;
    ULONG type = 0;
    Check(book->OpenEntry(0, nullptr, nullptr, 0, &type, object.Put()), "root container");
    root = object.As<IMAPIContainer>();
    Check(root->GetHierarchyTable(CONVENIENT_DEPTH | MAPI_UNICODE, hierarchy.Put()), "GetHierarchyTable");
  }

  // The session goes first, while others may still hold what it gave.
  void Leave() {
    provider.DropSupport();
    session.Reset();
    provider.Use(nullptr);
    hierarchy.Reset();
    root.Reset();
    book.Reset();
  }
};

struct Entry {
  Entry(const Scene& scene, const char* key) : bytes(scene.provider.EntryId(key)) {}
  ULONG size() const { return static_cast<ULONG>(bytes.size()); }
  ENTRYID* id() { return reinterpret_cast<ENTRYID*>(bytes.data()); }
  SBinary binary() { return {size(), bytes.data()}; }
  std::vector<BYTE> bytes;
};

ComPtr<IUnknown> Open(IAddrBook* book, ULONG size, ENTRYID* id) {
  ComPtr<IUnknown> object;
  ULONG type = 0;
  Check(book->OpenEntry(size, id, nullptr, 0, &type, object.Put()), "OpenEntry");
  return object;
}

unsigned CountRows(IMAPITable* table) {
  auto rows = TheLibrary().allocator.Own<SRowSet>();
  Check(table->QueryRows(100, 0, rows.Put()), "QueryRows");
  return rows->cRows;
}

// One distribution list, or one person, as a recipient.
sdk::AddressList Recipient(const Scene& scene, const char* key, ULONG type) {
  const auto& allocator = TheLibrary().allocator;
  auto list = allocator.Make<ADRLIST>(CbNewADRLIST(1));
  Entry entry(scene, key);
  auto root = allocator.AllocateRoot(3 * sizeof(SPropValue));
  auto* values = static_cast<SPropValue*>(root.get());
  values[0].ulPropTag = PR_ENTRYID;
  values[0].Value.bin = allocator.CopyBytes(root.get(), entry.bytes.data(), entry.bytes.size());
  values[1].ulPropTag = PR_OBJECT_TYPE;
  values[1].Value.ul = type;
  values[2].ulPropTag = PR_RECIPIENT_TYPE;
  values[2].Value.ul = MAPI_TO;
  list->cEntries = 1;
  list->aEntries[0] = {0, 3, static_cast<SPropValue*>(root.release())};
  return list;
}

void UseSession(Scene& scene, unsigned, unsigned) {
  const auto book = BookOf(scene.session);
  ULONG size = 0;
  auto id = TheLibrary().allocator.Own<ENTRYID>();
  Check(scene.session->GetSessionEntryID(&size, id.Put()), "GetSessionEntryID");
  ComPtr<IABServiceAdmin> services;
  Check(scene.session->AdminServices(0, services.Put()), "AdminServices");
  auto list = Recipient(scene, "list", MAPI_DISTLIST);
  Check(scene.session->ExpandRecipients(0, list.InOut()), "ExpandRecipients");
  Require(list->cEntries == 2, "a list without its members");
  void* buffer = nullptr;
  void* more = nullptr;
  Check(scene.session->AllocateBuffer(100, &buffer), "AllocateBuffer");
  Check(scene.session->AllocateMore(100, buffer, &more), "AllocateMore");
  Check(static_cast<HRESULT>(scene.session->FreeBuffer(buffer)), "FreeBuffer");
}

void UseSettings(IAddrBook* book) {
  const auto& allocator = TheLibrary().allocator;
  auto id = allocator.Own<ENTRYID>();
  auto path = allocator.Own<SRowSet>();
  ULONG size = 0;
  Check(book->GetPAB(&size, id.Put()), "GetPAB");
  Check(book->SetPAB(size, id.Get()), "SetPAB");
  Check(book->GetDefaultDir(&size, id.Put()), "GetDefaultDir");
  Check(book->SetDefaultDir(size, id.Get()), "SetDefaultDir");
  Check(book->GetSearchPath(0, path.Put()), "GetSearchPath");
  Check(book->SetSearchPath(0, path.Get()), "SetSearchPath");
}

void UseBook(Scene& scene, unsigned, unsigned) {
  Entry one(scene, "one");
  Open(scene.book.Get(), one.size(), one.id());
  auto list = Recipient(scene, "one", MAPI_MAILUSER);
  sdk::TagArray tags{PR_DISPLAY_NAME_W, PR_ENTRYID};
  Check(scene.book->PrepareRecips(0, tags.Get(), list.Get()), "PrepareRecips");
  ULONG_PTR window = 0;
  Check(scene.book->Details(&window, nullptr, nullptr, one.size(), one.id(), nullptr, nullptr, nullptr, 0),
        "Details");
  Require(scene.book->ResolveName(0, 0, nullptr, list.Get()) == MAPI_E_NO_SUPPORT, "ResolveName");
  ULONG size = 0;
  auto made = TheLibrary().allocator.Own<ENTRYID>();
  Entry box(scene, "box");
  Check(scene.book->NewEntry(0, 0, box.size(), box.id(), 0, nullptr, &size, made.Put()), "NewEntry");
  UseSettings(scene.book.Get());
}

void UseContainers(Scene& scene, unsigned, unsigned) {
  ComPtr<IMAPITable> table;
  Check(scene.root->GetHierarchyTable(CONVENIENT_DEPTH | MAPI_UNICODE, table.Put()), "GetHierarchyTable");
  Require(CountRows(table.Get()) >= 3, "a hierarchy without its containers");
  // The position of the shared one is everybody's; its rows are always rows.
  Check(scene.hierarchy->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), "SeekRow");
  CountRows(scene.hierarchy.Get());
  sdk::TagArray columns{PR_DISPLAY_NAME_W, PR_ENTRYID, PR_CONTAINER_FLAGS};
  Check(scene.hierarchy->SetColumns(columns.Get(), 0), "SetColumns");
  Entry box(scene, "box");
  const auto container = Open(scene.book.Get(), box.size(), box.id()).As<IMAPIContainer>(IID_IMAPIContainer);
  Check(container->GetContentsTable(0, table.Put()), "GetContentsTable");
  Require(CountRows(table.Get()) == 3, "a container without its entries");
}

// The first writes on the shared object, on which all others read; these write on objects of their own.
void UseProfiles(Scene& scene, unsigned thread, unsigned) {
  const WString name = L"thread " + std::to_wstring(thread), renamed = name + L" renamed";
  const auto own = thread == 0 ? scene.profiles : Profiles();
  Check(own->CreateProfile(name.c_str(), 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES), "CreateProfile");
  Check(own->RenameProfile(name.c_str(), renamed.c_str(), MAPI_UNICODE), "RenameProfile");
  Check(own->DeleteProfile(renamed.c_str(), MAPI_UNICODE), "DeleteProfile");
  ComPtr<IMAPITable> table;
  Check(scene.profiles->GetProfileTable(MAPI_UNICODE, table.Put()), "GetProfileTable");
  CountRows(table.Get());
  ComPtr<IABServiceAdmin> services;
  Check(scene.profiles->AdminServices(kProfile, MAPI_UNICODE, services.Put()), "AdminServices");
}

void UseServices(Scene& scene, unsigned, unsigned turn) {
  const bool shares = turn % 2 == 0;
  const auto services = shares ? scene.services : ServicesOf(kProfile);
  const WString name = L"service " + std::to_wstring(++scene.names);
  const Uid uid = AddService(services.Get(), kNamed, name);
  constexpr unsigned kMostKept = kThreads;  // all of them before the counting begins
  const std::lock_guard guard(scene.lock);
  if (scene.kept.size() < kMostKept) return void(scene.kept.insert(uid));
  Check(services->DeleteMsgService(AsUid(uid)), "DeleteMsgService");
}

void UseSections(Scene& scene, unsigned, unsigned turn) {
  const auto section = SectionOf(scene.services.Get(), scene.uid);
  WriteTexts(section.Get(), turn);
  if (turn % 4 == 0) RequireOneGeneration(kProfile, scene.uid);
}

void UseAdvise(Scene& scene, unsigned, unsigned) {
  Entry one(scene, "one");
  const auto sink = ComPtr<IMAPIAdviseSink>::Adopt(new Sink);
  ULONG connection = 0;
  Open(scene.book.Get(), one.size(), one.id());
  const std::lock_guard guard(scene.lock);
  Check(scene.book->Advise(one.size(), one.id(), fnevObjectModified, sink.Get(), &connection), "Advise");
  Check(scene.book->Unadvise(connection), "Unadvise");
}

struct Subject {
  const char* name;
  void (*use)(Scene&, unsigned thread, unsigned turn);
};
constexpr Subject kSubjects[] = {{"session", UseSession},       {"book", UseBook},
                                 {"containers", UseContainers}, {"profiles", UseProfiles},
                                 {"services", UseServices},     {"sections", UseSections},
                                 {"advise", UseAdvise}};

using Call = std::function<void(unsigned thread, unsigned turn)>;

// How many turns eight threads made.
unsigned CallOnThreads(Scene& scene, const std::function<bool()>& goesOn, const Call& call) {
  std::atomic<unsigned> turns{0};
  std::vector<std::thread> threads;
  for (unsigned thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([&, thread] {
      for (unsigned turn = 0; goesOn(); ++turn, ++turns) try {
          call(thread, turn);
        } catch (const std::exception& error) {
          const std::lock_guard guard(scene.lock);
          if (scene.wrong++ < 3) std::printf("unexpected %s\n", error.what());
        }
    });
  for (std::thread& thread : threads) thread.join();
  return turns;
}

// Answers of every kind are allowed here; nothing may be touched that went with the session.
void UseWhatEnds(Scene& scene) {
  Entry one(scene, "one");
  ComPtr<IUnknown> entry;
  ComPtr<IMAPITable> table;
  ULONG type = 0;
  ULONG_PTR window = 0;
  scene.book->OpenEntry(one.size(), one.id(), nullptr, 0, &type, entry.Put());
  scene.book->Details(&window, nullptr, nullptr, one.size(), one.id(), nullptr, nullptr, nullptr, 0);
  scene.root->GetHierarchyTable(CONVENIENT_DEPTH | MAPI_UNICODE, table.Put());
  auto list = Recipient(scene, "one", MAPI_MAILUSER);
  sdk::TagArray tags{PR_DISPLAY_NAME_W, PR_ENTRYID};
  scene.book->PrepareRecips(0, tags.Get(), list.Get());
}

// The session is released while everybody is inside.
void EndOneSession(Scene& scene, unsigned delay) {
  constexpr DWORD kLateCalls = 2;  // milliseconds
  scene.Enter();
  std::atomic<bool> ended{false};
  std::thread users([&] {
    CallOnThreads(
        scene, [&] { return !ended; }, [&](unsigned, unsigned) { UseWhatEnds(scene); });
  });
  Sleep(delay);
  scene.provider.DropSupport();
  scene.session.Reset();
  if (scene.provider.inside() != 0)
    std::puts("unexpected the session has ended and a call is inside a provider");
  Sleep(kLateCalls);
  ended = true;
  users.join();
  scene.Leave();
}

unsigned EndSessions(Scene& scene, unsigned seconds) {
  const ULONGLONG end = GetTickCount64() + seconds * 1000ULL;
  unsigned sessions = 0;
  for (; GetTickCount64() < end; ++sessions) EndOneSession(scene, 1 + sessions % 20);
  return sessions;
}

unsigned UseSubject(Scene& scene, const Subject& subject, unsigned seconds) {
  const ULONGLONG end = GetTickCount64() + seconds * 1000ULL;
  return CallOnThreads(
      scene, [&] { return GetTickCount64() < end; },
      [&](unsigned thread, unsigned turn) { subject.use(scene, thread, turn); });
}

unsigned Use(Scene& scene, const std::string& name, unsigned seconds) {
  if (name == "ending") return EndSessions(scene, seconds);
  for (const Subject& subject : kSubjects) {
    if (subject.name == name) return UseSubject(scene, subject, seconds);
  }
  throw std::runtime_error("no such subject");
}

void MakeProfile() {
  DeleteProfile(kProfile);
  Check(Profiles()->CreateProfile(kProfile, 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES), "CreateProfile");
  AddService(ServicesOf(kProfile).Get(), kBusy, L"busy");
}

// The provider's library is found loaded, with the script, by every logon.
void SetScript(BusyProvider* provider) {
  const HMODULE library = LoadLibraryW(PathBeside(L"xhtbusyb.dll").c_str());
  void* const use = reinterpret_cast<void*>(GetProcAddress(library, test::kFakeUseName));
  reinterpret_cast<test::FakeProviderUse>(use)(provider);
}

void RequireKept(const Scene& scene) {
  const Stored stored = ReadStored(kProfile);
  for (const Uid& uid : scene.kept) {
    if (!stored.contains(uid)) std::puts("unexpected lost: a service is gone");
  }
  Require(stored.size() <= 2 + scene.kept.size(), "services that were removed have come back");
}

// From nothing to nothing; the turns that were made.
unsigned PlayScene(const std::string& name, unsigned seconds) {
  MakeProfile();
  Scene scene;
  SetScript(&scene.provider);
  scene.uid = ReadStored(kProfile).begin()->first;
  WriteTexts(SectionOf(scene.services.Get(), scene.uid).Get(), 0);
  if (name != "ending") scene.Enter();
  const unsigned turns = Use(scene, name, seconds);
  scene.Leave();
  SetScript(nullptr);
  RequireKept(scene);
  return turns;
}

}  // namespace

void RunThreads(const std::string& name, unsigned seconds) {
  PlayScene(name, 1 + seconds / 8);
  RunBatches(false, {}, [&] { return PlayScene(name, std::max(1U, seconds / 2)); });
}

}  // namespace orv::soak
