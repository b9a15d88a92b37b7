# Third parties, all found as packages of the system.

set(PKGCORE_BOOST_VERSION 1.74)

find_package(Threads REQUIRED)
find_package(Boost ${PKGCORE_BOOST_VERSION} REQUIRED CONFIG COMPONENTS filesystem thread)

if(PKGCORE_PLATFORM STREQUAL "portable")
  find_package(ICU 70 REQUIRED COMPONENTS uc i18n)
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
