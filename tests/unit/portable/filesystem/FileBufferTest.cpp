#include <pkgcore/platform/filesystem/FileStreams.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/FileBufferCalls.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

namespace {

using fl::filesystem::file_buffer;
using fl::filesystem::posix::kHostCalls;
using std::ios_base;
using test::get;
using test::opened;
using test::put;
using test::tell;
using Traits = std::char_traits<char>;

constexpr ios_base::openmode kInOut = ios_base::in | ios_base::out;

TEST(FileBuffer, ReadingAndWritingFollowEachOtherWithoutASeek) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "abcdef");
    const auto buffer = opened(tree / "file", kInOut);

    EXPECT_EQ(get(*buffer, 2), "ab");
    EXPECT_EQ(put(*buffer, "XY"), 2);
    EXPECT_EQ(get(*buffer, 1), "e");
    EXPECT_EQ(buffer->sputc('Z'), 'Z');
    EXPECT_TRUE(buffer->close());
    EXPECT_EQ(test::contentOf(tree / "file"), "abXYeZ");
}

/// The part of a stream that only other buffers may ask for.
class OpenFileBuffer : public file_buffer {
public:
    using file_buffer::overflow;
};

TEST(FileBuffer, TakesTheEndOfATextForAFlush) {
    const test::TempTree tree;
    const std::string path = tree / "file";
    OpenFileBuffer buffer;
    ASSERT_TRUE(buffer.open(std::wstring(path.begin(), path.end()), ios_base::out,
                            fl::filesystem::share_mode::deny_none));
    EXPECT_EQ('a', buffer.sputc('a'));
    EXPECT_EQ("", test::contentOf(path));
    EXPECT_NE(Traits::eof(), buffer.overflow(Traits::eof()));
    EXPECT_EQ("a", test::contentOf(path));
}

TEST(FileBuffer, UngetGoesBackOverALargeRead) {
    const test::TempTree tree;
    const std::string content = test::someBytes(200000);
    test::makeFile(tree / "file", content);
    const auto buffer = opened(tree / "file", ios_base::in);
    EXPECT_EQ(buffer->sbumpc(), Traits::to_int_type(content[0]));
    EXPECT_EQ(get(*buffer, 150000), content.substr(1, 150000));

    for (std::size_t at = 150000; at > 149000; --at) {
        ASSERT_NE(buffer->sungetc(), Traits::eof());
        ASSERT_EQ(buffer->sgetc(), Traits::to_int_type(content[at])) << at;
    }
}

TEST(FileBuffer, NothingCanBePutBackBeforeTheBeginning) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "a");
    const auto buffer = opened(tree / "file", ios_base::in);

    EXPECT_EQ(buffer->sungetc(), Traits::eof());
    EXPECT_EQ(buffer->sputbackc('x'), Traits::eof());
    EXPECT_EQ(get(*buffer, 5), "a");
}

TEST(FileBuffer, APutBackByteIsReadAndNeverWritten) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "abc");
    const auto buffer = opened(tree / "file", kInOut);
    EXPECT_EQ(get(*buffer, 2), "ab");

    EXPECT_EQ(buffer->sputbackc('X'), 'X');
    EXPECT_EQ(tell(*buffer), 1);
    EXPECT_EQ(get(*buffer, 2), "Xc");
    EXPECT_TRUE(buffer->close());
    EXPECT_EQ(test::contentOf(tree / "file"), "abc");
}

TEST(FileBuffer, AfterTheEndMoreCanBeReadOnceItIsThere) {
    const test::TempTree tree;
    test::makeFile(tree / "log", "one");
    const auto reader = opened(tree / "log", ios_base::in);
    EXPECT_EQ(get(*reader, 10), "one");
    EXPECT_EQ(reader->sgetc(), Traits::eof());

    put(*opened(tree / "log", ios_base::app), "two");
    EXPECT_EQ(get(*reader, 10), "two");
}

TEST(FileBuffer, AfterASeekTheFileIsReadAnew) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "old");
    const auto reader = opened(tree / "file", ios_base::in);
    EXPECT_EQ(get(*reader, 3), "old");

    put(*opened(tree / "file", kInOut), "new");
    EXPECT_EQ(std::streamoff(reader->pubseekpos(0)), 0);
    EXPECT_EQ(get(*reader, 3), "new");
}

TEST(FileBuffer, TellsWhereAppendedBytesWent) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "12345");
    const auto first = opened(tree / "file", ios_base::app);
    EXPECT_EQ(tell(*first), 5) << "the end, before anything is written";

    put(*opened(tree / "file", ios_base::app), "others");
    put(*first, "mine");
    EXPECT_EQ(tell(*first), 15);
    EXPECT_EQ(test::contentOf(tree / "file"), "12345othersmine");
}

TEST(FileBuffer, ASeekToNowhereFailsAndChangesNothing) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "abc");
    const auto buffer = opened(tree / "file", kInOut);
    EXPECT_EQ(buffer->sbumpc(), 'a');

    EXPECT_EQ(std::streamoff(buffer->pubseekoff(-2, ios_base::cur)), -1);
    EXPECT_EQ(std::streamoff(buffer->pubseekoff(std::numeric_limits<std::streamoff>::min(), ios_base::cur)),
              -1);
    EXPECT_EQ(std::streamoff(buffer->pubseekoff(-4, ios_base::end)), -1);
    EXPECT_EQ(tell(*buffer), 1);
    EXPECT_EQ(get(*buffer, 5), "bc");
}

TEST(FileBuffer, PromisesTheRestOfARegularFile) {
    const test::TempTree tree;
    test::makeFile(tree / "file", test::someBytes(100000));
    const auto buffer = opened(tree / "file", kInOut);

    EXPECT_EQ(buffer->in_avail(), 100000);
    buffer->pubseekpos(99990);
    EXPECT_EQ(buffer->in_avail(), 10);
    put(*buffer, "123");
    EXPECT_EQ(buffer->in_avail(), 7);
    buffer->pubseekpos(200000);
    EXPECT_EQ(buffer->in_avail(), 0);
}

TEST(FileBuffer, PromisesNothingOfWhatHasNoSize) {
    EXPECT_EQ(opened("/proc/self/status", ios_base::in)->in_avail(), 0);
    EXPECT_EQ(opened("/dev/zero", ios_base::in)->in_avail(), 0);
    EXPECT_EQ(opened("/dev/null", ios_base::out)->in_avail(), -1);
    EXPECT_EQ(file_buffer().in_avail(), -1);
}

TEST(FileBuffer, ReadsFilesWhoseSizeIsNotKnown) {
    const std::string known = test::contentOf("/proc/version");
    const auto buffer = opened("/proc/version", ios_base::in);

    EXPECT_EQ(get(*buffer, 100000), known);
    EXPECT_EQ(buffer->sungetc() != Traits::eof(), true);
    EXPECT_EQ(get(*buffer, 2), "\n");
}

TEST(FileBuffer, ReadsAPipeToItsEndHoweverSmallThePieces) {
    const test::TempTree tree;
    test::makePipe(tree / "pipe");
    std::thread writer([&] {
        const auto pipe = opened(tree / "pipe", ios_base::out);
        for (int piece = 0; piece < 500; ++piece) {
            put(*pipe, std::to_string(piece) + '\n');
            pipe->pubsync();
        }
    });
    const auto pipe = opened(tree / "pipe", ios_base::in);
    const std::string all = get(*pipe, 100000);
    writer.join();

    EXPECT_EQ(all.size(), 10 * 2 + 90 * 3 + 400 * 4U);
    EXPECT_EQ(all.substr(0, 6), "0\n1\n2\n");
    EXPECT_EQ(tell(*pipe), -1);
}

TEST(FileBuffer, APipeCanBeSteppedBackOverTheBorderOfTwoFillings) {
    const test::TempTree tree;
    test::makePipe(tree / "pipe");
    std::thread writer([&] { put(*opened(tree / "pipe", ios_base::out), "ab"); });
    const auto pipe = opened(tree / "pipe", ios_base::in);
    EXPECT_EQ(pipe->in_avail(), 0) << "a pipe has no size";
    EXPECT_EQ(get(*pipe, 1), "a");
    EXPECT_EQ(get(*pipe, 1), "b");
    EXPECT_EQ(pipe->sgetc(), Traits::eof());
    writer.join();

    EXPECT_NE(pipe->sungetc(), Traits::eof());
    EXPECT_NE(pipe->sungetc(), Traits::eof());
    EXPECT_EQ(get(*pipe, 5), "ab");
}

/// Notes how much each call asks for.
struct Transfers {
    Transfers() {
        sizes.clear();
        calls->read = [](int descriptor, void* bytes, size_t count) {
            sizes.push_back(count);
            return kHostCalls.read(descriptor, bytes, count);
        };
        calls->write = [](int descriptor, const void* bytes, size_t count) {
            sizes.push_back(count);
            return kHostCalls.write(descriptor, bytes, count);
        };
    }
    static inline std::vector<size_t> sizes;
    test::ScopedSystemCalls calls;
};

TEST(FileBuffer, ReadsAheadOnceReadsFollowEachOther) {
    const test::TempTree tree;
    test::makeFile(tree / "file", test::someBytes(300000));
    const auto buffer = opened(tree / "file", ios_base::in);
    const Transfers transfers;
    get(*buffer, 4096);
    get(*buffer, 4096);
    get(*buffer, 16384);
    get(*buffer, 100000);
    buffer->pubseekpos(5);
    get(*buffer, 10);
    get(*buffer, 8192);

    EXPECT_EQ(Transfers::sizes,
              (std::vector<size_t>{4096, 65536, 100000 - (65536 - 4096 - 16384), 8192, 65536}));
}

TEST(FileBuffer, WritesWholeBuffersUnlessMuchComesAtOnce) {
    const test::TempTree tree;
    const auto buffer = opened(tree / "file", ios_base::out);
    const Transfers transfers;
    for (int chunk = 0; chunk < 9; ++chunk) {
        put(*buffer, test::someBytes(16384));
    }
    buffer->pubsync();
    put(*buffer, test::someBytes(40000));

    EXPECT_EQ(Transfers::sizes, (std::vector<size_t>{65536, 65536, 16384, 40000}));
}

TEST(FileBuffer, GoesOnAfterInterruptionsAndShortTransfers) {
    const test::TempTree tree;
    const std::string content = test::someBytes(30000);
    static int turn;
    turn = 0;
    test::ScopedSystemCalls calls;
    calls->write = [](int descriptor, const void* bytes, size_t count) -> ssize_t {
        if (++turn % 2 == 0) {
            errno = EINTR;
            return -1;
        }
        return kHostCalls.write(descriptor, bytes, std::min<size_t>(count, 77));
    };
    calls->read = [](int descriptor, void* bytes, size_t count) -> ssize_t {
        if (++turn % 2 == 0) {
            errno = EINTR;
            return -1;
        }
        return kHostCalls.read(descriptor, bytes, std::min<size_t>(count, 99));
    };

    EXPECT_EQ(put(*opened(tree / "file", ios_base::out), content), 30000);
    EXPECT_EQ(test::contentOf(tree / "file"), content);
    EXPECT_EQ(get(*opened(tree / "file", ios_base::in), 40000), content);
}

TEST(FileBuffer, AClosedOneDoesNothing) {
    file_buffer buffer;

    EXPECT_FALSE(buffer.close());
    EXPECT_EQ(buffer.sgetc(), Traits::eof());
    EXPECT_EQ(buffer.sputc('x'), Traits::eof());
    EXPECT_EQ(put(buffer, test::someBytes(10000)), 0);
    EXPECT_EQ(get(buffer, 10000), "");
    EXPECT_EQ(tell(buffer), -1);
    EXPECT_EQ(buffer.sungetc(), Traits::eof());
}

TEST(FileBuffer, ANegativeCountIsNothing) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "abc");
    const auto buffer = opened(tree / "file", ios_base::in | ios_base::out);
    char unit = 0;
    EXPECT_EQ(buffer->sgetn(&unit, -1), 0);
    EXPECT_EQ(buffer->sputn(&unit, -1), 0);
    EXPECT_EQ(get(*buffer, 3), "abc");
}

}  // namespace
