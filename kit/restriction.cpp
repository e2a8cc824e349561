// Checking, copying and describing restrictions. Recursion is as deep as restrictions are nested, which the check
// bounds before anything else looks at them.
#include "orv/kit/restriction.hpp"

#include <algorithm>

#include "packer.hpp"
#include "restriction_rows.hpp"

namespace orv::kit {
namespace {


ULONG ElementType(ULONG tag) noexcept { return PROP_TYPE(tag) & ~ULONG{MVI_FLAG}; }

bool IsTextOrBytes(ULONG type) noexcept { return HasTextForm(type) || type == PT_BINARY; }

// Texts of both widths are alike.
bool AreAlike(ULONG type, ULONG otherType) noexcept {
  return type == otherType || (HasTextForm(type) && HasTextForm(otherType));
}

HRESULT CheckOperator(ULONG relop) noexcept {
  if (relop == RELOP_RE) return MAPI_E_TOO_COMPLEX;
  return relop < RELOP_RE ? S_OK : MAPI_E_INVALID_PARAMETER;
}

// A value to compare with, of the type that the tag announces.
HRESULT CheckOperand(ULONG tag, const SPropValue* value) noexcept {
  if (value == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (const HRESULT hr = CheckValue(*value); FAILED(hr)) return hr;
  const ULONG type = ElementType(tag);
  const bool fits = type == PT_UNSPECIFIED || AreAlike(type, ElementType(value->ulPropTag));
  return fits ? S_OK : MAPI_E_INVALID_PARAMETER;
}

HRESULT Check(const SContentRestriction& content) noexcept {
  if ((content.ulFuzzyLevel & kFuzzyMode) > FL_PREFIX) return MAPI_E_INVALID_PARAMETER;
  if (const HRESULT hr = CheckOperand(content.ulPropTag, content.lpProp); FAILED(hr)) return hr;
  return IsTextOrBytes(PROP_TYPE(content.lpProp->ulPropTag)) ? S_OK : MAPI_E_TOO_COMPLEX;
}

HRESULT Check(const SPropertyRestriction& property) noexcept {
  if (const HRESULT hr = CheckOperator(property.relop); FAILED(hr)) return hr;
  if (const HRESULT hr = CheckOperand(property.ulPropTag, property.lpProp); FAILED(hr)) return hr;
  const ULONG type = PROP_TYPE(property.lpProp->ulPropTag);
  if (IsName(property.ulPropTag))
    return property.relop == RELOP_EQ && HasTextForm(type) ? S_OK : MAPI_E_TOO_COMPLEX;
  return type == PT_NULL || type == PT_ERROR || type == PT_OBJECT ? MAPI_E_TOO_COMPLEX : S_OK;
}

HRESULT Check(const SComparePropsRestriction& compare) noexcept {
  const ULONG type = PROP_TYPE(compare.ulPropTag1), other = PROP_TYPE(compare.ulPropTag2);
  if (type != PT_UNSPECIFIED && other != PT_UNSPECIFIED && !AreAlike(type, other))
    return MAPI_E_INVALID_PARAMETER;
  return CheckOperator(compare.relop);
}

HRESULT Check(const SBitMaskRestriction& bits) noexcept {
  if (bits.relBMR != BMR_EQZ && bits.relBMR != BMR_NEZ) return MAPI_E_INVALID_PARAMETER;
  const ULONG type = PROP_TYPE(bits.ulPropTag);
  const bool hasBits = type == PT_LONG || type == PT_I2 || type == PT_BOOLEAN || type == PT_UNSPECIFIED;
  return hasBits ? S_OK : MAPI_E_TOO_COMPLEX;
}

class Checker {
 public:
  HRESULT All(const SRestriction* each, ULONG count, ULONG depth) noexcept {
    if (count != 0 && each == nullptr) return MAPI_E_INVALID_PARAMETER;
    if (depth > Restriction::kDeepest || count > left_) return MAPI_E_TOO_COMPLEX;
    left_ -= count;
    for (ULONG i = 0; i < count; ++i) {
      if (const HRESULT hr = One(each[i], depth); FAILED(hr)) return hr;
    }
    return S_OK;
  }

 private:
  HRESULT One(const SRestriction& one, ULONG depth) noexcept {
    switch (one.rt) {
      case RES_CONTENT:
        return Check(one.res.resContent);
      case RES_PROPERTY:
        return Check(one.res.resProperty);
      case RES_COMPAREPROPS:
        return Check(one.res.resCompareProps);
      case RES_BITMASK:
        return Check(one.res.resBitMask);
      case RES_SIZE:
        return CheckOperator(one.res.resSize.relop);
      case RES_EXIST:
        return S_OK;
      default:
        return Nested(one, depth);
    }
  }

  HRESULT Nested(const SRestriction& one, ULONG depth) noexcept {
    if (one.rt > RES_COMMENT) return MAPI_E_INVALID_PARAMETER;
    if (one.rt == RES_COMMENT) {
      if (const HRESULT hr = Comment(one.res.resComment); FAILED(hr)) return hr;
    }
    const Children below = ChildrenOf(one);
    if (below.count == 0 && below.isRequired) return MAPI_E_INVALID_PARAMETER;
    return All(below.first, below.count, depth + 1);
  }

  HRESULT Comment(const SCommentRestriction& comment) noexcept {
    if (comment.cValues > left_) return MAPI_E_TOO_COMPLEX;
    left_ -= comment.cValues;
    if (comment.cValues != 0 && comment.lpProp == nullptr) return MAPI_E_INVALID_PARAMETER;
    for (ULONG i = 0; i < comment.cValues; ++i) {
      if (const HRESULT hr = CheckValue(comment.lpProp[i]); FAILED(hr)) return hr;
    }
    return S_OK;
  }

  ULONG left_ = Restriction::kMost;
};

SRestriction* Pack(Packer& packer, const SRestriction* each, ULONG count) noexcept;

// Pointers give way to those of copies, in place.
void Pack(Packer& packer, SRestriction& one) noexcept {
  const Children below = ChildrenOf(one);
  auto& res = one.res;
  if (one.rt == RES_AND || one.rt == RES_OR) res.resAnd.lpRes = Pack(packer, below.first, below.count);
  if (one.rt == RES_NOT) res.resNot.lpRes = Pack(packer, below.first, below.count);
  if (one.rt == RES_SUBRESTRICTION) res.resSub.lpRes = Pack(packer, below.first, below.count);
  if (one.rt == RES_CONTENT) res.resContent.lpProp = packer.Values(res.resContent.lpProp, 1);
  if (one.rt == RES_PROPERTY) res.resProperty.lpProp = packer.Values(res.resProperty.lpProp, 1);
  if (one.rt != RES_COMMENT) return;
  res.resComment.lpRes = Pack(packer, below.first, below.count);
  res.resComment.lpProp = packer.Values(res.resComment.lpProp, res.resComment.cValues);
}

SRestriction* Pack(Packer& packer, const SRestriction* each, ULONG count) noexcept {
  SRestriction* copies = packer.Items(each, count);
  for (ULONG i = 0; i < count; ++i) {
    SRestriction one = each[i];
    Pack(packer, one);
    if (copies != nullptr) copies[i] = one;
  }
  return copies;
}

// Every restriction outside sub-objects.
template <class Visit>
void VisitAll(const SRestriction& one, const Visit& visit) {
  visit(one);
  const Children below = ChildrenOf(one);
  if (one.rt == RES_SUBRESTRICTION) return;
  for (ULONG i = 0; i < below.count; ++i) VisitAll(below.first[i], visit);
}

void AddTag(std::vector<ULONG>& tags, ULONG tag) {
  const auto isSame = [tag](ULONG other) { return PROP_ID(other) == PROP_ID(tag); };
  if (std::none_of(tags.begin(), tags.end(), isSame)) tags.push_back(tag);
}

void AddTagsOf(std::vector<ULONG>& tags, ULONG tag) {
  if (!IsName(tag)) return AddTag(tags, tag);
  AddTag(tags, PR_DISPLAY_NAME_W);
  for (const ULONG address : kNameAddresses) AddTag(tags, address);
}

void AddTagsOf(std::vector<ULONG>& tags, const SRestriction& one) {
  switch (one.rt) {
    case RES_CONTENT:
      return AddTagsOf(tags, one.res.resContent.ulPropTag);
    case RES_PROPERTY:
      return AddTagsOf(tags, one.res.resProperty.ulPropTag);
    case RES_BITMASK:
      return AddTag(tags, one.res.resBitMask.ulPropTag);
    case RES_SIZE:
      return AddTag(tags, one.res.resSize.ulPropTag);
    case RES_EXIST:
      return AddTag(tags, one.res.resExist.ulPropTag);
    case RES_COMPAREPROPS:
      AddTag(tags, one.res.resCompareProps.ulPropTag1);
      return AddTag(tags, one.res.resCompareProps.ulPropTag2);
    default:
      return;
  }
}

}  // namespace

Children ChildrenOf(const SRestriction& one) noexcept {
  const auto single = [](const SRestriction* child, bool isRequired) {
    return Children{child, child != nullptr ? 1UL : 0UL, isRequired};
  };
  switch (one.rt) {
    case RES_AND:
    case RES_OR:  // both lie alike
      return {one.res.resAnd.lpRes, one.res.resAnd.cRes, false};
    case RES_NOT:
      return single(one.res.resNot.lpRes, true);
    case RES_SUBRESTRICTION:
      return single(one.res.resSub.lpRes, true);
    case RES_COMMENT:
      return single(one.res.resComment.lpRes, false);
    default:
      return {nullptr, 0, false};
  }
}

HRESULT Restriction::Copy(const SRestriction* from, Restriction* to) noexcept {
  if (to == nullptr) return MAPI_E_INVALID_PARAMETER;
  return sdk::Guarded([&]() -> HRESULT {
    Restriction copy;
    if (from != nullptr) {
      if (const HRESULT hr = Checker().All(from, 1, 1); FAILED(hr)) return hr;
      copy.block_ = Packer::Pack([&](Packer& packer) { copy.root_ = Pack(packer, from, 1); });
    }
    *to = std::move(copy);
    return S_OK;
  });
}

bool Restriction::Holds(sdk::ValueView row, const AnyBelow& below) const {
  return IsEmpty() || RowAnswers(row, below).Satisfies(*root_);
}

std::vector<ULONG> Restriction::Tags() const {
  std::vector<ULONG> tags;
  if (!IsEmpty()) VisitAll(*root_, [&tags](const SRestriction& one) { AddTagsOf(tags, one); });
  return tags;
}

bool Restriction::LooksBelow() const noexcept {
  bool looks = false;
  if (!IsEmpty()) VisitAll(*root_, [&](const SRestriction& one) { looks |= one.rt == RES_SUBRESTRICTION; });
  return looks;
}

std::optional<Restriction::Lookup> Restriction::AsLookup() const noexcept {
  if (IsEmpty()) return std::nullopt;
  const auto& content = root_->res.resContent;
  const auto& property = root_->res.resProperty;
  const bool isPrefix = root_->rt == RES_CONTENT && (content.ulFuzzyLevel & kFuzzyMode) == FL_PREFIX;
  if (isPrefix && !IsName(content.ulPropTag)) return Lookup{content.ulPropTag, content.lpProp, true};
  const bool isAtLeast = root_->rt == RES_PROPERTY && property.relop == RELOP_GE;
  if (isAtLeast) return Lookup{property.ulPropTag, property.lpProp, false};
  return std::nullopt;
}

}  // namespace orv::kit
