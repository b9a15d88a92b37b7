// Readers that leave their folder and come back to it, with file systems of different manners beneath.

#include <pkgcore/portable/filesystem/FolderReader.hpp>

#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>
#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/ScriptedFolder.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

namespace {

using fl::filesystem::posix::FileDescriptor;
using fl::filesystem::posix::FolderReader;
using Names = std::vector<std::string>;

/// A folder in memory whose entries have positions: by place, so that they shift when an earlier entry goes,
/// or by a number of their own, which they keep.
class SeekableFolder {
public:
    enum class Positions { shifting, lasting };

    SeekableFolder(Positions kind, const Names& names) {
        positions = kind;
        entries.clear();
        for (const std::string& name : names) add(name);
        position = 0;
        seekError = 0;
        readError = 0;
        calls_->getdents64 = read;
        calls_->lseek = seek;
    }

    void add(const std::string& name) { entries.push_back({name, static_cast<off_t>(10 * entries.size())}); }
    void drop(const std::string& name) {
        entries.erase(std::find_if(entries.begin(), entries.end(),
                                   [&](const Entry& entry) { return entry.name == name; }));
    }
    static void openAnew() { position = 0; }
    void reverse() {
        std::reverse(entries.begin(), entries.end());
        for (std::size_t i = 0; i < entries.size(); ++i) entries[i].number = static_cast<off_t>(10 * i);
    }

    static inline int seekError;
    static inline int readError;

private:
    struct Entry {
        std::string name;
        off_t number;
    };

    static off_t positionOf(std::size_t index) {
        return positions == Positions::shifting ? static_cast<off_t>(index) : entries[index].number;
    }
    static off_t positionBehind(std::size_t index) {
        return positions == Positions::shifting ? static_cast<off_t>(index) + 1 : entries[index].number + 1;
    }

    // Entries are few at a time, so that a reader has to come back for more.
    static ssize_t read(int, void* to, std::size_t /*room*/) {
        if (readError != 0) {
            errno = readError;
            return -1;
        }
        std::size_t index = 0;
        while (index < entries.size() && positionOf(index) < position) ++index;
        test::Records records;
        for (std::size_t last = std::min(index + 2, entries.size()); index < last; ++index) {
            position = positionBehind(index);
            records.add(entries[index].name, DT_DIR, position);
        }
        records.bytes().copy(static_cast<char*>(to), records.bytes().size());
        return static_cast<ssize_t>(records.bytes().size());
    }
    static off_t seek(int, off_t to, int whence) {
        EXPECT_EQ(SEEK_SET, whence);
        errno = seekError;
        return seekError != 0 ? -1 : position = to;
    }

    static inline Positions positions;
    static inline std::vector<Entry> entries;
    static inline off_t position;
    test::ScopedSystemCalls calls_;
};

Names rest(FolderReader& reader) {
    Names names;
    while (reader.next()) names.emplace_back(reader.name());
    return names;
}

class ParkedReader : public testing::TestWithParam<SeekableFolder::Positions> {
protected:
    /// A reader that was parked on an entry.
    static FolderReader parkedOn(const std::string& name) {
        SeekableFolder::openAnew();
        FolderReader reader(1);
        while (reader.next() && reader.name() != name) {
        }
        reader.park();
        EXPECT_TRUE(reader.isParked());
        EXPECT_EQ(name, reader.name());
        return reader;
    }

    SeekableFolder folder{GetParam(), {".", "a", "b", "..", "c", "d", "e"}};
};

TEST_P(ParkedReader, GoesOnWhereItWas) {
    const Names all = {"a", "b", "c", "d", "e"};
    for (std::size_t i = 0; i < all.size(); ++i) {
        FolderReader reader = parkedOn(all[i]);
        reader.resume(2);
        EXPECT_FALSE(reader.isParked());
        EXPECT_FALSE(reader.isAstray());
        EXPECT_EQ(all[i], reader.name());
        EXPECT_EQ(DT_DIR, reader.type());
        EXPECT_EQ(Names(all.begin() + static_cast<std::ptrdiff_t>(i) + 1, all.end()), rest(reader));
        EXPECT_EQ(0, reader.error());
    }
}

TEST_P(ParkedReader, CanBeParkedAgain) {
    FolderReader reader = parkedOn("a");
    for (const char* const name : {"b", "c", "d", "e"}) {
        reader.resume(2);
        ASSERT_TRUE(reader.next());
        EXPECT_STREQ(name, reader.name());
        reader.park();
    }
    reader.resume(2);
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(0, reader.error());
}

TEST_P(ParkedReader, FindsItsEntryWhereOthersHaveGone) {
    FolderReader reader = parkedOn("c");
    folder.drop("a");
    folder.drop("b");
    reader.resume(2);
    EXPECT_FALSE(reader.isAstray());
    EXPECT_STREQ("c", reader.name());
    EXPECT_EQ((Names{"d", "e"}), rest(reader));
}

TEST_P(ParkedReader, FindsItsEntryInAnotherOrder) {
    FolderReader reader = parkedOn("d");
    folder.reverse();
    reader.resume(2);
    EXPECT_FALSE(reader.isAstray());
    EXPECT_EQ((Names{"c", "b", "a"}), rest(reader));
}

TEST_P(ParkedReader, SaysThatItsEntryIsGone) {
    FolderReader reader = parkedOn("c");
    folder.drop("c");
    reader.resume(2);
    EXPECT_TRUE(reader.isAstray());
    EXPECT_STREQ("c", reader.name());
    const Names left = rest(reader);
    EXPECT_EQ("e", left.back());
    EXPECT_EQ(0, reader.error());
}

TEST_P(ParkedReader, FailsWhereTheFolderCannotBeRead) {
    FolderReader reader = parkedOn("c");
    SeekableFolder::readError = EIO;
    reader.resume(2);
    EXPECT_STREQ("c", reader.name());
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(EIO, reader.error());
}

TEST_P(ParkedReader, FailsWhereTheFolderHasNoPositions) {
    FolderReader reader = parkedOn("c");
    SeekableFolder::seekError = EINVAL;
    reader.resume(2);
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(EINVAL, reader.error());
}

INSTANTIATE_TEST_SUITE_P(OverFileSystems, ParkedReader,
                         testing::Values(SeekableFolder::Positions::shifting,
                                         SeekableFolder::Positions::lasting),
                         [](const auto& row) {
                             return row.param == SeekableFolder::Positions::shifting ? "WithShiftingPositions"
                                                                                     : "WithLastingPositions";
                         });

TEST(ParkedReaderAstray, GoesOnBehindTheEntryThatIsGone) {
    SeekableFolder folder(SeekableFolder::Positions::lasting, {"a", "b", "c", "d"});
    FolderReader reader(1);
    ASSERT_TRUE(reader.next());
    ASSERT_TRUE(reader.next());
    reader.park();
    folder.drop("b");
    reader.resume(2);
    EXPECT_EQ((Names{"c", "d"}), rest(reader));
}

/// The real thing, wherever the tests run.
TEST(ParkedReaderOnDisk, GivesEachEntryOnce) {
    for (const std::size_t count : {1U, 2U, 700U, 3'000U}) {
        const test::TempTree tree(test::fastFolder());
        for (std::size_t i = 0; i < count; ++i) test::makeFile(tree / ("entry-" + std::to_string(i)));
        const auto open = [&] {
            return fl::filesystem::posix::openAt(AT_FDCWD, tree.path().c_str(), O_RDONLY | O_DIRECTORY);
        };
        FileDescriptor folder = open();
        FolderReader reader(folder.get());
        Names names;
        while (reader.next()) {
            names.emplace_back(reader.name());
            if (names.size() % 97 == 1) {
                reader.park();
                folder = open();
                reader.resume(folder.get());
                EXPECT_FALSE(reader.isAstray());
            }
        }
        std::sort(names.begin(), names.end());
        EXPECT_EQ(count, names.size());
        EXPECT_EQ(names.end(), std::unique(names.begin(), names.end()));
    }
}

}  // namespace
