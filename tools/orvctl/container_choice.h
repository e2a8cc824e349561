// Containers by what they are called, and what is wrong with one that cannot be read or changed.
#pragma once

#include <string>
#include <vector>

#include "tools/orvctl/book.h"

namespace orvctl {

// Those of that name, as it is shown or without what the book shows behind it, or of that identifier. Of several only
// those that hold entries themselves.
std::vector<Container> ContainersCalled(const Book& book, const std::vector<Container>& containers,
                                        const std::string& wanted);
// The name without what the state of its book adds to it; the name itself where that is all there is.
std::string PlainNameOf(const Book& book, const Container& container);
// The container; behind one that only holds others come those below it.
std::vector<Container> WithThoseBelow(const std::vector<Container>& containers, const Container& container);

// In words, with what to do; empty where nothing is wrong, or the container does not tell.
std::string WhyUnreadable(const Book& book, const Container& container);

// That a book cannot be read, or may not be changed, and where its file lies; no text where neither is so.
struct Obstacle {
  std::string text = {};
  HRESULT result = S_OK;
};
Obstacle ObstacleToChanges(const Book& book, const Container& container);

}  // namespace orvctl
