// Which topic of the help file tells of which control.
#pragma once

#include "orv/kit/window.hpp"
#include "providers/book/windows/resource.h"

namespace book {

inline constexpr orv::kit::HelpTopic kContactTopics[] = {
    {IDC_TABS, 0x101},
    {IDC_STATUS, 0x102},
    {IDOK, 0x103},
    {IDCANCEL, 0x104},
    {IDC_NAME, 0x110},
    {IDC_PREFIX, 0x111},
    {IDC_GIVEN, 0x112},
    {IDC_MIDDLE, 0x113},
    {IDC_SURNAME, 0x114},
    {IDC_SUFFIX, 0x115},
    {IDC_COMPANY, 0x116},
    {IDC_DEPARTMENT, 0x117},
    {IDC_TITLE, 0x118},
    {IDC_NUMBER, 0x120},
    {IDC_NUMBER_KIND, 0x121},
    {IDC_NUMBER_PREFERRED, 0x122},
    {IDC_NUMBER_ADD, 0x123},
    {IDC_NUMBER_CHANGE, 0x124},
    {IDC_NUMBERS, 0x125},
    {IDC_NUMBER_REMOVE, 0x126},
    {IDC_NUMBER_UP, 0x127},
    {IDC_NUMBER_DOWN, 0x127},
    {IDC_EMAIL, 0x130},
    {IDC_EMAIL_KIND, 0x131},
    {IDC_EMAIL_PREFERRED, 0x132},
    {IDC_EMAIL_ADD, 0x133},
    {IDC_EMAIL_CHANGE, 0x134},
    {IDC_EMAILS, 0x135},
    {IDC_EMAIL_REMOVE, 0x136},
    {IDC_EMAIL_UP, 0x137},
    {IDC_EMAIL_DOWN, 0x137},
    {IDC_ADDRESSES, 0x140},
    {IDC_ADDRESS_NEW, 0x141},
    {IDC_ADDRESS_REMOVE, 0x142},
    {IDC_ADDRESS_KIND, 0x143},
    {IDC_STREET, 0x144},
    {IDC_EXTENDED, 0x144},
    {IDC_POST_OFFICE_BOX, 0x144},
    {IDC_POSTAL_CODE, 0x144},
    {IDC_LOCALITY, 0x144},
    {IDC_REGION, 0x144},
    {IDC_COUNTRY, 0x144},
    {IDC_NOTE, 0x150},
    {IDC_OTHERS, 0x151},
};

inline constexpr orv::kit::HelpTopic kConflictTopics[] = {
    {IDC_CONFLICT_TEXT, 0x160}, {IDC_DIFFERENCES, 0x161}, {IDC_KEEP_MINE, 0x162}, {IDC_KEEP_THEIRS, 0x162},
    {IDC_MINE, 0x163},          {IDC_THEIRS, 0x163},      {IDOK, 0x164},          {IDCANCEL, 0x165},
};

inline constexpr orv::kit::HelpTopic kListTopics[] = {
    {IDC_LIST_NAME, 0x170},
    {IDC_CONTAINER, 0x171},
    {IDC_FIND, 0x172},
    {IDC_FOUND, 0x173},
    {IDC_FOUND_STATE, 0x173},
    {IDC_MEMBER_ADD, 0x174},
    {IDC_MEMBER_ADD_NUMBER, 0x175},
    {IDC_MEMBERS, 0x176},
    {IDC_MEMBER_REMOVE, 0x177},
    {IDC_MEMBER_UP, 0x178},
    {IDC_MEMBER_DOWN, 0x178},
    {IDC_STATUS, 0x102},
    {IDOK, 0x103},
    {IDCANCEL, 0x104},
};

inline constexpr orv::kit::HelpTopic kWhatTopics[] = {
    {IDC_WHAT_TEXT, 0x180}, {IDC_WHAT_CONTACT, 0x181}, {IDC_WHAT_LIST, 0x182},
    {IDOK, 0x183},          {IDCANCEL, 0x104},
};

inline constexpr orv::kit::HelpTopic kWaitTopics[] = {
    {IDC_WAIT_TEXT, 0x1A0},
    {IDCANCEL, 0x1A1},
};

inline constexpr orv::kit::HelpTopic kConfigureTopics[] = {
    {IDC_BOOK_FILE, 0x190},
    {IDC_BOOK_BROWSE, 0x191},
    {IDC_STATUS, 0x192},
    {IDC_BOOK_NAME, 0x193},
    {IDC_BOOK_BACKUPS, 0x194},
    {IDC_BOOK_FACTS, 0x195},
    {IDC_BOOK_STATE, 0x19A},
    {IDC_BOOK_CHECK, 0x196},
    {IDC_BOOK_REPAIR, 0x197},
    {IDC_NAMES_AS_WRITTEN, 0x199},
    {IDC_NAMES_LAST_FIRST, 0x199},
    {IDOK, 0x198},
    {IDCANCEL, 0x104},
};

}  // namespace book
