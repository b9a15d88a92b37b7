# Installation: the library, its public headers, a CMake package that other projects find with find_package(pkgcore), and files
# for pkg-config.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)
include(PkgConfig)

set(pkgcore_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/pkgcore")

install(
  TARGETS pkgcore
  EXPORT pkgcoreTargets
  RUNTIME COMPONENT pkgcore_runtime
  LIBRARY COMPONENT pkgcore_runtime NAMELINK_COMPONENT pkgcore_development
  ARCHIVE COMPONENT pkgcore_development
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT pkgcore_development)

if(PKGCORE_BUILD_SQLITE)
  install(
    TARGETS pkgcore_sqlite
    EXPORT pkgcoreTargets
    RUNTIME COMPONENT pkgcore_sqlite_runtime
    LIBRARY COMPONENT pkgcore_sqlite_runtime NAMELINK_COMPONENT pkgcore_development
    ARCHIVE COMPONENT pkgcore_development
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT pkgcore_development)
endif()

install(
  EXPORT pkgcoreTargets
  NAMESPACE pkgcore::
  DESTINATION "${pkgcore_package_dir}"
  COMPONENT pkgcore_development)

configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/pkgcoreConfig.cmake.in" "${PROJECT_BINARY_DIR}/pkgcoreConfig.cmake"
  INSTALL_DESTINATION "${pkgcore_package_dir}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/pkgcoreConfigVersion.cmake"
  VERSION "${PROJECT_VERSION}"
  COMPATIBILITY SameMajorVersion)
install(
  FILES "${PROJECT_BINARY_DIR}/pkgcoreConfig.cmake" "${PROJECT_BINARY_DIR}/pkgcoreConfigVersion.cmake"
  DESTINATION "${pkgcore_package_dir}"
  COMPONENT pkgcore_development)

pkgcore_install_pkg_config(pkgcore pkgcore_development)
if(PKGCORE_BUILD_SQLITE)
  pkgcore_install_pkg_config(pkgcore-sqlite pkgcore_development)
endif()

# Each Debian package has a copy of its own, see DebianPackages.cmake.
install(
  FILES "${PROJECT_SOURCE_DIR}/LICENSE"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}"
  COMPONENT pkgcore_license)

if(PROJECT_IS_TOP_LEVEL)
  include(DebianPackages)
endif()
