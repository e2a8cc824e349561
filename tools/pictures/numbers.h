// Numbers of what several scenes show and use: templates, controls and texts of the companion and of the personal
// address book.
#pragma once

#include <string>

namespace pictures {

inline constexpr int kNewEntryDialog = 192;
inline constexpr int kProfileDialog = 255;
inline constexpr int kNoWells = 259;
inline constexpr int kOneWell = 260;

inline constexpr int kFirstWell = 1018;
inline constexpr int kServices = 1155;
inline constexpr int kConfigure = 1158;
inline constexpr int kContainers = 1163;
inline constexpr int kTypeAhead = 1164;
inline constexpr int kEntries = 1166;
inline constexpr int kFirstWellButton = 1167;
inline constexpr int kNew = 1173;
inline constexpr int kDetails = 1174;
inline constexpr int kDelete = 1175;

inline constexpr int kConfirmDeletion = 274;

// Of the personal address book.
inline constexpr int kContact = 1000;
inline constexpr int kConflict = 1010;
inline constexpr int kList = 1020;
inline constexpr int kContactOrList = 1030;
inline constexpr int kWait = 1040;
inline constexpr int kBookSettings = 1100;
inline constexpr int kAskLeave = 80;
inline constexpr int kAskDuplicate = 81;
inline constexpr int kAskDeleted = 82;

// Where the scripts put files.
inline const std::wstring kFiles = L"C:\\Faxes\\";

// So that two go into each of three wells.
inline constexpr unsigned kEntriesWanted = 6;

}  // namespace pictures
