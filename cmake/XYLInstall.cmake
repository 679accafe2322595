# SPDX-License-Identifier: Apache-2.0
# Installation: the library (shared with its SONAME, or static) and headers
# are installed by src/; this adds the CMake package, the pkg-config file and
# the data files that the library finds beside itself (the
# internationalisation resources). Both variants install the same package.
include(CMakePackageConfigHelpers)

if(BUILD_SHARED_LIBS)
  set(XYL_CONFIG_STATIC OFF)
else()
  set(XYL_CONFIG_STATIC ON)
endif()

set(XYL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/XYLCore)
install(EXPORT XYLCoreTargets NAMESPACE XYLCore:: DESTINATION ${XYL_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/XYLCoreConfig.cmake.in
  ${PROJECT_BINARY_DIR}/XYLCoreConfig.cmake INSTALL_DESTINATION ${XYL_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/XYLCoreConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/XYLCoreConfig.cmake ${PROJECT_BINARY_DIR}/XYLCoreConfigVersion.cmake
  DESTINATION ${XYL_CMAKE_DIR} COMPONENT dev)

# The .pc file names its prefix relative to where it lies, so an installation
# can be moved (or installed with --prefix) and still be found.
file(RELATIVE_PATH XYL_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" XYL_PC_TO_PREFIX "${XYL_PC_TO_PREFIX}")
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(XYL_PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
else()
  set(XYL_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  set(XYL_PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
else()
  set(XYL_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/xylcore.pc.in ${PROJECT_BINARY_DIR}/xylcore.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/xylcore.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

# The internationalisation layer reads its resource files from the directory
# that holds the library.
file(GLOB XYL_RESOURCE_FILES ${PROJECT_SOURCE_DIR}/resources/*.xml)
install(FILES ${XYL_RESOURCE_FILES} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)
