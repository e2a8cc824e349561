#include "orv/kit/recipients.hpp"

#include <algorithm>

#include "orv/orvtags.h"

namespace orv::kit {
namespace {

// Everything in these interfaces is UTF-16; whoever put 8-bit text into a list knows what for.
bool IsMergeable(const SPropValue& value) {
  const ULONG type = PROP_TYPE(value.ulPropTag) & ~ULONG{MV_FLAG};
  return type != PT_STRING8 && type != PT_OBJECT && CheckValue(value) == S_OK;
}

bool Contains(const std::vector<ULONG>& tags, const SPropValue& value) {
  return std::any_of(tags.begin(), tags.end(),
                     [&](ULONG tag) { return PROP_ID(tag) == PROP_ID(value.ulPropTag); });
}

// The entry's values where they were asked for, else the recipient's; each identifier once.
std::vector<SPropValue> Merge(sdk::ValueView entry, sdk::ValueView given, const std::vector<ULONG>& asked) {
  std::vector<SPropValue> merged;
  for (const SPropValue& each : entry) {
    if (PROP_TYPE(each.ulPropTag) != PT_ERROR && Contains(asked, each)) merged.push_back(each);
  }
  const size_t answered = merged.size();
  for (const SPropValue& each : given) {
    const sdk::ValueView before(merged.data(), static_cast<ULONG>(answered));
    if (FindValue(before, each.ulPropTag) == nullptr) merged.push_back(each);
  }
  return merged;
}

void Prepare(const sdk::Allocator& buffers, const EntryIdCodec& codec, const SPropTagArray& tags,
             ADRENTRY& recipient, const ReadEntry& read) {
  const SBinary id = sdk::ValueView(recipient).Binary(PR_ENTRYID);
  EntryRef entry;
  PropList values;
  if (FAILED(codec.Read(id.cb, id.lpb, &entry)) ||
      FAILED(read(entry, {tags.aulPropTag, tags.cValues}, &values)))
    return;
  MergeRecipient(buffers, values.View(), tags, recipient);
}

}  // namespace

void MergeRecipient(const sdk::Allocator& buffers, sdk::ValueView entry, const SPropTagArray& tags,
                    ADRENTRY& recipient) {
  const sdk::ValueView given(recipient);
  if (!std::all_of(given.begin(), given.end(), IsMergeable)) return;
  std::vector<ULONG> wanted = sdk::TagsOf(tags);
  const std::vector<SPropValue> values = Merge(entry, given, wanted);
  for (const SPropValue& each : given) {
    if (!Contains(wanted, each)) wanted.push_back(each.ulPropTag);
  }
  auto copy =
      CopyRow(buffers, {values.data(), sdk::Allocator::CountOf(values.size())}, wanted.data(), wanted.size());
  const auto former = buffers.Own(std::exchange(recipient.rgPropVals, copy.Detach()));
  recipient.cValues = static_cast<ULONG>(wanted.size());
}

HRESULT PrepareRecipients(const sdk::Allocator& buffers, const EntryIdCodec& codec, const SPropTagArray* tags,
                          ADRLIST* list, const ReadEntry& read) noexcept {
  if (list == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (tags == nullptr) return S_OK;
  return sdk::Guarded([&] {
    for (ULONG i = 0; i < list->cEntries; ++i) Prepare(buffers, codec, *tags, list->aEntries[i], read);
    return S_OK;
  });
}

}  // namespace orv::kit
