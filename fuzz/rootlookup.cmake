# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(rootlookup_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/rootlookup_fuzzer.cpp CORPUS ${XYL_CORPUS}/rootlookup)
target_include_directories(rootlookup_fuzzer_replay PRIVATE ${PROJECT_SOURCE_DIR}/src)
if(TARGET rootlookup_fuzzer)
  target_include_directories(rootlookup_fuzzer PRIVATE ${PROJECT_SOURCE_DIR}/src)
endif()
