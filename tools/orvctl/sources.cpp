#include "tools/orvctl/sources.h"

#include <algorithm>

#include "diag/names.h"
#include "tools/orvctl/book_copies.h"
#include "tools/orvctl/container_choice.h"
#include "tools/orvctl/editable_book.h"
#include "tools/orvctl/search.h"

namespace orvctl {
namespace {

std::string NameOf(HRESULT result) { return diag::ResultName(static_cast<uint32_t>(result)); }

void TellOfLosses(const Book& book, const Container& container, std::vector<Message>& messages) {
  const ReadingState state = book.ReadState(container);
  const std::string of = "'" + container.name + "'" + (state.file.empty() ? "" : " from " + state.file);
  if (state.status && FAILED(*state.status)) {
    const std::string why = WhyUnreadable(book, container);
    const std::string text = "cannot read " + of + (why.empty() ? "" : ": " + why);
    throw CommandError(kFailed, WithWayBack(text, *state.status, state.file), *state.status);
  }
  if (state.skipped.value_or(0) != 0)
    messages.push_back({std::to_string(*state.skipped) + " records of " + of + " cannot be read"});
}

std::vector<Match> FindFitting(const Library& library, const Book& book,
                               const std::vector<Container>& containers, Fit fit, const std::string& name,
                               const std::string& what, std::vector<Message>& messages) {
  std::vector<Match> found;
  WalkContainers(book, containers, messages, [&](const Container& container, IMAPITable* contents) {
    return ForEachMatch(library, container, contents, fit, name, [&](Match&& match) {
      if (what == "entry" || match.type == MAPI_DISTLIST) found.push_back(std::move(match));
      return found.size() < kMostShown;
    });
  });
  return found;
}

Container FindList(const Library& library, const Book& book, const std::vector<Container>& containers,
                   const std::string& wanted) {
  std::vector<Message> messages;
  const std::vector<Match> lists =
      FindFitting(library, book, containers, Fit::kWhole, wanted, "distribution list", messages);
  if (lists.empty()) ThrowNone("there is no container '" + wanted + "', nor a distribution list", messages);
  if (lists.size() > 1) ThrowAmbiguous(wanted, lists);
  return {lists.front().name, lists.front().entryId};
}

// Several rows may be the numbers of one contact.
bool AreOneEntry(const Library& library, const Book& book, const std::vector<Match>& rows) {
  const bool isOneBook = std::all_of(rows.begin(), rows.end(), [&](const Match& each) {
    return each.container == rows.front().container && each.type == rows.front().type;
  });
  return isOneBook && AreOneContact(library, book, rows);
}

}  // namespace

bool Sources::Attempt(const Container& container, const std::function<bool()>& body) {
  try {
    read_ += body() ? 1 : 0;
    return true;
  } catch (const CommandError& error) {
    if (error.exitCode() == kNoOutput) throw;
    Fail(error.what(), error.result() ? NameOf(*error.result()) : "");
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {
    Fail("a provider raised an exception for '" + container.name + "'", "");
  }
  return false;
}

void Sources::Settle() {
  for (Message& message : messages_) {
    if (read_ == 0 && message.exitCode == kSomeFailed) message.exitCode = kFailed;
  }
}

void Sources::Fail(std::string text, std::string resultName) {
  messages_.push_back({std::move(text), std::move(resultName), kSomeFailed});
}

void WalkContainers(const Book& book, const std::vector<Container>& containers,
                    std::vector<Message>& messages,
                    const std::function<bool(const Container&, IMAPITable*)>& walk) {
  Sources sources(messages);
  bool more = true;
  for (const Container& container : containers) {
    sources.Attempt(container, [&] {
      const ComPtr<IMAPITable> contents = book.OpenContents(container);
      if (contents) more = walk(container, contents.Get());
      if (more) TellOfLosses(book, container, messages);
      return static_cast<bool>(contents);
    });
    if (!more) return;
  }
  sources.Settle();
}

void ThrowNone(std::string text, const std::vector<Message>& messages) {
  ExitCode exitCode = kNotFound;
  for (const Message& message : messages) {
    text += "; " + WithCode(message);
    if (message.exitCode != kSuccess) exitCode = kFailed;
  }
  throw CommandError(exitCode, text);
}

Match FindNamed(const Library& library, const Book& book, const std::vector<Container>& containers,
                const std::string& name, const std::string& what, std::vector<Message>& messages) {
  std::vector<Match> found;
  std::vector<Message> told;
  bool isWhole = false;
  // What stands behind a name as it is shown is no part of the names that are searched for parts.
  for (const Fit fit : {Fit::kWhole, Fit::kPart, Fit::kFound}) {
    told.clear();
    found = FindFitting(library, book, containers, fit, name, what, told);
    isWhole = fit == Fit::kWhole;
    if (!found.empty()) break;
  }
  messages.insert(messages.end(), told.begin(), told.end());
  if (found.empty())
    ThrowNone("there is no " + what + " '" + name + "'; 'orvctl book find' finds words of names and digits",
              messages);
  const bool isOne = found.size() == 1 || (isWhole && AreOneEntry(library, book, found));
  if (!isOne) ThrowAmbiguous(name, found);
  return std::move(found.front());
}

std::vector<Container> ChooseContainers(const Library& library, const Book& book, const std::string& wanted) {
  const std::vector<Container> containers = book.ReadContainers();
  if (wanted.empty()) return containers;
  const std::vector<Container> called = ContainersCalled(book, containers, wanted);
  if (!called.empty()) return WithThoseBelow(containers, called.front());
  const std::optional<Bytes> entryId = AsEntryId(wanted);
  return {entryId ? book.OpenList(*entryId, wanted) : FindList(library, book, containers, wanted)};
}

}  // namespace orvctl
