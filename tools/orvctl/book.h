// The address book of one profile, as the commands walk it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/orvctl/last_words.h"
#include "tools/orvctl/library.h"
#include "tools/orvctl/listing.h"

namespace orvctl {

struct Container {
  std::string name;
  Bytes entryId;
  ULONG flags = 0;
  ULONG depth = 0;  // 0 is a provider
};

inline bool IsModifiable(const Container& container) { return (container.flags & AB_MODIFIABLE) != 0; }

struct Entry {
  std::string name, addressType, address, container;
  Bytes entryId;
  ULONG type = 0;
};

// What a container tells about the reading of the records behind it; nothing of it has to be there.
struct ReadingState {
  std::optional<ULONG> skipped;
  std::optional<HRESULT> status;
  std::string file;
};

// A logged-on session. Must not outlive the library.
class Book {
 public:
  // "-" logs on to the default profile.
  Book(const Library& library, const std::string& profile);
  // Hands the session's problems to the library's.
  ~Book();
  Book(const Book&) = delete;
  Book& operator=(const Book&) = delete;

  const Library& library() const { return library_; }
  const std::string& profile() const { return profile_; }  // as it was named
  IOrvSession* session() const { return session_.Get(); }
  IAddrBook* addressBook() const { return addressBook_.Get(); }

  // Every container, each behind its parent.
  std::vector<Container> ReadContainers() const;
  // The distribution list, or the container that the hierarchy does not show, of that identifier.
  Container OpenList(const Bytes& entryId, const std::string& what) const;
  ReadingState ReadState(const Container& container) const;

  ComPtr<IMAPIProp> Open(const Bytes& entryId, const std::string& what) const;
  // Null for a container that holds containers only.
  ComPtr<IMAPITable> OpenContents(const Container& container) const;
  // `use` answers whether it wants more; false when it did not.
  bool ForEachEntry(const Container& container, IMAPITable* contents,
                    const std::function<bool(Entry&&)>& use) const;

  // The recipients as a report. They come without the address that a fax goes to; their providers know it.
  Report ReportRecipients(ADRLIST* list, std::string ifEmpty) const;

 private:
  void ReadProblems(std::vector<Message>& problems) const;
  // No bytes: the root.
  ComPtr<IMAPIProp> OpenAny(Bytes entryId, const std::string& what) const;

  const Library& library_;
  const std::string profile_;
  const LastWords lastWords_;
  ComPtr<IOrvSession> session_;
  ComPtr<IAddrBook> addressBook_;
};

// Identifiers are told from names by what they are: hexadecimal digits for at least twenty bytes.
std::optional<Bytes> AsEntryId(const std::string& text);

}  // namespace orvctl
