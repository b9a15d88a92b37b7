#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/core/Ustring.hpp>

namespace opc::util {

/// A temporary file with the lifetime of this object: created empty and readable for its owner alone, under a
/// name that nobody had, and deleted at the end unless it was released. One thread uses a guard.
class PKGCORE_API TempfileGuard {
public:
    /// In the system's temporary folder, with the prefix "." and the extension ".tmp".
    TempfileGuard();

    /// Creates the file in `directory`; empty arguments stand for the defaults above. A relative directory
    /// means the one that it names now: a later change of the working directory does not matter.
    ///
    /// Failures leave as the platform library threw them, those of getTempDir() and a file without a stream
    /// ("Temp file could not be created") as opc::Exception with a cleared code. No file is left then.
    explicit TempfileGuard(const ustring& directory, const ustring& prefix = ustring(),
                           const ustring& extension = ustring());
    TempfileGuard(const TempfileGuard&) = delete;
    TempfileGuard& operator=(const TempfileGuard&) = delete;

    /// Deletes the file unless released; a failure to do so is silent, and a folder that somebody put in the
    /// file's place is left alone unless it is empty.
    ~TempfileGuard();

    /// The full path, also after release().
    ustring getFileName() const;

    /// Leaves the file on the disk for good.
    void release();

private:
    ustring generateTempFile(const ustring& directory, const ustring& prefix, const ustring& extension) const;

    bool owns_ = false;
    ustring name_;
};

}  // namespace opc::util
