// What becomes of an entry when a record says something about it again.
#pragma once

#include <span>
#include <vector>

#include "formats/contact.h"
#include "providers/book/types.h"

namespace book {

// Numbers of `record` that `stored` has too keep their keys.
void TakeOverKeys(const formats::Contact& stored, formats::Contact* record);

// `stored` with what `record` has besides; nothing that is there is lost.
formats::Contact Merged(const formats::Contact& stored, const formats::Contact& record);

// Members of a list that a record names by nothing but their name may have been settled since.
bool AreSameMembers(std::span<const Member> stored, std::span<const Member> record);
// `members` as a file tells them that has no place for entries of other providers: those that are stored stay where they
// are, also where the file has nothing but their names.
std::vector<Member> WithForeign(std::span<const Member> stored, std::vector<Member> members);
// Of `members` those that say more than a name which is among `known`.
std::vector<Member> WithoutNames(std::span<const Member> members, std::span<const Member> known);

}  // namespace book
