// A profile "P" whose only service is a personal address book.
#pragma once

#include <cstdint>
#include <string>

#include "orv/orvbase.hpp"

namespace orv::bench {

void StorePersonalProfile(const std::wstring& path);
// So many people, whose names, companies and numbers are spread.
void FillBook(const std::wstring& path, std::size_t count);
std::wstring NameOfPerson(std::size_t number);
// Over all numbers below 2^32.
uint32_t Scatter(std::size_t number);
// The first container for recipients.
sdk::ComPtr<IABContainer> OpenContainer(IAddrBook& book);

}  // namespace orv::bench
