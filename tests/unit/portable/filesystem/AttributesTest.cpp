#include <pkgcore/platform/filesystem/Operations.hpp>

#include <pkgcore/portable/filesystem/FileTimes.hpp>
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <cerrno>
#include <cstddef>
#include <string>

namespace {

using namespace fl::filesystem;
using boost::posix_time::from_iso_extended_string;
using boost::posix_time::ptime;
using fl::filesystem::posix::kHostCalls;
using test::failedPath;
using test::ScopedSystemCalls;
using test::TempTree;

constexpr unsigned kOfItself = file_status::perms_symlink;

/// Has the process see a system that does not know one call.
void forgetSystemCall(unsigned number) {
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program = {sizeof steps / sizeof steps[0], steps};
    ASSERT_EQ(0, ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0));
    ASSERT_EQ(0, ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program));
}

/// Whether the file system under the path keeps the time, by calls of the system alone.
bool isKept(const std::string& path, timespec time) {
    test::setModifiedTime(path, time);
    const timespec kept = test::statusOf(path).st_mtim;
    return kept.tv_sec == time.tv_sec && kept.tv_nsec == time.tv_nsec;
}

TEST(Permissions, SetsTheTwelveBitsOfFilesAndFolders) {
    const TempTree tree;
    test::makeFile(tree / "file");
    test::makeFolder(tree / "folder");
    for (const char* const name : {"file", "folder"}) {
        for (const unsigned flag : {0U, kOfItself}) {
            for (const unsigned bits : {0000U, 0600U, 0644U, 0755U, 01777U, 04711U, 07777U, 0444U}) {
                permissions(tree.text(name), bits | flag);
                EXPECT_EQ(bits, test::modeOf(tree / name));
            }
        }
    }
}

TEST(Permissions, OtherBitsAreIgnored) {
    static mode_t asked;
    ScopedSystemCalls calls;
    calls->fchmodat = [](int, const char*, mode_t mode, int) {
        asked = mode;
        return 0;
    };
    permissions(u"/x", 0640 | ~(file_status::perms_all | kOfItself));
    EXPECT_EQ(0640U, asked);
}

TEST(Permissions, OfALinkItselfAreRefusedAndLeaveItsTargetAlone) {
    const TempTree tree;
    test::makeFile(tree / "file", "", 0640);
    test::makeLink("file", tree / "link");
    const std::u16string link = tree.text("link");
    EXPECT_EQ(link, failedPath<InvalidOperation>([&] { permissions(link, 0777 | kOfItself); }));
    EXPECT_EQ(0640U, test::modeOf(tree / "file"));
}

TEST(Permissions, FollowALinkWithoutTheFlag) {
    const TempTree tree;
    test::makeFile(tree / "file", "", 0640);
    test::makeLink("file", tree / "link");
    permissions(tree.text("link"), 0600);
    EXPECT_EQ(0600U, test::modeOf(tree / "file"));
}

TEST(Permissions, OfAMissingItemAreNotFound) {
    const TempTree tree;
    test::makeLink("nowhere", tree / "dangling");
    const std::u16string missing = tree.text("missing");
    EXPECT_EQ(missing, failedPath<PathNotFound>([&] { permissions(missing, 0600 | kOfItself); }));
    EXPECT_THROW(permissions(tree.text("dangling"), 0600), PathNotFound);
    EXPECT_THROW(permissions(u"", 0600), PathNotFound);
}

TEST(Permissions, OfSomebodyElsesFileAreDenied) {
    test::runAsOrdinaryUser(
        [] { EXPECT_THROW(permissions(u"/etc/passwd", 0777 | kOfItself), AccessDenied); });
}

TEST(Permissions, WorkOnASystemWithoutTheNewCall) {
    constexpr unsigned kFchmodat2 = 452;
    test::runInChild([] {
        const TempTree tree;
        test::makeFile(tree / "file", "", 0640);
        test::makeLink("file", tree / "link");
        forgetSystemCall(kFchmodat2);
        permissions(tree.text("file"), 0604 | kOfItself);
        EXPECT_EQ(0604U, test::modeOf(tree / "file"));
        EXPECT_THROW(permissions(tree.text("link"), 0777 | kOfItself), InvalidOperation);
        EXPECT_EQ(0604U, test::modeOf(tree / "file"));
    });
}

struct Instant {
    const char* text;
    timespec time;
};

const Instant kInstants[] = {
    {"1400-01-01T00:00:00", {-17'987'443'200, 0}},
    {"1901-12-13T20:45:51.999999", {-2'147'483'649, 999'999'000}},
    {"1901-12-13T20:45:52", {-2'147'483'648, 0}},
    {"1969-12-31T23:59:59.999999", {-1, 999'999'000}},
    {"1970-01-01T00:00:00", {0, 0}},
    {"2024-02-29T12:34:56.789012", {1'709'210'096, 789'012'000}},
    {"2038-01-19T03:14:07.999999", {2'147'483'647, 999'999'000}},
    {"2038-01-19T03:14:08", {2'147'483'648, 0}},
    {"2446-05-10T22:38:55", {15'032'385'535, 0}},
    {"2446-05-10T22:38:56", {15'032'385'536, 0}},
    {"9999-12-31T23:59:59.999999", {253'402'300'799, 999'999'000}},
};

// The disk and the memory: their file systems keep different spans of time, and each says itself which.
class LastWriteTime : public testing::TestWithParam<const char*> {
protected:
    LastWriteTime() : tree(GetParam()) { test::makeFile(tree / "file"); }

    TempTree tree;
};

TEST_P(LastWriteTime, IsKeptToTheMicrosecondOrRefused) {
    for (const Instant& instant : kInstants) {
        const bool kept = isKept(tree / "file", instant.time);
        test::setModifiedTime(tree / "file", {1'000'000, 7});
        const ptime time = from_iso_extended_string(instant.text);
        if (kept) {
            last_write_time(tree.text("file"), time);
            EXPECT_EQ(time, symlink_status(tree.text("file")).lastWriteTime) << instant.text;
        } else {
            EXPECT_THROW(last_write_time(tree.text("file"), time), InvalidArgument) << instant.text;
            EXPECT_EQ(1'000'000, test::statusOf(tree / "file").st_mtim.tv_sec) << instant.text;
            EXPECT_EQ(7, test::statusOf(tree / "file").st_mtim.tv_nsec) << instant.text;
        }
    }
}

TEST_P(LastWriteTime, LeavesTheAccessTimeAlone) {
    const timespec both[2] = {{5'000, 6}, {7'000, 8}};
    ASSERT_EQ(0, ::utimensat(AT_FDCWD, (tree / "file").c_str(), both, 0));
    last_write_time(tree.text("file"), from_iso_extended_string("2001-02-03T04:05:06"));
    EXPECT_EQ(5'000, test::statusOf(tree / "file").st_atim.tv_sec);
    EXPECT_EQ(6, test::statusOf(tree / "file").st_atim.tv_nsec);
}

TEST_P(LastWriteTime, IsThatOfTheLinkItself) {
    test::makeLink("file", tree / "link");
    test::setModifiedTime(tree / "file", {1'000'000, 0});
    const ptime time = from_iso_extended_string("2001-02-03T04:05:06.000007");
    last_write_time(tree.text("link/"), time);
    EXPECT_EQ(time, symlink_status(tree.text("link")).lastWriteTime);
    EXPECT_EQ(1'000'000, test::statusOf(tree / "file").st_mtim.tv_sec);
}

TEST_P(LastWriteTime, OfAFolderCanBeSet) {
    const ptime time = from_iso_extended_string("2001-02-03T04:05:06.000007");
    test::makeFolder(tree / "folder");
    last_write_time(tree.text("folder"), time);
    EXPECT_EQ(time, symlink_status(tree.text("folder")).lastWriteTime);
}

INSTANTIATE_TEST_SUITE_P(On, LastWriteTime, testing::Values("/tmp", "/dev/shm"),
                         [](const auto& folder) { return folder.index == 0 ? "Disk" : "Memory"; });

TEST(LastWriteTimeOfNothing, SpecialTimesAreRefusedBeforeTheDiskIsSeen) {
    using boost::posix_time::special_values;
    for (const special_values special :
         {boost::posix_time::not_a_date_time, boost::posix_time::pos_infin, boost::posix_time::neg_infin}) {
        EXPECT_EQ(u"/no such",
                  failedPath<InvalidArgument>([&] { last_write_time(u"/no such", ptime(special)); }));
    }
}

TEST(LastWriteTimeOfNothing, MissingItemIsNotFound) {
    const ptime time = from_iso_extended_string("2001-02-03T04:05:06");
    EXPECT_EQ(u"/no such", failedPath<PathNotFound>([&] { last_write_time(u"/no such", time); }));
    EXPECT_EQ(u"", failedPath<PathNotFound>([&] { last_write_time(u"", time); }));
}

/// A file system that keeps a time of its own in place of the one that was asked for.
class OtherTimeKept {
public:
    OtherTimeKept(timespec asked, timespec inItsPlace) : asked_(posix::toPtime(asked)) {
        kept = inItsPlace;
        calls_->utimensat = [](int directory, const char* path, const timespec times[2], int flags) {
            const timespec written[2] = {times[0], times[1].tv_sec == kBefore.tv_sec ? kBefore : kept};
            return kHostCalls.utimensat(directory, path, written, flags);
        };
        test::makeFile(tree_ / "file");
        test::setModifiedTime(tree_ / "file", kBefore);
    }

    void setTime() { last_write_time(tree_.text("file"), asked_); }
    timespec timeNow() const { return test::statusOf(tree_ / "file").st_mtim; }

    static constexpr timespec kBefore = {4'711, 42};

private:
    static timespec kept;
    ptime asked_;
    ScopedSystemCalls calls_;
    TempTree tree_;
};

timespec OtherTimeKept::kept;

struct AskedAndKept {
    timespec asked;
    timespec kept;
};

TEST(LastWriteTimeRounding, CoarserStepOfTheFileSystemIsFine) {
    const AskedAndKept cases[] = {
        {{981'173'107, 500'000'000}, {981'173'107, 500'000'000}},
        {{981'173'107, 500'000'000}, {981'173'107, 0}},
        {{981'173'107, 500'000'000}, {981'173'106, 0}},  // of two seconds
        {{981'173'106, 500'000'000}, {981'173'106, 0}},
        {{-3, 500'000'000}, {-4, 0}},
    };
    for (const auto& [asked, kept] : cases) {
        OtherTimeKept file(asked, kept);
        file.setTime();
        EXPECT_EQ(kept.tv_sec, file.timeNow().tv_sec);
        EXPECT_EQ(kept.tv_nsec, file.timeNow().tv_nsec);
    }
}

TEST(LastWriteTimeRounding, AnyOtherTimeIsRefusedAndTheOldOneBack) {
    const AskedAndKept cases[] = {
        {{981'173'107, 500'000'000}, {981'173'107, 500'001'000}},  // later
        {{981'173'107, 500'000'000}, {981'173'108, 0}},
        {{981'173'107, 500'000'000}, {981'173'106, 1}},  // earlier, and no step
        {{981'173'107, 500'000'000}, {981'173'105, 0}},
        {{2'147'483'648, 0}, {2'147'483'647, 0}},  // the end of what 32 bits hold
        {{981'173'107, 500'000'000}, {0, 0}},
    };
    for (const auto& [asked, kept] : cases) {
        OtherTimeKept file(asked, kept);
        EXPECT_THROW(file.setTime(), InvalidArgument) << kept.tv_sec;
        EXPECT_EQ(OtherTimeKept::kBefore.tv_sec, file.timeNow().tv_sec);
        EXPECT_EQ(OtherTimeKept::kBefore.tv_nsec, file.timeNow().tv_nsec);
    }
}

}  // namespace
