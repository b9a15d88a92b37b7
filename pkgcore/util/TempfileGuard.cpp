#include <pkgcore/util/TempfileGuard.hpp>

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/filesystem/PathHelpers.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/platform/filesystem/Temporary.hpp>
#include <pkgcore/util/TempPlace.hpp>

#include <cstdio>

namespace opc::util {

namespace {

void removeQuietly(const ustring& name) noexcept {
    try {
        fl::filesystem::remove(name);
    } catch (...) {
        // It is gone already, or cannot be deleted: whoever asks for this has nobody to tell.
    }
}

/// The file is there by now, and would stay if its name could not be kept.
ustring normalizedOrRemoved(const ustring& name) {
    try {
        return opc::detail::normalizePath(name);
    } catch (...) {
        removeQuietly(name);
        throw;
    }
}

}  // namespace

TempfileGuard::TempfileGuard() : TempfileGuard(ustring()) {}

TempfileGuard::TempfileGuard(const ustring& directory, const ustring& prefix, const ustring& extension) {
    name_ = generateTempFile(anchored(directory), prefix, extension);
    owns_ = true;
}

TempfileGuard::~TempfileGuard() {
    if (owns_) {
        removeQuietly(name_);
    }
}

ustring TempfileGuard::getFileName() const { return name_; }

void TempfileGuard::release() { owns_ = false; }

ustring TempfileGuard::generateTempFile(const ustring& directory, const ustring& prefix,
                                        const ustring& extension) const {
    const TempPlace place = withDefaults(directory, prefix, extension);
    ustring name;
    std::FILE* const file = fl::filesystem::tmpfile(name, place.directory, place.prefix, place.extension);
    if (file == nullptr) {
        throw Exception("Temp file could not be created", boost::system::error_code());
    }
    static_cast<void>(std::fclose(file));  // nothing was written that could be lost
    return normalizedOrRemoved(name);
}

}  // namespace opc::util
