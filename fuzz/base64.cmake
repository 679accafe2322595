# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(base64_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/base64_fuzzer.cpp CORPUS ${XYL_CORPUS}/base64)
