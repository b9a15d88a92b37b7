#pragma once

#include <pkgcore/pkgcore.hpp>

namespace tour {

/// A new folder of our own in the system's temporary folder, removed with everything in it when the owner
/// goes.
class ScratchFolder {
public:
    explicit ScratchFolder(opc::FileSystemOps& files);
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    const opc::ustring& path() const { return path_; }

private:
    ScratchFolder(opc::FileSystemOps& files, const opc::ustring& path);

    opc::FileSystemOps& files_;
    opc::ustring path_;
};

}  // namespace tour
