// The services of a profile and their sections without a registry behind them: what is asked of them is logged,
// what they answer is the test's choice.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "orv/orv.h"
#include "platform/com_ptr.h"
#include "props/base_prop.h"

namespace orv::test {

using CallLog = std::vector<std::string>;

// A profile section that stays in memory and logs that it is saved.
class FakeSection final : public PropObject<IProfSect> {
 public:
  FakeSection(std::string name, CallLog& log) : name_(std::move(name)), log_(log) {}

  void SetText(ULONG tag, const wchar_t* text);
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG flags) override;

 private:
  bool Supports(REFIID) const override { return false; }

  std::string name_;
  CallLog& log_;
};

struct FakeService {
  char id;  // every byte of its UID, and its name in the log
  std::wstring name;
  std::wstring display;
  ULONG flags = 0;
};

class FakeServices final : public ComObject<IABServiceAdmin> {
 public:
  static ComPtr<FakeServices> Create() { return ComPtr<FakeServices>::Adopt(new FakeServices); }

  std::vector<FakeService> services;
  CallLog log;
  HRESULT tableResult = S_OK;
  HRESULT createResult = S_OK;
  HRESULT deleteResult = S_OK;
  HRESULT configureResult = S_OK;
  std::function<void()> onDelete;  // may throw
  // Configure leaves an empty slot empty.
  bool configureOpensNothing = false;
  ULONG_PTR lastUiParam = 0;
  ULONG lastFlags = 0;
  // Texts that a service's section holds, besides the name it shows after it was configured: "X configured".
  std::map<char, std::map<ULONG, std::wstring>> sectionTexts;

  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetMsgServiceTable(ULONG flags, LPMAPITABLE* table) override;
  HRESULT STDMETHODCALLTYPE CreateMsgService(LPCWSTR name, LPCWSTR display, LPCWSTR extra,
                                             ULONG resourceFlags, ULONG_PTR uiParam, ULONG flags) override;
  HRESULT STDMETHODCALLTYPE DeleteMsgService(const MAPIUID* uid) override;
  HRESULT STDMETHODCALLTYPE ConfigureMsgService(const MAPIUID* uid, ULONG_PTR uiParam, ULONG flags,
                                                ULONG count, LPSPropValue values,
                                                LPPROFSECT* section) override;
  HRESULT STDMETHODCALLTYPE OpenProfileSection(const MAPIUID* uid, LPCIID interfaceId, ULONG flags,
                                               LPPROFSECT* section) override;

 private:
  bool Supports(REFIID iid) const override { return IsOneOf(iid, IID_IUnknown, IID_IABServiceAdmin); }
  IProfSect* MakeSection(char id);
};

}  // namespace orv::test
