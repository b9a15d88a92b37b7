// A file_buffer does what std::filebuf does, for random sequences of calls on files of the same content.

#include <pkgcore/platform/filesystem/FileStreams.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <sstream>

namespace {

using fl::filesystem::file_buffer;
using std::ios_base;
using Traits = std::char_traits<char>;

constexpr int kSequencesPerMode = 4000;
constexpr int kMostCalls = 24;
constexpr std::size_t kStdBufferSize = 8191;

struct Mode {
    const char* name;
    ios_base::openmode flags;
};

constexpr Mode kModes[] = {
    {"Input", ios_base::in},
    {"Output", ios_base::out},
    {"Append", ios_base::app},
    {"InputOutput", ios_base::in | ios_base::out},
    {"InputOutputAtEnd", ios_base::in | ios_base::out | ios_base::ate},
    {"InputOutputTruncated", ios_base::in | ios_base::out | ios_base::trunc},
    {"InputAppend", ios_base::in | ios_base::app},
};

/// Files in memory where the machine has a place for such: the sequences are many.
std::string fastFolder() { return std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp"; }

/// The same file twice, one under each implementation; every call is made on both and must give the same.
class Twins {
public:
    Twins(const test::TempTree& tree, ios_base::openmode mode, unsigned seed)
        : ourPath_(tree / "ours"), stdPath_(tree / "std"), mode_(mode), random_(seed) {
        const std::string content = test::someBytes(randomSize());
        test::makeFile(ourPath_, content);
        test::makeFile(stdPath_, content);
        const bool opened = ours_.open(std::wstring(ourPath_.begin(), ourPath_.end()), mode,
                                       fl::filesystem::share_mode::deny_none);
        EXPECT_TRUE(opened);
        EXPECT_NE(std_.open(stdPath_, mode), nullptr);
    }

    /// One random call; false once the two differ.
    bool call() {
        static constexpr bool (Twins::*calls[])() = {
            &Twins::getMany, &Twins::getMany, &Twins::putMany, &Twins::putMany, &Twins::get,
            &Twins::peek,    &Twins::next,    &Twins::unget,   &Twins::putBack, &Twins::put,
            &Twins::seek,    &Twins::seek,    &Twins::tell,    &Twins::sync,
        };
        return (this->*calls[below(std::size(calls))])();
    }

    bool closeAndCompare() {
        log_ << "close";
        const bool ours = ours_.close();
        return same(ours, std_.close() != nullptr) && test::contentOf(ourPath_) == test::contentOf(stdPath_);
    }

    std::string log() const { return log_.str(); }

private:
    std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
    }

    /// Mostly small, sometimes around the borders of either implementation's buffer.
    std::size_t randomSize() {
        static constexpr std::size_t bounds[] = {2, 20, 300, 5000, 20000, 140000};
        return below(bounds[below(std::size(bounds))]);
    }

    template <typename Result>
    bool same(const Result& ours, const Result& standard) {
        log_ << " = " << ours << "; ";
        if (ours == standard) {
            return true;
        }
        log_ << "where std::filebuf gives " << standard;
        return false;
    }

    /// After a read past its buffer std::filebuf would unget a stale byte; a peek lets it forget that one.
    bool getMany() {
        const std::size_t size = randomSize();
        log_ << "sgetn " << size;
        std::string ours(size, '?');
        std::string standard(size, '?');
        const auto count = ours_.sgetn(ours.data(), static_cast<std::streamsize>(size));
        const bool isSame =
            same(count, std_.sgetn(standard.data(), static_cast<std::streamsize>(size))) && ours == standard;
        return isSame && (size < kStdBufferSize || peek());
    }

    bool putMany() {
        const std::string bytes = test::someBytes(randomSize());
        log_ << "sputn " << bytes.size();
        const auto size = static_cast<std::streamsize>(bytes.size());
        const auto count = ours_.sputn(bytes.data(), size);
        return same(count, std_.sputn(bytes.data(), size));
    }

    bool get() {
        log_ << "sbumpc";
        last_ = ours_.sbumpc();
        return same(last_, std_.sbumpc());
    }

    bool peek() {
        log_ << "sgetc";
        return same(ours_.sgetc(), std_.sgetc());
    }

    bool next() {
        log_ << "snextc";
        return same(ours_.snextc(), std_.snextc());
    }

    bool unget() {
        log_ << "sungetc";
        // Only whether it worked: the value is that of the byte or a stand-in for it.
        const bool ours = ours_.sungetc() != Traits::eof();
        return same(ours, std_.sungetc() != Traits::eof());
    }

    /// Puts back another byte than was read, reads it again, and seeks to where that leads: deeper than once,
    /// and for how long the byte is remembered, the standard promises nothing. The peek moves std::filebuf
    /// on, whose position is wrong while the foreign byte is there.
    bool putBack() {
        if (!get() || last_ == Traits::eof()) {
            return last_ == Traits::eof();
        }
        const char other = static_cast<char>(last_ + 1);
        log_ << "sputbackc";
        return same(ours_.sputbackc(other), std_.sputbackc(other)) && get() && peek() && stay();
    }

    bool stay() {
        log_ << "seek to the position";
        const auto ours = ours_.pubseekpos(ours_.pubseekoff(0, ios_base::cur));
        const auto standard = std_.pubseekpos(std_.pubseekoff(0, ios_base::cur));
        return same(std::streamoff(ours), std::streamoff(standard));
    }

    bool put() {
        log_ << "sputc";
        return same(ours_.sputc('x'), std_.sputc('x'));
    }

    bool seek() {
        static constexpr ios_base::seekdir directions[] = {ios_base::beg, ios_base::cur, ios_base::end};
        const ios_base::seekdir direction = directions[below(3)];
        const auto size = static_cast<std::streamoff>(randomSize());
        const std::streamoff offset = direction == ios_base::beg || below(3) == 0 ? size : -size;
        if (offset == 0 && direction == ios_base::cur) {
            return tell();
        }
        log_ << "seek " << offset << " from " << direction;
        return same(std::streamoff(ours_.pubseekoff(offset, direction)),
                    std::streamoff(std_.pubseekoff(offset, direction)));
    }

    /// In append mode std::filebuf does not know where a pending byte will go; ours does without the sync.
    bool tell() {
        log_ << "tell";
        const std::streamoff ours = ours_.pubseekoff(0, ios_base::cur);
        if ((mode_ & ios_base::app) != 0) {
            std_.pubsync();
        }
        return same(ours, std::streamoff(std_.pubseekoff(0, ios_base::cur)));
    }

    bool sync() {
        log_ << "sync";
        return same(ours_.pubsync(), std_.pubsync());
    }

    std::string ourPath_;
    std::string stdPath_;
    ios_base::openmode mode_;
    std::mt19937 random_;
    std::ostringstream log_;
    int last_ = Traits::eof();
    file_buffer ours_;
    std::filebuf std_;
};

class FileBufferLikeStd : public testing::TestWithParam<Mode> {
protected:
    /// The calls that a failing sequence made, or nothing.
    std::string firstDifference(unsigned seed) {
        Twins twins(tree_, GetParam().flags, seed);
        const unsigned calls = seed % kMostCalls;
        for (unsigned made = 0; made < calls; ++made) {
            if (!twins.call()) {
                return twins.log();
            }
        }
        return twins.closeAndCompare() ? std::string() : twins.log() + " (content differs)";
    }

private:
    test::TempTree tree_{fastFolder()};
};

TEST_P(FileBufferLikeStd, GivesTheSameForEachCallAndTheSameFile) {
    for (unsigned seed = 0; seed < kSequencesPerMode; ++seed) {
        ASSERT_EQ(firstDifference(seed), "") << "seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, FileBufferLikeStd, testing::ValuesIn(kModes),
                         [](const auto& mode) { return std::string(mode.param.name); });

}  // namespace
