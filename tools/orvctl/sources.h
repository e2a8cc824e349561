// The containers that a command reads, one after the other: what fails in one becomes a warning, and the others are
// read.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/orvctl/book.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/listing.h"
#include "tools/orvctl/search.h"

namespace orvctl {

class Sources {
 public:
  // Warnings are added to `messages`.
  explicit Sources(std::vector<Message>& messages) : messages_(messages) {}

  // True when it went well. `body` answers whether the container has anything to read. Output that nobody takes ends
  // the command.
  bool Attempt(const Container& container, const std::function<bool()>& body);
  // Where nothing at all could be read, the command failed.
  void Settle();

 private:
  void Fail(std::string text, std::string resultName);

  std::vector<Message>& messages_;
  size_t read_ = 0;
};

// Each container's entries, by `walk`, until that answers false; what a listing does not show is told of: a file that
// could not be read is an empty container.
void WalkContainers(const Book& book, const std::vector<Container>& containers,
                    std::vector<Message>& messages,
                    const std::function<bool(const Container&, IMAPITable*)>& walk);

// A search that found nothing is only certain where everything could be read.
[[noreturn]] void ThrowNone(std::string text, const std::vector<Message>& messages);

// For reading: the only entry of exactly that name, a contact with several numbers being one, else the only one whose
// name holds the text, else the only one that the book's own search finds. `what` is "entry" or "distribution list",
// which then is the only kind that counts.
Match FindNamed(const Library& library, const Book& book, const std::vector<Container>& containers,
                const std::string& name, const std::string& what, std::vector<Message>& messages);

// All of them, or the container, else the distribution list, of that name or identifier.
std::vector<Container> ChooseContainers(const Library& library, const Book& book, const std::string& wanted);

}  // namespace orvctl
