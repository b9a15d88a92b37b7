#include "tests/e2e/LocalTest.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

namespace test {

namespace {

using boost::posix_time::microseconds;
using boost::posix_time::ptime;
using boost::posix_time::time_from_string;

class LocalPermissions : public LocalTest {
protected:
    void set(std::string_view name, unsigned bits) {
        ops.setPermissions(tree.text(name), static_cast<opc::Perms::Perms_tag>(bits));
    }
    unsigned get(std::string_view name) { return ops.getPermissions(tree.text(name)); }
};

TEST_F(LocalPermissions, EachOfTheTwelveBitsGoesThereAndBack) {
    makeFile(tree / "file");
    makeFolder(tree / "folder");
    for (const unsigned bits : {0000U, 0400U, 0200U, 0100U, 0040U, 0020U, 0010U, 0004U, 0002U, 0001U, 0644U,
                                0755U, 0777U, 01755U, 02755U, 04755U, 07777U}) {
        for (const char* const name : {"file", "folder"}) {
            set(name, bits);
            EXPECT_EQ(bits, modeOf(tree / name)) << std::oct << bits;
            EXPECT_EQ(bits, get(name)) << std::oct << bits;
        }
    }
}

TEST_F(LocalPermissions, BitsThatAreNoPermissionsAreIgnored) {
    makeFile(tree / "file", "", 0600);
    set("file", 0100000U | 0640U);
    EXPECT_EQ(0640U, modeOf(tree / "file"));
}

TEST_F(LocalPermissions, ThoseOfALinkAreItsOwn) {
    makeFile(tree / "file", "", 0600);
    makeLink("file", tree / "link");
    EXPECT_EQ(modeOf(tree / "link"), get("link"));
}

TEST_F(LocalPermissions, SettingThoseOfALinkNeverChangesItsTarget) {
    makeFile(tree / "file", "", 0600);
    makeFolder(tree / "folder", 0700);
    makeLink("file", tree / "linkToFile");
    makeLink("folder", tree / "linkToFolder");
    makeLink("nowhere", tree / "dangling");
    for (const char* const name : {"linkToFile", "linkToFolder", "linkToFolder/", "dangling"}) {
        EXPECT_TRUE(fails(
            [&](auto&... ec) { ops.setPermissions(tree.text(name), opc::Perms::ReadOnly, ec...); },
            errc::operation_not_supported, "setPermissions failed: Invalid operation: " + (tree / name)));
    }
    EXPECT_EQ(0600U, modeOf(tree / "file"));
    EXPECT_EQ(0700U, modeOf(tree / "folder"));
}

TEST_F(LocalPermissions, NotKnownDoesNothingWhateverThePath) {
    makeFile(tree / "file", "", 0640);
    for (const opc::ustring& path : {tree.text("file"), tree.text("missing"), opc::ustring()}) {
        auto ec = make_error_code(errc::io_error);
        ops.setPermissions(path, opc::Perms::NotKnown, ec);
        EXPECT_EQ(boost::system::error_code(), ec);
        EXPECT_NO_THROW(ops.setPermissions(path, opc::Perms::NotKnown));
    }
    EXPECT_EQ(0640U, modeOf(tree / "file"));
}

TEST_F(LocalPermissions, OfAMissingItemFailWithoutThePath) {
    for (const opc::ustring& path : {tree.text("missing"), tree.text("missing/x"), opc::ustring()}) {
        EXPECT_TRUE(fails([&](auto&... ec) { return ops.getPermissions(path, ec...); },
                          errc::no_such_file_or_directory, "getPermissions failed: Path not found"));
    }
}

TEST_F(LocalPermissions, CannotBeSetWhereNothingIs) {
    EXPECT_TRUE(fails(
        [&](auto&... ec) { ops.setPermissions(tree.text("missing"), opc::Perms::ReadWrite, ec...); },
        errc::no_such_file_or_directory, "setPermissions failed: Path not found: " + (tree / "missing")));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.setPermissions(u"", opc::Perms::ReadWrite, ec...); },
                      errc::invalid_argument, "setPermissions failed: Empty path not permitted"));
}

TEST_F(LocalPermissions, OfSomebodyElseCannotBeSet) {
    makeFile(tree / "file", "", 0644);
    setMode(tree.path(), 0755);
    if (::geteuid() != 0) {
        GTEST_SKIP() << "a file of somebody else can only be made by root";
    }
    runAsOrdinaryUser([&] {
        EXPECT_TRUE(
            fails([&](auto&... ec) { ops.setPermissions(tree.text("file"), opc::Perms::ReadWrite, ec...); },
                  errc::permission_denied, "setPermissions failed: Access denied: " + (tree / "file")));
    });
    EXPECT_EQ(0644U, modeOf(tree / "file"));
}

class LocalTimes : public LocalTest {
protected:
    void SetUp() override { makeFile(tree / "file", "text"); }

    void set(std::string_view name, const ptime& time) { ops.setLastModifiedTime(tree.text(name), time); }
    ptime get(std::string_view name) { return ops.getLastModifiedTime(tree.text(name)); }
};

TEST_F(LocalTimes, GoThereAndBackToTheMicrosecond) {
    makeFolder(tree / "folder");
    makeLink("file", tree / "link");
    makePipe(tree / "pipe");
    for (const char* const when :
         {"2001-02-03 04:05:06.789012", "1970-01-01 00:00:00.000000", "1969-12-31 23:59:59.999999",
          "1901-12-14 00:00:00.000001", "2038-01-19 03:14:08.000000", "2299-12-31 23:59:59.999999"}) {
        for (const char* const name : {"file", "folder", "link", "pipe"}) {
            set(name, time_from_string(when));
            EXPECT_EQ(time_from_string(when), get(name)) << name;
        }
    }
}

TEST_F(LocalTimes, AreUtcAsTheSystemKeepsThem) {
    set("file", time_from_string("2001-09-09 01:46:40.000001"));
    EXPECT_EQ(1'000'000'000, statusOf(tree / "file").st_mtim.tv_sec);
    EXPECT_EQ(1'000, statusOf(tree / "file").st_mtim.tv_nsec);
}

TEST_F(LocalTimes, FinerOnesAreReadAsTheMicrosecondThatHoldsThem) {
    setModifiedTime(tree / "file", {1'000'000'000, 1'999});
    EXPECT_EQ(time_from_string("2001-09-09 01:46:40.000001"), get("file"));
    setModifiedTime(tree / "file", {-1, 999'999'999});
    EXPECT_EQ(time_from_string("1969-12-31 23:59:59.999999"), get("file"));
}

TEST_F(LocalTimes, OfALinkAreItsOwn) {
    makeLink("file", tree / "link");
    setModifiedTime(tree / "file", {1'000, 0});
    set("link", time_from_string("2001-01-01 00:00:00"));
    EXPECT_EQ(1'000, statusOf(tree / "file").st_mtim.tv_sec);
    EXPECT_EQ(time_from_string("2001-01-01 00:00:00"), get("link"));
    EXPECT_EQ(time_from_string("1970-01-01 00:16:40"), get("file"));
}

TEST_F(LocalTimes, SettingOneLeavesTheTimeOfAccessAlone) {
    const timespec times[2] = {{12'345, 678}, {0, 0}};
    ASSERT_EQ(0, ::utimensat(AT_FDCWD, (tree / "file").c_str(), times, 0));
    set("file", time_from_string("2001-01-01 00:00:00"));
    EXPECT_EQ(12'345, statusOf(tree / "file").st_atim.tv_sec);
    EXPECT_EQ(678, statusOf(tree / "file").st_atim.tv_nsec);
}

TEST_F(LocalTimes, NoTimeDoesNothingWhateverThePath) {
    setModifiedTime(tree / "file", {1'000, 0});
    for (const opc::ustring& path : {tree.text("file"), tree.text("missing"), opc::ustring()}) {
        auto ec = make_error_code(errc::io_error);
        ops.setLastModifiedTime(path, ptime(), ec);
        EXPECT_EQ(boost::system::error_code(), ec);
        EXPECT_NO_THROW(ops.setLastModifiedTime(path, ptime()));
    }
    EXPECT_EQ(1'000, statusOf(tree / "file").st_mtim.tv_sec);
}

TEST_F(LocalTimes, OneThatTheFileSystemCannotHoldIsAnErrorAndTheOldOneStays) {
    for (const char* const parent : {"/tmp", "/dev/shm"}) {
        const TempTree place{parent};
        makeFile(place / "file");
        for (const char* const when : {"1400-01-01 00:00:00", "1883-01-01 00:00:00.5", "2446-05-11 00:00:00",
                                       "2600-01-01 00:00:00.000001", "9999-12-31 23:59:59.999999"}) {
            const ptime time = time_from_string(when);
            setModifiedTime(place / "file", {1'000, 5'000});
            boost::system::error_code ec;
            ops.setLastModifiedTime(place.text("file"), time, ec);
            const ptime kept = ops.getLastModifiedTime(place.text("file"));
            if (ec.failed()) {
                EXPECT_EQ(errc::invalid_argument, ec) << place / "file" << ' ' << when;
                EXPECT_EQ(time_from_string("1970-01-01 00:16:40.000005"), kept)
                    << place / "file" << ' ' << when;
            } else {
                EXPECT_EQ(time, kept) << place / "file" << ' ' << when;
            }
        }
    }
}

TEST_F(LocalTimes, AreRefusedBeyondTheRangeOfThisFileSystem) {
    timespec far{253'402'300'799, 0};  // the last second of the year 9999
    setModifiedTime(tree / "file", far);
    if (statusOf(tree / "file").st_mtim.tv_sec == far.tv_sec) {
        GTEST_SKIP() << "this file system keeps every time that can be written";
    }
    setModifiedTime(tree / "file", {1'000, 0});
    EXPECT_TRUE(fails(
        [&](auto&... ec) {
            ops.setLastModifiedTime(tree.text("file"), time_from_string("9999-12-31 23:59:59"), ec...);
        },
        errc::invalid_argument, "setLastModifiedTime failed: Invalid argument: " + (tree / "file")));
    EXPECT_EQ(1'000, statusOf(tree / "file").st_mtim.tv_sec);
}

TEST_F(LocalTimes, InfinityIsAnInvalidArgument) {
    setModifiedTime(tree / "file", {1'000, 0});
    for (const auto special : {boost::posix_time::pos_infin, boost::posix_time::neg_infin}) {
        EXPECT_TRUE(fails(
            [&](auto&... ec) { ops.setLastModifiedTime(tree.text("file"), ptime(special), ec...); },
            errc::invalid_argument, "setLastModifiedTime failed: Invalid argument: " + (tree / "file")));
    }
    EXPECT_EQ(1'000, statusOf(tree / "file").st_mtim.tv_sec);
}

TEST_F(LocalTimes, OneThatTheClassCannotSayIsNeverReadAsAnother) {
    const TempTree place{"/dev/shm"};
    makeFile(place / "file");
    setModifiedTime(place / "file", {253'402'300'800, 0});  // the year 10000
    if (statusOf(place / "file").st_mtim.tv_sec != 253'402'300'800) {
        GTEST_SKIP() << "this file system does not keep such a time";
    }
    boost::system::error_code ec;
    const ptime time = ops.getLastModifiedTime(place.text("file"), ec);
    EXPECT_TRUE(time.is_special()) << time;
    EXPECT_TRUE(ops.isFile(place.text("file")));
    EXPECT_EQ(0644, ops.getPermissions(place.text("file")));
}

TEST_F(LocalTimes, OfAMissingItemFailWithoutThePath) {
    for (const opc::ustring& path : {tree.text("missing"), tree.text("file/x"), opc::ustring()}) {
        EXPECT_TRUE(fails([&](auto&... ec) { return ops.getLastModifiedTime(path, ec...); },
                          errc::no_such_file_or_directory, "getLastModifiedTime failed: Path not found"));
    }
}

TEST_F(LocalTimes, CannotBeSetWhereNothingIs) {
    const ptime time = time_from_string("2001-01-01 00:00:00");
    EXPECT_TRUE(fails([&](auto&... ec) { ops.setLastModifiedTime(tree.text("missing"), time, ec...); },
                      errc::no_such_file_or_directory,
                      "setLastModifiedTime failed: Path not found: " + (tree / "missing")));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.setLastModifiedTime(u"", time, ec...); },
                      errc::no_such_file_or_directory, "setLastModifiedTime failed: Path not found"));
}

}  // namespace
}  // namespace test
