#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/core/Ustring.hpp>

namespace opc::util {

/// A temporary folder with the lifetime of this object: created under a name that nobody had, and deleted at
/// the end with everything in it unless it was released. Links in it are removed, never followed. One thread
/// uses a guard.
class PKGCORE_API TempdirGuard {
public:
    /// In the system's temporary folder, with the prefix "." and the extension ".tmp".
    TempdirGuard();

    /// Creates the folder in `directory`; empty arguments stand for the defaults above. A relative directory
    /// means the one that it names now: a later change of the working directory does not matter. A folder
    /// that somebody else makes under the same name in between is a failure, never adopted. The folder has
    /// the permissions that the mask of the process leaves a new folder.
    ///
    /// A folder that cannot be created is opc::Exception: "Temporary directory could not be created. ", the
    /// platform library's text and the path, with a cleared code. A name that cannot be drawn leaves as
    /// getTempName throws it. No folder is left then.
    explicit TempdirGuard(const ustring& directory, const ustring& prefix = ustring(),
                          const ustring& extension = ustring());
    TempdirGuard(const TempdirGuard&) = delete;
    TempdirGuard& operator=(const TempdirGuard&) = delete;

    /// Deletes the folder with all that it holds unless released; failures are silent.
    ~TempdirGuard();

    /// The full path, also after release().
    ustring getDirectoryName() const;

    /// Leaves the folder on the disk for good.
    void release();

private:
    ustring generateTempDir(const ustring& directory, const ustring& prefix, const ustring& extension) const;

    bool owns_ = false;
    ustring name_;
};

}  // namespace opc::util
