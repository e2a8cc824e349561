// A service whose library needs another one to be loaded at all.
__declspec(dllimport) int Needed(void);
__declspec(dllexport) int NeedingServiceEntry(void);
int NeedingServiceEntry(void) { return Needed(); }
