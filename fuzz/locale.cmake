# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(locale_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/locale_fuzzer.cpp CORPUS ${XYL_CORPUS}/locale)
