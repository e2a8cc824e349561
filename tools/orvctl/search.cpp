#include "tools/orvctl/search.h"

#include <algorithm>

#include "tools/orvctl/errors.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

// A restriction with all that it points at.
class NameRestriction {
 public:
  NameRestriction(Fit fit, const std::string& text) : text_(ToWide(text)) {
    if (fit == Fit::kFound) {
      AsSearch();
      return;
    }
    constexpr ULONG kNames[] = {PR_DISPLAY_NAME_W, PR_TRANSMITABLE_DISPLAY_NAME_W};
    for (size_t i = 0; i < kCount; ++i) {
      values_[i].ulPropTag = kNames[i];
      values_[i].Value.lpszW = text_.data();
      const ULONG level = (fit == Fit::kWhole ? FL_FULLSTRING : FL_SUBSTRING) | FL_IGNORECASE;
      each_[i].rt = RES_CONTENT;
      each_[i].res.resContent = {level, kNames[i], &values_[i]};
    }
    whole_.rt = RES_OR;
    whole_.res.resOr = {kCount, each_};
  }
  NameRestriction(const NameRestriction&) = delete;
  NameRestriction& operator=(const NameRestriction&) = delete;

  SRestriction* Get() { return &whole_; }

 private:
  static constexpr ULONG kCount = 2;

  void AsSearch() {
    values_[0].ulPropTag = PR_ANR_W;
    values_[0].Value.lpszW = text_.data();
    whole_.rt = RES_PROPERTY;
    whole_.res.resProperty = {RELOP_EQ, PR_ANR_W, values_};
  }

  WideString text_;
  SPropValue values_[kCount] = {};
  SRestriction each_[kCount] = {};
  SRestriction whole_ = {};
};

// Letters are letters here whatever their case; the system knows all of them.
WideString Folded(const std::string& text) {
  WideString folded = ToWide(text);
  if (!folded.empty()) CharLowerBuffW(folded.data(), static_cast<DWORD>(folded.size()));
  return folded;
}

bool Holds(const std::string& name, const WideString& part) {
  return Folded(name).find(part) != WideString::npos;
}

// What a table that narrowed itself answers is believed for its own kind of search only.
bool Fits(const Match& match, Fit fit, const std::string& text, bool isNarrow) {
  if (fit == Fit::kWhole) return match.name == text || match.plain == text;
  if (fit == Fit::kFound && isNarrow) return true;
  const WideString part = Folded(text);
  return Holds(match.name, part) || Holds(match.plain, part) ||
         (fit == Fit::kFound && Holds(match.address, part));
}

Match MatchOf(const ValueView& row, const Container& container) {
  return {BytesOf(row, PR_ENTRYID),
          TextOf(row, PR_DISPLAY_NAME_W),
          TextOf(row, PR_TRANSMITABLE_DISPLAY_NAME_W),
          TextOf(row, PR_ADDRTYPE_W),
          TextOf(row, PR_EMAIL_ADDRESS_W),
          container.name,
          row.Number(PR_OBJECT_TYPE)};
}

}  // namespace

bool ForEachMatch(const Library& library, const Container& container, IMAPITable* contents, Fit fit,
                  const std::string& text, const std::function<bool(Match&&)>& use) {
  const std::string doing = "search '" + container.name + "'";
  NameRestriction restriction(fit, text);
  const bool isNarrow = SUCCEEDED(Foreign(doing, [&] { return contents->Restrict(restriction.Get(), 0); }));
  TagArray columns{PR_ENTRYID,    PR_DISPLAY_NAME_W,  PR_TRANSMITABLE_DISPLAY_NAME_W,
                   PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W, PR_OBJECT_TYPE};
  return ForEachRow(library, contents, columns.Get(), doing, [&](const ValueView& row) {
    Match match = MatchOf(row, container);
    return !Fits(match, fit, text, isNarrow) || use(std::move(match));
  });
}

bool ForEachFound(const Library& library, const Container& container, IMAPITable* contents,
                  const std::string& text, LPSPropTagArray columns,
                  const std::function<bool(const ValueView&)>& use) {
  const std::string doing = "search '" + container.name + "'";
  NameRestriction restriction(Fit::kFound, text);
  const bool isNarrow = SUCCEEDED(Foreign(doing, [&] { return contents->Restrict(restriction.Get(), 0); }));
  return ForEachRow(library, contents, columns, doing, [&](const ValueView& row) {
    return !Fits(MatchOf(row, container), Fit::kFound, text, isNarrow) || use(row);
  });
}

std::vector<Match> FindMatches(const Library& library, const Book& book, const Container& container, Fit fit,
                               const std::string& text, size_t limit) {
  std::vector<Match> matches;
  const ComPtr<IMAPITable> contents = book.OpenContents(container);
  if (!contents) return matches;
  ForEachMatch(library, container, contents.Get(), fit, text, [&](Match&& match) {
    matches.push_back(std::move(match));
    return matches.size() < limit;
  });
  return matches;
}

void ThrowAmbiguous(const std::string& name, const std::vector<Match>& matches) {
  std::string text =
      "'" + name + "' fits " + std::to_string(matches.size()) + "; name one by its identifier:";
  for (const Match& match : matches) {
    text += " " + ToHex(match.entryId) + " is '" + match.name + "'";
    if (!match.address.empty()) text += " at " + match.address;
    text += &match == &matches.back() ? "" : ",";
  }
  throw CommandError(kAmbiguous, text);
}

}  // namespace orvctl
