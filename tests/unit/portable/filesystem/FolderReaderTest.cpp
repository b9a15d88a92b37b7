#include <pkgcore/portable/filesystem/FolderReader.hpp>

#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>
#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/ScriptedFolder.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
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

TEST(FolderReader, SmallFolderIsReadAtOnce) {
    const ScriptedFolder script({batchOf(numbered(0, 3)), batchOf(numbered(3, 3))});
    FolderReader reader(0);
    EXPECT_TRUE(script.isRead());
    EXPECT_EQ(numbered(0, 6), namesFrom(reader));
}

TEST(FolderReader, EmptyFolderIsAtItsEnd) {
    Records dots;
    dots.add(".", DT_DIR).add("..", DT_DIR);
    for (const std::string& records : {std::string(), dots.bytes()}) {
        const ScriptedFolder script(records.empty() ? std::vector<Batch>{} : std::vector<Batch>{{records}});
        FolderReader reader(0);
        EXPECT_FALSE(reader.next());
        EXPECT_EQ(0, reader.error());
    }
}

TEST(FolderReader, BigFolderIsReadBlockByBlock) {
    const ScriptedFolder script(bigFolder());
    FolderReader reader(0);
    EXPECT_FALSE(script.isRead());
    EXPECT_EQ(numbered(0, 2100), namesFrom(reader));
    EXPECT_TRUE(script.isRead());
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
    const ScriptedFolder script(batches);
    FolderReader reader(0);
    EXPECT_EQ(numbered(0, 1400), namesFrom(reader));
    EXPECT_EQ(EIO, reader.error());
    EXPECT_FALSE(reader.next());
}

TEST(FolderReader, NameLongerThanTheRestOfABlockIsNoFailure) {
    Records longName;
    longName.add(std::string(1'000, 'n'), DT_REG);
    // Room for a usual record is left, but not for this one.
    const ScriptedFolder script({batchOf(numbered(0, 1'005)), {longName.bytes()}, batchOf(numbered(0, 1))});
    FolderReader reader(0);
    Names expected = numbered(0, 1'005);
    expected.emplace_back(1'000, 'n');
    expected.emplace_back("entry-0");
    EXPECT_EQ(expected, namesFrom(reader));
    EXPECT_EQ(0, reader.error());
}

TEST(FolderReader, InvalidFolderIsAFailure) {
    const ScriptedFolder script({{"", EINVAL}});
    FolderReader reader(0);
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(EINVAL, reader.error());
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
