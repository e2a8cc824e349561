// Help identifiers of the dialogs' controls: each table ends with control 0, and each identifier is the name
// of a topic in the context help. A label explains what it names, so the two share an identifier.
#pragma once

#include <cstdint>

namespace orv {

struct HelpIdPair {
  int control;
  std::uint32_t helpId;
};

// Profile dialog and install dialog.
inline constexpr HelpIdPair kProfileHelpIds[] = {
    {1205, 0xD01},  // label of the services
    {1155, 0xD01},  // services
    {1156, 0xD02},  // Add
    {1157, 0xD04},  // Remove
    {1158, 0xD03},  // Configure
    {0, 0},
};

inline constexpr HelpIdPair kAddServiceHelpIds[] = {
    {1206, 0xE01},  // label of the services
    {1155, 0xE01},  // services
    {0, 0},
};

// Address dialog with any number of wells.
inline constexpr HelpIdPair kAddressHelpIds[] = {
    {1171, 0xF01},  // label of the containers
    {1163, 0xF01},  // containers
    {1165, 0xF02},  // label of the type-ahead text
    {1164, 0xF02},  // type-ahead text
    {1172, 0xF03},  // label of the entries
    {1166, 0xF03},  // entries
    {1176, 0xF11},  // how many entries
    {1173, 0xF04},  // New
    {1174, 0xF05},  // Details
    {1175, 0xF06},  // Delete
    {1180, 0xF07},  // title of the wells
    {1167, 0xF08},  // into the first well
    {1168, 0xF09},  // into the second well
    {1169, 0xF0A},  // into the third well
    {1181, 0xF0B},  // label of the first well
    {1018, 0xF0B},  // first well
    {1182, 0xF0C},  // label of the second well
    {1019, 0xF0C},  // second well
    {1183, 0xF0D},  // label of the third well
    {1020, 0xF0D},  // third well
    {0, 0},
};

inline constexpr HelpIdPair kNewEntryHelpIds[] = {
    {1161, 0xF0E},  // into a container
    {1162, 0xF0F},  // for this message only
    {1171, 0xF10},  // label of the containers
    {1163, 0xF10},  // containers
    {0, 0},
};

// Controls that any dialog may have: OK, Cancel, Help, Apply.
inline constexpr HelpIdPair kCommonHelpIds[] = {
    {1, 0x812F0001}, {2, 0x812F7532}, {9, 0x80650418}, {12321, 0x80650417}, {0, 0},
};

}  // namespace orv
