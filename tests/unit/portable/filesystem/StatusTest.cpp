#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

#include <cerrno>

namespace {

using namespace fl::filesystem;
using test::failedPath;
using test::ScopedSystemCalls;
using test::TempTree;

int callsMade = 0;
mode_t scriptedMode = 0;
int scriptedError = 0;

unsigned kindAt(const std::u16string& path) { return symlink_status(path).kind; }

TEST(Status, TellsTheItemItself) {
    const TempTree tree;
    test::makeFile(tree / "file");
    test::makeFolder(tree / "folder");
    test::makeLink("folder", tree / "link");
    test::makeLink("nowhere", tree / "dangling");
    test::makePipe(tree / "pipe");
    EXPECT_EQ(file_status::regular_file, kindAt(tree.text("file")));
    EXPECT_EQ(file_status::directory_file, kindAt(tree.text("folder")));
    EXPECT_EQ(file_status::symlink_file, kindAt(tree.text("link")));
    EXPECT_EQ(file_status::symlink_file, kindAt(tree.text("dangling")));
    EXPECT_EQ(file_status::fifo_file, kindAt(tree.text("pipe")));
    EXPECT_EQ(file_status::character_file, kindAt(u"/dev/null"));
    EXPECT_EQ(file_status::directory_file, kindAt(u"/"));
    EXPECT_EQ(file_status::directory_file, kindAt(u"."));
}

TEST(Status, EveryKindOfTheSystem) {
    const std::pair<mode_t, unsigned> kinds[] = {
        {S_IFREG, file_status::regular_file},   {S_IFDIR, file_status::directory_file},
        {S_IFLNK, file_status::symlink_file},   {S_IFBLK, file_status::block_file},
        {S_IFCHR, file_status::character_file}, {S_IFIFO, file_status::fifo_file},
        {S_IFSOCK, file_status::socket_file},   {0, file_status::unknown_file},
        {S_IFMT, file_status::unknown_file},
    };
    ScopedSystemCalls calls;
    calls->fstatat = [](int, const char*, struct stat* status, int) {
        *status = {};
        status->st_mode = scriptedMode;
        return 0;
    };
    for (const auto& [mode, kind] : kinds) {
        scriptedMode = mode | 06751;
        EXPECT_EQ(kind, kindAt(u"/x"));
        EXPECT_EQ(06751U, symlink_status(u"/x").permissions);
    }
}

TEST(Status, NothingThereIsAnAnswer) {
    const TempTree tree;
    test::makeFile(tree / "file");
    test::makeLink("nowhere", tree / "dangling");
    for (const char* const name :
         {"missing", "missing/below", "file/below", "dangling/below", "missing/../file"}) {
        const file_status status = symlink_status(tree.text(name));
        EXPECT_EQ(file_status::file_not_found, status.kind) << name;
        EXPECT_EQ(0U, status.permissions);
        EXPECT_TRUE(status.lastWriteTime.is_not_a_date_time());
        EXPECT_FALSE(exists(tree.text(name))) << name;
    }
    EXPECT_EQ(file_status::file_not_found, kindAt(u""));
    EXPECT_FALSE(exists(u""));
}

TEST(Status, TrailingSeparatorNamesTheItemItself) {
    const TempTree tree;
    test::makeFile(tree / "file");
    test::makeFolder(tree / "folder");
    test::makeLink("folder", tree / "link");
    EXPECT_EQ(file_status::symlink_file, kindAt(tree.text("link/")));
    EXPECT_EQ(file_status::symlink_file, kindAt(tree.text("link///")));
    EXPECT_EQ(file_status::regular_file, kindAt(tree.text("file/")));
    EXPECT_EQ(file_status::directory_file, kindAt(tree.text("folder/")));
    EXPECT_EQ(file_status::directory_file, kindAt(u"///"));
}

TEST(Status, DanglingLinkExists) {
    const TempTree tree;
    test::makeLink("nowhere", tree / "dangling");
    EXPECT_TRUE(exists(tree.text("dangling")));
}

TEST(Status, GivesAllTwelvePermissionBits) {
    const TempTree tree;
    test::makeFile(tree / "file");
    for (const mode_t mode : {0000U, 0644U, 0777U, 04755U, 02755U, 01777U, 07777U}) {
        test::setMode(tree / "file", mode);
        EXPECT_EQ(mode, symlink_status(tree.text("file")).permissions);
    }
}

TEST(Status, GivesTheTimeToTheMicrosecond) {
    const TempTree tree;
    test::makeFile(tree / "file");
    test::setModifiedTime(tree / "file", {-1, 999'999'999});
    EXPECT_EQ(boost::posix_time::from_iso_extended_string("1969-12-31T23:59:59.999999"),
              symlink_status(tree.text("file")).lastWriteTime);
}

TEST(Status, FindsNamesThatAreNotUtf8) {
    const TempTree tree;
    test::makeFile(tree / "na\xEFve\xFF");
    EXPECT_EQ(file_status::regular_file, kindAt(tree.text(u"na\xDCEFve\xDCFF")));
    EXPECT_FALSE(exists(tree.text(u"na\u00EFve\u00FF")));
}

TEST(Status, NameOfTheGreatestLengthAndOneMore) {
    const TempTree tree;
    test::makeFile(tree / std::string(255, 'n'));
    EXPECT_TRUE(exists(tree.text(std::string(255, 'n'))));
    const std::u16string tooLong = tree.text(std::string(256, 'n'));
    EXPECT_EQ(tooLong, failedPath<FileNameTooLarge>([&] { exists(tooLong); }));
}

TEST(Status, PathWithoutBytesIsAConversionFailure) {
    const std::u16string paths[] = {std::u16string(u"/tmp\0/x", 7), u"/tmp/\xD800", u"\xDFFF"};
    for (const std::u16string& path : paths) {
        EXPECT_EQ(path, failedPath<FileNameConversionFailure>([&] { symlink_status(path); }));
        EXPECT_EQ(path, failedPath<FileNameConversionFailure>([&] { exists(path); }));
    }
}

TEST(Status, ClosedFolderIsAFailureAndNotAbsence) {
    test::runAsOrdinaryUser([] {
        const TempTree tree;
        test::makeFolder(tree / "closed");
        test::makeFile(tree / "closed/file");
        test::setMode(tree / "closed", 0600);
        const std::u16string path = tree.text("closed/file");
        EXPECT_EQ(path, failedPath<AccessDenied>([&] { symlink_status(path); }));
        EXPECT_EQ(path, failedPath<AccessDenied>([&] { exists(path); }));
        test::setMode(tree / "closed", 0700);
    });
}

TEST(Status, LinksInACircleAreAFailure) {
    const TempTree tree;
    test::makeLink("circle", tree / "circle");
    EXPECT_TRUE(exists(tree.text("circle")));
    EXPECT_THROW(exists(tree.text("circle/below")), InvalidArgument);
}

TEST(Status, OtherFailuresKeepTheirNumber) {
    ScopedSystemCalls calls;
    calls->fstatat = [](int, const char*, struct stat*, int) {
        errno = scriptedError;
        return -1;
    };
    for (const int error : {EIO, ENOMEM, EOVERFLOW, ESTALE}) {
        scriptedError = error;
        EXPECT_EQ(error, test::failedNumber([] { symlink_status(u"/x"); }));
        EXPECT_EQ(error, test::failedNumber([] { exists(u"/x"); }));
    }
}

TEST(Status, IsOneCallOfTheSystem) {
    ScopedSystemCalls calls;
    calls->fstatat = [](int directory, const char* path, struct stat* status, int flags) {
        ++callsMade;
        return fl::filesystem::posix::kHostCalls.fstatat(directory, path, status, flags);
    };
    calls->openat = [](int, const char* path, int, mode_t) {
        ADD_FAILURE() << path;
        return -1;
    };
    callsMade = 0;
    EXPECT_TRUE(exists(u"/tmp"));
    EXPECT_FALSE(exists(u"/tmp/no such file"));
    symlink_status(u"/tmp");
    symlink_status(u"/tmp/no such file");
    EXPECT_EQ(4, callsMade);
}

}  // namespace
