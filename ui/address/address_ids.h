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
inline constexpr int kStatus = 1176;
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

// What failed; a reason follows.
inline constexpr UINT kDeletionFailed = 289;
inline constexpr UINT kNewEntryFailed = 290;
inline constexpr UINT kDetailsFailed = 291;
// Complete in themselves.
inline constexpr UINT kOneNotDeleted = 292;
inline constexpr UINT kSomeNotDeleted = 293;

inline constexpr UINT kReasonNoAccess = 294;
inline constexpr UINT kReasonCannotDelete = 295;
inline constexpr UINT kReasonCannotCreate = 296;
inline constexpr UINT kReasonNoDetails = 297;
inline constexpr UINT kReasonGone = 298;
inline constexpr UINT kReasonDiskFull = 299;
inline constexpr UINT kReasonBusy = 300;
inline constexpr UINT kReasonDamaged = 301;
inline constexpr UINT kReasonDisk = 302;
inline constexpr UINT kReasonNetwork = 303;
inline constexpr UINT kReasonChanged = 304;
inline constexpr UINT kReasonCode = 305;
inline constexpr UINT kReasonNoPlace = 322;

inline constexpr UINT kStatusNone = 306;
inline constexpr UINT kStatusOne = 307;
inline constexpr UINT kStatusMany = 308;
inline constexpr UINT kStatusPart = 309;
inline constexpr UINT kStatusOnlyBooks = 310;
inline constexpr UINT kStatusNoBook = 311;
inline constexpr UINT kStatusMissing = 312;
inline constexpr UINT kStatusNoAccess = 313;
inline constexpr UINT kStatusDamaged = 314;
inline constexpr UINT kStatusForeign = 315;
inline constexpr UINT kStatusNewer = 316;
inline constexpr UINT kStatusBusy = 317;
inline constexpr UINT kStatusDisk = 318;
inline constexpr UINT kStatusNetwork = 319;
inline constexpr UINT kStatusUnconfigured = 320;
inline constexpr UINT kStatusCode = 321;

}  // namespace orv::ui::address
