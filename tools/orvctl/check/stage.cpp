#include "tools/orvctl/check/stage.h"

#include <algorithm>
#include <cstring>

#include "tools/orvctl/dependencies.h"
#include "tools/orvctl/library.h"

namespace orvctl::check {
namespace {

// The UID of the service that is checked: the same in every process, so that identifiers stay the same.
constexpr BYTE kServiceUid[sizeof(MAPIUID)] = {0x0C, 0x4E, 0xC4, 0x1D, 0x5E, 0x21, 0x4A, 0x90,
                                               0x8B, 0x6F, 0x11, 0x72, 0x3A, 0x55, 0xE0, 0x07};

constexpr char kExportsRule[] = "image.exports", kLogonRule[] = "logon.object", kOpensRule[] = "id.opens",
               kContextsRule[] = "entry.contexts";

template <class Function>
Function FindFunction(HMODULE module, const std::string& name) {
  if (name.empty()) return nullptr;
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name.c_str())));
}

// Most often it is the path of a book, and then the first question is which file that is.
std::string DescribeConfig(const std::string& config) {
  const WideString path = FullPath(ToWide(config));
  const bool isThere = GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
  return "the configuration '" + config + "' (as a path " + ToUtf8(path) +
         (isThere ? ")" : ", where there is no file)");
}

ComPtr<IMAPITable> TableOf(Probe& probe, const ComPtr<IUnknown>& object, bool isContents) {
  const auto container = object.As<IMAPIContainer>(IID_IMAPIContainer);
  Require(bool{container}, "QueryInterface of a container refuses IMAPIContainer");
  ComPtr<IMAPITable> table;
  const char* const what =
      isContents ? "IMAPIContainer::GetContentsTable" : "IMAPIContainer::GetHierarchyTable";
  const HRESULT result = probe.Call(what, [&] {
    return isContents ? container->GetContentsTable(MAPI_UNICODE, table.Put())
                      : container->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put());
  });
  if (FAILED(result)) static_cast<void>(table.Detach());
  if (result == MAPI_E_NO_SUPPORT) return {};
  // Whatever check asks first: it is the table that is at fault.
  const char* const rule = isContents ? "table.independent" : "hierarchy.columns";
  if (FAILED(result)) FailOf(rule, std::string(what) + " answered " + Name(result));
  if (!table) FailOf(rule, std::string(what) + " succeeded and handed out null");
  return table;
}

}  // namespace

Module::Module(Probe& probe) {
  probe.Step("LoadLibrary");
  module_ = LoadAsProvider(probe.request.library);
  if (module_ == nullptr)
    Fail("it cannot be loaded: " + DescribeLoadError(GetLastError(), probe.request.library));
  open_ = FindFunction<LPABPROVIDEROPEN>(module_, ORV_PROVIDER_OPEN_NAME);
  entry_ = FindFunction<LPORVSERVICEENTRY>(module_, probe.request.entry);
  if (open_ == nullptr) FailOf(kExportsRule, "needs " ORV_PROVIDER_OPEN_NAME ", which is not exported");
}

void Module::RequireEntry(const Probe& probe) const {
  if (entry_ != nullptr) return;
  const std::string& name = probe.request.entry;
  FailOf(kExportsRule, "needs the entry function, " + (name.empty() ? "whose name is not known: give --entry"
                                                                    : name + ", which is not exported"));
}

void Module::Free() {
  if (module_ != nullptr) FreeLibrary(module_);
  module_ = nullptr;
}

HRESULT Module::CallEntry(Probe& probe, ULONG context, Section* section, ULONG count, LPSPropValue values) {
  RequireEntry(probe);
  // Not destroyed when the provider holds it: that is told, and must not become a crash.
  auto* const support = new Support(false);
  const std::string what = "service entry function, context " + std::to_string(context);
  const HRESULT result = probe.Call(what.c_str(), [&] {
    return entry_(nullptr, 0, MAPI_UNICODE, context, count, values, section, support, 0);
  });
  if (support->held() != 0) FailOf(kContextsRule, what + ": it kept the support object");
  delete support;
  if (section != nullptr && section->held() != 0) FailOf(kContextsRule, what + ": it kept the section");
  return result;
}

HRESULT Module::Configure(Probe& probe, Section* section, const std::string& text) {
  std::wstring wide = ToWide(text);
  SPropValue value = TextValue(0, wide);  // without a tag, as the library hands it over
  return CallEntry(probe, ORV_SERVICE_EXTRA_CONFIG, section, 1, &value);
}

Profile NewProfile(const Request& request) {
  std::wstring name = L"Checked service",
               file = request.library.substr(request.library.find_last_of(L"\\/") + 1);
  std::string entry = request.entry;
  SPropValue values[6] = {};
  values[0].ulPropTag = PR_SERVICE_UID;
  values[0].Value.bin = {sizeof(kServiceUid), const_cast<LPBYTE>(kServiceUid)};
  values[1] = TextValue(PR_DISPLAY_NAME_W, name);
  values[2] = TextValue(PR_SERVICE_NAME_W, name);
  values[3] = TextValue(PR_SERVICE_DLL_NAME_W, file);
  values[4].ulPropTag = PR_SERVICE_ENTRY_NAME;
  values[4].Value.lpszA = entry.data();
  values[5].ulPropTag = PR_RESOURCE_FLAGS;
  return Profile({values, static_cast<ULONG>(std::size(values))});
}

HRESULT Session::TryLogOn(Probe& probe, const Module& module) {
  const HRESULT result = probe.Call("ABProviderOpen", [&] {
    return module.open()(nullptr, &support, &section, 0, MAPI_UNICODE | AB_NO_DIALOG, Ledger::AllocateRoot,
                         Ledger::AllocateMore, Ledger::FreeRoot, book.Put(), 0);
  });
  if (FAILED(result)) static_cast<void>(book.Detach());
  support.SetBook(book.Get());
  return result;
}

void Session::End() {
  support.SetBook(nullptr);
  book.Reset();
}

void Session::LogOn(Probe& probe, const Module& module) {
  const HRESULT result = TryLogOn(probe, module);
  if (FAILED(result)) FailOf(kLogonRule, "ABProviderOpen answered " + Name(result));
  if (!book) FailOf(kLogonRule, "ABProviderOpen succeeded and handed out no provider object");
}

void CreateService(Probe& probe, Module& module, Profile& profile) {
  if (probe.request.entry.empty()) return;
  Section section(profile);
  const HRESULT created = module.CallEntry(probe, MSG_SERVICE_CREATE, &section);
  if (FAILED(created)) FailOf(kContextsRule, "MSG_SERVICE_CREATE answered " + Name(created));
  if (!probe.request.config) return;
  const HRESULT taken = module.Configure(probe, &section, *probe.request.config);
  if (SUCCEEDED(taken)) return;
  FailOf("entry.config", DescribeConfig(*probe.request.config) + " was refused with " + Name(taken));
}

Stage::Stage(Probe& asked) : probe(asked), profile(NewProfile(asked.request)), module(asked), session() {
  CreateService(probe, module, profile);
  session = std::make_unique<Session>(profile);
  session->LogOn(probe, module);
}

void Stage::LogOnAgain() {
  EndSession();
  session = std::make_unique<Session>(profile);
  session->LogOn(probe, module);
}

void Stage::EndSession() {
  if (session == nullptr) return;
  probe.Step("the provider object's last Release");
  session->End();
  if (session->held() != 0) static_cast<void>(session.release());
}

Answer GetProps(Probe& probe, IMAPIProp* object, const Tags* tags, ULONG flags) {
  Answer answer;
  std::optional<TagList> list;
  if (tags != nullptr) list.emplace(*tags);
  answer.result = probe.Call("IMAPIProp::GetProps", [&] {
    return object->GetProps(list ? list->Get() : nullptr, flags, &answer.count, answer.values.Put());
  });
  if (FAILED(answer.result)) {
    static_cast<void>(answer.values.Detach());
    answer.count = 0;
  }
  return answer;
}

Answer RequireProps(Probe& probe, IMAPIProp* object, const Tags& tags) {
  Answer answer = GetProps(probe, object, &tags);
  Require(SUCCEEDED(answer.result), "GetProps answered " + Name(answer.result));
  Require(answer.count == tags.size(),
          "GetProps answered " + Count(answer.count, "value") + " to " + Count(tags.size(), "tag"));
  Require(bool{answer.values}, "GetProps succeeded and handed out null");
  return answer;
}

Opened Open(Probe& probe, IAddrBook* book, const Bytes& id, ULONG flags) {
  Opened opened;
  Bytes copy = id;
  opened.result = probe.Call("IAddrBook::OpenEntry", [&] {
    return book->OpenEntry(static_cast<ULONG>(copy.size()), reinterpret_cast<LPENTRYID>(copy.data()), nullptr,
                           flags, &opened.type, opened.object.Put());
  });
  if (FAILED(opened.result)) static_cast<void>(opened.object.Detach());
  return opened;
}

Opened RequireOpen(Probe& probe, IAddrBook* book, const Bytes& id, ULONG flags) {
  Opened opened = Open(probe, book, id, flags);
  const std::string what = "OpenEntry of " + ToHex(id);
  if (FAILED(opened.result)) FailOf(kOpensRule, what + " answered " + Name(opened.result));
  if (!opened.object) FailOf(kOpensRule, what + " succeeded and handed out null");
  if (!opened.props()) FailOf(kOpensRule, "what " + what + " hands out has no IMAPIProp");
  return opened;
}

ComPtr<IMAPITable> ContentsOf(Probe& probe, const ComPtr<IUnknown>& container) {
  return TableOf(probe, container, true);
}
ComPtr<IMAPITable> HierarchyOf(Probe& probe, const ComPtr<IUnknown>& container) {
  return TableOf(probe, container, false);
}

RowSet QueryRows(Probe& probe, IMAPITable* table, LONG count, ULONG flags) {
  RowSet rows(Ledger::FreeRoot);
  const HRESULT result =
      probe.Call("IMAPITable::QueryRows", [&] { return table->QueryRows(count, flags, rows.Put()); });
  if (FAILED(result)) static_cast<void>(rows.Detach());
  Require(SUCCEEDED(result), "QueryRows answered " + Name(result));
  Require(bool{rows}, "QueryRows succeeded and handed out null");
  return rows;
}

ULONG RowCount(Probe& probe, IMAPITable* table) {
  ULONG count = 0;
  probe.Succeed("IMAPITable::GetRowCount", [&] { return table->GetRowCount(0, &count); });
  return count;
}

void SetColumns(Probe& probe, IMAPITable* table, const Tags& columns) {
  TagList list(columns);
  probe.Succeed("IMAPITable::SetColumns", [&] { return table->SetColumns(list.Get(), 0); });
}

LONG Seek(Probe& probe, IMAPITable* table, BOOKMARK origin, LONG rows) {
  LONG moved = 0;
  probe.Succeed("IMAPITable::SeekRow", [&] { return table->SeekRow(origin, rows, &moved); });
  return moved;
}

SPropValue TextValue(ULONG tag, WideString& text) {
  SPropValue value{};
  value.ulPropTag = tag;
  value.Value.lpszW = text.data();
  return value;
}

Bytes BytesOf(SBinary bytes) {
  return bytes.lpb != nullptr ? Bytes(bytes.lpb, bytes.lpb + bytes.cb) : Bytes();
}

}  // namespace orvctl::check
