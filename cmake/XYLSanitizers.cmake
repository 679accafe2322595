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
