// A provider whose containers answer what none may answer, one lie each, named after it. Between them stands one that
// is honest, so that a test sees that it is still read.
#include "tests/support/fake_provider/fake_script.h"

namespace {

using namespace orv::test;

class Liar final : public FakeScript {
 public:
  Liar() : FakeScript("liar", FakeUid('L'), nullptr) {
    nodes[""] = {MAPI_ABCONT, L"liar", {}, AB_RECIPIENTS, {}, 0, {}, {}};
    using enum FakeLie;
    const std::pair<const wchar_t*, FakeLie> containers[] = {
        {L"exception", kThrows},    {L"junk on failure", kJunk}, {L"no table", kNothing},
        {L"false count", kTooMany}, {L"honest\x1B[2J\n", kNone}, {L"null texts", kNulls},
        {L"short rows", kShort},    {L"no values", kNoArray},    {L"no set", kNoSet}};
    for (const auto& [text, how] : containers) {
      hierarchy.emplace_back(1, static_cast<char>('a' + hierarchy.size()));
      nodes[hierarchy.back()] = {MAPI_ABCONT, text, {}, AB_RECIPIENTS, {hierarchy.back()}, 0, {}, {}, how};
    }
  }
};

}  // namespace

extern "C" __declspec(dllexport) HRESULT STDAPICALLTYPE
    ABProviderOpen(HINSTANCE, LPORVSUPPORT support, LPPROFSECT, ULONG_PTR, ULONG, LPALLOCATEBUFFER root,
                   LPALLOCATEMORE more, LPFREEBUFFER free, LPADRBOOK* provider, ULONG_PTR) {
  static Liar liar;
  *provider = MakeFakeProvider(&liar, {root, more, free});
  return support->SetProviderUID(&liar.uid);
}

extern "C" __declspec(dllexport) HRESULT STDAPICALLTYPE
    LiarServiceEntry(HINSTANCE, ULONG_PTR, ULONG, ULONG, ULONG, LPSPropValue, LPPROFSECT, LPORVSUPPORT,
                     ULONG_PTR) {
  return S_OK;
}
