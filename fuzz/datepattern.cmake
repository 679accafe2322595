# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(datepattern_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/datepattern_fuzzer.cpp CORPUS ${XYL_CORPUS}/datepattern)
