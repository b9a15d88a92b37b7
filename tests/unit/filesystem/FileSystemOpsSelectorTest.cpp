// The selector over the library's own platform: which paths are IRIs is decided by their schemes.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include <gtest/gtest.h>

#include <utility>

using opc::FileSystemOpsSelector;

namespace {

TEST(FileSystemOpsSelector, GivesTheLocalBackEndForNativePaths) {
    const FileSystemOpsSelector selector;
    for (const char16_t* path :
         {u"", u"/", u"a/b", u"C:\\a", u"//server/share", u"http://a", u"mem:/a", u"/mem://a"}) {
        EXPECT_EQ(&selector.getForPath(path), &selector.getLocal()) << testing::PrintToString(path);
    }
}

TEST(FileSystemOpsSelector, RefusesIRIsWithoutVirtualStorage) {
    const FileSystemOpsSelector selector;
    for (const char16_t* path :
         {u"mem://store/a", u"FILE:///a", u"sqlite://notes", u"s3://", u"zip://a", u"dav://a"}) {
        EXPECT_THROW(selector.getForPath(path), opc::Exception) << testing::PrintToString(path);
    }
}

TEST(FileSystemOpsSelector, HandsOutABackEndThatWorks) {
    const FileSystemOpsSelector selector;
    opc::FileSystemOps& local = selector.getForPath(u"/a/b.c");
    EXPECT_EQ(local.getFilename(u"/a/b.c"), u"b.c");
    EXPECT_EQ(local.appendPath(u"/a/", u"/b"), u"/a/b");
    EXPECT_EQ(local.appendPath(u"/a/", u"//b"), u"/a/b");
    EXPECT_TRUE(local.isFolder(u"/"));
}

TEST(LocalFileSystemOps, WorksAfterItWasCopiedAndMoved) {
    opc::LocalFileSystemOps first;
    opc::LocalFileSystemOps second(first);
    second = first;
    opc::LocalFileSystemOps third(std::move(second));
    third = std::move(first);
    EXPECT_TRUE(third.isFolder(u"/"));
}

}  // namespace
