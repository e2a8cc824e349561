// What people read that no file says, in the language of the installation.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

#include "orv/kit/window.hpp"
#include "providers/book/types.h"

namespace book {

namespace kit = orv::kit;

// The words behind names, read once: tables show them a hundred thousand times. Any thread.
class Wording {
 public:
  explicit Wording(const kit::Language& language);

  // The name with what tells the row from others behind it: of several numbers which kind, that there is none, and of
  // namesakes the company or else the number.
  std::wstring DisplayNameOf(const Row& row) const;

  // The name of a book that cannot be opened: with the reason behind it.
  std::wstring NameOfUnreadable(std::wstring_view name, HRESULT code) const;

 private:
  const std::wstring& Say(UINT text) const;

  std::vector<std::wstring> words_;
};

// Whether they have the same name, in any language.
bool AreNamedAlike(const Row& one, const Row& other);

// The names that a text may be such a name of; none where it does not end as one.
std::vector<std::wstring_view> PlainNamesOf(std::wstring_view text);

// As numbers are typed, and with enough digits to be one's beginning or end.
bool IsLikeNumber(std::wstring_view text);

}  // namespace book
