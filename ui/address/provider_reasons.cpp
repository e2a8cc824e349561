// Codes that no row knows are told as numbers, for whoever is asked for help.
#include "ui/address/provider_reasons.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "orv/orvcodes.h"
#include "ui/address/address_ids.h"
#include "ui/localisation.h"
#include "ui/text.h"

namespace orv::ui {
namespace {

// Of a text of the resource library, its end included.
constexpr std::size_t kTextCapacity = 160;

struct Reason {
  HRESULT code;
  UINT text;
};

constexpr Reason kReasons[] = {
    {MAPI_E_NO_ACCESS, address::kReasonNoAccess},
    {MAPI_E_NOT_FOUND, address::kReasonGone},
    {MAPI_E_OBJECT_DELETED, address::kReasonGone},
    {MAPI_E_INVALID_ENTRYID, address::kReasonGone},
    {MAPI_E_NOT_ENOUGH_DISK, address::kReasonDiskFull},
    {MAPI_E_BUSY, address::kReasonBusy},
    {MAPI_E_TIMEOUT, address::kReasonBusy},
    {MAPI_E_CORRUPT_DATA, address::kReasonDamaged},
    {MAPI_E_CORRUPT_STORE, address::kReasonDamaged},
    {MAPI_E_DISK_ERROR, address::kReasonDisk},
    {MAPI_E_NETWORK_ERROR, address::kReasonNetwork},
    {MAPI_E_OBJECT_CHANGED, address::kReasonChanged},
    {MAPI_E_NOT_ENOUGH_MEMORY, address::kOutOfMemory},
};

constexpr Reason kStates[] = {
    {MAPI_E_NO_SUPPORT, address::kStatusOnlyBooks},   {MAPI_E_NOT_FOUND, address::kStatusMissing},
    {MAPI_E_OBJECT_DELETED, address::kStatusMissing}, {MAPI_E_INVALID_ENTRYID, address::kStatusMissing},
    {MAPI_E_NO_ACCESS, address::kStatusNoAccess},     {MAPI_E_CORRUPT_DATA, address::kStatusDamaged},
    {MAPI_E_CORRUPT_STORE, address::kStatusDamaged},  {MAPI_E_INVALID_OBJECT, address::kStatusForeign},
    {MAPI_E_VERSION, address::kStatusNewer},          {MAPI_E_BUSY, address::kStatusBusy},
    {MAPI_E_TIMEOUT, address::kStatusBusy},           {MAPI_E_DISK_ERROR, address::kStatusDisk},
    {MAPI_E_NETWORK_ERROR, address::kStatusNetwork},  {MAPI_E_UNCONFIGURED, address::kStatusUnconfigured},
};

template <std::size_t Count>
UINT TextFor(const Reason (&reasons)[Count], HRESULT code, UINT otherwise) {
  const auto found = std::find_if(std::begin(reasons), std::end(reasons),
                                  [code](const Reason& each) { return each.code == code; });
  return found == std::end(reasons) ? otherwise : found->text;
}

WString Load(HMODULE resources, UINT text) { return LoadText(resources, text, kTextCapacity); }

WString CodeText(HRESULT code) {
  WCHAR digits[11];
  const int size = std::swprintf(digits, std::size(digits), L"0x%08lX", static_cast<unsigned long>(code));
  return WString(digits, static_cast<std::size_t>(std::max(size, 0)));
}

UINT FailedText(EntryCommand command) {
  switch (command) {
    case EntryCommand::kDelete:
      return address::kDeletionFailed;
    case EntryCommand::kNew:
      return address::kNewEntryFailed;
    default:
      return address::kDetailsFailed;
  }
}

UINT UnsupportedText(EntryCommand command) {
  switch (command) {
    case EntryCommand::kDelete:
      return address::kReasonCannotDelete;
    case EntryCommand::kNew:
      return address::kReasonCannotCreate;
    default:
      return address::kReasonNoDetails;
  }
}

}  // namespace

WString FailureText(HMODULE resources, EntryCommand command, HRESULT hr, const WString& providersWords) {
  const WString failed = Load(resources, FailedText(command)) + L"\n";
  if (!providersWords.empty()) return failed + providersWords;
  if (hr == MAPI_E_NO_SUPPORT) return failed + Load(resources, UnsupportedText(command));
  return failed + WithValue(Load(resources, TextFor(kReasons, hr, address::kReasonCode)), CodeText(hr));
}

WString LeftOverText(HMODULE resources, ULONG count) {
  const UINT text = count == 1 ? address::kOneNotDeleted : address::kSomeNotDeleted;
  return WithValue(Load(resources, text), GroupedDigits(count));
}

WString StatusText(HMODULE resources, ULONG entries, HRESULT hr) {
  if (entries != 0 && FAILED(hr))
    return WithValue(Load(resources, address::kStatusPart), GroupedDigits(entries));
  if (FAILED(hr)) return WithValue(Load(resources, TextFor(kStates, hr, address::kStatusCode)), CodeText(hr));
  constexpr UINT kFew[] = {address::kStatusNone, address::kStatusOne};
  const UINT text = entries < std::size(kFew) ? kFew[entries] : address::kStatusMany;
  return WithValue(Load(resources, text), GroupedDigits(entries));
}

}  // namespace orv::ui
