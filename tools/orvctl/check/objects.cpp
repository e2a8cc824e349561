#include "tools/orvctl/check/objects.h"

#include <algorithm>
#include <mutex>

#include "diag/names.h"
#include "orv/kit/boundary.hpp"
#include "tools/orvctl/check/ledger.h"

namespace orvctl::check {
namespace {

using orv::sdk::ComPtr;
using orv::sdk::Guarded;

orv::sdk::Lock reportLock;
std::vector<std::string> reports;

void Note(HRESULT code, const std::string& text) {
  const std::string report = diag::ResultName(static_cast<uint32_t>(code)) + ": " + text;
  const std::lock_guard guard(reportLock);
  if (std::find(reports.begin(), reports.end(), report) == reports.end()) reports.push_back(report);
}

}  // namespace

std::string Written(const orv::sdk::ValueView& values) {
  std::string text;
  for (const SPropValue& each : values)
    text += diag::PropTagName(each.ulPropTag) + ": " + ValueCell(each).text + "\n";
  return text;
}

Section::Section(Profile& profile) : Counted(Ledger::Functions(), profile), profile_(profile) {}

// What was deleted stays stored.
HRESULT Section::Save(kit::Changes& changes) {
  HRESULT worst = S_OK;
  for (const SPropValue& each : changes.values.View()) {
    if (const HRESULT hr = profile_.Set(each); FAILED(hr)) worst = hr;
  }
  return worst;
}

// As the library's section: the warning comes when the last of the tags is missing.
HRESULT Section::GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count, LPSPropValue* values) {
  if (FAILED(result)) return result;
  const HRESULT read = MemorySection::GetProps(tags, flags, count, values);
  const bool isLastThere =
      SUCCEEDED(read) && *count != 0 && PROP_TYPE((*values)[*count - 1].ulPropTag) != PT_ERROR;
  return isLastThere ? S_OK : read;
}

Support::Support(bool isLogon)
    : Counted(Library::Buffers{Ledger::AllocateRoot, Ledger::AllocateMore, Ledger::FreeRoot}, Note),
      isLogon_(isLogon) {}

HRESULT Support::SetProviderUID(const MAPIUID* uid) {
  if (!isLogon_) return MAPI_E_NO_SUPPORT;
  return FAILED(result) ? result : LoneSupport::SetProviderUID(uid);
}

HRESULT Support::OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* type,
                           LPUNKNOWN* object) {
  if (FAILED(State())) return State();
  const SBinary foreign = foreignEntry.Bytes(PR_ENTRYID);
  const auto* bytes = reinterpret_cast<const BYTE*>(id);
  const bool isForeign =
      id != nullptr && size != 0 && std::equal(bytes, bytes + size, foreign.lpb, foreign.lpb + foreign.cb);
  if (!isForeign) return book_.load()->OpenEntry(size, id, iid, flags, type, object);
  return Guarded([&] {
    const auto host = std::make_shared<const kit::Host>(kit::Host{Ledger::Functions(), {}});
    const auto entry = ComPtr<IMailUser>::Adopt(new kit::PropObject<IMailUser>(host, foreignEntry));
    *type = MAPI_MAILUSER;
    return kit::HandOut(entry, iid, object);
  });
}

// Noted in any case; the answer is the library's.
HRESULT Support::ReportProblem(HRESULT code, LPCWSTR text) {
  const HRESULT noted = LoneSupport::ReportProblem(code, text);
  return FAILED(noted) ? noted : State();
}

std::vector<std::string> Reports() {
  const std::lock_guard guard(reportLock);
  return reports;
}

std::vector<Sink::Event> Sink::Events() {
  const std::lock_guard guard(lock_);
  return events_;
}

ULONG Sink::OnNotify(ULONG count, LPNOTIFICATION notifications) {
  const auto bytesOf = [](ULONG size, const void* id) {
    const auto* bytes = static_cast<const BYTE*>(id);
    return bytes != nullptr ? Bytes(bytes, bytes + size) : Bytes();
  };
  {
    const std::lock_guard guard(lock_);
    for (const NOTIFICATION* each = notifications; each != notifications + count; ++each) {
      const OBJECT_NOTIFICATION& object = each->info.obj;
      const bool isObject = (each->ulEventType & (fnevTableModified | fnevCriticalError | fnevExtended)) == 0;
      events_.push_back({each->ulEventType, isObject ? bytesOf(object.cbEntryID, object.lpEntryID) : Bytes(),
                         isObject ? bytesOf(object.cbParentID, object.lpParentID) : Bytes()});
    }
  }
  if (onNotify) onNotify();
  return 0;
}

}  // namespace orvctl::check
