#include "tools/orvctl/new_entry.h"

#include "tools/orvctl/errors.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

Bytes TemplateOf(const EditableBook& book, ULONG kind) {
  TagArray tags{kind};
  const Properties properties(book.library(), book.object(), tags.Get(),
                              "read what can be made in '" + book.name() + "'");
  return BytesOf(properties.view(), kind);
}

std::vector<Match> FindAnywhere(const Library& library, const Book& book, const std::string& container,
                                const std::string& named) {
  std::vector<Match> all;
  for (const Container& each : ContainersNamed(book, container)) {
    for (Match& match : FindMatches(library, book, each, Fit::kWhole, named, kMostShown))
      all.push_back(std::move(match));
  }
  return all;
}

Match ById(const std::string& named, const Bytes& id) {
  Match match;
  match.entryId = id;
  match.name = named;
  return match;
}

}  // namespace

bool HasTemplate(const EditableBook& book, ULONG kind) { return !TemplateOf(book, kind).empty(); }

ComPtr<IMAPIProp> CreateEntry(const EditableBook& book, ULONG kind) {
  Bytes id = TemplateOf(book, kind);
  const std::string doing = "make a new entry in '" + book.name() + "'";
  auto* const identifier = id.empty() ? nullptr : reinterpret_cast<ENTRYID*>(id.data());
  ComPtr<IMAPIProp> entry;
  const HRESULT result = Foreign(doing, [&] {
    return book.object()->CreateEntry(static_cast<ULONG>(id.size()), identifier, 0, entry.Put());
  });
  Receive(entry, result, doing);
  return entry;
}

Bytes SaveNew(const EditableBook& book, IMAPIProp* entry, const std::string& name) {
  const std::string doing = "store '" + name + "' in '" + book.name() + "'";
  Check(Foreign(doing, [&] { return entry->SaveChanges(KEEP_OPEN_READONLY); }), doing);
  TagArray tags{PR_ENTRYID};
  const Properties properties(book.library(), entry, tags.Get(), "read the identifier of '" + name + "'");
  return BytesOf(properties.view(), PR_ENTRYID);
}

std::vector<Match> ChooseAnywhere(const Library& library, const Book& book, const std::string& container,
                                  const std::vector<std::string>& named) {
  std::vector<Match> chosen;
  for (const std::string& each : named) {
    if (const auto id = AsEntryId(each)) {
      chosen.push_back(ById(each, *id));
      continue;
    }
    std::vector<Match> fit = FindAnywhere(library, book, container, each);
    if (fit.empty()) throw CommandError(kNotFound, "there is no entry called exactly '" + each + "'");
    if (fit.size() > 1 && !AreOneContact(library, book, fit)) ThrowAmbiguous(each, fit);
    chosen.push_back(std::move(fit.front()));
  }
  return chosen;
}

}  // namespace orvctl
