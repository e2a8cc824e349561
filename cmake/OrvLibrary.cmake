# The delivered library, its import libraries, the same library with the fault seam for tests, and how all of it is
# installed: bin/ as it lies beside the driver, include/ and lib/ as the SDK.
enable_language(RC)
set(exports "${CMAKE_SOURCE_DIR}/session/exports.def")

# Apart from our flags, which the resource compiler does not understand.
add_library(orv_version OBJECT session/version.rc)
target_compile_definitions(orv_version PRIVATE ORV_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}
                                               ORV_VERSION_MINOR=${PROJECT_VERSION_MINOR}
                                               ORV_VERSION_PATCH=${PROJECT_VERSION_PATCH})

add_library(xhtaba SHARED $<TARGET_OBJECTS:orv_core> $<TARGET_OBJECTS:orv_version> "${exports}")
target_link_libraries(xhtaba PRIVATE orv_kit orv_flags ${ORV_SYSTEM_LIBRARIES})
set_target_properties(xhtaba PROPERTIES PREFIX "" IMPORT_PREFIX "" LINKER_LANGUAGE CXX)
target_include_directories(xhtaba INTERFACE "$<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}/include>"
                                            "$<INSTALL_INTERFACE:include>")

# The linker makes the import library of its own kind; the other one serves foreign linkers.
find_program(ORV_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
if(ORV_DLLTOOL)
  set(import_library "${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/xhtaba.lib")
  add_custom_command(
    OUTPUT "${import_library}"
    COMMAND ${CMAKE_COMMAND} -E make_directory "${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}"
    COMMAND ${ORV_DLLTOOL} -m i386:x86-64 -d "${exports}" -D xhtaba.dll -l "${import_library}"
    DEPENDS "${exports}" VERBATIM)
  add_custom_target(orv_import_library ALL DEPENDS "${import_library}")
  install(FILES "${import_library}" DESTINATION lib)
endif()

# Same name, other folder: what the library does depends on what its file is called.
if(ORV_TESTS)
  file(READ "${exports}" seam_exports)
  file(READ "${CMAKE_SOURCE_DIR}/platform/seam_exports.def" more_exports)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${exports}"
                                         "${CMAKE_SOURCE_DIR}/platform/seam_exports.def")
  file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/generated/exports_seam.def" CONTENT "${seam_exports}${more_exports}"
       @ONLY)
  add_library(xhtaba_seam SHARED platform/fault_new.cpp platform/seam_exports.cpp $<TARGET_OBJECTS:orv_core_seam>
                                 $<TARGET_OBJECTS:orv_version> "${CMAKE_BINARY_DIR}/generated/exports_seam.def")
  target_compile_definitions(xhtaba_seam PRIVATE ORV_FAULT_SEAM=1)
  target_link_libraries(xhtaba_seam PRIVATE orv_kit orv_flags ${ORV_SYSTEM_LIBRARIES})
  set_target_properties(xhtaba_seam PROPERTIES
    PREFIX "" OUTPUT_NAME xhtaba LINKER_LANGUAGE CXX
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/seam"
    ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/seam")
endif()

# One build serves every model: the file's name says which one it is.
foreach(file ${ORV_MODEL_FILES})
  if(NOT file STREQUAL "xhtaba.dll")
    install(PROGRAMS $<TARGET_FILE:xhtaba> DESTINATION bin RENAME "${file}")
  endif()
endforeach()
install(TARGETS xhtaba EXPORT OrvAddressBook RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/include/orv" DESTINATION include FILES_MATCHING
        PATTERN "*.h" PATTERN "*.hpp")

include(CMakePackageConfigHelpers)
set(package_folder lib/cmake/OrvAddressBook)
set(package_work "${CMAKE_BINARY_DIR}/package")
configure_package_config_file("${CMAKE_SOURCE_DIR}/cmake/OrvAddressBookConfig.cmake.in"
                              "${package_work}/OrvAddressBookConfig.cmake" INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file("${package_work}/OrvAddressBookConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${package_work}/OrvAddressBookConfig.cmake" "${package_work}/OrvAddressBookConfigVersion.cmake"
        DESTINATION ${package_folder})
install(EXPORT OrvAddressBook NAMESPACE OrvAddressBook:: DESTINATION ${package_folder})
