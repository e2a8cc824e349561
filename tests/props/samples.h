// Values for tests, in one line each. What a value points at must outlive it.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "orv/orvapi.h"
#include "orv/orvcodes.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/win.h"
#include "props/prop_record.h"

namespace orv::test {

using Bytes = std::vector<std::uint8_t>;

inline SPropValue Value(ULONG tag) {
  SPropValue value = {};
  value.ulPropTag = tag;
  return value;
}

inline SPropValue Long(ULONG tag, LONG number) {
  SPropValue value = Value(tag);
  value.Value.l = number;
  return value;
}

inline SPropValue Unicode(ULONG tag, const WCHAR* text) {
  SPropValue value = Value(tag);
  value.Value.lpszW = const_cast<WCHAR*>(text);
  return value;
}

inline SPropValue String8(ULONG tag, const char* text) {
  SPropValue value = Value(tag);
  value.Value.lpszA = const_cast<char*>(text);
  return value;
}

inline SPropValue Binary(ULONG tag, const void* bytes, std::size_t size) {
  SPropValue value = Value(tag);
  value.Value.bin.cb = static_cast<ULONG>(size);
  value.Value.bin.lpb = static_cast<BYTE*>(const_cast<void*>(bytes));
  return value;
}

inline SPropValue Binary(ULONG tag, std::string_view bytes) {
  return Binary(tag, bytes.data(), bytes.size());
}

// Any array type: the count and the pointer lie alike in all of them.
inline SPropValue Array(ULONG tag, std::size_t count, const void* elements) {
  SPropValue value = Value(tag);
  value.Value.MVl.cValues = static_cast<ULONG>(count);
  value.Value.MVl.lpl = static_cast<LONG*>(const_cast<void*>(elements));
  return value;
}

// A tag array on the stack.
struct Tags {
  Tags(std::initializer_list<ULONG> tags) : words{static_cast<ULONG>(tags.size())} {
    words.insert(words.end(), tags);
  }
  SPropTagArray* Get() { return reinterpret_cast<SPropTagArray*>(words.data()); }
  SPropTagArray& operator*() { return *Get(); }
  std::vector<ULONG> words;
};

// A pointer to anything that nobody may read or write.
struct Unreadable {
  template <class T>
  operator T*() const {
    return reinterpret_cast<T*>(std::uintptr_t{64});
  }
};

inline std::vector<ULONG> List(const SPropTagArray* tags) {
  return {tags->aulPropTag, tags->aulPropTag + tags->cValues};
}

// A stored property.
inline PropNodePtr Node(const SPropValue& value) {
  PropNodePtr node;
  EXPECT_EQ(NodeFromValue(value, node), S_OK);
  return node;
}

inline SRow Row(std::vector<SPropValue>& values) {
  return {0, static_cast<ULONG>(values.size()), values.data()};
}

}  // namespace orv::test
