#pragma once

#include <pkgcore/core/Ustring.hpp>

namespace opc::util {

/// The defaults of everything temporary: getTempDir() for an empty directory, "." for an empty prefix, ".tmp"
/// for an empty extension.
struct TempPlace {
    ustring directory;
    ustring prefix;
    ustring extension;
};
TempPlace withDefaults(const ustring& directory, const ustring& prefix, const ustring& extension);

/// A relative directory with the working directory put in front of it, so that what is made there can be
/// found again after the working directory has changed. Empty stays empty.
ustring anchored(const ustring& directory);

}  // namespace opc::util
