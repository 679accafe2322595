# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(string_bytes_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/string_bytes_fuzzer.cpp CORPUS ${XYL_CORPUS}/string_bytes)
