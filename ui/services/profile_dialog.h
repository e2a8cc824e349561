// The services of a profile: add, remove and configure them.
#pragma once

#include "orv/orvapi.h"
#include "platform/com_ptr.h"
#include "ui/context_help.h"
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
  void OnHelp(const HELPINFO& help) override;
  void OnContextMenu(HWND window, POINT point) override;

  void OnAdd();
  void OnRemove();
  void OnConfigure();
  void OnOk();
  bool OnListNotification(WORD notification);

  HRESULT CreateService(const WString& name);
  void AddLine(const SRow& row);
  void ShowNewName(std::size_t line);
  void SetButtons();
  void SetButton(int button, bool enabled, int heir);
  bool SelectedHas(ULONG resourceFlag) const;
  void SaveOpenSection();
  void Close(INT_PTR result);

  ComPtr<IABServiceAdmin> services_;
  // The section of the service configured first. It stays open, and a later Configure, even of another service,
  // is handed this very section: OK saves exactly one, and that it is this one callers rely on.
  ComPtr<IProfSect> section_;
  RecordList<Service> lines_;
  DialogHelp help_;
};

}  // namespace orv::ui
