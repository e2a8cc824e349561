// A library without any code of its own: tests install it under the names of the library and its companions.
#include "platform/win.h"

BOOL WINAPI DllMain(HINSTANCE, DWORD, void*) { return TRUE; }
