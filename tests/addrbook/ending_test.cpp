// The session's end while other threads are inside the address book.
#include <array>
#include <atomic>
#include <thread>

#include "addrbook/recipient_expansion.h"
#include "platform/rundown.h"
#include "tests/addrbook/book_fixture.h"

namespace orv::test {
namespace {

// Keeps no list of what it was told, and counts what comes after it has gone.
class BusyScript final : public FakeScript {
 public:
  using FakeScript::FakeScript;
  FakeAnswer OnCall(const char* operation) override {
    late += gone;
    gone = gone || std::string(operation) == "Released";
    std::this_thread::yield();
    return {};
  }
  void OnDelete(const std::string&) override {}
  ULONG OnAdvise(const std::string&, ULONG, IMAPIAdviseSink*) override { return 1; }
  HRESULT OnUnadvise(ULONG) override { return S_OK; }

  std::atomic<bool> gone{false};
  std::atomic<int> late{0};
};

class Ending : public BookTest {
 protected:
  // More than a rundown has slots.
  static constexpr std::size_t kThreads = 40;
  static constexpr int kWarmUp = 300;

  // Each a whole answer of the living session, or that of the ended one.
  bool Expands() {
    // As the session does.
    const Rundown::Call inside(&book->Calls());
    ADRLIST* expanded = MakeList(*script_, {"list"});
    const HRESULT hr = ExpandRecipientLists(book.Get(), &expanded);
    const AdrListPtr result(expanded);
    return hr == MAPI_E_END_OF_SESSION || (hr == S_OK && result->cEntries == 2);
  }
  bool ListsTheHierarchy() {
    ComPtr<IMAPITable> table;
    ULONG rows = 0;
    if (FAILED(Root().GetHierarchyTable(CONVENIENT_DEPTH | MAPI_UNICODE, table.Put()))) return false;
    return SUCCEEDED(table->GetRowCount(0, &rows)) && (rows == 0 || rows == 4);
  }
  bool Prepares() {
    const AdrListPtr recipients(MakeList(*script_, {"a", "b"}));
    return IsAnswer(book->PrepareRecips(0, nullptr, recipients.Get())) && recipients->cEntries == 2;
  }
  bool Deletes() {
    SBinary one = Binary(id_);
    ENTRYLIST entries{1, &one};
    return Root().DeleteEntries(&entries, 0) == S_OK;
  }
  bool FindsItsDefault() {
    ULONG size = 0;
    MapiBuffer<ENTRYID> id;
    return FAILED(book->GetPAB(&size, id.Put())) || size == id_.size();
  }
  bool Advises() {
    ULONG connection = 0;
    const HRESULT hr = book->Advise(Size(id_), Id(id_), 1, &sink_, &connection);
    const HRESULT undone = SUCCEEDED(hr) ? book->Unadvise(connection) : S_OK;
    return IsAnswer(hr) && (undone == S_OK || undone == MAPI_E_NOT_FOUND);
  }
  bool ShowsDetails() {
    ULONG_PTR ui = 0;
    return IsAnswer(book->Details(&ui, nullptr, nullptr, Size(id_), Id(id_), nullptr, nullptr, nullptr, 0));
  }
  static bool IsAnswer(HRESULT hr) { return hr == S_OK || hr == MAPI_E_END_OF_SESSION; }
  IABContainer& Root() { return *static_cast<IABContainer*>(root_.Get()); }

  void Work(std::size_t number) {
    constexpr std::array kCalls = {&Ending::Expands,     &Ending::ListsTheHierarchy, &Ending::Prepares,
                                   &Ending::Deletes,     &Ending::FindsItsDefault,   &Ending::Advises,
                                   &Ending::ShowsDetails};
    void* out = nullptr;
    for (; book->QueryInterface(IID_IUnknown, &out) == S_OK; ++calls_) {
      book->Release();
      wrong_ += !(this->*kCalls[number % kCalls.size()])();
    }
  }

  BusyScript* script_ = nullptr;
  Bytes id_;
  FakeSink sink_;
  ComPtr<IUnknown> root_;
  std::atomic<int> calls_{0}, wrong_{0};
};

TEST_F(Ending, WaitsForTheCallsOfOtherThreads) {
  for (int round = 0; round < 3; ++round) {
    Load<BusyScript>("B", {{"one", AB_RECIPIENTS}});
    script_ = &Load<BusyScript>("A", {{"pab", AB_MODIFIABLE}});
    script_->nodes["list"] = {MAPI_DISTLIST, {}, {}, 0, {"m", "n"}, 0, {}, {}};
    id_ = script_->EntryId("pab");
    ULONG type = 0;
    ASSERT_EQ(Open().OpenEntry(0, nullptr, nullptr, 0, &type, root_.Put()), S_OK);
    calls_ = 0;
    std::array<std::thread, kThreads> threads;
    for (std::size_t i = 0; i < kThreads; ++i) threads[i] = std::thread([this, i] { Work(i); });
    while (calls_ < kWarmUp) std::this_thread::yield();
    book->Shutdown();
    list->UnloadAll();
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(script_->late, 0);
    EXPECT_TRUE(ListsTheHierarchy() && Deletes());
    root_.Reset();
    EndSession();
  }
  EXPECT_EQ(wrong_, 0);
}

}  // namespace
}  // namespace orv::test
