__declspec(dllexport) int Needed(void);
int Needed(void) { return 0; }
