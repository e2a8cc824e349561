#include "tools/orvctl/check/objects.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "tools/orvctl/check/ledger.h"

namespace orvctl::check {
namespace {

using orv::sdk::Allocator;
using orv::sdk::Guarded;
using orv::sdk::TagsOf;

template <class Char>
Bytes TextBytes(const Char* text) {
  static constexpr Char kNone[1] = {};
  const Char* end = text != nullptr ? text : text = kNone;
  while (*end != 0) ++end;
  const auto* bytes = reinterpret_cast<const BYTE*>(text);
  return Bytes(bytes, bytes + (static_cast<size_t>(end - text) + 1) * sizeof(Char));
}

bool IsCopied(ULONG type) { return (type & MV_FLAG) == 0 && type != PT_OBJECT && type != PT_BINARY; }

// The values of the source that stay behind when binary and object properties are left out.
HRESULT CopyBetween(IMAPIProp* source, LPSPropTagArray include, const std::vector<ULONG>& exclude,
                    IMAPIProp* target, LPSPropProblemArray* problems) {
  ULONG count = 0;
  orv::sdk::Buffer<SPropValue> values(Ledger::FreeRoot);
  const HRESULT result = source->GetProps(include, MAPI_UNICODE, &count, values.Put());
  if (FAILED(result)) return static_cast<void>(values.Detach()), result;
  std::vector<SPropValue> chosen;
  for (const SPropValue& each : orv::sdk::ValueView(values.Get(), count)) {
    const bool isExcluded = std::any_of(exclude.begin(), exclude.end(),
                                        [&](ULONG tag) { return PROP_ID(tag) == PROP_ID(each.ulPropTag); });
    if (!isExcluded && IsCopied(PROP_TYPE(each.ulPropTag))) chosen.push_back(each);
  }
  return target->SetProps(Allocator::CountOf(chosen.size()), chosen.data(), problems);
}

}  // namespace

Stored::Stored(const SPropValue& value) : tag_(value.ulPropTag) {
  const auto& content = value.Value;
  switch (PROP_TYPE(tag_)) {
    case PT_UNICODE:
      bytes_ = TextBytes(content.lpszW);
      break;
    case PT_STRING8:
      bytes_ = TextBytes(content.lpszA);
      break;
    case PT_BINARY:
      if (content.bin.lpb != nullptr) bytes_.assign(content.bin.lpb, content.bin.lpb + content.bin.cb);
      break;
    case PT_MV_UNICODE:
      texts_.assign(content.MVszW.lppszW, content.MVszW.lppszW + content.MVszW.cValues);
      break;
    default:
      number_ = content.li.QuadPart;
  }
}

SPropValue Stored::CopyInto(const Allocator& allocator, void* root) const {
  SPropValue value{};
  value.ulPropTag = tag_;
  const ULONG type = PROP_TYPE(tag_);
  if (type == PT_MV_UNICODE) {
    auto* slots = static_cast<LPWSTR*>(allocator.AllocateMore(root, texts_.size() * sizeof(LPWSTR)));
    value.Value.MVszW = {Allocator::CountOf(texts_.size()), slots};
    for (const WideString& each : texts_) *slots++ = allocator.CopyText(root, each);
  } else if (type == PT_BINARY || type == PT_UNICODE || type == PT_STRING8) {
    const SBinary copy = allocator.CopyBytes(root, bytes_.data(), bytes_.size());
    value.Value.bin = copy;
    if (type != PT_BINARY) value.Value.lpszA = reinterpret_cast<LPSTR>(copy.lpb);
  } else {
    value.Value.li.QuadPart = number_;
  }
  return value;
}

Section::Section(Profile& profile)
    : Counted({IID_IUnknown, IID_IMAPIProp, IID_IProfSect}), profile_(profile), copy_(profile) {}

std::vector<ULONG> Section::OwnTags() const {
  std::vector<ULONG> tags;
  for (const auto& [id, value] : copy_) tags.push_back(value.tag());
  return tags;
}

// What was deleted stays stored.
HRESULT Section::SaveChanges(ULONG) {
  const std::lock_guard guard(lock_);
  for (const auto& [id, value] : copy_) profile_.insert_or_assign(id, value);
  return S_OK;
}

// As the library's section: the warning comes when the last of the tags is missing.
HRESULT Section::GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count, LPSPropValue* values) {
  if (count == nullptr || values == nullptr) return MAPI_E_INVALID_PARAMETER;
  if ((flags & MAPI_UNICODE) == 0) return MAPI_E_BAD_CHARWIDTH;
  if (tags != nullptr && tags->cValues == 0) return MAPI_E_INVALID_PARAMETER;
  if (FAILED(result)) return result;
  return Guarded([&] {
    const std::lock_guard guard(lock_);
    const std::vector<ULONG> wanted = tags != nullptr ? TagsOf(*tags) : OwnTags();
    const Allocator allocator = Ledger::Functions();
    Allocator::Root root = allocator.AllocateRoot(wanted.size() * sizeof(SPropValue));
    auto* value = static_cast<SPropValue*>(root.get());
    bool isMissing = false;
    for (const ULONG tag : wanted) {
      const auto found = copy_.find(PROP_ID(tag));
      isMissing = tag != PR_NULL && found == copy_.end();
      value->ulPropTag = tag == PR_NULL ? tag : CHANGE_PROP_TYPE(tag, PT_ERROR);
      value->Value.err = MAPI_E_NOT_FOUND;
      if (found != copy_.end()) *value = found->second.CopyInto(allocator, root.get());
      ++value;
    }
    *count = Allocator::CountOf(wanted.size());
    *values = static_cast<LPSPropValue>(root.release());
    return isMissing ? MAPI_W_ERRORS_RETURNED : S_OK;
  });
}

HRESULT Section::GetPropList(ULONG flags, LPSPropTagArray* tags) {
  if ((flags & MAPI_UNICODE) == 0) return MAPI_E_BAD_CHARWIDTH;
  return Guarded([&] {
    const std::lock_guard guard(lock_);
    *tags = static_cast<LPSPropTagArray>(Ledger::Functions().CopyTags(OwnTags()).release());
    return S_OK;
  });
}

HRESULT Section::SetProps(ULONG count, LPSPropValue values, LPSPropProblemArray* problems) {
  if (problems != nullptr) *problems = nullptr;
  return Guarded([&] {
    const std::lock_guard guard(lock_);
    for (const SPropValue& each : orv::sdk::ValueView(values, count)) {
      const bool isSkipped = each.ulPropTag == PR_NULL || PROP_TYPE(each.ulPropTag) == PT_ERROR;
      if (!isSkipped) copy_.insert_or_assign(PROP_ID(each.ulPropTag), Stored(each));
    }
    return S_OK;
  });
}

HRESULT Section::DeleteProps(LPSPropTagArray tags, LPSPropProblemArray* problems) {
  if (problems != nullptr) *problems = nullptr;
  return Guarded([&] {
    const std::lock_guard guard(lock_);
    for (const ULONG each : TagsOf(*tags)) copy_.erase(PROP_ID(each));
    return S_OK;
  });
}

Support::Support(bool isLogon) : Counted({IID_IUnknown, IID_IOrvSupport, IID_IOrvSupport2}), isLogon_(isLogon) {}

std::vector<MAPIUID> Support::Uids() {
  const std::lock_guard guard(lock_);
  return uids_;
}

HRESULT Support::GetMemAllocRoutines(LPALLOCATEBUFFER* root, LPALLOCATEMORE* more, LPFREEBUFFER* free) {
  if (root == nullptr || more == nullptr || free == nullptr) return MAPI_E_INVALID_PARAMETER;
  *root = Ledger::AllocateRoot;
  *more = Ledger::AllocateMore;
  *free = Ledger::FreeRoot;
  return S_OK;
}

HRESULT Support::SetProviderUID(const MAPIUID* uid) {
  if (uid == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (!isLogon_) return MAPI_E_NO_SUPPORT;
  if (FAILED(result)) return result;
  const std::lock_guard guard(lock_);
  const bool isKnown = std::any_of(uids_.begin(), uids_.end(),
                                   [uid](const MAPIUID& each) { return IsEqualMAPIUID(&each, uid); });
  if (isKnown) return MAPI_E_COLLISION;
  uids_.push_back(*uid);
  return S_OK;
}

HRESULT Support::DoCopyTo(LPCIID, LPVOID source, ULONG, LPCIID, LPSPropTagArray exclude, ULONG_PTR,
                          LPMAPIPROGRESS, LPCIID, LPVOID target, ULONG, LPSPropProblemArray* problems) {
  if (source == nullptr || target == nullptr) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&] {
    return CopyBetween(static_cast<IMAPIProp*>(source), nullptr,
                       exclude != nullptr ? TagsOf(*exclude) : std::vector<ULONG>(),
                       static_cast<IMAPIProp*>(target), problems);
  });
}

HRESULT Support::DoCopyProps(LPCIID, LPVOID source, LPSPropTagArray include, ULONG_PTR, LPMAPIPROGRESS,
                             LPCIID, LPVOID target, ULONG, LPSPropProblemArray* problems) {
  if (source == nullptr || target == nullptr || include == nullptr) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&] {
    return CopyBetween(static_cast<IMAPIProp*>(source), include, {}, static_cast<IMAPIProp*>(target),
                       problems);
  });
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
