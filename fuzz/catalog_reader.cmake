# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(catalog_reader_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/catalog_reader_fuzzer.cpp CORPUS ${XYL_CORPUS}/catalog_reader)
target_include_directories(catalog_reader_fuzzer_replay PRIVATE ${PROJECT_SOURCE_DIR}/src)
if(XYL_BUILD_FUZZERS)
  target_include_directories(catalog_reader_fuzzer PRIVATE ${PROJECT_SOURCE_DIR}/src)
endif()
