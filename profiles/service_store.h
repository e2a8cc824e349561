// The stored services of one profile, loaded: rows in memory and the operations that keep the registry in step with
// them. Each of those is whole or not there, works on what is stored at that moment, and touches the one service that
// it names: rows that nobody can read stay as they are. Not locked against other threads that use the same object. What
// changes the registry is noted in a journal where one is given. Functions may throw std::bad_alloc.
#pragma once

#include <span>
#include <vector>

#include "orv/orvapi.h"
#include "platform/buffer.h"
#include "profiles/registry_store.h"
#include "profiles/service_journal.h"
#include "props/row_list.h"

namespace orv {

// A UID that no service has.
HRESULT NewServiceUid(MAPIUID& uid);

class ServiceStore {
 public:
  // Adds the profile's stored rows; those before a failure stay.
  HRESULT LoadAll(const WString& profile);
  // The same, and the way back, for whoever holds the profile already. Saving makes a profile that has exactly these
  // services.
  HRESULT LoadAllHeld(const WString& profile);
  HRESULT SaveAllHeld(const WString& profile);

  HRESULT Add(const SRow& row);
  // Adds one to what is stored and to this store's front. MAPI_E_COLLISION when `single` is given and a stored row has
  // a property equal to it.
  HRESULT LoadAndAddFront(const SRow& row, const SPropValue* single, const WString& profile,
                          ServiceJournal* journal);
  // Takes one out of what is stored; loads the others. By the 16 bytes of PR_SERVICE_UID; results are those of RowList.
  HRESULT LoadAndDelete(const MAPIUID& uid, const WString& profile, ServiceJournal* journal);

  HRESULT GetRow(const MAPIUID& uid, PropValues& values) const;
  // Sets the values in the stored row, and in this store's. MAPI_E_NOT_FOUND without values or without a stored row.
  HRESULT ModifyAndSave(const MAPIUID& uid, std::span<const SPropValue> values, const WString& profile,
                        ServiceJournal* journal);

  // Gives the rows away as a table of the ten service columns; none are left here.
  HRESULT DetachTable(IMAPITable** table);

 private:
  RowList rows_;
  std::vector<WString> keyNames_;  // of the rows
};

}  // namespace orv
