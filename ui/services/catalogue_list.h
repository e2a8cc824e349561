// The list of a catalogue's services, one line a service, in the two dialogs that offer them.
#pragma once

#include "props/foreign_values.h"
#include "ui/services/record_list.h"

namespace orv::ui {

// PR_SERVICE_NAME of a service's row; empty when it has none.
WString ServiceName(const ForeignValues& row);

class CatalogueList {
 public:
  void Attach(HWND box) { lines_.Attach(box); }

  // The services of the catalogue at `path` (empty: our own); none when it cannot be read. Nothing is selected.
  void Fill(const WString& path);
  void SelectFirst() { lines_.Select(0); }
  // Selects the service of that name; case counts.
  void SelectService(const WString& name);

  // The row of the selected line, or null; it stays until the next Fill.
  const SRow* Selected() const;
  void RemoveSelected();

 private:
  RowSetPtr rows_;
  RecordList<const SRow*> lines_;
};

}  // namespace orv::ui
