#include "sample_values.h"

#include <cstring>

namespace sample {
namespace {

// One overload a kind of value; what a value points to hangs off the root.
struct ValueCopier {
  const Allocator& allocator;
  void* root;
  SPropValue& target;

  void operator()(LONGLONG number) const { target.Value.li.QuadPart = number; }
  void operator()(const std::u16string& text) const { target.Value.lpszW = Copy(text); }
  void operator()(const std::vector<std::u16string>& texts) const {
    auto* slots = static_cast<LPWSTR*>(allocator.AllocateMore(root, texts.size() * sizeof(LPWSTR)));
    target.Value.MVszW = {Allocator::CountOf(texts.size()), slots};
    for (const std::u16string& text : texts) *slots++ = Copy(text);
  }
  void operator()(const Bytes& bytes) const {
    auto* copy = static_cast<LPBYTE>(allocator.AllocateMore(root, bytes.size()));
    target.Value.bin = {Allocator::CountOf(bytes.size()), copy};
    std::copy(bytes.begin(), bytes.end(), copy);
  }
  LPWSTR Copy(const std::u16string& text) const {
    const size_t size = (text.size() + 1) * sizeof(char16_t);
    return static_cast<LPWSTR>(std::memcpy(allocator.AllocateMore(root, size), text.c_str(), size));
  }
};

std::optional<Property> ReadValue(const SPropValue& value) {
  const ULONG tag = value.ulPropTag;
  const ULONG type = PROP_TYPE(tag);
  if (type == PT_BINARY) {
    const SBinary& bin = value.Value.bin;
    if (bin.cb != 0 && bin.lpb == nullptr) return std::nullopt;
    return Property{tag, bin.cb != 0 ? Bytes(bin.lpb, bin.lpb + bin.cb) : Bytes()};
  }
  const auto* text = reinterpret_cast<const char16_t*>(value.Value.lpszW);
  if (type == PT_UNICODE) return Property{tag, std::u16string(text != nullptr ? text : u"")};
  if (type == PT_STRING8 || type == PT_CLSID || type == PT_OBJECT || (type & MV_FLAG) != 0)
    return std::nullopt;
  return Property{tag, LONGLONG{value.Value.li.QuadPart}};
}

}  // namespace

Allocator::Root CopyValues(const Allocator& allocator, const Properties& properties, const Tags& tags) {
  Allocator::Root root = allocator.AllocateRoot(tags.size() * sizeof(SPropValue));
  auto* value = static_cast<SPropValue*>(root.get());
  for (const ULONG tag : tags) {
    const Property* property = FindProperty(properties, tag);
    if (tag == PR_NULL) {
      value->ulPropTag = PR_NULL;  // the caller keeps this place for a value of its own
    } else if (property == nullptr) {
      value->ulPropTag = CHANGE_PROP_TYPE(tag, PT_ERROR);
      value->Value.err = MAPI_E_NOT_FOUND;
    } else {
      value->ulPropTag = property->tag;
      std::visit(ValueCopier{allocator, root.get(), *value}, property->value);
    }
    ++value;
  }
  return root;
}

Tags TagsOf(const Properties& properties) {
  Tags tags;
  for (const Property& each : properties) tags.push_back(each.tag);
  return tags;
}

std::optional<Properties> ReadRecipient(const ADRENTRY& recipient) {
  Properties properties;
  for (const SPropValue& each : ValueView(recipient)) {
    std::optional<Property> value = ReadValue(each);
    if (!value) return std::nullopt;
    properties.push_back(std::move(*value));
  }
  return properties;
}

}  // namespace sample
