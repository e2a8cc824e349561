#include "orv/kit/settings.hpp"

#include <algorithm>
#include <utility>

#include "orv/orvtags.h"

namespace orv::kit {
namespace {

bool IsNoSetting(ULONG tag) noexcept { return PROP_TYPE(tag) == PT_NULL || PROP_TYPE(tag) == PT_ERROR; }

SPropValue TextValue(ULONG tag, const WCHAR* text) noexcept {
  SPropValue value{};
  value.ulPropTag = tag;
  value.Value.lpszW = const_cast<LPWSTR>(text);
  return value;
}

// Single values that a section refuses do not fail its SetProps.
HRESULT SetAll(IProfSect& section, const PropList& values, LPFREEBUFFER free) {
  sdk::Buffer<SPropProblemArray> problems(free);
  const HRESULT hr =
      section.SetProps(static_cast<ULONG>(values.size()), const_cast<LPSPropValue>(values.View().begin()),
                       free != nullptr ? problems.Put() : nullptr);
  if (FAILED(hr)) return hr;
  return problems && problems->cProblem != 0 ? problems->aProblem[0].scode : S_OK;
}

}  // namespace

std::wstring AbsolutePath(const WCHAR* path) {
  std::wstring full(GetFullPathNameW(path, 0, nullptr, nullptr), L'\0');
  const DWORD length = GetFullPathNameW(path, static_cast<DWORD>(full.size()), full.data(), nullptr);
  full.resize(length < full.size() ? length : 0);
  return full;
}

Settings& Settings::Add(ULONG tag, Check check, bool isPath, LONG least, LONG most) {
  rules_.push_back({tag, least, most, isPath, std::move(check)});
  return *this;
}

Settings& Settings::Text(ULONG tag, std::wstring_view otherwise, Check check) {
  defaults_.Set(tag, otherwise);
  return Add(CHANGE_PROP_TYPE(tag, PT_UNICODE), std::move(check));
}

Settings& Settings::Path(ULONG tag, Check check) {
  defaults_.Set(tag, L"");
  return Add(CHANGE_PROP_TYPE(tag, PT_UNICODE), std::move(check), true);
}

Settings& Settings::Number(ULONG tag, LONG otherwise, LONG least, LONG most) {
  defaults_.Set(CHANGE_PROP_TYPE(tag, PT_LONG), otherwise);
  return Add(CHANGE_PROP_TYPE(tag, PT_LONG), nullptr, false, least, most);
}

Settings& Settings::Flag(ULONG tag, bool otherwise) {
  defaults_.Set(CHANGE_PROP_TYPE(tag, PT_BOOLEAN), otherwise);
  return Add(CHANGE_PROP_TYPE(tag, PT_BOOLEAN));
}

Settings& Settings::Uid(ULONG tag) {
  defaults_.Set(tag, MAPIUID{});
  return Add(CHANGE_PROP_TYPE(tag, PT_BINARY));
}

const Settings::Rule* Settings::Find(ULONG tag) const noexcept {
  const auto found = std::find_if(rules_.begin(), rules_.end(),
                                  [tag](const Rule& each) { return PROP_ID(each.tag) == PROP_ID(tag); });
  return found != rules_.end() ? &*found : nullptr;
}

HRESULT Settings::CheckForm(const Rule& rule, const SPropValue& value) {
  if (value.ulPropTag != rule.tag) return MAPI_E_UNEXPECTED_TYPE;
  switch (PROP_TYPE(rule.tag)) {
    case PT_UNICODE:
      return value.Value.lpszW != nullptr ? S_OK : MAPI_E_INVALID_PARAMETER;
    case PT_LONG:
      return value.Value.l >= rule.least && value.Value.l <= rule.most ? S_OK : MAPI_E_BAD_VALUE;
    case PT_BINARY:
      return value.Value.bin.cb == sizeof(MAPIUID) ? CheckValue(value) : MAPI_E_BAD_VALUE;
    default:
      return S_OK;
  }
}

HRESULT Settings::Accept(const SPropValue& value, PropList& accepted) const {
  if (IsNoSetting(value.ulPropTag)) return S_OK;
  const Rule* rule = Find(value.ulPropTag);
  if (rule == nullptr) return MAPI_E_NOT_FOUND;
  if (const HRESULT hr = CheckForm(*rule, value); FAILED(hr)) return hr;
  const bool isPath = rule->isPath && *value.Value.lpszW != 0;
  const std::wstring path = isPath ? AbsolutePath(value.Value.lpszW) : std::wstring();
  if (isPath && path.empty()) return MAPI_E_INVALID_PARAMETER;
  const SPropValue chosen = isPath ? TextValue(value.ulPropTag, path.c_str()) : value;
  const bool isAsked = rule->check && (!rule->isPath || isPath);
  if (const HRESULT hr = isAsked ? rule->check(chosen) : S_OK; FAILED(hr)) return hr;
  return accepted.Set(chosen);
}

HRESULT Settings::Store(IProfSect* section, sdk::ValueView values, LPFREEBUFFER free) const {
  if (section == nullptr) return MAPI_E_INVALID_PARAMETER;
  return sdk::Guarded([&]() -> HRESULT {
    PropList accepted;
    for (const SPropValue& each : values) {
      if (const HRESULT hr = Accept(each, accepted); FAILED(hr)) return hr;
    }
    if (accepted.empty()) return S_OK;
    if (const HRESULT hr = SetAll(*section, accepted, free); FAILED(hr)) return hr;
    return section->SaveChanges(KEEP_OPEN_READWRITE);  // without this nothing reaches the profile
  });
}

HRESULT Settings::StoreMain(IProfSect* section, LPCWSTR text, LPFREEBUFFER free) const {
  if (rules_.empty() || text == nullptr) return MAPI_E_INVALID_PARAMETER;
  const SPropValue value = TextValue(rules_.front().tag, text);
  if (PROP_TYPE(value.ulPropTag) != PT_UNICODE) return MAPI_E_INVALID_PARAMETER;
  return Store(section, {&value, 1}, free);
}

HRESULT Settings::Read(IProfSect& section, const sdk::Allocator& buffers, PropList* values) const {
  return sdk::Guarded([&]() -> HRESULT {
    std::vector<ULONG> tags{PR_SERVICE_UID, PR_DISPLAY_NAME};
    for (const Rule& each : rules_) tags.push_back(each.tag);
    const sdk::Allocator::Root asked = buffers.CopyTags(tags);
    ULONG count = 0;
    auto stored = buffers.Own<SPropValue>();
    const HRESULT hr =
        section.GetProps(static_cast<LPSPropTagArray>(asked.get()), MAPI_UNICODE, &count, stored.Put());
    if (FAILED(hr)) return hr;
    const sdk::ValueView found(stored.Get(), count);
    if (found.Binary(PR_SERVICE_UID).cb < sizeof(MAPIUID)) return MAPI_E_INVALID_OBJECT;
    PropList read = defaults_;
    read.SetBytes(PR_SERVICE_UID, found.Binary(PR_SERVICE_UID).lpb, sizeof(MAPIUID));
    read.Set(PR_DISPLAY_NAME, found.Text(PR_DISPLAY_NAME));
    for (const SPropValue& each : found) {
      const Rule* rule = Find(each.ulPropTag);
      if (rule != nullptr && CheckForm(*rule, each) == S_OK) static_cast<void>(read.Set(each));
    }
    *values = std::move(read);
    return S_OK;
  });
}

}  // namespace orv::kit
