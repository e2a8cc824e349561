// What a registry key held, as bytes, and the way back to it. A snapshot is complete: every value with its type, every
// key below.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "platform/reg_key.h"
#include "platform/win.h"

namespace orv::registry_snapshot {

using Bytes = std::vector<std::byte>;

// How much of a key a snapshot holds.
enum class Extent : unsigned char {
  kTree = 1,    // all of it, or that it is not there
  kValues = 2,  // its values; keys below it are left alone
};

using MayTouch = std::function<bool(const WString& path, Extent extent)>;

// Appends the state of the key at `path` below `base`. A Win32 code; the bytes are unchanged after a failure.
LSTATUS Append(HKEY base, const WString& path, Extent extent, Bytes& snapshots);

// Makes every key that the snapshots describe what it was. ERROR_INVALID_DATA, with nothing changed, for bytes that are
// no snapshots and for a snapshot of a key that `mayTouch` refuses; other failures leave some keys as they were and
// some as they had become, and trying again goes on.
LSTATUS Restore(HKEY base, std::span<const std::byte> snapshots, const MayTouch& mayTouch);

// Deletes the key with everything below it, whatever the names there are like. One that is not there is deleted.
LSTATUS DeleteTree(HKEY parent, const WString& path);

// Makes a key that is not there yet a copy of another one. After a failure some of it may be there.
LSTATUS CopyTree(HKEY base, const WString& from, const WString& to);

}  // namespace orv::registry_snapshot
