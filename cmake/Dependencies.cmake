# Third parties, all found as packages of the system.

set(PKGCORE_BOOST_VERSION 1.74)

find_package(Threads REQUIRED)
find_package(Boost ${PKGCORE_BOOST_VERSION} REQUIRED CONFIG COMPONENTS filesystem thread)

if(PKGCORE_PLATFORM STREQUAL "portable")
  find_package(ICU 70 REQUIRED COMPONENTS uc i18n)
  # A project that embeds this one gets the store in an SQLite database where its libraries are there.
  set(PKGCORE_SQLITE_VERSION 3.37)
  set(PKGCORE_XXHASH_VERSION 0.8)
  set(pkgcore_sqlite_default ON)
  if(NOT PROJECT_IS_TOP_LEVEL)
    find_package(SQLite3 ${PKGCORE_SQLITE_VERSION} QUIET)
    find_package(xxHash ${PKGCORE_XXHASH_VERSION} QUIET MODULE)
    if(NOT SQLite3_FOUND OR NOT xxHash_FOUND)
      set(pkgcore_sqlite_default OFF)
    endif()
  endif()
  option(PKGCORE_BUILD_SQLITE "Build pkgcore::sqlite, the store in an SQLite database" ${pkgcore_sqlite_default})
  if(PKGCORE_BUILD_SQLITE)
    find_package(SQLite3 ${PKGCORE_SQLITE_VERSION} REQUIRED)
    find_package(xxHash ${PKGCORE_XXHASH_VERSION} REQUIRED MODULE)
  endif()
elseif(NOT PKGCORE_PLATFORM STREQUAL "external")
  message(FATAL_ERROR "PKGCORE_PLATFORM is '${PKGCORE_PLATFORM}'; it must be 'portable' or 'external'")
endif()

if(PKGCORE_BUILD_TESTS)
  find_package(Boost ${PKGCORE_BOOST_VERSION} REQUIRED CONFIG COMPONENTS iostreams)
  find_package(GTest 1.12 REQUIRED CONFIG)
endif()

if(PKGCORE_BUILD_BENCHMARKS)
  find_package(benchmark REQUIRED CONFIG)
endif()
