// The stored services of one profile, loaded: rows in memory and the operations that keep the registry in step with
// them. Not locked. Functions may throw std::bad_alloc; what was stored by then stays stored.
#pragma once

#include <span>

#include "orv/orvapi.h"
#include "platform/buffer.h"
#include "profiles/registry_store.h"
#include "props/row_list.h"

namespace orv {

// A UID that no service has.
HRESULT NewServiceUid(MAPIUID& uid);

class ServiceStore {
 public:
  // Adds the profile's stored rows; those before a failure stay.
  HRESULT LoadAll(const WString& profile);
  // The profile then has exactly these services; its key is made when it is missing.
  HRESULT SaveAll(const WString& profile);

  HRESULT Add(const SRow& row) { return rows_.Add(row, rows_.Count()); }
  // At the front. A row that cannot be written is not added.
  HRESULT AddFrontAndSave(const SRow& row, const WString& profile);

  // By the 16 bytes of PR_SERVICE_UID; results are those of RowList.
  HRESULT GetRow(const MAPIUID& uid, PropValues& values) const;
  HRESULT ModifyAndSave(const MAPIUID& uid, std::span<const SPropValue> values, const WString& profile);
  HRESULT Delete(const MAPIUID& uid);

  bool Has(const SPropValue& key) const { return rows_.Find(key) != nullptr; }

  // Gives the rows away as a table of the ten service columns; none are left here.
  HRESULT DetachTable(IMAPITable** table);

 private:
  RowList rows_;
};

}  // namespace orv
