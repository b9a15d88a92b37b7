// What is there, what may be done with it, and when it was changed.

#include "tests/e2e/VirtualTest.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

namespace test {

namespace {

using boost::posix_time::ptime;
using opc::Perms;

const ptime kTime(boost::gregorian::date(2024, 2, 29), boost::posix_time::microseconds(3'723'004'005));

class VirtualItems : public VirtualTest {
protected:
    VirtualItems() { makeTree(u"mem://store"); }

    static Perms::Perms_tag bits(unsigned value) { return static_cast<Perms::Perms_tag>(value); }
};

TEST_F(VirtualItems, AreAFileOrAFolderOrNothing) {
    struct Row {
        opc::ustring path;
        bool isFile;
        bool isFolder;
    };
    const Row rows[] = {{u"mem://store/a", true, false},
                        {u"mem://store/sub", false, true},
                        {u"mem://store", false, true},
                        {u"mem://store/", false, true},
                        {u"MEM://STORE/sub/../a", true, false},
                        {u"mem://store//sub//b", true, false},
                        {u"mem://store/sub/deep/", false, true},
                        {u"mem://store/missing", false, false},
                        {u"mem://store/missing/x", false, false},
                        {u"mem://store/a/x", false, false}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.path));
        EXPECT_EQ(ops.exists(row.path), row.isFile || row.isFolder);
        EXPECT_EQ(ops.isFile(row.path), row.isFile);
        EXPECT_EQ(ops.isFolder(row.path), row.isFolder);
        EXPECT_FALSE(ops.isSymlink(row.path));
    }
}

TEST_F(VirtualItems, KnowNoLinks) {
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.getLinkTarget(u"mem://store/a", ec...); },
                      errc::operation_not_supported, "getLinkTarget failed: Symlinks are not supported"));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.createSymlink(u"a", u"mem://store/l", ec...); },
                      errc::operation_not_supported,
                      "createSymlink failed: Creation of symlinks is not supported by VirtualFileSystemOps"));
    boost::system::error_code ec;
    EXPECT_FALSE(ops.isSymlink(u"no IRI", ec));
    EXPECT_FALSE(ec.failed());
}

TEST_F(VirtualItems, AreWritableUnlessToldOtherwise) {
    EXPECT_EQ(ops.getPermissions(u"mem://store/a"), 0666u);
    ops.setPermissions(u"mem://store/a", bits(0444));
    EXPECT_EQ(ops.getPermissions(u"mem://store/a"), 0444u);
    EXPECT_EQ(read(u"mem://store/a"), "A");
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.createOutputStream(u"mem://store/a", 0, ec...); },
                      errc::io_error, "createOutputStream failed: "));
    ops.setPermissions(u"mem://store/a", bits(0002));
    EXPECT_EQ(ops.getPermissions(u"mem://store/a"), 0666u);
    write(u"mem://store/a", "new");
    EXPECT_EQ(read(u"mem://store/a"), "new");
}

TEST_F(VirtualItems, ThatAreMissingHaveNoPermissions) {
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.getPermissions(u"mem://store/x", ec...); },
                      errc::no_such_file_or_directory,
                      "getPermissions failed: " + kMissing + "mem://store/x"));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.setPermissions(u"mem://store/x", bits(0666), ec...); },
                      errc::no_such_file_or_directory,
                      "setPermissions failed: " + kMissing + "mem://store/x"));
    EXPECT_NO_THROW(ops.setPermissions(u"mem://store/x", Perms::NotKnown));
    EXPECT_NO_THROW(ops.setPermissions(u"no IRI at all", bits(0xFFFF)));
}

TEST_F(VirtualItems, KeepTheirTimeToTheMicrosecond) {
    ops.setLastModifiedTime(u"mem://store/a", kTime);
    EXPECT_EQ(ops.getLastModifiedTime(u"mem://store/a"), kTime);
    EXPECT_EQ(read(u"mem://store/a"), "A");
    EXPECT_EQ(ops.getLastModifiedTime(u"mem://store/a"), kTime);
    ops.setLastModifiedTime(u"mem://store/sub", kTime);
    EXPECT_EQ(ops.getLastModifiedTime(u"mem://store/sub"), kTime);
}

TEST_F(VirtualItems, GetTheTimeOfTheirLastWriting) {
    const ptime before = boost::posix_time::microsec_clock::universal_time();
    write(u"mem://store/a", "new");
    const ptime after = boost::posix_time::microsec_clock::universal_time();
    EXPECT_GE(ops.getLastModifiedTime(u"mem://store/a"), before);
    EXPECT_LE(ops.getLastModifiedTime(u"mem://store/a"), after);
}

TEST_F(VirtualItems, KeepTheirTimeWhenNoneIsSet) {
    ops.setLastModifiedTime(u"mem://store/a", kTime);
    ops.setLastModifiedTime(u"mem://store/a", ptime(boost::posix_time::not_a_date_time));
    EXPECT_EQ(ops.getLastModifiedTime(u"mem://store/a"), kTime);
}

TEST_F(VirtualItems, ThatAreMissingHaveNoTime) {
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.getLastModifiedTime(u"mem://store/x", ec...); },
                      errc::no_such_file_or_directory,
                      "getLastModifiedTime failed: " + kMissing + "mem://store/x"));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.setLastModifiedTime(u"mem://store/x", kTime, ec...); },
                      errc::no_such_file_or_directory,
                      "setLastModifiedTime failed: " + kMissing + "mem://store/x"));
}

}  // namespace

}  // namespace test
