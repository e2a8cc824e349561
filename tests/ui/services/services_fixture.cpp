#include "tests/ui/services/services_fixture.h"

#include <algorithm>
#include <cstring>

#include "platform/buffer.h"
#include "props/table_reader.h"

namespace orv::test {

std::string CatalogueText(const std::vector<CatalogueService>& services, const std::string& defaults) {
  std::string text = "[Services]\r\n";
  for (const auto& service : services) text += service.name + "=" + service.name + " offered\r\n";
  if (!defaults.empty()) text += "[Default Services]\r\n" + defaults;
  for (const auto& service : services) {
    text += "[" + service.name + "]\r\nPR_DISPLAY_NAME=" + service.name +
            "\r\nPR_SERVICE_DLL_NAME=" + service.library + "\r\nPR_SERVICE_ENTRY_NAME=FakeServiceEntry\r\n" +
            service.lines;
  }
  return text;
}

void ServiceScript::OnService(const FakeServiceCall& call, IProfSect* section, IOrvSupport* support) {
  FakeScript::OnService(call, section, support);
  if (call.context != MSG_SERVICE_CONFIGURE) return;
  configured.push_back(section);
  if (newName.empty()) return;
  SPropValue shown{};
  shown.ulPropTag = PR_DISPLAY_NAME_W;
  shown.Value.lpszW = newName.data();
  EXPECT_EQ(section->SetProps(1, &shown, nullptr), S_OK);
  if (saves) {
    EXPECT_EQ(section->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
  }
}

ServicesFixture::ServicesFixture() { EXPECT_EQ(OrvAdminProfiles(MAPI_UNICODE, admin_.Put(), 0), S_OK); }

void ServicesFixture::MakeProfile(const std::vector<std::string>& services) {
  std::vector<CatalogueService> offered;
  std::string defaults;
  for (const std::string& name : services) {
    offered.push_back({name});
    defaults += name + "=" + name + "\r\n";
  }
  installation_.WriteCatalogue(CatalogueText(offered, defaults));
  EXPECT_EQ(admin_->CreateProfile(L"P", 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES), S_OK);
}

HRESULT ServicesFixture::Configure(const Steps& steps) {
  DialogDriver driver([&](DialogScript& script) { steps(script, script.NextDialog()); });
  return admin_->ConfigureProfile(L"P", 0, MAPI_UNICODE);
}

void ServicesFixture::ConfigureAndPress(int button, const Steps& steps) {
  const Steps all = [&](DialogScript& script, HWND dialog) {
    steps(script, dialog);
    script.WaitEnabled(dialog);
    script.Close(dialog, button);
  };
  EXPECT_EQ(Configure(all), button == IDOK ? S_OK : MAPI_E_USER_CANCEL);
}

ComPtr<IABServiceAdmin> ServicesFixture::Services() const {
  ComPtr<IABServiceAdmin> services;
  EXPECT_EQ(admin_->AdminServices(L"P", MAPI_UNICODE, services.Put()), S_OK);
  return services;
}

void ServicesFixture::SetProperty(const std::wstring& service, SPropValue value) const {
  const ComPtr<IABServiceAdmin> services = Services();
  ComPtr<IMAPITable> table;
  EXPECT_EQ(services->GetMsgServiceTable(MAPI_UNICODE, table.Put()), S_OK);
  TableReader rows;
  EXPECT_EQ(rows.Open(table, TagArray{PR_DISPLAY_NAME_W, PR_SERVICE_UID}), S_OK);
  while (rows.Next() == S_OK) {
    if (service != TextOf(rows.Row().Find(PR_DISPLAY_NAME_W))) continue;
    MAPIUID uid;
    std::memcpy(&uid, BinaryOf(rows.Row().Find(PR_SERVICE_UID))->lpb, sizeof uid);
    IProfSect* unused = nullptr;
    EXPECT_EQ(services->ConfigureMsgService(&uid, 0, MAPI_UNICODE, 1, &value, &unused), S_OK);
  }
}

WString ServicesFixture::CatalogueValue(const wchar_t* section, const wchar_t* key) const {
  wchar_t value[300] = {};
  GetPrivateProfileStringW(section, key, L"", value, 300, installation_.Path(L"XHTASVA.ini").c_str());
  return value;
}

int ServicesFixture::LineOf(DialogScript& script, HWND dialog, const std::wstring& text) {
  const Lines lines = script.Items(dialog, kList);
  const auto found = std::find(lines.begin(), lines.end(), text);
  return found == lines.end() ? -1 : static_cast<int>(found - lines.begin());
}

HWND ServicesFixture::OpenAdd(DialogScript& script, HWND dialog, int line) {
  script.PostPress(dialog, kAdd);
  const HWND add = script.NextDialog();
  script.Select(add, kList, line);
  return add;
}

void ServicesFixture::WaitLines(DialogScript& script, HWND dialog, std::size_t count) {
  script.WaitUntil([&] { return script.Items(dialog, kList).size() == count; }, "lines");
  script.WaitEnabled(dialog);
}

}  // namespace orv::test
