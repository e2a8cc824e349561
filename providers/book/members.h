// Members of lists as their table holds them. Positions are counted in the order of `ordinal`, which has gaps.
#pragma once

#include <span>
#include <vector>

#include "providers/book/arrangement.h"
#include "providers/book/types.h"

namespace book {

std::vector<Member> MembersOf(const formats::Contact& list);
formats::ContactMember ContactMemberOf(const Member& member);

// Whether both mean the same entry, number or address.
bool IsSameMember(const Member& a, const Member& b);

uint64_t CountMembers(Database& database, int64_t list);
// Without the rows that they mean. All of them where `count` is -1.
std::vector<Member> ReadMembers(Database& database, int64_t list, int64_t first, int64_t count);

// Fails with MAPI_E_FOLDER_CYCLE where one of these, which the list does not have yet, is the list itself or has it among
// its own members, through further lists too. A contact file may say so all the same: who expands lists ends.
void RequireNoCycle(Database& database, int64_t list, std::span<const Member> members);

// Behind those that are there; those without an id get one. One that is there already is left out.
bool AppendMembers(Database& database, int64_t list, std::span<const Member> members);
void ReplaceMembers(Database& database, int64_t list, std::span<const Member> members);
bool DeleteMember(Database& database, int64_t list, uint32_t id);
bool MoveMemberTo(Database& database, int64_t list, uint32_t id, uint64_t position);

// In the parameters of a member that is an entry: the digits of its number as it was when the list was copied, to be shown
// where the entry is not there. Never an address that something is sent to.
void NoteAddress(std::string_view number, std::string* rest);
std::string NotedAddress(std::string_view rest);

// Members that say nothing but a name become the entry of that name.
void SettleNames(Database& database, const Arrangement& arrangement);

}  // namespace book
