#include <pkgcore/platform/storage/Streams.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/ScopedEnvironment.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iterator>
#include <string>

namespace foundation::storage::portable {

namespace {

/// A file in memory, so that every call of the system is one for the draft.
class UpdateDraft : public testing::Test {
protected:
    UpdateDraft() { vfs::ofstream(file_, std::ios_base::out) << "hello world"; }

    std::string content() const {
        vfs::ifstream stream(file_, std::ios_base::in);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    std::size_t draftsLeft() const {
        const std::filesystem::directory_iterator drafts(temporary_.path());
        return static_cast<std::size_t>(std::distance(begin(drafts), end(drafts)));
    }

    test::NoDescriptorLeft noDescriptorLeft_;
    test::TempTree temporary_;
    test::ScopedEnvironment folder_{"TMPDIR", temporary_.path().c_str()};
    vfs::File file_{vfs::CanonicalAbsoluteIRI(u"mem://store/f"),
                    vfs::StorageSystemBuilder().mount(u"mem", provider::makeMemoryProvider()).build()};
};

TEST_F(UpdateDraft, HasNoNameWhileItIsOpenAndIsGoneThen) {
    {
        vfs::ofstream stream(file_, std::ios_base::in);
        stream << "HELLO" << std::flush;
        EXPECT_TRUE(stream.good());
        EXPECT_EQ(draftsLeft(), 0U);
    }
    EXPECT_EQ(content(), "HELLO world");
    EXPECT_EQ(draftsLeft(), 0U);
}

TEST_F(UpdateDraft, ThatCannotBeMadeOpensNothing) {
    const test::ScopedEnvironment nowhere("TMPDIR", "/proc");
    const vfs::ofstream stream(file_, std::ios_base::in);
    EXPECT_TRUE(stream.fail());
    EXPECT_EQ(content(), "hello world");
}

TEST_F(UpdateDraft, ThatKeepsItsNameServesAllTheSame) {
    test::ScopedSystemCalls calls;
    calls->unlinkat = [](int, const char*, int) {
        errno = EACCES;
        return -1;
    };
    {
        vfs::ofstream stream(file_, std::ios_base::in);
        stream << "HELLO" << std::flush;
        EXPECT_TRUE(stream.good());
    }
    EXPECT_EQ(content(), "HELLO world");
    EXPECT_EQ(draftsLeft(), 1U);
}

TEST_F(UpdateDraft, ThatDoesNotTakeTheOldContentOpensNothing) {
    test::ScopedSystemCalls calls;
    calls->write = [](int, const void*, size_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
    const vfs::ofstream stream(file_, std::ios_base::in);
    EXPECT_TRUE(stream.fail());
    EXPECT_EQ(content(), "hello world");
}

TEST_F(UpdateDraft, ThatTakesNoMorePublishesNothing) {
    vfs::ofstream stream(file_, std::ios_base::in);
    test::ScopedSystemCalls calls;
    calls->write = [](int, const void*, size_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
    stream << std::string(100'000, 'y') << std::flush;
    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(content(), "hello world");
}

TEST_F(UpdateDraft, ThatCannotBeReadBackPublishesNothingFromThenOn) {
    vfs::ofstream stream(file_, std::ios_base::in);
    {
        test::ScopedSystemCalls calls;
        calls->read = [](int, void*, size_t) -> ssize_t {
            errno = EIO;
            return -1;
        };
        stream << "HELLO" << std::flush;
        EXPECT_TRUE(stream.bad());
    }
    EXPECT_EQ(content(), "hello world");
    stream.clear();
    stream << "again" << std::flush;
    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(content(), "hello world");
}

int seeksLeft = 0;

TEST_F(UpdateDraft, ThatCannotSeekPublishesAllOrNothing) {
    bool succeeded = false;
    for (int number = 0; !succeeded; ++number) {
        SCOPED_TRACE(number);
        ASSERT_LT(number, 20);
        vfs::ofstream(file_, std::ios_base::out) << "hello world";
        vfs::ofstream stream(file_, std::ios_base::in);
        stream << "HELLO";
        test::ScopedSystemCalls calls;
        seeksLeft = number;
        calls->lseek = [](int file, off_t offset, int whence) -> off_t {
            if (seeksLeft-- > 0) return ::lseek(file, offset, whence);
            errno = EIO;
            return -1;
        };
        succeeded = !(stream << std::flush).fail();
        EXPECT_EQ(content(), succeeded ? "HELLO world" : "hello world");
        stream.clear();
        stream << "!" << std::flush;
        EXPECT_EQ(content(), succeeded && stream ? "HELLO!world" : succeeded ? "HELLO world" : "hello world");
    }
}

}  // namespace

}  // namespace foundation::storage::portable
