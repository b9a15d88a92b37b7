#pragma once

#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

#include <gtest/gtest.h>

#include <string>

namespace contract {

/// The local back end with its protected operations in reach.
class OpenLocalOps : public opc::LocalFileSystemOps {
public:
    using LocalFileSystemOps::doAppendPath;
    using LocalFileSystemOps::doCopy;
    using LocalFileSystemOps::doCreateFolder;
    using LocalFileSystemOps::doCreateFolders;
    using LocalFileSystemOps::doCreateInputStream;
    using LocalFileSystemOps::doCreateOutputStream;
    using LocalFileSystemOps::doCreateSymlink;
    using LocalFileSystemOps::doExists;
    using LocalFileSystemOps::doGetExtension;
    using LocalFileSystemOps::doGetFilename;
    using LocalFileSystemOps::doGetFiles;
    using LocalFileSystemOps::doGetLastModifiedTime;
    using LocalFileSystemOps::doGetLinkTarget;
    using LocalFileSystemOps::doGetLocalPath;
    using LocalFileSystemOps::doGetParentPath;
    using LocalFileSystemOps::doGetPermissions;
    using LocalFileSystemOps::doGetTempName;
    using LocalFileSystemOps::doIsAbsolutePath;
    using LocalFileSystemOps::doIsFile;
    using LocalFileSystemOps::doIsFolder;
    using LocalFileSystemOps::doIsSymlink;
    using LocalFileSystemOps::doNormalizePath;
    using LocalFileSystemOps::doRemove;
    using LocalFileSystemOps::doRemoveAll;
    using LocalFileSystemOps::doRename;
    using LocalFileSystemOps::doSetLastModifiedTime;
    using LocalFileSystemOps::doSetPermissions;
};

/// The local back end on a scripted platform, with out-parameters that already hold something: a success must
/// leave it.
struct LocalFixture {
    using Calls = scripted::Calls;
    using Code = boost::system::error_code;

    static inline const std::string kOldMessage = "what stood here before";
    static inline const Code kOldCode{4711, boost::system::system_category()};

    scripted::Platform platform;
    OpenLocalOps ops;
    std::string msg = kOldMessage;
    Code ec = kOldCode;

    void expectNothingReported() const {
        EXPECT_EQ(msg, kOldMessage);
        EXPECT_EQ(ec, kOldCode);
    }

    void expectReported(boost::system::errc::errc_t code, const std::string& message) const {
        EXPECT_EQ(msg, message);
        EXPECT_EQ(ec, boost::system::errc::make_error_code(code));
        EXPECT_EQ(ec.category(), boost::system::generic_category());
        EXPECT_TRUE(ec.failed());
    }
};

class LocalContract : public testing::Test, protected LocalFixture {};

}  // namespace contract
