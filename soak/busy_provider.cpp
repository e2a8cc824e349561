#include "soak/busy_provider.h"

#include "soak/library.h"

namespace orv::soak {
namespace {

constexpr BYTE kUid = 0x5A;
constexpr unsigned kSlowEvery = 32, kCallBackEvery = 8, kRegisterEvery = 16;
constexpr unsigned kMostRegistered = 64;

}  // namespace

BusyProvider::BusyProvider() : FakeScript("busy", test::FakeUid(kUid), nullptr) {
  keepsSupport = true;
  nodes[""] = {MAPI_ABCONT, L"Busy", L"", AB_RECIPIENTS | AB_SUBCONTAINERS, {}, 0, {}, {}, {}};
  nodes["box"] = {MAPI_ABCONT, L"Box", L"", AB_RECIPIENTS | AB_MODIFIABLE, {"one", "two", "list"}, 0,
                  {},          {},     {}};
  nodes["list"] = {MAPI_DISTLIST, L"List", L"FAX", 0, {"one", "two", "list"}, 0, {}, {}, {}};
  hierarchy = {"box"};
}

void BusyProvider::DropSupport() {
  const std::lock_guard guard(support_);
  if (IOrvSupport* const support = std::exchange(keptSupport, nullptr)) support->Release();
}

// What OpenEntry does is called back itself and must come to an end.
test::FakeAnswer BusyProvider::OnCall(const char* operation) {
  ++inside_;
  const unsigned call = ++calls_;
  if (call % kSlowEvery == 0) Sleep(1);
  if (call % kCallBackEvery == 0 && std::string_view(operation).find("OpenEntry") == std::string_view::npos)
    CallBack();
  if (call % kRegisterEvery == 0 && call / kRegisterEvery <= kMostRegistered) RegisterLate();
  --inside_;
  return {};
}

void BusyProvider::CallBack() {
  IAddrBook* const book = book_;
  if (book == nullptr) return;
  auto id = EntryId("one");
  ComPtr<IUnknown> entry;
  ULONG type = 0;
  book->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<ENTRYID*>(id.data()), nullptr, 0, &type,
                  entry.Put());
}

void BusyProvider::RegisterLate() {
  const std::lock_guard guard(support_);
  const MAPIUID late = test::FakeUid(static_cast<BYTE>(calls_ / kRegisterEvery));
  if (book_ != nullptr && keptSupport != nullptr) keptSupport->SetProviderUID(&late);
}

// Events come at once, before the caller knows the connection.
ULONG BusyProvider::OnAdvise(const std::string& key, ULONG events, IMAPIAdviseSink* sink) {
  NOTIFICATION event{};
  event.ulEventType = fnevObjectModified;
  sink->OnNotify(1, &event);
  const std::lock_guard guard(advising_);
  return FakeScript::OnAdvise(key, events, sink);
}

HRESULT BusyProvider::OnUnadvise(ULONG connection) {
  const std::lock_guard guard(advising_);
  return FakeScript::OnUnadvise(connection);
}

}  // namespace orv::soak
