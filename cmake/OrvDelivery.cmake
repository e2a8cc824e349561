# What an installation holds: bin/ as it lies beside the driver, include/ and lib/ as the SDK with its CMake package and
# pkg-config files, share/doc all documents, share/orv what authors of providers start from.
# One build serves every model: the file's name says which one it is.
foreach(file ${ORV_MODEL_FILES})
  if(NOT file STREQUAL "xhtaba.dll")
    install(PROGRAMS $<TARGET_FILE:xhtaba> DESTINATION bin RENAME "${file}")
  endif()
endforeach()

# The run-time library is linked in, so that a program or provider needs no file besides it. A target with the property
# ORV_SHARED_RUNTIME goes without.
set(takes_static "$<OR:$<C_COMPILER_ID:GNU,Clang>,$<CXX_COMPILER_ID:GNU,Clang>>")
set(wants_static "$<NOT:$<BOOL:$<TARGET_PROPERTY:ORV_SHARED_RUNTIME>>>")
foreach(target xhtaba orv_provider_kit)
  target_link_options(${target} INTERFACE "$<INSTALL_INTERFACE:$<$<AND:${takes_static},${wants_static}>:-static>>")
endforeach()
install(TARGETS xhtaba orv_headers orv_provider_kit EXPORT OrvAddressBook RUNTIME DESTINATION bin
        ARCHIVE DESTINATION lib)
if(ORV_DLLTOOL)
  install(FILES "${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/xhtaba.lib" DESTINATION lib)
endif()
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

foreach(name orv-address-book orv-provider-kit)
  configure_file("${CMAKE_SOURCE_DIR}/cmake/${name}.pc.in" "${package_work}/${name}.pc" @ONLY)
  install(FILES "${package_work}/${name}.pc" DESTINATION lib/pkgconfig)
endforeach()

install(DIRECTORY "${CMAKE_SOURCE_DIR}/docs/" DESTINATION share/doc)
set(authors share/orv)
install(DIRECTORY "${CMAKE_SOURCE_DIR}/sdk/" DESTINATION ${authors})
foreach(folder kit formats)
  install(DIRECTORY "${CMAKE_SOURCE_DIR}/${folder}" DESTINATION ${authors} FILES_MATCHING
          PATTERN "*.cpp" PATTERN "*.h" PATTERN "*.hpp")
endforeach()
install(DIRECTORY "${CMAKE_SOURCE_DIR}/providers/sample" DESTINATION ${authors} FILES_MATCHING
        PATTERN "*.cpp" PATTERN "*.h" PATTERN "*.def" PATTERN "*.rc")
