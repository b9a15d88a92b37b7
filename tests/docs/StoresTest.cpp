// providers.md, but for its conformance suite.

#include <pkgcore/pkgcore.hpp>

#include "providers/faults.includes.inc"
#include "providers/mounting.includes.inc"

#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

namespace {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

TEST(Stores, AreMountedUnderSchemes) {
    const test::TempTree tree;
    const opc::ustring folder = tree.text("");
#include "providers/mounting.inc"
    selector.getVirtual().createFolders(u"mem://anything/a/b");
    selector.getVirtual().createFolder(u"box://inbox/a");
    EXPECT_TRUE(selector.getLocal().isFolder(tree.text("a")));
}

TEST(Stores, FailWhenTheyAreToldTo) {
#include "providers/faults.inc"
    opc::FileSystemOpsSelector selector(vfs::StorageSystemBuilder().mount(u"mem", store).build());
    opc::FileSystemOps& files = selector.getVirtual();
    const std::string large(1U << 20U, 'x');
    const auto stream = files.createOutputStream(u"mem://notes/a", 0);
    for (int i = 0; i < 3; ++i) stream->write(large.data(), static_cast<std::streamsize>(large.size()));
    EXPECT_FALSE(stream->flush());
    EXPECT_EQ(store->struck(), 1U);
    EXPECT_FALSE(files.exists(u"mem://notes/a"));
    EXPECT_EQ(reads, 0U);
}

}  // namespace
