# Every fuzz target.
add_custom_target(pkgcore_fuzzers)

# pkgcore_add_fuzzer(NAME <name> SOURCES <source>... CORPUS <folder> [LIBRARIES <target>...])
#
# SOURCES define LLVMFuzzerTestOneInput. With PKGCORE_FUZZ the program is a libFuzzer binary, and the test runs it over the
# seeds of CORPUS without mutation; otherwise it is a replay program for the same seeds, which needs no clang.
# LIBRARIES defaults to pkgcore_objects.
function(pkgcore_add_fuzzer)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;CORPUS" "SOURCES;LIBRARIES")
  if(NOT arg_NAME OR NOT arg_SOURCES OR NOT arg_CORPUS OR arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "pkgcore_add_fuzzer needs NAME, SOURCES and CORPUS; "
                        "not understood: '${arg_UNPARSED_ARGUMENTS}'")
  endif()
  if(NOT arg_LIBRARIES)
    set(arg_LIBRARIES pkgcore_objects)
  endif()
  cmake_path(ABSOLUTE_PATH arg_CORPUS NORMALIZE OUTPUT_VARIABLE corpus)
  if(NOT IS_DIRECTORY "${corpus}")
    message(FATAL_ERROR "the seeds of ${arg_NAME} are missing: no folder ${corpus}")
  endif()

  add_executable(${arg_NAME} ${arg_SOURCES})
  target_link_libraries(${arg_NAME} PRIVATE ${arg_LIBRARIES} pkgcore_test_support_headers pkgcore_build_options)
  add_dependencies(pkgcore_fuzzers ${arg_NAME})
  if(PKGCORE_FUZZ)
    # Coverage is that of the library alone: new ways through the checks are nothing to search for, and counting takes time.
    target_compile_options(${arg_NAME} PRIVATE -fno-sanitize=fuzzer-no-link)
    target_link_options(${arg_NAME} PRIVATE -fsanitize=fuzzer)
    add_test(NAME ${arg_NAME}/corpus COMMAND ${arg_NAME} -runs=0 "${corpus}")
    # scripts/fuzz reads where the seeds are.
    file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/${arg_NAME}.corpus" "${corpus}\n")
  else()
    target_link_libraries(${arg_NAME} PRIVATE corpus_replay)
    add_test(NAME ${arg_NAME}/corpus COMMAND ${arg_NAME} "${corpus}")
  endif()
  set_tests_properties(${arg_NAME}/corpus PROPERTIES LABELS fuzz TIMEOUT 300)
endfunction()
