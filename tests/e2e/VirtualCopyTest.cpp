// Copying and renaming.

#include "tests/e2e/VirtualTest.hpp"

#include <boost/date_time/posix_time/posix_time_types.hpp>

namespace test {

namespace {

using Files = std::vector<opc::ustring>;

constexpr opc::ExistsMode kWithoutReplacing[] = {opc::Ignore, opc::Fail, static_cast<opc::ExistsMode>(7)};

class VirtualCopy : public VirtualTest {
protected:
    VirtualCopy() {
        makeTree(u"mem://store/from");
        ops.createFolder(u"mem://store/to");
        write(u"mem://store/to/old", "old");
        write(u"mem://store/file", "file");
    }

    /// Neither style of copying works, for this reason.
    void refuse(const opc::ustring& from, const opc::ustring& to, opc::ExistsMode mode, errc::errc_t code) {
        EXPECT_TRUE(
            reports([&](auto&... ec) { return ops.copy(from, to, mode, ec...); }, make_error_code(code)))
            << testing::PrintToString(from) << mode;
    }

    void refuseRename(const opc::ustring& from, const opc::ustring& to, errc::errc_t code) {
        EXPECT_TRUE(reports([&](auto&... ec) { return ops.rename(from, to, ec...); }, make_error_code(code)))
            << testing::PrintToString(from);
    }
};

TEST_F(VirtualCopy, OfAFileOntoNothingWorksInEveryMode) {
    for (const opc::ExistsMode mode : {opc::Ignore, opc::Fail, opc::Replace}) {
        ops.copy(u"mem://store/file", u"mem://store/copy", mode);
        EXPECT_EQ(read(u"mem://store/copy"), "file");
        EXPECT_EQ(read(u"mem://store/file"), "file");
        ops.remove(u"mem://store/copy");
    }
}

TEST_F(VirtualCopy, OfAFileReplacesOnlyWhenItIsTold) {
    for (const opc::ExistsMode mode : kWithoutReplacing) {
        refuse(u"mem://store/file", u"mem://store/to/old", mode, errc::file_exists);
        EXPECT_EQ(read(u"mem://store/to/old"), "old");
    }
    ops.copy(u"mem://store/file", u"mem://store/to/old", opc::Replace);
    EXPECT_EQ(read(u"mem://store/to/old"), "file");
}

TEST_F(VirtualCopy, OfAFolderTakesAllThatItHolds) {
    ops.copy(u"mem://store/from", u"mem://store/copy", opc::Fail);
    EXPECT_EQ(files(u"mem://store/copy", true),
              (Files{u"mem://store/copy/a", u"mem://store/copy/sub/b", u"mem://store/copy/sub/deep/c"}));
    EXPECT_EQ(read(u"mem://store/copy/sub/deep/c"), "C");
    EXPECT_EQ(files(u"mem://store/from", true).size(), 3u);
}

TEST_F(VirtualCopy, OfAFolderReplacesOnlyWhenItIsTold) {
    for (const opc::ExistsMode mode : kWithoutReplacing) {
        refuse(u"mem://store/from", u"mem://store/to", mode, errc::file_exists);
        EXPECT_EQ(files(u"mem://store/to", true), Files{u"mem://store/to/old"});
    }
    ops.copy(u"mem://store/from", u"mem://store/to", opc::Replace);
    EXPECT_EQ(files(u"mem://store/to", true),
              (Files{u"mem://store/to/a", u"mem://store/to/sub/b", u"mem://store/to/sub/deep/c"}));
}

TEST_F(VirtualCopy, NeverReplacesOneKindByTheOther) {
    refuse(u"mem://store/from", u"mem://store/file", opc::Replace, errc::file_exists);
    refuse(u"mem://store/file", u"mem://store/to", opc::Replace, errc::file_exists);
    refuseRename(u"mem://store/from", u"mem://store/file", errc::file_exists);
    refuseRename(u"mem://store/file", u"mem://store/to", errc::file_exists);
    EXPECT_EQ(read(u"mem://store/file"), "file");
    EXPECT_EQ(read(u"mem://store/to/old"), "old");
}

TEST_F(VirtualCopy, OfNothingIsReportedWithTheSource) {
    for (const opc::ExistsMode mode : {opc::Ignore, opc::Fail, opc::Replace}) {
        EXPECT_TRUE(
            fails([&](auto&... ec) { return ops.copy(u"mem://store/x", u"mem://store/y", mode, ec...); },
                  errc::no_such_file_or_directory, "copy failed: " + kMissing + "mem://store/x"));
    }
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.rename(u"mem://store/x", u"mem://store/y", ec...); },
                      errc::no_such_file_or_directory, "rename failed: " + kMissing + "mem://store/x"));
}

TEST_F(VirtualCopy, IntoAMissingFolderIsNotFound) {
    refuse(u"mem://store/file", u"mem://store/x/y", opc::Replace, errc::no_such_file_or_directory);
    refuse(u"mem://store/from", u"mem://store/x/y", opc::Replace, errc::no_such_file_or_directory);
    refuseRename(u"mem://store/file", u"mem://store/x/y", errc::no_such_file_or_directory);
}

TEST_F(VirtualCopy, OntoOrIntoItselfChangesNothing) {
    for (const opc::ExistsMode mode : {opc::Ignore, opc::Replace}) {
        refuse(u"mem://store/from", u"mem://store/from", mode, errc::operation_not_supported);
        refuse(u"mem://store/from", u"mem://store/from/sub/x", mode, errc::operation_not_supported);
        refuse(u"mem://store/file", u"mem://store/./file", mode, errc::operation_not_supported);
    }
    refuseRename(u"mem://store/from", u"mem://store/from/sub/x", errc::operation_not_supported);
    EXPECT_NO_THROW(ops.rename(u"mem://store/from", u"mem://store/from/"));
    EXPECT_EQ(files(u"mem://store/from", true).size(), 3u);
    EXPECT_EQ(read(u"mem://store/file"), "file");
}

TEST_F(VirtualCopy, RenameReplacesAFile) {
    ops.rename(u"mem://store/file", u"mem://store/to/old");
    EXPECT_EQ(read(u"mem://store/to/old"), "file");
    EXPECT_FALSE(ops.exists(u"mem://store/file"));
}

TEST_F(VirtualCopy, RenameReplacesAFolderThatHoldsSomething) {
    ops.rename(u"mem://store/from", u"mem://store/to");
    EXPECT_EQ(files(u"mem://store/to", true),
              (Files{u"mem://store/to/a", u"mem://store/to/sub/b", u"mem://store/to/sub/deep/c"}));
    EXPECT_FALSE(ops.exists(u"mem://store/from"));
}

TEST_F(VirtualCopy, RenameKeepsTheTime) {
    const boost::posix_time::ptime time(boost::gregorian::date(2001, 2, 3));
    ops.setLastModifiedTime(u"mem://store/file", time);
    ops.rename(u"mem://store/file", u"mem://store/new");
    EXPECT_EQ(ops.getLastModifiedTime(u"mem://store/new"), time);
}

TEST_F(VirtualCopy, GoesFromOneStoreToAnother) {
    ops.copy(u"mem://store/from", u"mem://other/copy", opc::Fail);
    EXPECT_EQ(read(u"mem://other/copy/sub/deep/c"), "C");
    ops.rename(u"mem://store/from", u"mem://other/moved");
    EXPECT_EQ(read(u"mem://other/moved/sub/b"), "B");
    EXPECT_FALSE(ops.exists(u"mem://store/from"));
}

}  // namespace

}  // namespace test
