# What the system shows as a file's properties: orv_version_resource(target FILE description) puts a version resource
# with the project's version into a library or program, which is delivered under the name FILE.
enable_language(RC)

function(orv_version_resource target file description)
  get_target_property(kind ${target} TYPE)
  set(file_type VFT_DLL)
  if(kind STREQUAL "EXECUTABLE")
    set(file_type VFT_APP)
  endif()
  get_filename_component(internal_name "${file}" NAME_WE)
  set(script "${CMAKE_BINARY_DIR}/generated/${target}_version.rc")
  configure_file("${CMAKE_SOURCE_DIR}/cmake/version.rc.in" "${script}" @ONLY)
  # Apart from our flags, which the resource compiler does not understand.
  add_library(${target}_version OBJECT "${script}")
  target_include_directories(${target}_version PRIVATE "${CMAKE_SOURCE_DIR}/include")
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_version>)
endfunction()
