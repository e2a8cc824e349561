// A library that is nothing but a file name and a module handle.
#include "platform/win.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, void*) { return TRUE; }
