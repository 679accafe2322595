# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(like_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/like_fuzzer.cpp CORPUS ${XYL_CORPUS}/like)
