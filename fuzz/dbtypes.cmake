# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(dbtypes_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/dbtypes_fuzzer.cpp CORPUS ${XYL_CORPUS}/dbtypes)
