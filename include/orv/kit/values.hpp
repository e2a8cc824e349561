// Property values of a provider's own: a list that owns what it holds, copies for callers, and the order of values.
//
// A provider keeps or makes a PropList a row or an entry; whatever leaves it is a fresh copy in the library's
// buffers, made by CopyProps or CopyRow. Values are found by property identifier, the high half of a tag: asked for
// PR_TITLE of another type, or of PT_UNSPECIFIED, a caller gets PR_TITLE of the type that is stored.
//
// Nothing here has a lock: one list is used by one thread at a time, or by any number that only read. Running out of
// memory is std::bad_alloc, and the list is then as it was; nothing else is thrown.
#pragma once

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "orv/orvbase.hpp"

namespace orv::kit {

// The first value with the tag's property identifier, whatever its type; null when there is none.
const SPropValue* FindValue(sdk::ValueView values, ULONG tag) noexcept;

// Whether a value can be copied and read: S_OK; MAPI_E_INVALID_TYPE where no such type is published (PT_UNSPECIFIED
// is none); MAPI_E_INVALID_PARAMETER for an array, bytes or an identifier that is null where the count says
// otherwise. A null text is sound: it is the empty one. Pointers that are not null are believed.
HRESULT CheckValue(const SPropValue& value) noexcept;

// Less than 0, 0, more than 0. Values of different types are ordered by type, so sort and compare like with like.
// Numbers and times by value, flags false first; texts as people of the user's language order them, without regard
// to case; bytes and identifiers byte by byte, the shorter of two that begin alike first; arrays element by element,
// alike. Null texts and arrays count as empty. For sound values only.
int CompareValues(const SPropValue& one, const SPropValue& other) noexcept;

// Values in the order in which they were first set, each property identifier once.
class PropList {
 public:
  PropList() noexcept = default;
  // Copies of what the view shows; what cannot be copied (CheckValue) is left out.
  explicit PropList(sdk::ValueView values);
  PropList(const PropList& other) : PropList(other.View()) {}
  PropList(PropList&& other) noexcept { Swap(other); }
  PropList& operator=(PropList other) noexcept {
    Swap(other);
    return *this;
  }
  ~PropList() = default;

  // Sets a value, in the place of one with the same property identifier, otherwise as the last. What is set is
  // copied; it may lie in this very list. The value's type comes from what is given, whatever type the tag names: a
  // text is PT_UNICODE, bytes PT_BINARY. Numbers are the exception: they take the tag's type where that is one of
  // numbers, flags or results, and are PT_LONG under any other tag.
  void Set(ULONG tag, std::wstring_view text);    // up to its end or its first null character
  void Set(ULONG tag, std::u16string_view text);  // the same
  void Set(ULONG tag, const wchar_t* text);       // null: the empty one
  void Set(ULONG tag, const std::vector<BYTE>& bytes) { SetBytes(tag, bytes.data(), bytes.size()); }
  void Set(ULONG tag, const MAPIUID& uid) { SetBytes(tag, &uid, sizeof uid); }
  void Set(ULONG tag, const FILETIME& time);  // PT_SYSTIME
  void Set(ULONG tag, const GUID& guid);      // PT_CLSID
  template <class Number>
  requires std::is_arithmetic_v<Number> || std::is_enum_v<Number>
  void Set(ULONG tag, Number number) {
    if constexpr (std::is_floating_point_v<Number>) {
      SetReal(tag, static_cast<double>(number));
    } else {
      SetNumber(tag, static_cast<LONGLONG>(number));
    }
  }
  void SetBytes(ULONG tag, const void* bytes, size_t size);
  // PT_MV_UNICODE, from texts of either kind: std::vector<std::wstring> and its like.
  template <class Texts>
  void SetTexts(ULONG tag, const Texts& texts) {
    std::vector<std::pair<const void*, size_t>> parts;
    for (const auto& text : texts) parts.emplace_back(text.data(), text.size());
    SetTextParts(tag, parts);
  }
  // A deep copy of a value of any type; refused (and the list unchanged) as CheckValue says. Values of PT_NULL and
  // PT_ERROR are values like others here: whoever takes values from a caller's SetProps leaves them out.
  [[nodiscard]] HRESULT Set(const SPropValue& value);

  // Whether there was one. What View and Find gave before is no longer good.
  bool Remove(ULONG tag) noexcept;
  // Keeps the memory, so that one list used for row after row costs no allocation a row.
  void Clear() noexcept;

  // By property identifier, of whatever type: look at ulPropTag before Value (ValueView::Find, of View() too, takes
  // the exact tag instead). Null when there is none. Good until the list changes.
  const SPropValue* Find(ULONG tag) const noexcept { return FindValue(View(), tag); }
  bool Has(ULONG tag) const noexcept { return Find(tag) != nullptr; }
  // Of a value of texts, else the empty one.
  std::wstring_view Text(ULONG tag) const noexcept;
  // Of a number, flag or result, else `otherwise`.
  LONGLONG Number(ULONG tag, LONGLONG otherwise = 0) const noexcept;
  // Of a value of bytes, else none.
  SBinary Bytes(ULONG tag) const noexcept;

  // All of them, good until the list changes.
  sdk::ValueView View() const noexcept {
    return sdk::ValueView(values_.data(), static_cast<ULONG>(values_.size()));
  }
  std::vector<ULONG> Tags() const;
  size_t size() const noexcept { return values_.size(); }
  bool empty() const noexcept { return values_.empty(); }

 private:
  struct Block {
    std::unique_ptr<std::byte[]> bytes;
    size_t size = 0;
  };

  void Swap(PropList& other) noexcept;
  void SetNumber(ULONG tag, LONGLONG number);
  void SetReal(ULONG tag, double number);
  void SetText(ULONG tag, const void* text, size_t length);
  void SetTextParts(ULONG tag, const std::vector<std::pair<const void*, size_t>>& texts);
  SPropValue& Slot(ULONG tag);
  std::byte* Reserve(size_t size);
  void LeaveBehind(const SPropValue& value) noexcept;
  void Compact();

  std::vector<SPropValue> values_;
  std::vector<Block> blocks_;  // what the values point to, filled from the last one
  size_t used_ = 0;            // of the last block
  size_t abandoned_ = 0;       // bytes of values that were replaced or removed
};

// One root that holds everything: a value a tag in the order of the tags, freed with one call. PR_NULL keeps its
// place for a value of the caller's own; a property that is not there, or that cannot be copied, is PT_ERROR with
// MAPI_E_NOT_FOUND, and *result (null: not wanted) then MAPI_W_ERRORS_RETURNED, else S_OK. A `count` of 0 gives a
// root all the same. Each identifier should be there once in `values`. Costs one allocation, whatever the values
// are.
sdk::Buffer<SPropValue> CopyProps(const sdk::Allocator& allocator, sdk::ValueView values, const ULONG* tags,
                                  size_t count, HRESULT* result);

// The same as the property array of a table's row; for RowSetBuilder:
//   builder.Add(allocator.Adopt(CopyRow(...).Detach()), count);
inline sdk::Buffer<SPropValue> CopyRow(const sdk::Allocator& allocator, sdk::ValueView values,
                                       const ULONG* columns, size_t count) {
  return CopyProps(allocator, values, columns, count, nullptr);
}

// Every value there is, in its order.
sdk::Buffer<SPropValue> CopyAll(const sdk::Allocator& allocator, sdk::ValueView values);

}  // namespace orv::kit
