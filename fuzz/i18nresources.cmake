# SPDX-License-Identifier: Apache-2.0
xyl_add_fuzzer(i18nresources_fuzzer SOURCE ${CMAKE_CURRENT_SOURCE_DIR}/i18nresources_fuzzer.cpp CORPUS ${XYL_CORPUS}/i18nresources)
