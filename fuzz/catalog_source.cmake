# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(catalog_source_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/catalog_source_fuzzer.cpp CORPUS ${XYL_CORPUS}/catalog_source)
target_include_directories(catalog_source_fuzzer_replay PRIVATE ${PROJECT_SOURCE_DIR}/src)
if(XYL_BUILD_FUZZERS)
  target_include_directories(catalog_source_fuzzer PRIVATE ${PROJECT_SOURCE_DIR}/src)
endif()
