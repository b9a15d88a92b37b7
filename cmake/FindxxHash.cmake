# Finds xxHash and defines the target xxHash::xxHash; Debian ships no CMake package of it.

find_path(xxHash_INCLUDE_DIR xxhash.h)
find_library(xxHash_LIBRARY xxhash)
mark_as_advanced(xxHash_INCLUDE_DIR xxHash_LIBRARY)

if(xxHash_INCLUDE_DIR)
  set(xxHash_VERSION "")
  foreach(part IN ITEMS MAJOR MINOR RELEASE)
    file(STRINGS "${xxHash_INCLUDE_DIR}/xxhash.h" line REGEX "^#define XXH_VERSION_${part} +[0-9]+" LIMIT_COUNT 1)
    string(REGEX MATCH "[0-9]+ *$" number "${line}")
    string(STRIP "${number}" number)
    list(APPEND xxHash_VERSION "${number}")
  endforeach()
  list(JOIN xxHash_VERSION "." xxHash_VERSION)
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(
  xxHash
  REQUIRED_VARS xxHash_LIBRARY xxHash_INCLUDE_DIR
  VERSION_VAR xxHash_VERSION)

if(xxHash_FOUND AND NOT TARGET xxHash::xxHash)
  add_library(xxHash::xxHash UNKNOWN IMPORTED)
  set_target_properties(xxHash::xxHash PROPERTIES IMPORTED_LOCATION "${xxHash_LIBRARY}" INTERFACE_INCLUDE_DIRECTORIES
                                                                                        "${xxHash_INCLUDE_DIR}")
endif()
