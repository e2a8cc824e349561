#include "ui/services/catalogue_list.h"

#include <span>

#include "orv/orvtags.h"
#include "profiles/catalogue.h"

namespace orv::ui {

WString ServiceName(const ForeignValues& row) {
  const WCHAR* name = TextOf(row.Find(PR_SERVICE_NAME_W));
  return name == nullptr ? WString() : WString(name);
}

void CatalogueList::Fill(const WString& path) {
  lines_.Clear();
  if (FAILED(catalogue::Load(path, catalogue::kServices, rows_))) rows_.Reset();
  if (!rows_) return;
  for (const SRow& row : std::span(rows_->aRow, rows_->cRows)) {
    lines_.Add(TextOf(ForeignValues(row).Find(PR_PROVIDER_DISPLAY_W)), &row);
  }
}

void CatalogueList::SelectService(const WString& name) {
  for (std::size_t i = 0; i < lines_.Size(); ++i) {
    if (name == ServiceName(ForeignValues(*lines_[i]))) return lines_.Select(i);
  }
}

const SRow* CatalogueList::Selected() const {
  const auto index = lines_.Selected();
  return index ? lines_[*index] : nullptr;
}

void CatalogueList::RemoveSelected() {
  if (const auto index = lines_.Selected()) lines_.Remove(*index);
}

}  // namespace orv::ui
