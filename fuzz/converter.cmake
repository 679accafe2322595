# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(converter_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/converter_fuzzer.cpp CORPUS ${XYL_CORPUS}/converter)
