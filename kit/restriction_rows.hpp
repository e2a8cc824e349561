// What a row answers to a restriction that has been checked.
#pragma once

#include "orv/kit/restriction.hpp"

namespace orv::kit {

// The restrictions in another.
struct Children {
  const SRestriction* first;
  ULONG count;
  bool isRequired;  // there must be one
};
Children ChildrenOf(const SRestriction& one) noexcept;

inline constexpr ULONG kFuzzyMode = 0xFFFF;  // the rest of a fuzzy level are flags

// PR_ANR stands for what entries are known by; no row has it.
inline bool IsName(ULONG tag) noexcept { return PROP_ID(tag) == PROP_ID(PR_ANR_W); }
inline constexpr ULONG kNameAddresses[] = {PR_EMAIL_ADDRESS_W, PR_SMTP_ADDRESS_W, PR_ACCOUNT_W};

class RowAnswers {
 public:
  RowAnswers(sdk::ValueView row, const Restriction::AnyBelow& below) noexcept : row_(row), below_(below) {}

  bool Satisfies(const SRestriction& one) const;

 private:
  bool SatisfiesNested(const SRestriction& one) const;
  bool SatisfiesAnyOf(const SRestriction& one, bool wanted) const;
  bool SatisfiesBelow(const SSubRestriction& sub) const;
  bool Has(const SContentRestriction& content) const;
  bool Has(const SPropertyRestriction& property) const;
  bool Has(const SComparePropsRestriction& compare) const;
  bool Has(const SBitMaskRestriction& bits) const;
  bool Has(const SSizeRestriction& size) const;
  bool IsKnownBy(const SPropValue& name) const;
  const SPropValue* Find(ULONG tag) const noexcept;

  sdk::ValueView row_;
  const Restriction::AnyBelow& below_;
};

}  // namespace orv::kit
