/*
 * The version of these headers (ours). The project takes its version from here: the resource of every binary, the
 * CMake package and `orvctl --version` say the same. Plain macros, so that resource scripts may include it.
 */
#ifndef ORV_ORVVERSION_H
#define ORV_ORVVERSION_H

#define ORV_VERSION_MAJOR 1
#define ORV_VERSION_MINOR 1
#define ORV_VERSION_PATCH 0

/* To compare: #if ORV_VERSION >= ORV_MAKE_VERSION(1, 1, 0). The parts of one have two digits. */
#define ORV_MAKE_VERSION(major, minor, patch) ((major)*10000 + (minor)*100 + (patch))
#define ORV_VERSION ORV_MAKE_VERSION(ORV_VERSION_MAJOR, ORV_VERSION_MINOR, ORV_VERSION_PATCH)

#define ORV_TEXT_OF(text) #text
#define ORV_TEXT(macro) ORV_TEXT_OF(macro)
#define ORV_VERSION_TEXT \
  ORV_TEXT(ORV_VERSION_MAJOR) "." ORV_TEXT(ORV_VERSION_MINOR) "." ORV_TEXT(ORV_VERSION_PATCH)

#endif
