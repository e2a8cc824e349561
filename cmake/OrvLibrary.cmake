# The delivered library, its import libraries, and the same library with the fault seam for tests.
set(exports "${CMAKE_SOURCE_DIR}/session/exports.def")

add_library(xhtaba SHARED $<TARGET_OBJECTS:orv_core> "${exports}")
orv_version_resource(xhtaba xhtaba.dll "Fax address book")
target_link_libraries(xhtaba PRIVATE orv_provider_kit orv_flags ${ORV_SYSTEM_LIBRARIES} INTERFACE orv_headers)
set_target_properties(xhtaba PROPERTIES PREFIX "" IMPORT_PREFIX "" LINKER_LANGUAGE CXX)

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
                                 $<TARGET_OBJECTS:xhtaba_version> "${CMAKE_BINARY_DIR}/generated/exports_seam.def")
  target_compile_definitions(xhtaba_seam PRIVATE ORV_FAULT_SEAM=1)
  target_compile_options(xhtaba_seam PRIVATE ${ORV_SEAM_OPTIMISATION})
  orv_reuse_precompiled(xhtaba_seam orv_core_seam)
  target_link_libraries(xhtaba_seam PRIVATE orv_provider_kit orv_flags ${ORV_SYSTEM_LIBRARIES})
  set_target_properties(xhtaba_seam PROPERTIES
    PREFIX "" OUTPUT_NAME xhtaba LINKER_LANGUAGE CXX
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/seam"
    ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/seam")
endif()
