#include <pkgcore/util/TempdirGuard.hpp>

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/core/FailureText.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/util/TempNames.hpp>
#include <pkgcore/util/TempPlace.hpp>

namespace opc::util {

namespace {

Exception notCreated(const fl::filesystem::FsysExceptionBase& failure) {
    return Exception("Temporary directory could not be created. " + opc::detail::describeFailure(failure),
                     boost::system::error_code());
}

}  // namespace

TempdirGuard::TempdirGuard() : TempdirGuard(ustring()) {}

TempdirGuard::TempdirGuard(const ustring& directory, const ustring& prefix, const ustring& extension) {
    name_ = generateTempDir(anchored(directory), prefix, extension);
    owns_ = true;
}

TempdirGuard::~TempdirGuard() {
    if (!owns_) {
        return;
    }
    try {
        fl::filesystem::remove_all(name_);
    } catch (...) {
        // What could be deleted is: a destructor has nobody to tell about the rest.
    }
}

ustring TempdirGuard::getDirectoryName() const { return name_; }

void TempdirGuard::release() { owns_ = false; }

ustring TempdirGuard::generateTempDir(const ustring& directory, const ustring& prefix,
                                      const ustring& extension) const {
    ustring name = getTempName(directory, prefix, extension);
    try {
        fl::filesystem::create_directory(name);
    } catch (const fl::filesystem::FsysExceptionBase& failure) {
        throw notCreated(failure);
    }
    return name;
}

}  // namespace opc::util
