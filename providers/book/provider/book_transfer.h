// Contact files into a book and out of it, through streams of the caller's.
#pragma once

#include "orv/orvbook.h"
#include "providers/book/store.h"

namespace book {

// As IOrvContacts says; options, report and counts may be null.
HRESULT ImportInto(Store& store, IStream& source, const OrvImportOptions* options, IOrvContactReport* report,
                   OrvContactCounts* counts);
HRESULT ExportFrom(Store& store, IStream& target, const OrvExportOptions* options, IOrvContactReport* report,
                   OrvContactCounts* counts);

}  // namespace book
