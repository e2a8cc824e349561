// A member names its entry by key, so that an entry that is gone for a while is a member again when it comes back.
#include "providers/book/members.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "formats/contact.h"
#include "orv/orvcodes.h"
#include "providers/book/derived.h"
#include "providers/book/text.h"
#include "providers/book/tokens.h"

namespace book {
namespace {

Member MemberIn(const Query& query) {
  Member member;
  member.id = static_cast<uint32_t>(query.Integer(0));
  member.isOurs = !query.IsNull(1);
  member.key = {KeyOfBytes(query.Blob(1)), static_cast<uint32_t>(query.Integer(2))};
  member.uid = query.Text(3);
  member.foreign = query.Text(4);
  member.number = query.Text(5);
  member.email = query.Text(6);
  member.name = query.Text(7);
  member.rest = query.Text(8);
  return member;
}

void Insert(Database& database, int64_t list, int64_t ordinal, uint32_t id, const Member& member) {
  Execute(database,
          "INSERT INTO member(list, ordinal, id, key, number_key, uid, foreign_id, number, email, name, "
          "rest) VALUES(?, ?, ?, CASE WHEN ? THEN ? END, ?, ?, ?, ?, ?, ?, ?)",
          list, ordinal, id, member.isOurs ? 1 : 0, member.key.entry, member.key.number, member.uid,
          BytesOf(member.foreign), member.number, member.email, member.name, member.rest);
}

constexpr std::string_view kNotedAddress = ";X-ORV-ADDRESS=";

// What tells members apart: the best that one says of itself.
using Identity = std::tuple<bool, EntryKey, uint32_t, std::string>;
Identity IdentityOf(const Member& member) {
  if (member.isOurs) return {true, member.key.entry, member.key.number, {}};
  const auto text = [&]() -> std::string {
    if (!member.foreign.empty()) return 'f' + member.foreign;
    if (!member.number.empty()) return 'n' + formats::CanonicalNumber(member.number) + member.number;
    return !member.email.empty() ? 'e' + member.email : 'w' + member.name;
  };
  return {false, EntryKey{}, 0, text()};
}

// Members that say nothing but a name, or a text that is the UID of nobody and may be a name.
struct Unsettled {
  int64_t list = 0;
  int64_t id = 0;
  std::string name;
};
std::vector<Unsettled> FindUnsettled(Database& database) {
  Query query(database,
              "SELECT m.list, m.id, m.name FROM member m WHERE m.foreign_id = x'' AND m.email = '' AND CASE "
              "WHEN m.key IS "
              "NULL THEN m.number = '' ELSE m.uid = m.name AND NOT EXISTS(SELECT 1 FROM entry e WHERE e.key "
              "= m.key) END");
  std::vector<Unsettled> found;
  while (query.Next()) found.push_back({query.Integer(0), query.Integer(1), std::string(query.Text(2))});
  return found;
}

// The oldest entry of this name; 0: there is none. Where no order has names as they are written, by their words.
int64_t FindCalled(Database& database, const Arrangement& arrangement, const Unsettled& member) {
  if (arrangement.form() == NameForm::kAsWritten) {
    Query query(database,
                "SELECT entry FROM row WHERE sort = ? AND entry <> ? AND name = ? ORDER BY entry LIMIT 1",
                BytesOf(arrangement.Key(member.name)), member.list, member.name);
    return query.Next() ? query.Integer(0) : 0;
  }
  const std::string match = MatchOfWords(database, member.name);
  if (match.empty()) return 0;
  Query query(
      database,
      "SELECT e.id FROM word w CROSS JOIN entry e ON e.id = w.rowid WHERE w.word MATCH ? AND e.id <> ? "
      "AND e.name = ? ORDER BY e.id LIMIT 1",
      match, member.list, member.name);
  return query.Next() ? query.Integer(0) : 0;
}

Member MemberOf(const formats::ContactMember& member) {
  Member result;
  result.name = member.name;
  result.rest = member.rest;
  result.number = member.number;
  if (!member.uid.empty()) {
    result.isOurs = true;
    result.uid = member.uid;
    const uint32_t number = member.number.empty() ? 0 : formats::NumberKey(member.number);
    result.key = {KeyOfUid(member.uid), number};
    return result;
  }
  result.email = member.email;
  result.foreign = member.entryId;
  return result;
}

// A number is known by the key that it once got, whatever its text has become since.
Member WithNumberKey(Database& database, Member member) {
  if (!member.isOurs || member.key.number == 0) return member;
  Query query(
      database,
      "SELECT n.key FROM entry e CROSS JOIN number n ON n.entry = e.id WHERE e.key = ? AND n.text = ? "
      "ORDER BY n.key <> ? LIMIT 1",
      member.key.entry, member.number, member.key.number);
  if (query.Next()) member.key.number = static_cast<uint32_t>(query.Integer(0));
  return member;
}

struct ListEnd {
  int64_t ordinal = 0;
  uint32_t id = 0;
};
ListEnd EndOf(Database& database, int64_t list) {
  Query query(database, "SELECT max(ordinal), max(id) FROM member WHERE list = ?", list);
  query.Next();
  return {query.Integer(0), static_cast<uint32_t>(query.Integer(1))};
}

}  // namespace

std::vector<Member> MembersOf(const formats::Contact& list) {
  std::vector<Member> members;
  for (const formats::ContactMember& each : list.members) members.push_back(MemberOf(each));
  return members;
}

formats::ContactMember ContactMemberOf(const Member& member) {
  formats::ContactMember result;
  result.name = member.name;
  result.rest = member.rest;
  result.number = member.number;
  result.email = member.email;
  result.entryId = member.foreign;
  if (member.isOurs) result.uid = member.uid.empty() ? UidOfKey(member.key.entry) : member.uid;
  return result;
}

bool IsSameMember(const Member& a, const Member& b) { return IdentityOf(a) == IdentityOf(b); }

uint64_t CountMembers(Database& database, int64_t list) {
  Query query(database, "SELECT count(*) FROM member WHERE list = ?", list);
  query.Next();
  return static_cast<uint64_t>(query.Integer(0));
}

// The text of a number is what it is now, where it is still there.
std::vector<Member> ReadMembers(Database& database, int64_t list, int64_t first, int64_t count) {
  Query query(
      database,
      "SELECT m.id, m.key, m.number_key, m.uid, m.foreign_id, coalesce((SELECT n.text FROM entry e CROSS "
      "JOIN number n ON n.entry = e.id AND n.key = m.number_key WHERE e.key = m.key AND m.number_key <> 0), "
      "m.number), m.email, m.name, m.rest FROM member m WHERE m.list = ? ORDER BY m.ordinal LIMIT ? OFFSET ?",
      list, count, first);
  std::vector<Member> members;
  while (query.Next()) members.push_back(MemberIn(query));
  return members;
}

// Deleted lists too: they come back with their members.
bool LeadsTo(Database& database, const EntryKey& from, int64_t list) {
  Query query(database,
              "WITH RECURSIVE inside(id) AS (SELECT id FROM entry WHERE key = ? AND flags & 1 UNION SELECT "
              "e.id FROM inside i CROSS JOIN member m ON m.list = i.id CROSS JOIN entry e ON e.key = m.key "
              "AND e.flags & 1) SELECT 1 FROM inside WHERE id = ?",
              from, list);
  return query.Next();
}

void RequireNoCycle(Database& database, int64_t list, std::span<const Member> members) {
  std::set<EntryKey> known;
  for (const Member& each : ReadMembers(database, list, 0, -1)) known.insert(each.key.entry);
  for (const Member& each : members) {
    const bool isNew = each.isOurs && known.insert(each.key.entry).second;
    if (isNew && LeadsTo(database, each.key.entry, list)) Fail(MAPI_E_FOLDER_CYCLE);
  }
}

bool AppendMembers(Database& database, int64_t list, std::span<const Member> members) {
  std::set<Identity> known;
  for (const Member& member : ReadMembers(database, list, 0, -1)) known.insert(IdentityOf(member));
  ListEnd end = EndOf(database, list);
  bool hasChanged = false;
  for (const Member& member : members) {
    if (!known.insert(IdentityOf(member)).second) continue;
    Insert(database, list, ++end.ordinal, ++end.id, member);
    hasChanged = true;
  }
  return hasChanged;
}

void ReplaceMembers(Database& database, int64_t list, std::span<const Member> members) {
  std::map<Identity, uint32_t> ids;
  for (const Member& member : ReadMembers(database, list, 0, -1)) ids[IdentityOf(member)] = member.id;
  ListEnd end = EndOf(database, list);
  Execute(database, "DELETE FROM member WHERE list = ?", list);
  std::set<Identity> written;
  int64_t ordinal = 0;
  for (const Member& each : members) {
    const Member member = WithNumberKey(database, each);
    const Identity identity = IdentityOf(member);
    if (!written.insert(identity).second) continue;
    const auto former = ids.find(identity);
    Insert(database, list, ++ordinal, former == ids.end() ? ++end.id : former->second, member);
  }
}

bool DeleteMember(Database& database, int64_t list, uint32_t id) {
  Execute(database, "DELETE FROM member WHERE list = ? AND id = ?", list, id);
  return database.ChangedRows() != 0;
}

bool MoveMemberTo(Database& database, int64_t list, uint32_t id, uint64_t position) {
  std::vector<Member> members = ReadMembers(database, list, 0, -1);
  const auto from =
      std::find_if(members.begin(), members.end(), [id](const Member& each) { return each.id == id; });
  if (from == members.end()) return false;
  const Member member = *from;
  members.erase(from);
  const auto to = static_cast<std::ptrdiff_t>(std::min<uint64_t>(position, members.size()));
  members.insert(members.begin() + to, member);
  ReplaceMembers(database, list, members);
  return true;
}

void NoteAddress(std::string_view number, std::string* rest) {
  const std::string digits = formats::CanonicalNumber(number);
  const std::size_t former = rest->find(kNotedAddress);
  if (former != rest->npos) rest->erase(former, std::min(rest->find(';', former + 1), rest->size()) - former);
  if (!digits.empty()) *rest += std::string(kNotedAddress) + digits;
}

std::string NotedAddress(std::string_view rest) {
  const std::size_t begin = rest.find(kNotedAddress);
  if (begin == rest.npos) return {};
  const std::string_view noted = rest.substr(begin + kNotedAddress.size());
  return std::string(noted.substr(0, noted.find_first_not_of("+0123456789")));
}

void SettleNames(Database& database, const Arrangement& arrangement) {
  for (const Unsettled& member : FindUnsettled(database)) {
    const int64_t entry = FindCalled(database, arrangement, member);
    Query found(database, "SELECT e.key, c.text FROM entry e JOIN card c ON c.entry = e.id WHERE e.id = ?",
                entry);
    if (!found.Next()) continue;
    Execute(database, "UPDATE member SET key = ?, uid = ? WHERE list = ? AND id = ?", found.Blob(0),
            ContactOfCard(found.Text(1)).uid, member.list, member.id);
  }
}

}  // namespace book
