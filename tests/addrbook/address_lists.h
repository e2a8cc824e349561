// Address lists of tests, written and read as short texts: "key" or "key/type", where the type is the recipient
// type, and a key beginning with "list" stands for a distribution list.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "orv/orv.h"
#include "platform/buffer.h"
#include "tests/support/fake_provider/fake_script.h"

namespace orv::test {

inline bool IsListKey(const std::string& key) { return key.rfind("list", 0) == 0; }

// The buffer functions that are linked into the test.
inline constexpr FakeBuffers kOwnBuffers = {&OrvAllocateBuffer, &OrvAllocateMore, &OrvFreeBuffer};

// One entry; the column `without` is left out. All null when there is no memory.
inline ADRENTRY MakeEntry(const FakeScript& script, const std::string& key, LONG recipientType,
                          ULONG without = 0, const FakeBuffers& buffers = kOwnBuffers) {
  const std::vector<BYTE> id = script.EntryId(key);
  void* block = nullptr;
  void* bytes = nullptr;
  if (FAILED(buffers.allocate(3 * sizeof(SPropValue), &block))) return {};
  if (FAILED(buffers.allocateMore(static_cast<ULONG>(id.size()), block, &bytes))) return {};
  std::memcpy(bytes, id.data(), id.size());
  SPropValue* const values = static_cast<SPropValue*>(block);
  ULONG count = 0;
  for (const ULONG tag : {PR_ENTRYID, PR_OBJECT_TYPE, PR_RECIPIENT_TYPE}) {
    if (tag == without) continue;
    SPropValue& value = values[count++];
    value.ulPropTag = tag;
    if (tag == PR_ENTRYID) value.Value.bin = {static_cast<ULONG>(id.size()), static_cast<BYTE*>(bytes)};
    if (tag == PR_OBJECT_TYPE) value.Value.ul = IsListKey(key) ? MAPI_DISTLIST : MAPI_MAILUSER;
    if (tag == PR_RECIPIENT_TYPE) value.Value.l = recipientType;
  }
  return {0, count, values};
}

inline ADRLIST* MakeList(const FakeScript& script, const std::vector<std::string>& entries,
                         const FakeBuffers& buffers = kOwnBuffers) {
  void* block = nullptr;
  if (FAILED(buffers.allocate(static_cast<ULONG>(CbNewADRLIST(entries.size())), &block))) return nullptr;
  ADRLIST* const list = static_cast<ADRLIST*>(block);
  for (const std::string& entry : entries) {
    const std::size_t slash = entry.find('/');
    const LONG type = slash == std::string::npos ? MAPI_TO : std::stoi(entry.substr(slash + 1));
    list->aEntries[list->cEntries++] = MakeEntry(script, entry.substr(0, slash), type, 0, buffers);
  }
  return list;
}

// The keys and recipient types of a list, in order.
inline std::vector<std::string> Read(const ADRLIST* list) {
  std::vector<std::string> entries;
  for (ULONG i = 0; list != nullptr && i < list->cEntries; ++i) {
    std::string key = "?";
    std::string type;
    for (ULONG j = 0; j < list->aEntries[i].cValues; ++j) {
      const SPropValue& value = list->aEntries[i].rgPropVals[j];
      if (value.ulPropTag == PR_ENTRYID) {
        key.assign(reinterpret_cast<const char*>(value.Value.bin.lpb) + ORV_MIN_ENTRYID,
                   value.Value.bin.cb - ORV_MIN_ENTRYID);
      } else if (value.ulPropTag == PR_RECIPIENT_TYPE) {
        type = std::string("/").append(std::to_string(value.Value.l));
      }
    }
    entries.push_back(key + type);
  }
  return entries;
}

}  // namespace orv::test
