# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(uri_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/uri_fuzzer.cpp CORPUS ${XYL_CORPUS}/uri)
