// What a crash is called and where it happened, written without taking memory: the heap may be what is broken.
#pragma once

#include <windows.h>

#include <cstddef>

namespace orvctl {

// "access violation 0xC0000005".
void NameCrash(DWORD code, char* text, size_t size);
// "provider.dll+0x1234", the file's name in ASCII; the text stays as it is for an address in no module.
void FindCrashPlace(const void* address, char* text, size_t size);

}  // namespace orvctl
