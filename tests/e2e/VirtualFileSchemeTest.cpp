// The scheme "file": the items of the real disk, by their IRIs, beside the local back end.

#include "tests/e2e/LocalTest.hpp"
#include "tests/e2e/VirtualTest.hpp"

namespace test {

namespace {

using Files = std::vector<opc::ustring>;

class VirtualFileScheme : public VirtualTest {
protected:
    NoDescriptorLeft noDescriptorLeft;
    TempTree tree;
    opc::FileSystemOps& local = selector.getLocal();

    opc::ustring iri(std::string_view name) const { return ops.normalizePath(tree.text(name)); }
};

TEST_F(VirtualFileScheme, GivesEveryNameOnTheDiskAnIRIAndBack) {
    for (const OddName& name : oddNames()) {
        SCOPED_TRACE(testing::PrintToString(name.onDisk));
        const opc::ustring path = tree.text(name.asText);
        const opc::ustring iri = ops.normalizePath(path);
        write(iri, "text");
        EXPECT_EQ(contentOf(tree / name.onDisk), "text");
        EXPECT_EQ(ops.getFilename(iri), name.asText);
        EXPECT_EQ(files(ops.normalizePath(tree.text("")), false), Files{iri});
        opc::ustring back;
        EXPECT_TRUE(ops.getLocalPath(iri, back));
        EXPECT_EQ(back, path);
        EXPECT_TRUE(local.isFile(back));
        ops.remove(iri);
        EXPECT_FALSE(isThere(tree / name.onDisk));
    }
}

TEST_F(VirtualFileScheme, JoinsPlainNames) {
    const opc::ustring top = ops.normalizePath(tree.text(""));
    for (const OddName& name : oddNames()) {
        EXPECT_EQ(ops.appendPath(top, name.asText), ops.normalizePath(tree.text(name.asText)))
            << testing::PrintToString(name.onDisk);
    }
}

TEST_F(VirtualFileScheme, AndTheLocalBackEndSeeTheSameFiles) {
    makeTree(iri("tree"));
    EXPECT_TRUE(local.isFolder(tree.text("tree/sub/deep")));
    EXPECT_EQ(contentOf(tree / "tree/sub/b"), "B");
    *local.createOutputStream(tree.text("tree/sub/b"), 0) << "local" << std::flush;
    EXPECT_EQ(read(iri("tree/sub/b")), "local");
    EXPECT_EQ(files(iri("tree"), true), (Files{iri("tree/a"), iri("tree/sub/b"), iri("tree/sub/deep/c")}));
}

TEST_F(VirtualFileScheme, CopiesBetweenTheDiskAndAnotherStore) {
    makeTree(iri("tree"));
    ops.copy(iri("tree"), u"mem://store/tree", opc::Fail);
    EXPECT_EQ(read(u"mem://store/tree/sub/deep/c"), "C");
    ops.rename(u"mem://store/tree", iri("back"));
    EXPECT_EQ(contentOf(tree / "back/sub/deep/c"), "C");
    EXPECT_FALSE(ops.exists(u"mem://store/tree"));
    EXPECT_EQ(contentOf(tree / "tree/a"), "A");
}

TEST_F(VirtualFileScheme, TakesALinkForWhatItLeadsToAndKnowsNone) {
    makeTree(iri("tree"));
    makeLink("tree", tree / "toFolder");
    makeLink("tree/a", tree / "toFile");
    EXPECT_TRUE(ops.isFolder(iri("toFolder")));
    EXPECT_TRUE(ops.isFile(iri("toFile")));
    EXPECT_EQ(read(iri("toFile")), "A");
    EXPECT_FALSE(ops.isSymlink(iri("toFile")));
    EXPECT_EQ(files(iri("tree"), true).size(), 3u);
}

TEST_F(VirtualFileScheme, ListsNothingThroughALinkAndRemovesTheLinkAlone) {
    makeTree(iri("tree"));
    makeFolder(tree / "top");
    makeLink("../tree", tree / "top/toFolder");
    makeLink("../tree/a", tree / "top/toFile");
    EXPECT_EQ(files(iri("top"), true), Files{iri("top/toFile")});
    ops.removeAll(iri("top"));
    EXPECT_FALSE(isThere(tree / "top"));
    EXPECT_EQ(files(iri("tree"), true).size(), 3u);
}

TEST_F(VirtualFileScheme, MakesAnItemOfTheDiskReadOnlyAndWritable) {
    makeFile(tree / "file", "text", 0644);
    ops.setPermissions(iri("file"), opc::Perms::ReadOnly);
    EXPECT_EQ(modeOf(tree / "file"), 0444u);
    EXPECT_EQ(ops.getPermissions(iri("file")), 0444u);
    ops.setPermissions(iri("file"), opc::Perms::ReadWrite);
    EXPECT_EQ(ops.getPermissions(iri("file")), 0666u);
    EXPECT_NE(modeOf(tree / "file") & 0200u, 0u);
}

TEST_F(VirtualFileScheme, GivesTheTimesOfTheDisk) {
    makeFile(tree / "file", "text");
    setModifiedTime(tree / "file", {1'000'000'000, 123'456'000});
    EXPECT_EQ(ops.getLastModifiedTime(iri("file")), local.getLastModifiedTime(tree.text("file")));
}

TEST_F(VirtualFileScheme, TempNamesAreFreeOnTheDisk) {
    const opc::ustring name = ops.getTempName(iri(""));
    EXPECT_EQ(ops.getParentPath(name), iri(""));
    write(name, "text");
    opc::ustring path;
    ASSERT_TRUE(ops.getLocalPath(name, path));
    EXPECT_EQ(local.getParentPath(path), text(tree.path()));
    EXPECT_TRUE(local.isFile(path));
}

}  // namespace

}  // namespace test
