#include <pkgcore/util/TempPlace.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Temporary.hpp>
#include <pkgcore/platform/path/PathSyntax.hpp>
#include <pkgcore/util/TempNames.hpp>

namespace opc::util {

namespace path = fl::filesystem::detail;

TempPlace withDefaults(const ustring& directory, const ustring& prefix, const ustring& extension) {
    return {directory.empty() ? getTempDir() : directory, prefix.empty() ? u"." : prefix,
            extension.empty() ? u".tmp" : extension};
}

ustring anchored(const ustring& directory) {
    if (directory.empty() || path::is_absolute(path::make_native_form(directory, true))) {
        return directory;
    }
    try {
        return path::concatenate_pathname(fl::filesystem::get_current_path(), directory, true);
    } catch (const fl::filesystem::FsysExceptionBase&) {
        return directory;  // a working directory that is gone: making the item there says what is wrong
    }
}

}  // namespace opc::util
