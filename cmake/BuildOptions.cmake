# pkgcore_build_options: warnings and instrumentation of everything that this project compiles. It is linked privately and
# never installed. Whether a warning is an error is the business of the presets alone.

add_library(pkgcore_build_options INTERFACE)

set(pkgcore_gnu_like "$<CXX_COMPILER_ID:GNU,Clang,AppleClang>")

target_compile_options(
  pkgcore_build_options
  INTERFACE
    "$<${pkgcore_gnu_like}:-Wall;-Wextra;-Wpedantic;-Wshadow;-Wconversion;-Wsign-conversion;-Wold-style-cast>"
    "$<${pkgcore_gnu_like}:-Wnon-virtual-dtor;-Woverloaded-virtual;-Wcast-align;-Wformat=2;-Wundef;-Wextra-semi>"
    "$<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond;-Wduplicated-branches;-Wlogical-op>"
    "$<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wimplicit-fallthrough;-Wunreachable-code>"
    "$<$<CXX_COMPILER_ID:MSVC>:/W4;/permissive-;/utf-8>")

# Cheap checks of the standard library's preconditions; unlike _GLIBCXX_DEBUG they leave the layout of its types alone.
target_compile_definitions(pkgcore_build_options INTERFACE "$<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>")

if(PKGCORE_SANITIZE)
  list(JOIN PKGCORE_SANITIZE "," pkgcore_sanitizers)
  target_compile_options(
    pkgcore_build_options INTERFACE -fsanitize=${pkgcore_sanitizers} -fno-sanitize-recover=all
                                    -fno-omit-frame-pointer)
  target_link_options(pkgcore_build_options INTERFACE -fsanitize=${pkgcore_sanitizers})
endif()

if(PKGCORE_COVERAGE)
  # Counters that can be moved into a mapped file, so that a process which is killed has counted.
  target_compile_options(
    pkgcore_build_options INTERFACE -fprofile-instr-generate -fcoverage-mapping "SHELL:-mllvm -runtime-counter-relocation")
  target_link_options(pkgcore_build_options INTERFACE -fprofile-instr-generate)
endif()

if(PKGCORE_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "PKGCORE_FUZZ needs clang: libFuzzer is part of it")
  endif()
  target_compile_options(pkgcore_build_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
