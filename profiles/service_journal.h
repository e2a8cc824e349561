// What one program has changed of a profile's services, and the way back that leaves alone what others have changed.
#pragma once

#include <map>
#include <optional>
#include <vector>

#include "platform/reg_key.h"
#include "platform/win.h"

namespace orv {

// Functions may throw std::bad_alloc. The first two are for whoever holds the profile.
class ServiceJournal {
 public:
  // Before and after each change of the row in the subkey of a name.
  HRESULT NoteBefore(const WString& profile, const WString& keyName);
  HRESULT NoteAfter(const WString& profile, const WString& keyName);

  // A row that was added goes, one that was taken out comes back, and each value is again what it was before the first
  // change, unless it is not any more what the last change made of it. Whole or not there, like any change.
  HRESULT TakeBack(const WString& profile);

 private:
  // By name; none for a row that is not there.
  using Row = std::optional<std::map<WString, RegValueData>>;
  struct Entry {
    Row before;
    Row after;
  };

  static HRESULT Read(const WString& profile, const WString& keyName, Row& row);
  static HRESULT TakeBackRow(const WString& profile, const WString& keyName, const Entry& entry);

  std::map<WString, Entry> entries_;
};

}  // namespace orv
