// Address lists of tests, written and read as short texts: "key" or "key/type", where the type is the recipient
// type, and a key beginning with "list" stands for a distribution list.
#pragma once

#include <algorithm>
#include <cstring>

#include "orv/orv.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"
#include "tests/props/samples.h"
#include "tests/support/fake_provider/fake_script.h"

namespace orv::test {

inline bool IsListKey(const std::string& key) { return key.rfind("list", 0) == 0; }

// The buffer functions that are linked into the test.
inline constexpr FakeBuffers kOwnBuffers = {&OrvAllocateBuffer, &OrvAllocateMore, &OrvFreeBuffer};

// An object of a scripted provider.
inline ComPtr<IUnknown> OpenFake(FakeScript& script, const std::string& key) {
  const auto provider = ComPtr<IAddrBook>::Adopt(MakeFakeProvider(&script, kOwnBuffers));
  std::vector<BYTE> id = script.EntryId(key);
  ULONG type = 0;
  ComPtr<IUnknown> object;
  EXPECT_EQ(provider->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<ENTRYID*>(id.data()), nullptr,
                                0, &type, object.Put()),
            S_OK);
  return object;
}

// One entry; the column `without` is left out. All null when there is no memory.
inline ADRENTRY MakeEntry(const FakeScript& script, const std::string& key, LONG recipientType,
                          ULONG without = 0, const FakeBuffers& buffers = kOwnBuffers) {
  const std::vector<BYTE> id = script.EntryId(key);
  void* block = nullptr;
  if (FAILED(buffers.allocate(static_cast<ULONG>(3 * sizeof(SPropValue) + id.size()), &block))) return {};
  SPropValue* const values = static_cast<SPropValue*>(block);
  const SPropValue all[] = {Binary(PR_ENTRYID, std::memcpy(values + 3, id.data(), id.size()), id.size()),
                            Long(PR_OBJECT_TYPE, IsListKey(key) ? MAPI_DISTLIST : MAPI_MAILUSER),
                            Long(PR_RECIPIENT_TYPE, recipientType)};
  SPropValue* const end = std::copy_if(std::begin(all), std::end(all), values,
                                       [&](const SPropValue& value) { return value.ulPropTag != without; });
  return {0, static_cast<ULONG>(end - values), values};
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
    std::string& text = entries.emplace_back();
    const ADRENTRY& entry = list->aEntries[i];
    for (const SPropValue* value = entry.rgPropVals; value != entry.rgPropVals + entry.cValues; ++value) {
      if (value->ulPropTag == PR_ENTRYID) {
        const auto* id = reinterpret_cast<const char*>(value->Value.bin.lpb);
        text.assign(id + ORV_MIN_ENTRYID, id + value->Value.bin.cb);
      }
      if (value->ulPropTag == PR_RECIPIENT_TYPE) text += "/" + std::to_string(value->Value.l);
    }
  }
  return entries;
}

}  // namespace orv::test
