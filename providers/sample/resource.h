// Numbers of the window, its controls and its texts.
#pragma once

#define IDD_ENTRY 100
#define IDC_FACTS 101

#define IDS_NO_MEMORY 1  // kit::Dialog shows it where memory runs out
#define IDS_COMPANY 10
#define IDS_DEPARTMENT 11
#define IDS_TITLE 12
#define IDS_FAX 13
#define IDS_TELEPHONE 14
#define IDS_EMAIL 15
#define IDS_ADDRESS 16
#define IDS_NOTE 17
#define IDS_MEMBERS 18
