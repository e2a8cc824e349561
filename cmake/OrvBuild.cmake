# What all our code is compiled with, and how the folders of the library become one core.
option(ORV_COVERAGE "Instrument for gcov" OFF)
set(ORV_SANITIZE "" CACHE STRING "Sanitizers of the host build, as -fsanitize= takes them")

# Speed where it is delivered, quick builds and readable traces where it is tested.
set(CMAKE_C_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1 -g1")
set(ORV_SEAM_OPTIMISATION $<$<CONFIG:Release>:-O1>)
set(ORV_TOOL_OPTIMISATION $<$<CONFIG:Release>:-O1>$<$<CONFIG:RelWithDebInfo>:-O0>)
set(ORV_TEST_OPTIMISATION $<$<CONFIG:Release>:-O1>$<$<CONFIG:RelWithDebInfo>:-O0>)

add_library(orv_flags INTERFACE)
target_compile_options(orv_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Werror $<$<COMPILE_LANGUAGE:CXX>:-Wconversion>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Raised at -O2 for values moved within std::variant, where nothing is uninitialised.
  target_compile_options(orv_flags INTERFACE -Wno-maybe-uninitialized)
endif()
target_include_directories(orv_flags INTERFACE "${CMAKE_SOURCE_DIR}/include" "${CMAKE_SOURCE_DIR}"
                                               "${CMAKE_BINARY_DIR}/generated")
if(WIN32)
  target_compile_definitions(orv_flags INTERFACE UNICODE _UNICODE NOMINMAX STRICT WIN32_LEAN_AND_MEAN
                                                 WINVER=0x0601 _WIN32_WINNT=0x0601 _WIN32_IE=0x0601)
  target_compile_options(orv_flags INTERFACE -fstack-protector-strong)
  target_compile_definitions(orv_flags INTERFACE $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2> _GLIBCXX_ASSERTIONS)
  target_link_options(orv_flags INTERFACE -static -fstack-protector-strong -Wl,--no-insert-timestamp
                                          $<$<CONFIG:Release>:-s>)
  if(ORV_COVERAGE)
    target_compile_options(orv_flags INTERFACE --coverage -fprofile-abs-path)
    target_link_options(orv_flags INTERFACE --coverage)
  else()
    target_compile_options(orv_flags INTERFACE "-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.")
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(orv_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-microsoft-exception-spec>)
  endif()
else()
  # The native build has no Windows headers: a small set of stand-ins takes their names.
  target_include_directories(orv_flags INTERFACE "${CMAKE_SOURCE_DIR}/platform/host")
  find_package(Threads REQUIRED)
  target_link_libraries(orv_flags INTERFACE Threads::Threads)
  if(ORV_SANITIZE)
    target_compile_options(orv_flags INTERFACE "-fsanitize=${ORV_SANITIZE}" -fno-sanitize-recover=all
                                               -fno-omit-frame-pointer)
    target_link_options(orv_flags INTERFACE "-fsanitize=${ORV_SANITIZE}")
  endif()
endif()

# The release build with gcc and the native one with clang read once what most files include, and take some files
# together. The others show that every file includes what it needs.
set(ORV_PRECOMPILED <algorithm> <array> <memory> <optional> <span> <string> <utility> <vector> <windows.h> <unknwn.h>
                    <orv/orvapi.h>)
if(WIN32 AND CMAKE_BUILD_TYPE STREQUAL "Release" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set(ORV_QUICK ON)
else()
  set(ORV_QUICK OFF)
endif()
if(ORV_QUICK OR (NOT WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang"))
  set(ORV_TOGETHER ON)
else()
  set(ORV_TOGETHER OFF)
endif()
function(orv_precompile target)
  if(ORV_TOGETHER)
    target_precompile_headers(${target} PRIVATE ${ORV_PRECOMPILED} ${ARGN})
  endif()
endfunction()

# orv_together(target file...): these are compiled several at a time, which takes half the time or less. No two of them
# of one call may use one name for things of their own; a file that is not named stands alone.
set(ORV_FILES_TOGETHER 8)
function(orv_together target)
  if(NOT ORV_TOGETHER)
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  get_target_property(number ${target} ORV_TOGETHER)
  if(NOT number)
    set(number 0)
  endif()
  foreach(file ${ARGN})
    math(EXPR group "${number} / ${ORV_FILES_TOGETHER}")
    set_source_files_properties("${file}" PROPERTIES UNITY_GROUP "together_${group}")
    math(EXPR number "${number} + 1")
  endforeach()
  # A further call begins with a group of its own.
  math(EXPR number "(${number} / ${ORV_FILES_TOGETHER} + 1) * ${ORV_FILES_TOGETHER}")
  set_target_properties(${target} PROPERTIES ORV_TOGETHER ${number})
endfunction()

# orv_together_but(target file...): all files of the target but these.
function(orv_together_but target)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "\\.cpp$")
  list(FILTER sources EXCLUDE REGEX "\\$<")
  # What replaces the run-time's own memory functions must not be seen where they are called.
  list(FILTER sources EXCLUDE REGEX "failing_new\\.cpp$")
  list(REMOVE_ITEM sources ${ARGN})
  orv_together(${target} ${sources})
endfunction()

# orv_reuse_precompiled(target owner): what `owner` has precompiled serves `target`, which has the same flags.
function(orv_reuse_precompiled target owner)
  get_target_property(precompiled ${owner} PRECOMPILE_HEADERS)
  if(precompiled)
    target_precompile_headers(${target} REUSE_FROM ${owner})
  endif()
endfunction()

# orv_sources(a.cpp b.cpp): sources of the library that only Windows builds.
# orv_portable_sources(c.cpp): sources that the native build compiles too.
define_property(GLOBAL PROPERTY ORV_SOURCES BRIEF_DOCS "sources of the library")
set_property(GLOBAL PROPERTY ORV_SOURCES "")
function(orv_portable_sources)
  foreach(file ${ARGN})
    set_property(GLOBAL APPEND PROPERTY ORV_SOURCES "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
  endforeach()
endfunction()
function(orv_sources)
  if(WIN32)
    orv_portable_sources(${ARGN})
  endif()
endfunction()

set(ORV_SYSTEM_LIBRARIES ole32 uuid advapi32 user32 gdi32 comdlg32 comctl32 shell32 winspool)

# orv_core: the objects of the delivered library. orv_core_seam: the same sources with the fault seam and
# the live-object counters compiled in; tests link it.
# Names of theirs are another's too, or they include what renames a method of another.
set(ORV_CORE_APART
  addrbook/hierarchy_rows.cpp addrbook/search_path.cpp
  hosting/provider_loader.cpp hosting/session_link.cpp
  profiles/catalogue_report.cpp profiles/catalogue_text.cpp profiles/service_journal.cpp
  session/dll_main.cpp session/profile_resolution.cpp
  ui/address/address_dialog.cpp ui/address/entry_rows.cpp ui/fax_port.cpp ui/message_box.cpp
  ui/services/install_dialog.cpp ui/services/open_file.cpp ui/services/profile_dialog.cpp)
list(TRANSFORM ORV_CORE_APART PREPEND "${CMAKE_SOURCE_DIR}/")
function(orv_create_core)
  get_property(sources GLOBAL PROPERTY ORV_SOURCES)
  set(together ${sources})
  list(REMOVE_ITEM together ${ORV_CORE_APART})
  if(WIN32)
    add_library(orv_core OBJECT ${sources})
    target_link_libraries(orv_core PUBLIC orv_flags)
    orv_precompile(orv_core)
    orv_together(orv_core ${together})
    add_dependencies(orv_core orv_models)
  endif()
  add_library(orv_core_seam STATIC ${sources})
  target_compile_definitions(orv_core_seam PUBLIC ORV_FAULT_SEAM=1)
  target_compile_options(orv_core_seam PRIVATE ${ORV_SEAM_OPTIMISATION})
  target_link_libraries(orv_core_seam PUBLIC orv_flags)
  orv_precompile(orv_core_seam)
  orv_together(orv_core_seam ${together})
  add_dependencies(orv_core_seam orv_models)
  if(WIN32)
    target_link_libraries(orv_core_seam PUBLIC ${ORV_SYSTEM_LIBRARIES})
  endif()
endfunction()

# Command line and JSON are header-only packages under /usr/include, which a cross compiler must never see
# as a whole: their two folders are linked into the build tree.
add_library(orv_cli_deps INTERFACE)
foreach(folder CLI nlohmann)
  if(EXISTS "/usr/include/${folder}")
    file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/deps")
    file(CREATE_LINK "/usr/include/${folder}" "${CMAKE_BINARY_DIR}/deps/${folder}" SYMBOLIC)
  endif()
endforeach()
target_include_directories(orv_cli_deps SYSTEM INTERFACE "${CMAKE_BINARY_DIR}/deps")
