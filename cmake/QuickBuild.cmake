# What shortens builds with sanitizers, in which compiling takes longest.

# For a folder of programs that, with sanitizers, take longer to compile than to run: these are not optimized there, the library
# is. Tests of the folder use the precompiled headers of such tests, see Testing.cmake.
macro(pkgcore_compile_quickly_with_sanitizers)
  if(PKGCORE_SANITIZE)
    add_compile_options(-O0)
    set(pkgcore_compiled_quickly ON)
  endif()
endmacro()

# pkgcore_add_precompiled_headers(<name> LIBRARIES <target>... HEADERS <header>...)
#
# Headers of the standard library and of third parties, compiled once with the options that LIBRARIES bring. Only with sanitizers:
# the sources have their own includes, and the other builds, which compile them without, find a missing one.
# -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON does without everywhere.
function(pkgcore_add_precompiled_headers name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBRARIES;HEADERS")
  if(NOT PKGCORE_SANITIZE)
    return()
  endif()
  set(source "${PROJECT_BINARY_DIR}/${name}.cpp")
  file(CONFIGURE OUTPUT "${source}" CONTENT "")
  add_library(${name} OBJECT "${source}")
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
  target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
  # A cache of the compiler knows them again then.
  target_compile_options(${name} PRIVATE "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")
endfunction()

# pkgcore_use_precompiled_headers(<target> <name>): where there are such headers. The target is compiled with the same options.
function(pkgcore_use_precompiled_headers target name)
  if(TARGET ${name})
    target_precompile_headers(${target} REUSE_FROM ${name})
  endif()
endfunction()
