// Restrictions of tables: kept after the call that brought them, and answered for rows.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "orv/kit/values.hpp"

namespace orv::kit {

// A checked deep copy of an SRestriction, in one block. Immutable: any number of threads may ask it.
//
// How a row answers:
// - Values are found by property identifier. A property that the row lacks, has as PT_ERROR or has in a type that
//   cannot be compared satisfies nothing but a RES_NOT round it; RELOP_NE neither.
// - RES_PROPERTY, RES_COMPAREPROPS: the order of CompareValues, so texts are compared without regard to case. Of an
//   array one element is enough, unless it is compared with an array.
// - RES_CONTENT: texts, bytes, and arrays of them, of which one element is enough. Texts are compared character by
//   character; under FL_IGNORECASE without regard to case, under FL_IGNORENONSPACE to accents, under FL_LOOSE to both
//   and to width. An empty text is found in every text.
// - PR_ANR, in RES_PROPERTY with RELOP_EQ or in RES_CONTENT: every word of the text begins a word of PR_DISPLAY_NAME_W,
//   or the whole text begins PR_EMAIL_ADDRESS_W, PR_SMTP_ADDRESS_W or PR_ACCOUNT_W; as FL_LOOSE. An empty text: no row.
// - RES_BITMASK: PT_LONG, PT_I2 and PT_BOOLEAN. RES_SIZE: bytes of the value; of a text with its terminator, of an
//   array of all elements.
// - RES_AND of nothing holds, RES_OR of nothing does not. RES_COMMENT: as the restriction in it; without one it holds.
class Restriction {
 public:
  // As deep as restrictions may be nested, and as many as there may be in one, values of comments included.
  static constexpr ULONG kDeepest = 64;
  static constexpr ULONG kMost = 10000;

  // Where the rows of sub-objects (members, recipients) come from: whether one of those below the row that is asked
  // satisfies `holds`.
  using AnyBelow = std::function<bool(ULONG subObject, const std::function<bool(sdk::ValueView)>& holds)>;

  // What a table that is sorted can look up: rows whose `tag` is not less than, or begins with, *value.
  struct Lookup {
    ULONG tag;
    const SPropValue* value;
    bool isPrefix;
  };

  // Holds for every row.
  Restriction() noexcept = default;

  // Null gives the one that holds for every row. MAPI_E_TOO_COMPLEX: too deep, too many, RELOP_RE, or a kind of
  // comparison that the type does not have. MAPI_E_INVALID_PARAMETER: an unknown kind, operator or fuzzy level, a null
  // pointer or a value of another type than its tag; MAPI_E_INVALID_TYPE: a value of no type. *to is untouched on
  // failure.
  static HRESULT Copy(const SRestriction* from, Restriction* to) noexcept;

  bool IsEmpty() const noexcept { return root_ == nullptr; }
  // Null when empty. For a source that restricts by itself.
  const SRestriction* Get() const noexcept { return root_; }

  // Without `below` no sub-object has rows. Throws std::bad_alloc only, and what `below` throws.
  bool Holds(sdk::ValueView row, const AnyBelow& below = {}) const;

  // The columns that a row needs to be asked; those of sub-objects not included. Each property identifier once.
  std::vector<ULONG> Tags() const;
  // Whether it looks into sub-objects.
  bool LooksBelow() const noexcept;
  std::optional<Lookup> AsLookup() const noexcept;

 private:
  std::unique_ptr<std::byte[]> block_;
  const SRestriction* root_ = nullptr;
};

}  // namespace orv::kit
