# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(capi_string_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/capi_string_fuzzer.cpp CORPUS ${XYL_CORPUS}/capi_string)
