// What a compiler makes of handlers round methods, its optimiser included: exceptions of a method must reach the
// handler within it and the one round its call. The exit code is the number of the case that failed.
#include "orv/orvbase.hpp"

namespace {

using namespace orv::sdk;

constexpr HRESULT kCaught = MAPI_E_CALL_FAILED;
volatile bool g_throws = true;

HRESULT Fail() {
  if (g_throws) throw 1;
  return S_OK;
}

class Table final : public RefusingTable {
 public:
  HRESULT STDMETHODCALLTYPE Abort() override { return Fail(); }
  HRESULT STDMETHODCALLTYPE QueryPosition(ULONG*, ULONG*, ULONG*) override {
    try {
      return Fail();
    } catch (...) {
      return kCaught;
    }
  }
  HRESULT STDMETHODCALLTYPE FreeBookmark(BOOKMARK) override {
    return Guarded([] { return Fail(); });
  }
  HRESULT STDMETHODCALLTYPE Unadvise(ULONG) override {
    return Guarded([this] { return static_cast<IMAPITable*>(this)->Abort(); });
  }
};

HRESULT CallThatThrows(IMAPITable* table) {
  try {
    return table->Abort();
  } catch (...) {
    return kCaught;
  }
}

}  // namespace

int main() {
  const ComPtr<IMAPITable> table = ComPtr<IMAPITable>::Adopt(new Table);
  const HRESULT results[] = {table->QueryPosition(nullptr, nullptr, nullptr), table->FreeBookmark(0),
                             table->Unadvise(0), CallThatThrows(table.Get())};
  for (int i = 0; i < 4; ++i) {
    if (results[i] != kCaught) return i + 1;
  }
  return 0;
}
