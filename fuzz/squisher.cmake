# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(squisher_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/squisher_fuzzer.cpp CORPUS ${XYL_CORPUS}/squisher)
