// Two stores that show one place: what is moved or copied from one to the other is the item itself.

#include <pkgcore/portable/storage/providers/folder/FolderProvider.hpp>

#include "tests/e2e/VirtualTest.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"

#include <string>

namespace test {

namespace {

using foundation::storage::provider::makeFolderProvider;

/// A folder that file:///, box://whole and, from its subfolder d on, box://inner show.
class VirtualOverlap : public ::testing::Test {
protected:
    VirtualOverlap() {
        makeFile(tree_ / "a", "text");
        makeFile(tree_ / "d/f", "more");
        makeFile(tree_ / "d/e/g", "deep");
    }

    opc::ustring file(const opc::ustring& name) const {
        return ops_.normalizePath(text(tree_.path())) + u"/" + name;
    }

    void rename(const opc::ustring& from, const opc::ustring& to) const { ops_.rename(from, to); }

    template <typename Operation>
    void expectRefused(Operation operation) const {
        const TreeSnapshot before = snapshot(tree_.path());
        boost::system::error_code ec;
        operation(ec);
        EXPECT_EQ(ec, errc::operation_not_supported);
        EXPECT_EQ(before, snapshot(tree_.path()));
    }

    void refuseCopy(const opc::ustring& from, const opc::ustring& to) const {
        expectRefused([&](auto& ec) { ops_.copy(from, to, opc::Replace, ec); });
    }
    void refuseRename(const opc::ustring& from, const opc::ustring& to) const {
        expectRefused([&](auto& ec) { ops_.rename(from, to, ec); });
    }

    static foundation::storage::vfs::StorageSystemReference storageOver(const TempTree& tree) {
        makeFolder(tree / "d");
        makeFolder(tree / "d/e");
        return foundation::storage::vfs::StorageSystemBuilder()
            .mount(u"box", u"whole", makeFolderProvider(text(tree.path())))
            .mount(u"box", u"inner", makeFolderProvider(text(tree / "d")))
            .build();
    }

    TempTree tree_{fastFolder()};
    opc::FileSystemOpsSelector selector_{storageOver(tree_)};
    opc::FileSystemOps& ops_ = selector_.getVirtual();
};

TEST_F(VirtualOverlap, NothingIsMovedOntoItself) {
    const TreeSnapshot before = snapshot(tree_.path());
    rename(u"box://whole/a", file(u"a"));
    rename(file(u"a"), u"box://whole/a");
    rename(u"box://whole/d", file(u"d"));
    rename(u"box://whole/d/e", u"box://inner/e");
    rename(u"box://inner/f", u"box://whole/d/f");
    EXPECT_EQ(before, snapshot(tree_.path()));
}

TEST_F(VirtualOverlap, NothingIsCopiedOntoItself) {
    refuseCopy(u"box://whole/a", file(u"a"));
    refuseCopy(u"box://whole/d", file(u"d"));
    refuseCopy(u"box://inner/e", u"box://whole/d/e");
}

TEST_F(VirtualOverlap, NoFolderGoesBelowItself) {
    refuseCopy(u"box://whole/d", file(u"d/e/new"));
    refuseRename(u"box://whole/d", file(u"d/e/new"));
    refuseCopy(file(u"d"), u"box://inner/new");
    refuseRename(file(u"d"), u"box://inner/new");
}

TEST_F(VirtualOverlap, NothingTakesThePlaceOfWhatHoldsIt) {
    refuseCopy(u"box://whole/d/e", file(u"d"));
    refuseRename(u"box://inner/e", file(u"d"));
}

TEST_F(VirtualOverlap, ACopyThatCannotSeeItsWayIntoItselfEnds) {
    makeLink((tree_ / "d/e"), tree_ / "link");
    boost::system::error_code ec;
    ops_.copy(u"box://whole/d", file(u"link/../new"), opc::Fail,
              ec);  // dot segments go first: beside the link
    EXPECT_FALSE(ec.failed()) << ec.message();
    refuseCopy(u"box://whole/d", file(u"link/new"));
}

TEST_F(VirtualOverlap, OtherItemsGoFromOneToTheOther) {
    rename(u"box://whole/a", file(u"d/a"));
    EXPECT_EQ("text", contentOf(tree_ / "d/a"));
    EXPECT_FALSE(isThere(tree_ / "a"));
    rename(u"box://inner/e", file(u"e"));
    EXPECT_EQ("deep", contentOf(tree_ / "e/g"));
    EXPECT_FALSE(isThere(tree_ / "d/e"));
}

}  // namespace

}  // namespace test
