# GoogleTest from its Debian source package, and the shape of every test program.
include(CTest)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
set_target_properties(gtest gtest_main PROPERTIES ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
target_compile_options(gtest PRIVATE -O0 -g0)
target_compile_options(gtest_main PRIVATE -O0 -g0)

# What takes minutes begins first, so that nothing is left to run alone at the end.
set(ORV_LONG_TEST 1000)

# orv_quick_link(): programs of this folder, which are not delivered, are linked by clang's linker, in a twentieth of the
# time; -lssp is what gcc adds for its stack protector.
macro(orv_quick_link)
  find_program(ORV_QUICK_LINKER clang++)
  find_program(ORV_LLD ld.lld)
  if(ORV_QUICK AND ORV_QUICK_LINKER AND ORV_LLD)
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-libgcc-file-name OUTPUT_VARIABLE libgcc
                    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    get_filename_component(libgcc "${libgcc}" DIRECTORY)
    set(CMAKE_CXX_LINK_EXECUTABLE
        "\"${ORV_QUICK_LINKER}\" --target=x86_64-w64-windows-gnu -fuse-ld=lld -pthread -B${libgcc} -L${libgcc} -L${CMAKE_FIND_ROOT_PATH}/lib <LINK_FLAGS> <OBJECTS> -o <TARGET> <LINK_LIBRARIES> -lssp")
  endif()
endmacro()

# orv_test(NAME source...): one program a folder; a Wine fixture brings the server up for all of them.
function(orv_test name)
  cmake_parse_arguments(arg "PLAIN;TOGETHER" "" "APART;SOURCES;LIBRARIES;DEPENDS" ${ARGN})
  add_executable(${name} ${arg_SOURCES} ${arg_UNPARSED_ARGUMENTS})
  target_compile_options(${name} PRIVATE ${ORV_TEST_OPTIMISATION})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Raised in the library's strings once they come from a precompiled header.
    target_compile_options(${name} PRIVATE -Wno-array-bounds -Wno-stringop-overread)
  endif()
  target_include_directories(${name} SYSTEM PRIVATE /usr/src/googletest/googletest/include)
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} gtest orv_flags)
  if(NOT arg_PLAIN)
    target_link_libraries(${name} PRIVATE orv_test_support orv_core_seam)
  else()
    target_link_libraries(${name} PRIVATE gtest_main)
    # What is precompiled has it.
    target_compile_definitions(${name} PRIVATE ORV_FAULT_SEAM=1)
  endif()
  orv_reuse_precompiled(${name} orv_test_support)
  if(arg_TOGETHER)
    orv_together_but(${name} ${arg_APART})
  endif()
  if(arg_DEPENDS)
    add_dependencies(${name} ${arg_DEPENDS})
  endif()
  add_test(NAME ${name} COMMAND ${name} --gtest_brief=1 WORKING_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
  set_tests_properties(${name} PROPERTIES TIMEOUT 900)
  if(WIN32)
    set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED wine)
  endif()
endfunction()

if(WIN32)
  add_test(NAME wine_up COMMAND "${CMAKE_SOURCE_DIR}/scripts/wine-up.sh")
  add_test(NAME wine_down COMMAND "${CMAKE_SOURCE_DIR}/scripts/wine-down.sh")
  set_tests_properties(wine_up PROPERTIES FIXTURES_SETUP wine TIMEOUT 180)
  set_tests_properties(wine_down PROPERTIES FIXTURES_CLEANUP wine)
endif()
