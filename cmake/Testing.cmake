# Tests in the manner of this project; needs the targets of pkgcore/CMakeLists.txt.

include(GoogleTest)

# Everything that carries the label "concurrent", so that a build with the thread sanitizer can make these tests alone.
add_custom_target(pkgcore_concurrent_tests)

# pkgcore_add_test(NAME <name> SOURCES <source>... [LIBRARIES <target>...] [LABELS <label>...] [WHOLE])
#
# Makes a GoogleTest program and registers each of its tests with CTest as <name>/<Suite>.<Test>, or the program as a whole with
# WHOLE, for many short tests, and in a build with sanitizers, for coverage or with PKGCORE_WHOLE_TESTS. LIBRARIES says what is
# tested: pkgcore_objects (the default), pkgcore_logic_objects with a scripted platform, or pkgcore::pkgcore. Each test carries
# the first folder below tests/ as a label, in addition to LABELS.
function(pkgcore_add_test)
  cmake_parse_arguments(PARSE_ARGV 0 arg "WHOLE" "NAME" "SOURCES;LIBRARIES;LABELS")
  if(NOT arg_NAME OR NOT arg_SOURCES OR arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "pkgcore_add_test needs NAME and SOURCES; not understood: '${arg_UNPARSED_ARGUMENTS}'")
  endif()
  if(NOT arg_LIBRARIES)
    set(arg_LIBRARIES pkgcore_objects)
  endif()

  add_executable(${arg_NAME} ${arg_SOURCES})
  target_link_libraries(${arg_NAME} PRIVATE ${arg_LIBRARIES} pkgcore_test_support_headers pkgcore_build_options
                                            GTest::gmock GTest::gtest_main)
  if(pkgcore_compiled_quickly)
    pkgcore_use_precompiled_headers(${arg_NAME} pkgcore_quick_test_headers)
  endif()

  pkgcore_folder_label(folder)
  set(labels ${folder} ${arg_LABELS})
  if("concurrent" IN_LIST labels)
    add_dependencies(pkgcore_concurrent_tests ${arg_NAME})
  endif()
  # Starting a program takes a tenth of a second, and longer with a sanitizer or the counters of coverage.
  if(arg_WHOLE OR PKGCORE_SANITIZE OR PKGCORE_COVERAGE OR PKGCORE_WHOLE_TESTS)
    set(seconds 1200)
    if(PKGCORE_WHOLE_TESTS)
      set(seconds ${PKGCORE_WHOLE_TESTS})
    endif()
    add_test(NAME ${arg_NAME} COMMAND ${arg_NAME} --gtest_brief=1)
    set_tests_properties(${arg_NAME} PROPERTIES LABELS "${labels}" TIMEOUT ${seconds})
    return()
  endif()

  # The names of parameterized tests are those that the test gives; printed values may be long, or alike.
  gtest_discover_tests(
    ${arg_NAME}
    TEST_PREFIX "${arg_NAME}/"
    TEST_LIST discovered_tests
    NO_PRETTY_VALUES
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 120
    PROPERTIES TIMEOUT 300)
  pkgcore_label_discovered_tests(${arg_NAME} "${labels}")
endfunction()

# Gives the tests that CTest has just discovered in a program their labels. gtest_discover_tests cannot: it flattens the list
# and keeps the first one alone.
function(pkgcore_label_discovered_tests name labels)
  set(label_file "${CMAKE_CURRENT_BINARY_DIR}/${name}_labels.cmake")
  file(CONFIGURE OUTPUT "${label_file}" @ONLY CONTENT [=[
if(discovered_tests)
  set_tests_properties(${discovered_tests} PROPERTIES LABELS "@labels@")
endif()
unset(discovered_tests)
]=])
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${label_file}")
endfunction()

# Sets <result> to the name of the first folder below tests/ that the caller stands in.
function(pkgcore_folder_label result)
  file(RELATIVE_PATH folder "${PROJECT_SOURCE_DIR}/tests" "${CMAKE_CURRENT_SOURCE_DIR}")
  string(REGEX REPLACE "/.*" "" folder "${folder}")
  set(${result} "${folder}" PARENT_SCOPE)
endfunction()

# For libraries of test support: the root of the repository as include path and the requirements of pkgcore's headers,
# without any object of it. What is tested is chosen by each test program.
add_library(pkgcore_test_support_headers INTERFACE)
target_link_libraries(pkgcore_test_support_headers INTERFACE pkgcore_headers)

# What most tests read and nothing else does as often. Compiled as programs are, and not optimized.
pkgcore_add_precompiled_headers(
  pkgcore_quick_test_headers
  LIBRARIES
  pkgcore_test_support_headers
  pkgcore_build_options
  GTest::gmock
  HEADERS
  <gtest/gtest.h>
  <boost/date_time/posix_time/posix_time.hpp>
  <algorithm>
  <fstream>
  <functional>
  <optional>
  <random>
  <thread>)
if(TARGET pkgcore_quick_test_headers)
  set_target_properties(pkgcore_quick_test_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
  target_compile_options(pkgcore_quick_test_headers PRIVATE -O0 ${CMAKE_CXX_COMPILE_OPTIONS_PIE})
endif()
