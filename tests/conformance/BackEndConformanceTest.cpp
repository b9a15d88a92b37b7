// What holds for every back end: a client that keeps to this need not know which one it has.

#include <pkgcore/core/Exception.hpp>

#include "tests/conformance/BackEnds.hpp"
#include "tests/support/ExpectFailure.hpp"

#include <gmock/gmock.h>
#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <algorithm>
#include <iterator>

namespace test {

namespace {

namespace errc = boost::system::errc;

using boost::posix_time::ptime;
using Paths = std::vector<opc::ustring>;

constexpr opc::ExistsMode kAllModes[] = {opc::Ignore, opc::Fail, opc::Replace};

class BackEndConformance : public ::testing::TestWithParam<BackEnd> {
protected:
    opc::ustring at(const opc::ustring& name) const { return ops.appendPath(place->folder(), name); }

    void write(const opc::ustring& name, const std::string& content, int mode = 0) const {
        const auto stream = ops.createOutputStream(at(name), mode);
        *stream << content << std::flush;
        ASSERT_TRUE(stream->good());
    }

    std::string read(const opc::ustring& name) const {
        const auto stream = ops.createInputStream(at(name), 0);
        return {std::istreambuf_iterator<char>(*stream), {}};
    }

    Paths files(const opc::ustring& name, bool recursive) const {
        Paths found;
        ops.getFiles(at(name), found, recursive);
        std::sort(found.begin(), found.end());
        return found;
    }

    /// top: a, sub (b, deep (c))
    void makeTree(const opc::ustring& top) const {
        ops.createFolders(at(top + u"/sub/deep"));
        write(top + u"/a", "A");
        write(top + u"/sub/b", "B");
        write(top + u"/sub/deep/c", "C");
    }

    Paths treeAt(const opc::ustring& top) const {
        return {at(top + u"/a"), at(top + u"/sub/b"), at(top + u"/sub/deep/c")};
    }

    template <typename Operation>
    static ::testing::AssertionResult failsAs(errc::errc_t code, Operation operation) {
        return reports(operation, make_error_code(code));
    }

    const BackEnd& backEnd = GetParam();
    const std::unique_ptr<Place> place = backEnd.makePlace();
    opc::FileSystemOps& ops = place->ops();
};

INSTANTIATE_TEST_SUITE_P(Every, BackEndConformance, ::testing::ValuesIn(backEnds()),
                         [](const auto& one) { return one.param.name; });

TEST_P(BackEndConformance, WhatIsMissingIsNoFileAndNoFolder) {
    for (const char16_t* name : {u"missing", u"missing/below"}) {
        EXPECT_FALSE(ops.exists(at(name)));
        EXPECT_FALSE(ops.isFile(at(name)));
        EXPECT_FALSE(ops.isFolder(at(name)));
        EXPECT_FALSE(ops.isSymlink(at(name)));
    }
}

TEST_P(BackEndConformance, WhatIsMissingCannotBeUsed) {
    const opc::ustring path = at(u"missing");
    const ptime time(boost::gregorian::date(2024, 2, 29));
    Paths found;
    const auto missing = errc::no_such_file_or_directory;
    EXPECT_TRUE(failsAs(missing, [&](auto& ec) { return ops.getPermissions(path, ec); }));
    EXPECT_TRUE(failsAs(missing, [&](auto& ec) { ops.setPermissions(path, opc::Perms::ReadOnly, ec); }));
    EXPECT_TRUE(failsAs(missing, [&](auto& ec) { return ops.getLastModifiedTime(path, ec); }));
    EXPECT_TRUE(failsAs(missing, [&](auto& ec) { ops.setLastModifiedTime(path, time, ec); }));
    EXPECT_TRUE(failsAs(missing, [&](auto& ec) { ops.getFiles(path, found, true, ec); }));
    EXPECT_TRUE(failsAs(missing, [&](auto& ec) { ops.rename(path, at(u"new"), ec); }));
    EXPECT_TRUE(failsAs(missing, [&](auto& ec) { ops.remove(path, ec); }));
    EXPECT_TRUE(failsAs(missing, [&](auto& ec) { ops.removeAll(path, ec); }));
    for (const opc::ExistsMode mode : kAllModes) {
        EXPECT_TRUE(failsAs(missing, [&](auto& ec) { ops.copy(path, at(u"new"), mode, ec); }));
    }
    EXPECT_TRUE(failsAs(errc::io_error, [&](auto& ec) { return ops.createInputStream(path, 0, ec); }));
    EXPECT_EQ(files(u"", true), Paths{});
}

TEST_P(BackEndConformance, AFailureHasTheNameOfTheOperationAndThePath) {
    try {
        ops.remove(at(u"missing"));
        FAIL() << "nothing was thrown";
    } catch (const opc::Exception& failure) {
        EXPECT_THAT(failure.what(), testing::StartsWith("remove failed: "));
        EXPECT_THAT(failure.what(), testing::EndsWith("/missing"));
        EXPECT_EQ(failure.code(), make_error_code(errc::no_such_file_or_directory));
    }
}

TEST_P(BackEndConformance, ASuccessClearsTheCode) {
    auto ec = make_error_code(errc::owner_dead);
    ops.createFolder(at(u"folder"), ec);
    EXPECT_EQ(ec, boost::system::error_code());
}

TEST_P(BackEndConformance, FoldersAreMadeOneByOneOrTogether) {
    ops.createFolder(at(u"one"));
    ops.createFolders(at(u"a/b/c"));
    ops.createFolders(at(u"a/b"));
    EXPECT_TRUE(ops.isFolder(at(u"one")));
    EXPECT_TRUE(ops.isFolder(at(u"a/b/c")));
    EXPECT_FALSE(ops.isFile(at(u"one")));
}

TEST_P(BackEndConformance, AFolderIsNotMadeOntoAnythingNorBelowNothing) {
    write(u"file", "text");
    ops.createFolder(at(u"folder"));
    EXPECT_TRUE(failsAs(errc::file_exists, [&](auto& ec) { ops.createFolder(at(u"folder"), ec); }));
    EXPECT_TRUE(failsAs(errc::file_exists, [&](auto& ec) { ops.createFolder(at(u"file"), ec); }));
    EXPECT_TRUE(
        failsAs(errc::no_such_file_or_directory, [&](auto& ec) { ops.createFolder(at(u"x/y"), ec); }));
    EXPECT_EQ(read(u"file"), "text");
}

TEST_P(BackEndConformance, WhatWasWrittenIsRead) {
    for (const std::size_t size : {0U, 1U, 65'536U, 300'001U}) {
        const std::string content(size, 'x');
        write(u"file", content);
        EXPECT_EQ(read(u"file"), content);
        EXPECT_TRUE(ops.isFile(at(u"file")));
    }
    const std::string bytes("a\r\nb\x1a\0\xff", 7);
    write(u"file", bytes);
    EXPECT_EQ(read(u"file"), bytes);
}

TEST_P(BackEndConformance, TheModeDecidesAboutOldContent) {
    write(u"file", "old", std::ios::app);
    write(u"file", "new", std::ios::app);
    EXPECT_EQ(read(u"file"), "oldnew");
    write(u"file", "OLD", std::ios::in);
    EXPECT_EQ(read(u"file"), "OLDnew");
    write(u"file", "x", std::ios::trunc);
    EXPECT_EQ(read(u"file"), "x");
    EXPECT_TRUE(failsAs(errc::io_error,
                        [&](auto& ec) { return ops.createOutputStream(at(u"missing"), std::ios::in, ec); }));
    EXPECT_FALSE(ops.exists(at(u"missing")));
}

TEST_P(BackEndConformance, StreamsSeek) {
    write(u"file", "0123456789");
    const auto stream = ops.createInputStream(at(u"file"), 0);
    stream->seekg(-3, std::ios::end);
    EXPECT_EQ(stream->get(), '7');
    stream->seekg(2);
    EXPECT_EQ(stream->get(), '2');
    EXPECT_EQ(stream->tellg(), std::streampos(3));
}

TEST_P(BackEndConformance, UpdatesGoToAnyPlace) {
    write(u"file", "0123456789");
    const auto stream = ops.createOutputStream(at(u"file"), std::ios::in);
    stream->seekp(0, std::ios::end) << "end";
    stream->seekp(2) << "ab";
    EXPECT_EQ(stream->tellp(), std::streampos(4));
    std::istream reader(stream->rdbuf());
    EXPECT_EQ(reader.get(), '4');
    *stream << "c" << std::flush;
    EXPECT_TRUE(stream->good());
    EXPECT_EQ(read(u"file"), "01ab4c6789end");
    const auto fresh = ops.createOutputStream(at(u"file"), std::ios::in | std::ios::trunc);
    *fresh << "size ?, data";
    fresh->seekp(5) << "4" << std::flush;
    EXPECT_EQ(read(u"file"), "size 4, data");
}

TEST_P(BackEndConformance, OtherOutputSeeksOrFailsToSeek) {
    const auto stream = ops.createOutputStream(at(u"file"), 0);
    *stream << "0123";
    EXPECT_EQ(stream->tellp(), std::streampos(4));
    EXPECT_TRUE(stream->seekp(0, std::ios::end));
    EXPECT_EQ(!stream->seekp(1).fail(), backEnd.seeksAllOutput);
    stream->clear();
    *stream << "x" << std::flush;
    EXPECT_EQ(read(u"file"), backEnd.seeksAllOutput ? "0x23" : "0123x");
}

TEST_P(BackEndConformance, AFolderOpensInNeitherDirection) {
    ops.createFolder(at(u"folder"));
    for (const char16_t* name : {u"folder", u"missing/file"}) {
        EXPECT_TRUE(
            failsAs(errc::io_error, [&](auto& ec) { return ops.createInputStream(at(name), 0, ec); }));
        EXPECT_TRUE(
            failsAs(errc::io_error, [&](auto& ec) { return ops.createOutputStream(at(name), 0, ec); }));
    }
}

TEST_P(BackEndConformance, ListingsGiveFilesAndNoFolders) {
    makeTree(u"top");
    EXPECT_EQ(files(u"top", false), Paths{at(u"top/a")});
    EXPECT_EQ(files(u"top", true), treeAt(u"top"));
    Paths found{u"before"};
    ops.getFiles(at(u"top"), found, false);
    EXPECT_EQ(found, (Paths{u"before", at(u"top/a")}));
}

TEST_P(BackEndConformance, WhatAListingGivesCanBeUsed) {
    makeTree(u"top");
    for (const opc::ustring& path : files(u"", true)) {
        EXPECT_TRUE(ops.isFile(path));
        EXPECT_EQ(ops.normalizePath(path), path);
        EXPECT_TRUE(ops.isAbsolutePath(path));
        EXPECT_TRUE(ops.isFolder(ops.getParentPath(path)));
    }
}

TEST_P(BackEndConformance, AFileIsCopiedAndReplacedOnlyWhenThatIsAsked) {
    write(u"from", "new");
    write(u"to", "old");
    for (const opc::ExistsMode mode : {opc::Ignore, opc::Fail}) {
        EXPECT_TRUE(
            failsAs(errc::file_exists, [&](auto& ec) { ops.copy(at(u"from"), at(u"to"), mode, ec); }));
        EXPECT_EQ(read(u"to"), "old");
    }
    ops.copy(at(u"from"), at(u"to"), opc::Replace);
    EXPECT_EQ(read(u"to"), "new");
    ops.copy(at(u"from"), at(u"other"), opc::Fail);
    EXPECT_EQ(read(u"other"), "new");
    EXPECT_EQ(read(u"from"), "new");
}

TEST_P(BackEndConformance, AFolderIsCopiedWithAllThatItHolds) {
    makeTree(u"from");
    ops.copy(at(u"from"), at(u"to"), opc::Fail);
    EXPECT_EQ(files(u"to", true), treeAt(u"to"));
    EXPECT_EQ(files(u"from", true), treeAt(u"from"));
    EXPECT_EQ(read(u"to/sub/deep/c"), "C");
}

TEST_P(BackEndConformance, AFolderOntoAFolderIsAFailureOrReplacesIt) {
    makeTree(u"from");
    ops.createFolder(at(u"to"));
    write(u"to/old", "old");
    EXPECT_TRUE(
        failsAs(errc::file_exists, [&](auto& ec) { ops.copy(at(u"from"), at(u"to"), opc::Fail, ec); }));
    EXPECT_EQ(files(u"to", true), Paths{at(u"to/old")});
    ops.copy(at(u"from"), at(u"to"), opc::Replace);
    EXPECT_EQ(files(u"to", true), treeAt(u"to"));
}

TEST_P(BackEndConformance, RenamingReplacesAFile) {
    write(u"from", "new");
    write(u"to", "old");
    ops.rename(at(u"from"), at(u"to"));
    EXPECT_EQ(read(u"to"), "new");
    EXPECT_FALSE(ops.exists(at(u"from")));
}

TEST_P(BackEndConformance, RenamingMovesAFolderWithAllThatItHolds) {
    makeTree(u"from");
    ops.rename(at(u"from"), at(u"to"));
    EXPECT_EQ(files(u"", true), treeAt(u"to"));
    EXPECT_FALSE(ops.exists(at(u"from")));
    ops.createFolder(at(u"empty"));
    ops.rename(at(u"to"), at(u"empty"));
    EXPECT_EQ(files(u"", true), treeAt(u"empty"));
}

TEST_P(BackEndConformance, AFolderDoesNotGoIntoItself) {
    makeTree(u"from");
    boost::system::error_code ec;
    ops.rename(at(u"from"), at(u"from/sub/x"), ec);
    EXPECT_TRUE(ec.failed());
    ops.copy(at(u"from"), at(u"from/sub/x"), opc::Fail, ec);
    EXPECT_TRUE(ec.failed());
    EXPECT_EQ(files(u"", true), treeAt(u"from"));
    EXPECT_FALSE(ops.exists(at(u"from/sub/x")));
}

TEST_P(BackEndConformance, RemovingTakesAFileOrAnEmptyFolder) {
    makeTree(u"top");
    EXPECT_TRUE(failsAs(errc::directory_not_empty, [&](auto& ec) { ops.remove(at(u"top/sub"), ec); }));
    EXPECT_EQ(files(u"top", true), treeAt(u"top"));
    ops.remove(at(u"top/sub/deep/c"));
    ops.remove(at(u"top/sub/deep"));
    EXPECT_FALSE(ops.exists(at(u"top/sub/deep")));
}

TEST_P(BackEndConformance, RemovingAllTakesAFolderWithAllThatItHolds) {
    makeTree(u"top");
    ops.removeAll(at(u"top/sub"));
    EXPECT_EQ(files(u"top", true), Paths{at(u"top/a")});
    ops.removeAll(at(u"top/a"));
    ops.removeAll(at(u"top"));
    EXPECT_FALSE(ops.exists(at(u"top")));
}

TEST_P(BackEndConformance, TimesAreKeptToTheMicrosecond) {
    write(u"file", "text");
    const ptime time(boost::gregorian::date(2024, 2, 29), boost::posix_time::microseconds(3'723'004'005));
    ops.setLastModifiedTime(at(u"file"), time);
    EXPECT_EQ(ops.getLastModifiedTime(at(u"file")), time);
    ops.setLastModifiedTime(at(u"file"), ptime(boost::posix_time::not_a_date_time));
    EXPECT_EQ(ops.getLastModifiedTime(at(u"file")), time);
    EXPECT_EQ(read(u"file"), "text");
}

TEST_P(BackEndConformance, WriteBitsComeAndGo) {
    write(u"file", "text");
    ops.setPermissions(at(u"file"), opc::Perms::ReadOnly);
    EXPECT_EQ(ops.getPermissions(at(u"file")) & opc::Perms::AnyWrite, 0u);
    EXPECT_EQ(read(u"file"), "text");
    ops.setPermissions(at(u"file"), opc::Perms::NotKnown);
    EXPECT_EQ(ops.getPermissions(at(u"file")) & opc::Perms::AnyWrite, 0u);
    ops.setPermissions(at(u"file"), opc::Perms::ReadWrite);
    EXPECT_NE(ops.getPermissions(at(u"file")) & opc::Perms::AnyWrite, 0u);
    EXPECT_NO_THROW(ops.setPermissions(at(u"missing"), opc::Perms::NotKnown));
}

TEST_P(BackEndConformance, NamesOfEveryKindCanBeUsed) {
    for (const char16_t* name : {u"100% done?.txt", u"%2F", u"a#b&c=d", u"\u00E4 \u4E2D\U0001F600",
                                 u".hidden", u"name.", u"~x[y]"}) {
        SCOPED_TRACE(testing::PrintToString(name));
        write(name, "text");
        EXPECT_EQ(files(u"", false), Paths{at(name)});
        EXPECT_EQ(ops.getFilename(at(name)), name);
        EXPECT_EQ(ops.getParentPath(at(name)), place->folder());
        EXPECT_EQ(ops.appendPath(place->folder(), u"/" + opc::ustring(name)), at(name));
        ops.rename(at(name), at(u"plain"));
        EXPECT_EQ(read(u"plain"), "text");
        ops.remove(at(u"plain"));
    }
}

TEST_P(BackEndConformance, ExtensionsFollowOneRule) {
    EXPECT_EQ(ops.getExtension(at(u"archive.tar.gz")), u"gz");
    EXPECT_EQ(ops.getExtension(at(u".profile")), u"profile");
    EXPECT_EQ(ops.getExtension(at(u"name.")), u"");
    EXPECT_EQ(ops.getExtension(at(u"name")), u"");
    EXPECT_EQ(ops.getExtension(at(u"a.b/name")), u"");
}

TEST_P(BackEndConformance, WalkingUpEnds) {
    opc::ustring path = at(u"a/b");
    int steps = 0;
    for (; !path.empty() && steps < 100; ++steps) {
        path = ops.getParentPath(path);
    }
    EXPECT_LT(steps, 100);
}

TEST_P(BackEndConformance, TempNamesAreFreeAndInTheFolder) {
    for (int i = 0; i < 10; ++i) {
        const opc::ustring name = ops.getTempName(place->folder());
        EXPECT_FALSE(ops.exists(name));
        EXPECT_EQ(ops.getParentPath(name), place->folder());
        EXPECT_EQ(ops.getExtension(name), u"tmp");
        *ops.createOutputStream(name, 0) << "text" << std::flush;
    }
    EXPECT_EQ(files(u"", false).size(), 10u);
}

TEST_P(BackEndConformance, LocalPathsAreThereOrEmpty) {
    opc::ustring local = u"old";
    EXPECT_EQ(ops.getLocalPath(at(u"a"), local), backEnd.hasLocalPaths);
    EXPECT_EQ(local.empty(), !backEnd.hasLocalPaths);
}

TEST_P(BackEndConformance, LinksAreThereOrNotSupported) {
    write(u"file", "text");
    boost::system::error_code ec;
    ops.createSymlink(u"file", at(u"link"), ec);
    if (backEnd.hasLinks) {
        EXPECT_FALSE(ec.failed());
        EXPECT_TRUE(ops.isSymlink(at(u"link")));
        EXPECT_EQ(ops.getLinkTarget(at(u"link")), u"file");
    } else {
        EXPECT_EQ(ec, make_error_code(errc::operation_not_supported));
        EXPECT_FALSE(ops.exists(at(u"link")));
        EXPECT_TRUE(failsAs(errc::operation_not_supported,
                            [&](auto& code) { return ops.getLinkTarget(at(u"file"), code); }));
    }
    EXPECT_FALSE(ops.isSymlink(at(u"file")));
}

}  // namespace

}  // namespace test
