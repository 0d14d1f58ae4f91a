# SPDX-License-Identifier: MIT
# Headers, libraries, the CMake package and pkg-config files.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/nnlib)
install(TARGETS nnlib nnlib_check nnlib_profile lcut EXPORT nnlib-targets)
install(EXPORT nnlib-targets NAMESPACE nnlib:: DESTINATION ${package_dir})
if(NNLIB_BUILD_IMPORTER)
  install(TARGETS nnlib-import)
endif()
install(FILES nnlib.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/nnlib)
install(FILES ports/port.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/nnlib/ports)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${public_directories}
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/nnlib FILES_MATCHING PATTERN "*.h")

configure_package_config_file(cmake/nnlib-config.cmake.in nnlib-config.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(nnlib-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/nnlib-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/nnlib-config-version.cmake
              cmake/nnlib_import.cmake
        DESTINATION ${package_dir})

# Relative, so that the prefix may be chosen when installing.
cmake_path(SET pkgconfig_dir NORMALIZE ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${pkgconfig_dir}
           OUTPUT_VARIABLE prefix_from_pkgconfig)
foreach(library nnlib nnlib_check nnlib_profile lcut)
  configure_file(cmake/${library}.pc.in ${library}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${library}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
