# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(olapformat_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/olapformat_fuzzer.cpp CORPUS ${XYL_CORPUS}/olapformat)
target_include_directories(olapformat_fuzzer_replay PRIVATE ${PROJECT_SOURCE_DIR}/src)
if(TARGET olapformat_fuzzer)
  target_include_directories(olapformat_fuzzer PRIVATE ${PROJECT_SOURCE_DIR}/src)
endif()
