#include <pkgcore/portable/filesystem/FolderReader.hpp>

#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>
#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/ScriptedFolder.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using fl::filesystem::posix::FileDescriptor;
using fl::filesystem::posix::FolderReader;
using fl::filesystem::posix::openAt;
using test::Batch;
using test::Records;
using test::ScriptedFolder;
using test::TempTree;
using Names = std::vector<std::string>;

FileDescriptor openFolder(const TempTree& tree) {
    return openAt(AT_FDCWD, tree.path().c_str(), O_RDONLY | O_DIRECTORY);
}

Names namesFrom(FolderReader& reader) {
    Names names;
    while (reader.next()) {
        names.push_back(reader.name());
        EXPECT_EQ(names.back().size(), reader.nameLength());
    }
    return names;
}

Names numbered(std::size_t first, std::size_t count) {
    Names names;
    for (std::size_t i = first; i < first + count; ++i) names.push_back("entry-" + std::to_string(i));
    return names;
}

Batch batchOf(const Names& names) {
    Records records;
    for (const std::string& name : names) records.add(name, DT_REG);
    return {records.bytes()};
}

/// Batches that together do not fit into one block: 3 of 700 entries, 32 bytes each.
std::vector<Batch> bigFolder() {
    return {batchOf(numbered(0, 700)), batchOf(numbered(700, 700)), batchOf(numbered(1400, 700))};
}

TEST(FolderReader, LeavesDotsOutWhereverTheyStand) {
    Records records;
    records.add("a", DT_REG)
        .add(".", DT_DIR)
        .add("..a", DT_REG)
        .add("..", DT_DIR)
        .add(".b", DT_LNK)
        .add("...", DT_DIR);
    const ScriptedFolder script({{records.bytes()}});
    FolderReader reader(0);
    EXPECT_EQ((Names{"a", "..a", ".b", "..."}), namesFrom(reader));
    EXPECT_EQ(0, reader.error());
}

TEST(FolderReader, GivesTheTypeOfEachEntry) {
    Records records;
    for (const unsigned char type : {DT_REG, DT_DIR, DT_LNK, DT_UNKNOWN}) records.add("x", type);
    const ScriptedFolder script({{records.bytes()}});
    FolderReader reader(0);
    for (const unsigned char type : {DT_REG, DT_DIR, DT_LNK, DT_UNKNOWN}) {
        ASSERT_TRUE(reader.next());
        EXPECT_EQ(type, reader.type());
    }
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.next());
}

TEST(FolderReader, SmallFolderIsCompleteAtOnce) {
    const ScriptedFolder script({batchOf(numbered(0, 3)), batchOf(numbered(3, 3))});
    FolderReader reader(0);
    EXPECT_TRUE(reader.isComplete());
    EXPECT_TRUE(script.isRead());
    EXPECT_EQ(numbered(0, 6), namesFrom(reader));
}

TEST(FolderReader, EmptyFolderIsCompleteAtOnce) {
    Records dots;
    dots.add(".", DT_DIR).add("..", DT_DIR);
    for (const std::string& records : {std::string(), dots.bytes()}) {
        const ScriptedFolder script(records.empty() ? std::vector<Batch>{} : std::vector<Batch>{{records}});
        FolderReader reader(0);
        EXPECT_TRUE(reader.isComplete());
        EXPECT_FALSE(reader.next());
        EXPECT_EQ(0, reader.error());
    }
}

TEST(FolderReader, BigFolderIsReadBlockByBlock) {
    const ScriptedFolder script(bigFolder());
    FolderReader reader(0);
    EXPECT_FALSE(reader.isComplete());
    EXPECT_EQ(numbered(0, 2100), namesFrom(reader));
    EXPECT_TRUE(reader.isComplete());
}

TEST(FolderReader, DrainingKeepsTheEntryThatItStandsOn) {
    for (const std::size_t before : {0U, 1U, 350U, 700U, 701U}) {
        const ScriptedFolder script(bigFolder());
        FolderReader reader(0);
        for (std::size_t i = 0; i < before; ++i) ASSERT_TRUE(reader.next());
        reader.drain();
        EXPECT_TRUE(reader.isComplete());
        if (before != 0) {
            EXPECT_EQ("entry-" + std::to_string(before - 1), reader.name());
        }
        reader.drain();
        EXPECT_EQ(numbered(before, 2100 - before), namesFrom(reader));
    }
}

TEST(FolderReader, WhatWasReadBeforeAFailureIsShownFirst) {
    const ScriptedFolder small({batchOf(numbered(0, 3)), {"", EIO}});
    FolderReader reader(0);
    EXPECT_EQ(numbered(0, 3), namesFrom(reader));
    EXPECT_EQ(EIO, reader.error());
}

TEST(FolderReader, FailureInTheMiddleOfABigFolder) {
    std::vector<Batch> batches = bigFolder();
    batches[2] = {"", EIO};
    for (const bool drained : {false, true}) {
        const ScriptedFolder script(batches);
        FolderReader reader(0);
        if (drained) reader.drain();
        EXPECT_EQ(numbered(0, 1400), namesFrom(reader));
        EXPECT_EQ(EIO, reader.error());
        EXPECT_FALSE(reader.next());
    }
}

TEST(FolderReader, FailureAtOnce) {
    const ScriptedFolder script({{"", ENOTDIR}});
    FolderReader reader(0);
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(ENOTDIR, reader.error());
}

TEST(FolderReader, RemovedFolderIsAtItsEnd) {
    const ScriptedFolder script({{"", ENOENT}});
    FolderReader reader(0);
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(0, reader.error());
}

TEST(FolderReader, GoesOnAfterASignal) {
    const ScriptedFolder script({{"", EINTR}, batchOf(numbered(0, 2)), {"", EINTR}});
    FolderReader reader(0);
    EXPECT_EQ(numbered(0, 2), namesFrom(reader));
    EXPECT_EQ(0, reader.error());
}

TEST(FolderReader, CanBeMoved) {
    const ScriptedFolder script(bigFolder());
    FolderReader first(0);
    ASSERT_TRUE(first.next());
    FolderReader second(std::move(first));
    EXPECT_STREQ("entry-0", second.name());
    EXPECT_EQ(numbered(1, 2099), namesFrom(second));
}

/// Every folder is big: a first answer that leaves no room in the block, a second one, and the end.
class ManyReaders : public testing::Test {
protected:
    ManyReaders() {
        calls->getdents64 = [](int folder, void* records, size_t) -> ssize_t {
            static const std::string block = batchOf(numbered(0, 1016)).records;
            if (answersGiven.at(static_cast<std::size_t>(folder))++ == 2) return 0;
            block.copy(static_cast<char*>(records), block.size());
            return static_cast<ssize_t>(block.size());
        };
        answersGiven.assign(100, 0);
    }

    /// Each reads a folder of its own; the number stands for the descriptor.
    void addReader() { readers.emplace_back(nextFolder++); }

    std::size_t streaming() const {
        return static_cast<std::size_t>(std::count_if(
            readers.begin(), readers.end(), [](const FolderReader& reader) { return !reader.isComplete(); }));
    }

    static inline std::vector<int> answersGiven;
    test::ScopedSystemCalls calls;
    std::deque<FolderReader> readers;
    int nextFolder = 0;
};

TEST_F(ManyReaders, OnlySomeKeepADescriptorInUse) {
    for (int i = 0; i < 50; ++i) addReader();
    EXPECT_EQ(32U, streaming());
    for (FolderReader& reader : readers) EXPECT_EQ(2'032U, namesFrom(reader).size());
    EXPECT_EQ(0U, streaming());
}

TEST_F(ManyReaders, PlaceIsFreeAgainOnceAReaderNeedsItNoMore) {
    for (int i = 0; i < 32; ++i) addReader();
    readers[0].drain();
    EXPECT_EQ(31U, streaming());
    addReader();
    EXPECT_EQ(32U, streaming());
    while (readers[1].next()) {
    }
    addReader();
    EXPECT_EQ(32U, streaming());
    // Also where another thread ends it.
    std::thread([&] { readers.pop_back(); }).join();
    addReader();
    EXPECT_EQ(32U, streaming());
    FolderReader moved(std::move(readers.back()));
    readers.pop_back();
    addReader();
    EXPECT_TRUE(readers.back().isComplete());
}

TEST(FolderReaderOnDisk, GivesEachEntryOnce) {
    for (const std::size_t count : {0U, 1U, 2U, 700U, 5'000U}) {
        const TempTree tree("/dev/shm");
        for (const std::string& name : numbered(0, count)) test::makeFile(tree / name);
        const FileDescriptor folder = openFolder(tree);
        FolderReader reader(folder.get());
        Names names = namesFrom(reader);
        Names expected = numbered(0, count);
        std::sort(names.begin(), names.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(expected, names);
        EXPECT_EQ(0, reader.error());
    }
}

}  // namespace
