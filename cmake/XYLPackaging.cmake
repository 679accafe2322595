# SPDX-License-Identifier: Apache-2.0
# Debian packages: `cpack -G DEB` in a build folder configured with
# -DCMAKE_INSTALL_PREFIX=/usr (scripts/package.sh does it all) makes
#   libxylcore1     the library, its catalogs, resource files and dump writer;
#   libxylcore-dev  headers, libXYLCore.a (XYL_PACKAGE_STATIC), the CMake
#                   package and the pkg-config file;
#   xylcore-tools   the xyl tool.
# Library dependencies come from dpkg-shlibdeps.
set(CPACK_PACKAGE_NAME xylcore)
set(CPACK_PACKAGE_VENDOR "XYLCore developers")
set(CPACK_PACKAGE_CONTACT "XYLCore developers <xylcore-dev@lists.example.org>")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# xyl needs libXYLCore.so.1, which is in this build, not yet installed.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://xylcore.example.org/")

set(xyl_deb_version "${PROJECT_VERSION}")
# Each package's description: its synopsis, then paragraphs (CPack indents
# them and turns an empty line into " .").
set(xyl_about "XYLCore gives C and C++ server programs one exception tree with back
traces and catalog messages, threads, locks, thread pools, codecs, files,
plug-ins, a fault handler and an internationalisation layer over ICU.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libxylcore1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "foundation library for multi-threaded servers
${xyl_about}

This package holds the shared library, its message catalogs and resource
files, and the crash-dump writer.")
# ldconfig runs through a trigger, as Debian asks of a shared library.
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/triggers)

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libxylcore-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
  "libxylcore1 (= ${xyl_deb_version}), libicu-dev, zlib1g-dev, libisal-dev, libxml2-dev")
set(CPACK_DEBIAN_DEV_DESCRIPTION "development files of the XYLCore foundation library
${xyl_about}

This package holds the headers, the static library, the CMake package
(find_package(XYLCore)) and the pkg-config file (xylcore).")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME xylcore-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libxylcore1 (>= ${xyl_deb_version})")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "command-line tool of the XYLCore foundation library
${xyl_about}

This package holds xyl, which shows the library at work: codecs,
conversions, collation, bidirectional text, number and interval formats.")

# Every package carries the licence and the history, as Debian asks.
configure_file(${PROJECT_SOURCE_DIR}/cmake/debian-copyright.in ${PROJECT_BINARY_DIR}/debian/copyright @ONLY)
string(TIMESTAMP xyl_deb_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${PROJECT_BINARY_DIR}/debian/changelog "xylcore (${xyl_deb_version}) unstable; urgency=medium

  * Release ${xyl_deb_version}; the changes are listed in CHANGELOG.md of the
    source tree.

 -- ${CPACK_PACKAGE_CONTACT}  ${xyl_deb_date}
")
execute_process(COMMAND gzip -9nf ${PROJECT_BINARY_DIR}/debian/changelog)
foreach(component runtime dev tools)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  install(FILES ${PROJECT_BINARY_DIR}/debian/copyright ${PROJECT_BINARY_DIR}/debian/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
