#include "providers/book/damage.h"

#include "providers/book/derived.h"

namespace book {
namespace {

std::string NameOf(Database& database, int64_t id) {
  std::string name;
  // What the entry is called, or else a number of it.
  for (const char* sql : {"SELECT name FROM entry WHERE id = ?",
                          "SELECT text FROM number WHERE entry = ? ORDER BY ordinal LIMIT 1"}) {
    if (!name.empty()) break;
    Survives([&] {
      Query query(database, sql, id);
      if (query.Next()) name = query.Text(0);
    });
  }
  return name;
}

}  // namespace

LastNumber LastEntry(Database& database) {
  LastNumber last;
  for (const char* sql :
       {"SELECT max(id) FROM entry", "SELECT max(entry) FROM card", "SELECT max(entry) FROM number"})
    last.isSure = Survives([&] { last.entry = std::max(last.entry, database.Number(sql)); }) && last.isSure;
  return last;
}

EntryState StateOfEntry(Database& database, int64_t id) {
  bool isThere = false, hasCard = false;
  const bool isRead = Survives([&] {
    Query entry(database, "SELECT 1 FROM entry WHERE id = ?", id);
    isThere = entry.Next();
    Query card(database, "SELECT text FROM card WHERE entry = ?", id);
    hasCard = card.Next();
    if (hasCard) static_cast<void>(ContactOfCard(card.Text(0)));
  });
  if (isRead && !isThere && !hasCard) return EntryState::kNone;
  return isRead && hasCard ? EntryState::kReadable : EntryState::kDamaged;
}

Finding FindingOfEntry(Database& database, int64_t id) {
  Finding finding{Fault::kCard, id, NameOf(database, id), {}, "Take it from a backup, or type it anew."};
  const std::string who =
      finding.name.empty() ? "Entry " + std::to_string(id) : "The card of \"" + finding.name + "\"";
  finding.text = who + " cannot be read.";
  return finding;
}

}  // namespace book
