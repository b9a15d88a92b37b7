#include "ScratchFolder.hpp"

namespace tour {

namespace {

constexpr auto kOwnerOnly = static_cast<opc::Perms::Perms_tag>(
    opc::Perms::OwnerRead | opc::Perms::OwnerWrite | opc::Perms::OwnerExecute);

}  // namespace

// Two constructors: once the inner one has made the folder, the destructor runs even if what follows throws.
ScratchFolder::ScratchFolder(opc::FileSystemOps& files)
    : ScratchFolder(files, opc::util::getTempName({}, u"pkgcore-tour-", {})) {
    // What lay in a private folder must not be readable for everybody in the temporary one.
    files_.setPermissions(path_, kOwnerOnly);
}

ScratchFolder::ScratchFolder(opc::FileSystemOps& files, const opc::ustring& path)
    : files_(files), path_(path) {
    // Fails if anything is there: what somebody else made in the meantime is never adopted, and so never
    // removed.
    files_.createFolder(path_);
}

ScratchFolder::~ScratchFolder() {
    boost::system::error_code
        ignored;  // usually "not found": the tour removes the folder itself, as its last step
    files_.removeAll(path_, ignored);
}

}  // namespace tour
