#include <pkgcore/util/TempNames.hpp>

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/filesystem/PathHelpers.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/platform/filesystem/Temporary.hpp>
#include <pkgcore/util/TempPlace.hpp>

namespace opc::util {

namespace fsys = fl::filesystem;

namespace {

ustring systemTempDir() {
    const ustring known = fsys::temp_directory_name();
    return known.empty() ? fsys::get_current_path() : known;
}

ustring drawFreeName(const TempPlace& place) {
    ustring name;
    do {
        name = fsys::tmpnam(place.directory, place.prefix, place.extension);
    } while (fsys::exists(name));
    return name;
}

}  // namespace

ustring getTempDir() {
    try {
        return opc::detail::normalizePath(systemTempDir());
    } catch (const fsys::FsysExceptionBase& failure) {
        throw Exception(failure.what(), boost::system::error_code());
    }
}

ustring getTempName(const ustring& directory, const ustring& prefix, const ustring& extension) {
    return opc::detail::normalizePath(drawFreeName(withDefaults(directory, prefix, extension)));
}

}  // namespace opc::util
