// The scheme "file": the items of the real disk, by their IRIs, beside the local back end.

#include "tests/e2e/LocalTest.hpp"
#include "tests/e2e/VirtualTest.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

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

/// Ends the program where something waits for the other end of a pipe.
class Alarm {
public:
    Alarm() { ::alarm(60); }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;
    ~Alarm() { ::alarm(0); }
};

TEST_F(VirtualFileScheme, NeitherListsNorCopiesAPipe) {
    const Alarm alarm;
    makeTree(iri("tree"));
    makePipe(tree / "tree/pipe");
    makeLink("../pipe", tree / "tree/sub/toPipe");
    EXPECT_EQ(files(iri("tree"), false), Files{iri("tree/a")});
    const std::vector<std::pair<opc::ustring, opc::ustring>> copies{
        {iri("tree/pipe"), u"mem://store/new"}, {iri("tree/sub/toPipe"), u"mem://store/new"},
        {iri("tree/pipe"), iri("new")},         {iri("tree/sub/toPipe"), iri("new")},
        {iri("tree"), u"mem://store/new"},      {iri("tree"), iri("new")}};
    for (const auto& [from, to] : copies) {
        boost::system::error_code ec;
        ops.copy(from, to, opc::Fail, ec);
        EXPECT_EQ(ec, make_error_code(errc::operation_not_supported)) << testing::PrintToString(from);
        EXPECT_FALSE(ops.exists(to));
    }
    local.copy(tree.text("tree/pipe"), tree.text("new"), opc::Fail);
    EXPECT_FALSE(local.exists(tree.text("new"))) << "nothing happens, and that is no failure";
    EXPECT_EQ(local.getPermissions(tree.text("tree/pipe")), 0644U);
}

TEST_F(VirtualFileScheme, MovesAPipeOnlyWhereItCanBeRenamed) {
    const Alarm alarm;
    makeTree(iri("tree"));
    makePipe(tree / "tree/pipe");
    for (const char* name : {"tree", "tree/pipe"}) {
        boost::system::error_code ec;
        ops.rename(iri(name), u"mem://store/new", ec);
        EXPECT_EQ(ec, make_error_code(errc::operation_not_supported));
        EXPECT_FALSE(ops.exists(u"mem://store/new"));
        EXPECT_TRUE(ops.exists(iri("tree/pipe")));
    }
    EXPECT_EQ(files(iri("tree"), true).size(), 3U) << "the source is whole";
    ops.rename(iri("tree"), iri("moved"));
    EXPECT_TRUE(ops.exists(iri("moved/pipe")));
    ops.removeAll(iri("moved"));
    EXPECT_FALSE(ops.exists(iri("moved")));
}

TEST_F(VirtualFileScheme, OpensAPipeInOrderAlone) {
    const Alarm alarm;
    makePipe(tree / "pipe");
    const int bothEnds = ::open((tree / "pipe").c_str(), O_RDWR);
    boost::system::error_code ec;
    EXPECT_FALSE(ops.createOutputStream(iri("pipe"), std::ios::in, ec));
    EXPECT_FALSE(ops.createOutputStream(iri("pipe"), std::ios::in | std::ios::trunc, ec));
    for (const int mode : {0, int{std::ios::app}}) {
        *ops.createOutputStream(iri("pipe"), mode) << "text" << std::flush;
        char bytes[5] = {};
        EXPECT_EQ(::read(bothEnds, bytes, 4), 4);
        EXPECT_STREQ(bytes, "text");
    }
    ::close(bothEnds);
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

TEST_F(VirtualFileScheme, LeavesAFolderBehindALinkOutOfACopyToAnotherStore) {
    makeTree(iri("tree"));
    makeFolder(tree / "top");
    makeFile(tree / "top/file", "text");
    makeLink("../tree", tree / "top/toFolder");
    ops.copy(iri("top"), u"mem://store/copy", opc::Fail);
    EXPECT_EQ(files(u"mem://store/copy", true), Files{u"mem://store/copy/file"});
    EXPECT_FALSE(ops.exists(u"mem://store/copy/toFolder"));
}

// Which would lose the link, and could not take along what it leads to.
TEST_F(VirtualFileScheme, DoesNotMoveALinkToAFolderToAnotherStore) {
    makeTree(iri("tree"));
    makeFolder(tree / "top");
    makeLink("../tree", tree / "top/toFolder");
    boost::system::error_code error;
    ops.rename(iri("top"), u"mem://store/moved", error);
    EXPECT_EQ(error, errc::operation_not_supported);
    EXPECT_TRUE(isThere(tree / "top/toFolder"));
    EXPECT_FALSE(ops.exists(u"mem://store/moved"));
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
