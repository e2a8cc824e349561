#include "tests/ui/services/fake_services.h"

#include <algorithm>

#include "props/base_table.h"
#include "tests/support/fake_provider/fake_script.h"

namespace orv::test {
namespace {

SPropValue TextValue(ULONG tag, const std::wstring& text) {
  SPropValue value{};
  value.ulPropTag = tag;
  value.Value.lpszW = const_cast<LPWSTR>(text.c_str());
  return value;
}

HRESULT AddRow(CBaseTable& table, const FakeService& service) {
  MAPIUID uid = FakeUid(static_cast<BYTE>(service.id));
  SPropValue values[4] = {
      TextValue(PR_SERVICE_NAME_W, service.name), TextValue(PR_DISPLAY_NAME_W, service.display), {}, {}};
  values[2].ulPropTag = PR_SERVICE_UID;
  values[2].Value.bin = {sizeof uid.ab, uid.ab};
  values[3].ulPropTag = PR_RESOURCE_FLAGS;
  values[3].Value.l = static_cast<LONG>(service.flags);
  return table.Rows().Add(SRow{0, 4, values}, table.Rows().Count());
}

std::string Narrow(const wchar_t* text) {
  std::string narrow;
  for (; *text != 0; ++text) narrow += static_cast<char>(*text);
  return narrow;
}

}  // namespace

void FakeSection::SetText(ULONG tag, const wchar_t* text) { Properties().Set(TextValue(tag, text)); }

HRESULT FakeSection::SaveChanges(ULONG flags) {
  log_.push_back("save " + name_ + (flags == KEEP_OPEN_READWRITE ? "" : " with other flags"));
  return S_OK;
}

HRESULT FakeServices::GetMsgServiceTable(ULONG flags, LPMAPITABLE* table) {
  *table = nullptr;
  if (!(flags & MAPI_UNICODE)) return MAPI_E_CALL_FAILED;
  if (FAILED(tableResult)) return tableResult;
  CBaseTable rows;
  for (const FakeService& service : services) {
    if (const HRESULT hr = AddRow(rows, service); FAILED(hr)) return hr;
  }
  return CreateTable(std::move(rows), table);
}

HRESULT FakeServices::CreateMsgService(LPCWSTR name, LPCWSTR display, LPCWSTR extra, ULONG resourceFlags,
                                       ULONG_PTR uiParam, ULONG flags) {
  log.push_back("create '" + Narrow(name) + "' '" + Narrow(display) + "' '" + Narrow(extra) + "' " +
                std::to_string(resourceFlags));
  lastUiParam = uiParam;
  lastFlags = flags;
  if (FAILED(createResult)) return createResult;
  if (*name == 0) return MAPI_E_NOT_FOUND;
  services.insert(services.begin(), {'n', name, std::wstring(L"new ") + name});
  return S_OK;
}

HRESULT FakeServices::DeleteMsgService(const MAPIUID* uid) {
  const char id = static_cast<char>(uid->ab[0]);
  log.push_back(std::string("delete ") + id);
  if (onDelete) onDelete();
  if (FAILED(deleteResult)) return deleteResult;
  const auto gone = std::erase_if(services, [=](const FakeService& service) { return service.id == id; });
  return gone == 0 ? MAPI_E_NOT_FOUND : S_OK;
}

HRESULT FakeServices::ConfigureMsgService(const MAPIUID* uid, ULONG_PTR uiParam, ULONG flags, ULONG count,
                                          LPSPropValue, LPPROFSECT* section) {
  const char id = static_cast<char>(uid->ab[0]);
  log.push_back(std::string("configure ") + id + (*section == nullptr ? "" : " with an open section") +
                (count == 0 ? "" : " with values"));
  lastUiParam = uiParam;
  lastFlags = flags;
  if (*section == nullptr && !configureOpensNothing) *section = MakeSection(id);
  return configureResult;
}

HRESULT FakeServices::OpenProfileSection(const MAPIUID* uid, LPCIID, ULONG, LPPROFSECT* section) {
  const char id = static_cast<char>(uid->ab[0]);
  log.push_back(std::string("open ") + id);
  *section = MakeSection(id);
  return S_OK;
}

IProfSect* FakeServices::MakeSection(char id) {
  auto* section = new FakeSection(std::string(1, id), log);
  section->SetText(PR_DISPLAY_NAME_W, (std::wstring(1, static_cast<wchar_t>(id)) + L" configured").c_str());
  for (const auto& [tag, text] : sectionTexts[id]) section->SetText(tag, text.c_str());
  return section;
}

}  // namespace orv::test
