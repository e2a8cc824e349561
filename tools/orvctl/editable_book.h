// A book whose entries are to be changed, and the entries in it that are meant.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "orv/orvbook.h"
#include "tools/orvctl/book.h"
#include "tools/orvctl/search.h"

namespace orvctl {

// The object of a whole book; null where the container keeps none.
ComPtr<IOrvContacts> OpenContacts(const Book& book, const Container& container, ULONG flags);

// What an entry is by itself, whichever of its rows it was opened by.
struct Identity {
  std::string uid;    // empty where the book gives none
  std::string plain;  // its name without a kind of number or a company behind it
  Bytes whole;        // the identifier that means all of it; empty where the book gives none
};

Identity IdentityOf(const Library& library, const Book& book, const Bytes& entryId);
// Whether the rows are those of one contact.
bool AreOneContact(const Library& library, const Book& book, const std::vector<Match>& rows);

// All of them, or the one of that name or identifier.
std::vector<Container> ContainersNamed(const Book& book, const std::string& wanted);

class EditableBook {
 public:
  // The container of that name or identifier; without one the book of new contacts. Throws for one that cannot be
  // changed, and tells which can.
  EditableBook(const Library& library, const Book& book, const std::string& wanted);

  const Library& library() const { return library_; }
  const Book& book() const { return book_; }
  const Container& container() const { return container_; }
  const std::string& name() const { return container_.name; }
  IABContainer* object() const { return object_.Get(); }
  // Null where the book cannot be treated as a whole.
  ComPtr<IOrvContacts> Contacts() const { return OpenContacts(book_, container_, MAPI_MODIFY); }

  // Rows with exactly that name, or the one with that identifier. A contact's plain name means all of its rows. None,
  // or rows of several entries, are errors.
  std::vector<Match> Choose(const std::string& named) const;
  // The same for each, every one once, before anything is done to the first.
  std::vector<Match> ChooseAll(const std::vector<std::string>& named) const;

  ComPtr<IMAPIProp> OpenForChange(const Match& match) const;
  Identity IdentityOf(const Bytes& entryId) const { return orvctl::IdentityOf(library_, book_, entryId); }

 private:
  const Library& library_;
  const Book& book_;
  Container container_;
  ComPtr<IABContainer> object_;
};

// Identifiers in the shape that the interfaces take; the matches must outlive it.
class EntryList {
 public:
  explicit EntryList(std::vector<Match>& matches);
  ENTRYLIST* Get() { return &list_; }

 private:
  std::vector<SBinary> ids_;
  ENTRYLIST list_ = {};
};

}  // namespace orvctl
