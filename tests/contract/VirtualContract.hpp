#pragma once

#include <pkgcore/filesystem/VirtualFileSystemOps.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/platform/storage/Existence.hpp>

#include "tests/contract/OpenOps.hpp"
#include "tests/contract/OutParameters.hpp"
#include "tests/support/scripted_platform/Platform.hpp"

#include <gtest/gtest.h>

#include <string>

namespace contract {

using OpenVirtualOps = OpenOps<opc::VirtualFileSystemOps>;

inline constexpr auto kFile = foundation::storage::vfs::ExistenceType::File;
inline constexpr auto kFolder = foundation::storage::vfs::ExistenceType::Folder;
inline constexpr auto kNothing = foundation::storage::vfs::ExistenceType::Nothing;

/// A failure of the storage system at u"p".
inline foundation::storage::vfs::Exception storageFailure(
    foundation::storage::vfs::ErrorCode code = foundation::storage::vfs::ErrorCode::AccessDenied) {
    using foundation::storage::vfs::AbsoluteIRI;
    using foundation::storage::vfs::CheckedIRI;
    return {code, "words", AbsoluteIRI(CheckedIRI{u"p"})};
}

/// The virtual back end on a scripted platform, with a storage system of the name S.
struct VirtualFixture : OutParameters {
    using Calls = scripted::Calls;

    scripted::Platform platform;
    scripted::StorageScript& storage = platform.storage;
    OpenVirtualOps ops{scripted::storageSystem("S")};

    /// What is at the canonical form of a path.
    void place(const std::u16string& path, foundation::storage::vfs::ExistenceType existence) const {
        storage.exists.at(u"canonical(" + path + u")").returns(existence);
    }

    void expectNotFound(const std::string& path) const {
        expectReported(boost::system::errc::no_such_file_or_directory,
                       "words for code 4: user(canonical(" + path + "))");
    }
};

class VirtualContract : public testing::Test, protected VirtualFixture {};

}  // namespace contract
