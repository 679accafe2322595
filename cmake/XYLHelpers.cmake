# SPDX-License-Identifier: Apache-2.0
# One helper per target kind, so that every area's CMakeLists.txt is a plain
# explicit list of files.

set(XYL_SOURCE_ROOT ${PROJECT_SOURCE_DIR}/src)

# Adds library sources and gives each one its back-trace name: the path
# relative to src/ without the extension ("Types/XYLByteBuffer").
function(xyl_add_library_sources)
  foreach(src IN LISTS ARGN)
    get_filename_component(abs ${src} ABSOLUTE)
    target_sources(XYLCore PRIVATE ${abs})
    if(abs MATCHES "\\.(c|cc|cpp)$")
      file(RELATIVE_PATH rel ${XYL_SOURCE_ROOT} ${abs})
      string(REGEX REPLACE "\\.[^./]+$" "" name ${rel})
      set_property(SOURCE ${abs} TARGET_DIRECTORY XYLCore APPEND PROPERTY COMPILE_DEFINITIONS "XYL_SOURCE_FILE=\"${name}\"")
    endif()
  endforeach()
endfunction()

# xyl_add_test(<name> SOURCES <files...> [LABELS <labels...>] [LIBS <libs...>])
# One GoogleTest executable; every test case becomes a CTest test.
function(xyl_add_test name)
  cmake_parse_arguments(T "" "" "SOURCES;LABELS;LIBS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  xyl_set_warnings(${name})
  target_link_libraries(${name} PRIVATE XYLCore xyl_test_support GTest::gtest GTest::gtest_main ${T_LIBS})
  if(NOT T_LABELS)
    set(T_LABELS unit)
  endif()
  # Discovered tests take one label: the given ones joined with "_" (a list
  # does not survive the discovery script). ctest -L takes a regular
  # expression, so "-L concurrency" still selects "unit_concurrency".
  string(REPLACE ";" "_" joined_labels "${T_LABELS}")
  gtest_discover_tests(${name} PROPERTIES LABELS "${joined_labels}" DISCOVERY_TIMEOUT 60 DISCOVERY_MODE PRE_TEST)
endfunction()

# xyl_add_benchmark(<name> SOURCES <files...> [LIBS <libs...>])
function(xyl_add_benchmark name)
  cmake_parse_arguments(B "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${B_SOURCES})
  xyl_set_warnings(${name})
  target_link_libraries(${name} PRIVATE XYLCore benchmark::benchmark benchmark::benchmark_main ${B_LIBS})
  # A smoke run keeps every benchmark compiling and running; figures come from
  # running the binary by hand.
  add_test(NAME ${name}.smoke COMMAND ${name} --benchmark_min_time=0.001)
  set_tests_properties(${name}.smoke PROPERTIES LABELS bench)
endfunction()

# xyl_add_fuzzer(<name> SOURCE <file> CORPUS <dir> [LIBS <libs...>])
# With XYL_BUILD_FUZZERS (clang) a libFuzzer binary; always a replay test that
# runs every stored corpus file through the same entry point.
function(xyl_add_fuzzer name)
  cmake_parse_arguments(F "" "SOURCE;CORPUS" "LIBS" ${ARGN})
  add_executable(${name}_replay ${F_SOURCE} ${PROJECT_SOURCE_DIR}/fuzz/replay_main.cpp)
  xyl_set_warnings(${name}_replay)
  target_link_libraries(${name}_replay PRIVATE XYLCore ${F_LIBS})
  add_test(NAME ${name}.replay COMMAND ${name}_replay ${F_CORPUS})
  set_tests_properties(${name}.replay PROPERTIES LABELS fuzz)
  if(XYL_BUILD_FUZZERS)
    add_executable(${name} ${F_SOURCE})
    xyl_set_warnings(${name})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_libraries(${name} PRIVATE XYLCore ${F_LIBS})
  endif()
endfunction()
