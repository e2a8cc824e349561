// A profile "P" whose only service is a personal address book.
#pragma once

#include <string>

#include "orv/orvbase.hpp"

namespace orv::bench {

void StorePersonalProfile(const std::wstring& path);
// The first container for recipients.
sdk::ComPtr<IABContainer> OpenContainer(IAddrBook& book);

}  // namespace orv::bench
