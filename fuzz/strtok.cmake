# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(strtok_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/strtok_fuzzer.cpp CORPUS ${XYL_CORPUS}/strtok)
