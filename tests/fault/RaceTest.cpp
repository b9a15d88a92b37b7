#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>

namespace test {

namespace {

namespace fsys = fl::filesystem;
using fsys::posix::kHostCalls;

// What another process does in the middle of an operation: once, the first time that the hook's call comes
// by. The entries of the table are plain functions, so it is static.
std::function<void()> interference;

void interfereOnce() {
    if (interference) {
        const std::function<void()> act = std::move(interference);
        interference = nullptr;
        act();
    }
}

bool namesItem(const char* path, const char* name) {
    const char* const slash = std::strrchr(path, '/');
    return std::strcmp(slash == nullptr ? path : slash + 1, name) == 0;
}

/// Others act on the same items while an operation of the library runs.
class RaceTest : public ::testing::Test {
protected:
    void SetUp() override {
        makeFolder(tree / "outside");
        makeFile(tree / "outside/kept", "kept");
        makeFolder(tree / "top");
        makeFolder(tree / "top/inner");
        makeFile(tree / "top/inner/file", "text");
        makeFile(tree / "top/file", "text");
        outside = snapshot(tree / "outside");
    }
    void TearDown() override {
        interference = nullptr;
        EXPECT_EQ(outside, snapshot(tree / "outside"));
    }

    void putLinkInPlaceOf(const std::string& name) {
        ASSERT_EQ(0, ::rename((tree / name).c_str(), (tree / "aside").c_str()));
        makeLink(tree / "outside", tree / name);
    }

    NoDescriptorLeft noDescriptorLeft;
    TempTree tree{fastFolder()};
    TreeSnapshot outside;
    ScopedSystemCalls calls;
};

TEST_F(RaceTest, RemovingDoesNotFollowALinkPutInPlaceOfAFolder) {
    interference = [&] { putLinkInPlaceOf("top/inner"); };
    calls->openat = [](int folder, const char* path, int flags, mode_t mode) {
        if (namesItem(path, "inner")) {
            interfereOnce();
        }
        return kHostCalls.openat(folder, path, flags, mode);
    };
    fsys::remove_all(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
    EXPECT_TRUE(isThere(tree / "aside/file"));
}

TEST_F(RaceTest, RemovingDoesNotFollowALinkPutInPlaceOfTheFolderItself) {
    interference = [&] { putLinkInPlaceOf("top"); };
    calls->openat = [](int folder, const char* path, int flags, mode_t mode) {
        if (namesItem(path, "top")) {
            interfereOnce();
        }
        return kHostCalls.openat(folder, path, flags, mode);
    };
    fsys::remove_all(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
    EXPECT_TRUE(isThere(tree / "aside/inner/file"));
}

TEST_F(RaceTest, RemovingStaysInAFolderThatIsMovedAway) {
    makeFolder(tree / "top/inner/deep");
    makeFile(tree / "top/inner/deep/file");
    interference = [&] {
        ASSERT_EQ(0, ::rename((tree / "top/inner/deep").c_str(), (tree / "outside/deep").c_str()));
    };
    calls->unlinkat = [](int folder, const char* path, int flags) {
        if (namesItem(path, "file")) {
            interfereOnce();
        }
        return kHostCalls.unlinkat(folder, path, flags);
    };
    try {
        fsys::remove_all(tree.text("top"));
    } catch (const fsys::FsysExceptionBase&) {
        // Whether the folder that left counts as a failure is not what this is about.
    }
    ::unlink((tree / "outside/deep/file").c_str());
    ::rmdir((tree / "outside/deep").c_str());
}

TEST_F(RaceTest, RemovingFindsItsWayBackOrGivesUpWhereADeepFolderIsMovedAway) {
    constexpr int levels = 40;  // more than are held open at once, so that the way back goes through ".."
    makeFolder(tree / "deep");
    makeChain(tree / "deep", "ab", levels);
    makeFolder(tree / "elsewhere");
    makeFolder(tree / "elsewhere/ab");  // of the name that the removal will look for
    std::string part = tree / "deep";
    for (int level = 0; level < 5; ++level) {
        part += "/ab";
    }
    interference = [&] { ASSERT_EQ(0, ::rename(part.c_str(), (tree / "elsewhere/moved").c_str())); };
    calls->unlinkat = [](int folder, const char* path, int flags) {
        if (namesItem(path, "leaf")) {
            interfereOnce();
        }
        return kHostCalls.unlinkat(folder, path, flags);
    };
    EXPECT_THROW(fsys::remove_all(tree.text("deep")), fsys::SystemError);
    EXPECT_TRUE(isThere(tree / "elsewhere/ab"));
}

TEST_F(RaceTest, RemovingTakesWhatIsAddedMeanwhile) {
    interference = [&] { makeFile(tree / "top/inner/late"); };
    calls->unlinkat = [](int folder, const char* path, int flags) {
        if (namesItem(path, "file")) {
            interfereOnce();
        }
        return kHostCalls.unlinkat(folder, path, flags);
    };
    fsys::remove_all(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(RaceTest, RemovingDoesNotMindWhatOthersRemoveFirst) {
    interference = [&] {
        ::unlink((tree / "top/inner/file").c_str());
        ::unlink((tree / "top/file").c_str());
        ::rmdir((tree / "top/inner").c_str());
    };
    calls->unlinkat = [](int folder, const char* path, int flags) {
        if (namesItem(path, "file")) {
            interfereOnce();
        }
        return kHostCalls.unlinkat(folder, path, flags);
    };
    fsys::remove_all(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(RaceTest, CopyingDoesNotFollowALinkPutInPlaceOfAFolder) {
    interference = [&] { putLinkInPlaceOf("top/inner"); };
    calls->openat = [](int folder, const char* path, int flags, mode_t mode) {
        if (namesItem(path, "inner")) {
            interfereOnce();
        }
        return kHostCalls.openat(folder, path, flags, mode);
    };
    EXPECT_THROW(fsys::copy_directory(tree.text("top"), tree.text("to")), fsys::FsysExceptionBase);
    EXPECT_FALSE(isThere(tree / "to/inner/kept"));
}

TEST_F(RaceTest, CopyingDoesNotWriteThroughALinkPutInPlaceOfADestinationFolder) {
    calls->mkdirat = [](int folder, const char* path, mode_t mode) {
        const int result = kHostCalls.mkdirat(folder, path, mode);
        if (namesItem(path, "inner")) {
            interfereOnce();
        }
        return result;
    };
    interference = [&] {
        ASSERT_EQ(0, ::rmdir((tree / "to/inner").c_str()));
        makeLink(tree / "outside", tree / "to/inner");
    };
    EXPECT_THROW(fsys::copy_directory(tree.text("top"), tree.text("to")), fsys::FsysExceptionBase);
}

TEST_F(RaceTest, CopyingDoesNotWaitForAPipePutInPlaceOfTheFile) {
    interference = [&] {
        ASSERT_EQ(0, ::unlink((tree / "top/file").c_str()));
        makePipe(tree / "top/file");
    };
    calls->openat = [](int folder, const char* path, int flags, mode_t mode) {
        if (namesItem(path, "file")) {
            interfereOnce();
        }
        return kHostCalls.openat(folder, path, flags, mode);
    };
    EXPECT_THROW(fsys::copy_file(tree.text("top/file"), tree.text("to"), fsys::copy_option::fail_if_exists),
                 fsys::InvalidOperation);
    EXPECT_FALSE(isThere(tree / "to"));
}

TEST_F(RaceTest, CopyingDoesNotReplaceAFileThatAppearsMeanwhile) {
    interference = [&] { makeFile(tree / "to", "mine"); };
    calls->openat = [](int folder, const char* path, int flags, mode_t mode) {
        if ((flags & O_CREAT) != 0) {
            interfereOnce();
        }
        return kHostCalls.openat(folder, path, flags, mode);
    };
    EXPECT_THROW(fsys::copy_file(tree.text("top/file"), tree.text("to"), fsys::copy_option::fail_if_exists),
                 fsys::FileExistsError);
    EXPECT_EQ("mine", contentOf(tree / "to"));
}

TEST_F(RaceTest, CopyingReadsAFileThatGrowsOrShrinksToItsEnd) {
    for (const off_t size : {0, 3, 100, 200'000, 2'000'000}) {
        const TempTree place{fastFolder()};
        makeFile(place / "from", someBytes(1'000'000));
        interference = [&] { ASSERT_EQ(0, ::truncate((place / "from").c_str(), size)); };
        calls->read = [](int file, void* bytes, std::size_t count) {
            interfereOnce();
            return kHostCalls.read(file, bytes, count);
        };
        fsys::copy_file(place.text("from"), place.text("to"), fsys::copy_option::fail_if_exists);
        EXPECT_TRUE(contentOf(place / "from") == contentOf(place / "to")) << size;
    }
}

TEST_F(RaceTest, ACopyIsNeverMoreOpenThanItsSource) {
    static mode_t tooOpen;
    for (const mode_t bits : {0600U, 0640U, 0400U}) {
        tooOpen = ~bits & 0777U;
        calls->openat = [](int folder, const char* path, int flags, mode_t mode) {
            EXPECT_TRUE((flags & O_CREAT) == 0 || (mode & tooOpen) == 0) << path << ' ' << std::oct << mode;
            return kHostCalls.openat(folder, path, flags, mode);
        };
        calls->fchmod = [](int file, mode_t mode) {
            EXPECT_EQ(0U, mode & (tooOpen | 07000U)) << std::oct << mode;
            return kHostCalls.fchmod(file, mode);
        };
        const TempTree place{fastFolder()};
        makeFile(place / "from", "text", bits);
        fsys::copy_file(place.text("from"), place.text("new"), fsys::copy_option::fail_if_exists);
        fsys::copy_file(place.text("from"), place.text("new"), fsys::copy_option::overwrite_if_exists);
        EXPECT_EQ(bits, modeOf(place / "new"));
    }
}

TEST_F(RaceTest, BlocksThatCanBeSharedAreNotCopied) {
    static int reads;
    reads = 0;
    calls->ficlone = [](int to, int from) {
        char bytes[100];
        const ssize_t size = ::pread(from, bytes, sizeof bytes, 0);
        return ::pwrite(to, bytes, static_cast<std::size_t>(size), 0) == size ? 0 : -1;
    };
    calls->read = [](int file, void* bytes, std::size_t count) {
        ++reads;
        return kHostCalls.read(file, bytes, count);
    };
    fsys::copy_file(tree.text("top/file"), tree.text("to"), fsys::copy_option::fail_if_exists);
    EXPECT_EQ("text", contentOf(tree / "to"));
    EXPECT_EQ(0, reads);
}

TEST_F(RaceTest, FileSystemsThatTellNoKindsAreListedCopiedAndRemoved) {
    calls->getdents64 = [](int folder, void* records, std::size_t size) {
        constexpr std::size_t lengthOffset = 16;  // of the kernel's record: inode, offset, length, kind, name
        constexpr std::size_t kindOffset = 18;
        const ssize_t count = kHostCalls.getdents64(folder, records, size);
        auto* const bytes = static_cast<char*>(records);
        for (ssize_t at = 0; at < count;) {
            std::uint16_t length = 0;
            std::memcpy(&length, bytes + at + lengthOffset, sizeof length);
            bytes[at + static_cast<ssize_t>(kindOffset)] = 0;
            at += length;
        }
        return count;
    };
    makeLink("nowhere", tree / "top/link");
    makePipe(tree / "pipe");
    opc::LocalFileSystemOps ops;
    std::vector<opc::ustring> files;
    ops.getFiles(tree.text("top"), files, true);
    std::sort(files.begin(), files.end());
    EXPECT_EQ((std::vector<opc::ustring>{tree.text("top/file"), tree.text("top/inner/file"),
                                         tree.text("top/link")}),
              files);
    ops.copy(tree.text("top"), tree.text("to"), opc::Fail);
    EXPECT_EQ(snapshot(tree / "top"), snapshot(tree / "to"));
    ops.removeAll(tree.text("to"));
    EXPECT_FALSE(isThere(tree / "to"));
}

TEST_F(RaceTest, AListingAsksNothingAboutItsEntries) {
    static int questions;
    questions = 0;
    calls->fstatat = [](int folder, const char* path, struct stat* status, int flags) {
        ++questions;
        return kHostCalls.fstatat(folder, path, status, flags);
    };
    for (int number = 0; number < 300; ++number) {
        makeFile(tree / ("top/inner/" + std::to_string(number)));
    }
    std::vector<opc::ustring> files;
    opc::LocalFileSystemOps().getFiles(tree.text("top"), files, true);
    EXPECT_EQ(302U, files.size());
    EXPECT_EQ(0, questions);
}

}  // namespace
}  // namespace test
