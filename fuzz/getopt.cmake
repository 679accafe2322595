# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(getopt_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/getopt_fuzzer.cpp CORPUS ${XYL_CORPUS}/getopt)
