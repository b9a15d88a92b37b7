# `cpack -G DEB` in a build folder: one package with the library, one with the store in an SQLite database, so that only its
# users need SQLite, and one with what is needed to build against them. Configure with
# -DCMAKE_INSTALL_PREFIX=/usr for Debian's folder of the architecture.

set(CPACK_GENERATOR DEB)
set(CPACK_SOURCE_IGNORE_FILES "/build/" "/\\\\.git/")
set(CPACK_PACKAGE_VENDOR "pkgcore maintainers")
set(CPACK_PACKAGE_CONTACT "pkgcore maintainers <maintainers@pkgcore.invalid>")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL pkgcore_runtime pkgcore_development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_COMPONENT_PKGCORE_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION}: shared library")
set(CPACK_DEBIAN_PKGCORE_RUNTIME_PACKAGE_NAME "libpkgcore${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_PKGCORE_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PKGCORE_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

# Time zones come from the system's database.
set(CPACK_DEBIAN_PKGCORE_RUNTIME_PACKAGE_RECOMMENDS tzdata)

set(CPACK_COMPONENT_PKGCORE_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION}: headers, CMake package, pkg-config files")
set(CPACK_DEBIAN_PKGCORE_DEVELOPMENT_PACKAGE_NAME libpkgcore-dev)
set(CPACK_DEBIAN_PKGCORE_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(pkgcore_debian_libraries "${CPACK_DEBIAN_PKGCORE_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")

if(PKGCORE_BUILD_SQLITE)
  list(APPEND CPACK_COMPONENTS_ALL pkgcore_sqlite_runtime)
  set(CPACK_COMPONENT_PKGCORE_SQLITE_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION}: a store in an SQLite database")
  set(CPACK_DEBIAN_PKGCORE_SQLITE_RUNTIME_PACKAGE_NAME "libpkgcore-sqlite${PROJECT_VERSION_MAJOR}")
  set(CPACK_DEBIAN_PKGCORE_SQLITE_RUNTIME_PACKAGE_SECTION libs)
  set(CPACK_DEBIAN_PKGCORE_SQLITE_RUNTIME_PACKAGE_SHLIBDEPS ON)
  # The library that it stands on is in no package yet; the line below names that package.
  get_target_property(pkgcore_library_dir pkgcore BINARY_DIR)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${pkgcore_library_dir}")
  set(CPACK_DEBIAN_PKGCORE_SQLITE_RUNTIME_PACKAGE_DEPENDS "${pkgcore_debian_libraries}")
  list(APPEND pkgcore_debian_libraries
       "${CPACK_DEBIAN_PKGCORE_SQLITE_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
endif()

string(
  JOIN ", " CPACK_DEBIAN_PKGCORE_DEVELOPMENT_PACKAGE_DEPENDS
  ${pkgcore_debian_libraries}
  "libboost-dev (>= ${PKGCORE_BOOST_VERSION})"
  libboost-filesystem-dev
  libboost-thread-dev)

# Debian wants the license in each package, under the package's name. Only the packages have these.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" upper)
  install(
    FILES "${PROJECT_SOURCE_DIR}/LICENSE"
    DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}"
    RENAME copyright
    COMPONENT ${component}
    EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
