// A provider whose containers answer what none may answer, one lie each, named after it. Between them stands one that
// is honest, so that a test sees that it is still read. Under other file names it fails at its logon or in its entry
// function, each in one way, or has tables that never end and reports a problem.
#include "tests/support/fake_provider/fake_script.h"

namespace {

using namespace orv::test;

void Crash() { *static_cast<volatile int*>(nullptr) = 1; }

bool IsCalled(const wchar_t* name) {
  HMODULE self = nullptr;
  wchar_t path[MAX_PATH] = {};
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&IsCalled), &self);
  GetModuleFileNameW(self, path, MAX_PATH - 1);
  const wchar_t* file = wcsrchr(path, L'\\');
  return file != nullptr && wcsstr(file, name) != nullptr;
}

class Liar final : public FakeScript {
 public:
  Liar() : FakeScript("liar", FakeUid('L'), nullptr) {
    nodes[""] = {MAPI_ABCONT, L"liar", {}, AB_RECIPIENTS, {}, 0, {}, {}};
    using enum FakeLie;
    const std::pair<const wchar_t*, FakeLie> containers[] = {
        {L"exception", kThrows},    {L"junk on failure", kJunk}, {L"no table", kNothing},
        {L"false count", kTooMany}, {L"honest\x1B[2J\n", kNone}, {L"null texts", kNulls},
        {L"short rows", kShort},    {L"no values", kNoArray},    {L"no set", kNoSet},
        {L"no end", kEndless}};
    for (const auto& [text, how] : containers) {
      hierarchy.emplace_back(1, static_cast<char>('a' + hierarchy.size()));
      nodes[hierarchy.back()] = {MAPI_ABCONT, text, {}, AB_RECIPIENTS, {hierarchy.back()}, 0, {}, {}, how};
    }
  }

  // One container is left, below which the tables never end, and whoever looks into it is told of a problem.
  void NeverEnd(IOrvSupport* support) {
    hierarchy = {"e"};
    lies["Table:QueryRows"] = FakeLie::kEndless;
    support->QueryInterface(IID_IOrvSupport2, reinterpret_cast<void**>(&support_));
    during["Object:GetContentsTable"] = [this] {
      support_->ReportProblem(MAPI_E_DISK_ERROR, L"half of it\x202E is lost");
    };
  }

 private:
  IOrvSupport2* support_ = nullptr;
};

}  // namespace

extern "C" __declspec(dllexport) HRESULT STDAPICALLTYPE
    ABProviderOpen(HINSTANCE, LPORVSUPPORT support, LPPROFSECT, ULONG_PTR, ULONG, LPALLOCATEBUFFER root,
                   LPALLOCATEMORE more, LPFREEBUFFER free, LPADRBOOK* provider, ULONG_PTR) {
  static Liar liar;
  if (IsCalled(L"crash")) Crash();
  if (IsCalled(L"abort")) std::abort();
  if (IsCalled(L"later")) liar.during["Object:GetContentsTable"] = Crash;
  if (IsCalled(L"throw")) throw std::runtime_error("thrown");
  if (IsCalled(L"refuse")) return MAPI_E_NETWORK_ERROR;
  if (IsCalled(L"noend")) liar.NeverEnd(support);
  *provider = MakeFakeProvider(&liar, {root, more, free});
  return IsCalled(L"mute") ? S_OK : support->SetProviderUID(&liar.uid);
}

extern "C" __declspec(dllexport) HRESULT STDAPICALLTYPE
    LiarServiceEntry(HINSTANCE, ULONG_PTR, ULONG, ULONG context, ULONG count, LPSPropValue values,
                     LPPROFSECT section, LPORVSUPPORT, ULONG_PTR) {
  if (context == MSG_SERVICE_CREATE && IsCalled(L"hurl")) throw std::runtime_error("thrown");
  if (context == MSG_SERVICE_CREATE && IsCalled(L"grump")) return MAPI_E_CALL_FAILED;
  if (context != MSG_SERVICE_CONFIGURE && !IsCalled(L"fatal")) return S_OK;
  // What is stored before the end must not be there after it.
  if (count != 0) section->SetProps(count, values, nullptr);
  section->SaveChanges(0);
  if (IsCalled(L"fatal")) Crash();
  throw std::runtime_error("thrown");
}
