// Numbers of the Address and new-entry dialogs: templates, controls, icons and texts of the resource library.
#pragma once

#include "platform/win.h"

namespace orv::ui::address {

// Templates: one for choosing without wells, the next three for one to three wells.
inline constexpr WORD kNewEntryTemplate = 192;
inline constexpr WORD kAddressTemplate = 259;
inline constexpr ULONG kMaxWells = 3;

inline constexpr int kFirstWell = 1018;
inline constexpr int kIntoContainer = 1161;
inline constexpr int kThisMessageOnly = 1162;
inline constexpr int kContainers = 1163;
inline constexpr int kTypeAhead = 1164;
inline constexpr int kEntries = 1166;
inline constexpr int kFirstWellButton = 1167;
// A well button's number less this is its well's.
inline constexpr int kWellButtonOffset = kFirstWellButton - kFirstWell;
inline constexpr int kNewEntry = 1173;
inline constexpr int kDetails = 1174;
inline constexpr int kDelete = 1175;
inline constexpr int kWellsTitle = 1180;
inline constexpr int kFirstWellLabel = 1181;
// Posted by the advise sink.
inline constexpr int kRefresh = 1208;

inline constexpr WORD kDialogIcon = 250;
inline constexpr WORD kGroupIcon = 251;
inline constexpr WORD kPersonIcon = 252;

inline constexpr UINT kSelectOneForDetails = 271;
inline constexpr UINT kNothingSelected = 272;
inline constexpr UINT kOutOfMemory = 273;
inline constexpr UINT kConfirmDeletion = 274;
inline constexpr UINT kCannotOpenEntry = 283;
inline constexpr UINT kSelectOnlyOne = 284;

}  // namespace orv::ui::address
