#pragma once

// Everything that a client of the library needs to work with files; the headers can be taken one by one as well.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/core/StringConversions.hpp>
#include <pkgcore/core/Ustring.hpp>
#include <pkgcore/filesystem/FileSystemOps.hpp>
#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/filesystem/PathHelpers.hpp>
#include <pkgcore/util/TempNames.hpp>
