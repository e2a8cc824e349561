// Making entries, and choosing entries wherever they are.
#pragma once

#include <string>
#include <vector>

#include "tools/orvctl/editable_book.h"

namespace orvctl {

// `kind` is PR_DEF_CREATE_MAILUSER or PR_DEF_CREATE_DL; a book without that template makes a person.
ComPtr<IMAPIProp> CreateEntry(const EditableBook& book, ULONG kind);
// Whether the book makes entries of that kind by a template.
bool HasTemplate(const EditableBook& book, ULONG kind);
// The identifier that it was given.
Bytes SaveNew(const EditableBook& book, IMAPIProp* entry, const std::string& name);

// Entries with exactly these names, or these identifiers, in the container named or in any.
std::vector<Match> ChooseAnywhere(const Library& library, const Book& book, const std::string& container,
                                  const std::vector<std::string>& named);

}  // namespace orvctl
