// The services of a profile: add, remove and configure them.
#pragma once

#include "orv/orvapi.h"
#include "platform/com_ptr.h"
#include "props/foreign_values.h"
#include "ui/dialog.h"
#include "ui/services/record_list.h"

namespace orv::ui {

class ProfileDialog final : public ModalDialog {
 public:
  ProfileDialog(HMODULE resources, ComPtr<IABServiceAdmin> services);

 private:
  struct Service {
    MAPIUID uid{};
    ULONG resourceFlags = 0;
  };

  bool OnInitialise() override;
  bool OnCommand(WORD control, WORD notification) override;
  void OnOk() override;
  void OnHelp(const HELPINFO& help) override;
  void OnContextMenu(HWND window, POINT point) override;
  void OnClosing() override { section_.Reset(); }

  void OnAdd();
  void OnRemove();
  void OnConfigure();
  bool OnListNotification(WORD notification);

  HRESULT CreateService(const WString& name);
  void TellFailure(HRESULT hr) const;
  void ShowNewService();
  void AddLine(const ForeignValues& row);
  void ConfigureService(const MAPIUID& uid);
  void ShowNewName(std::size_t line);
  void SetButtons();
  void SetButton(int button, bool enabled, int heir);
  bool SelectedHas(ULONG resourceFlag) const;
  void SaveOpenSection();

  ComPtr<IABServiceAdmin> services_;
  // The section of the service configured first. It stays open, and a later Configure, even of another service,
  // is handed this very section: OK saves exactly one, and the file that it names is the one that is published.
  ComPtr<IProfSect> section_;
  RecordList<Service> lines_;
};

}  // namespace orv::ui
