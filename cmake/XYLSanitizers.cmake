# SPDX-License-Identifier: Apache-2.0
# XYL_SANITIZE=address builds everything under AddressSanitizer and
# UndefinedBehaviorSanitizer; XYL_SANITIZE=thread under ThreadSanitizer.
if(XYL_SANITIZE STREQUAL "address")
  set(_xyl_san -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
elseif(XYL_SANITIZE STREQUAL "thread")
  set(_xyl_san -fsanitize=thread -fno-omit-frame-pointer)
elseif(NOT XYL_SANITIZE STREQUAL "")
  message(FATAL_ERROR "XYL_SANITIZE must be empty, 'address' or 'thread'")
endif()
if(_xyl_san)
  add_compile_options(${_xyl_san})
  add_link_options(${_xyl_san})
endif()

# XYL_BUILD_FUZZERS=ON (clang only): the whole tree is instrumented for
# libFuzzer's coverage and built under ASan + UBSan, so that the fuzzers see
# and check the library's code, not only their own entry points; the fuzz
# targets add libFuzzer's driver at link time.
if(XYL_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang" OR NOT CMAKE_C_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "XYL_BUILD_FUZZERS needs clang: CC=clang CXX=clang++")
  endif()
  if(NOT XYL_SANITIZE STREQUAL "")
    message(FATAL_ERROR "XYL_BUILD_FUZZERS brings its own sanitizers; leave XYL_SANITIZE empty")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
