# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(numberpattern_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/numberpattern_fuzzer.cpp CORPUS ${XYL_CORPUS}/numberpattern)
