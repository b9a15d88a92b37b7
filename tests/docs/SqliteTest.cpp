// providers/sqlite.md

#include <pkgcore/pkgcore.hpp>

#include "sqlite/opening.includes.inc"

#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

TEST(SqliteStores, AreOpenedWithOptions) {
    const test::TempTree tree;
    test::runInChild([&tree] {
        ASSERT_EQ(::chdir(tree.path().c_str()), 0);
#include "sqlite/opening.inc"
        opc::FileSystemOpsSelector(storage).getVirtual().createFolders(u"sqlite://notes/a/b");
        EXPECT_TRUE(test::isThere(tree / "notes.db"));
#include "sqlite/compacting.inc"
        EXPECT_TRUE(opc::FileSystemOpsSelector(storage).getVirtual().exists(u"sqlite://notes/a/b"));
    });
}

}  // namespace
