// Files and folders that are larger than memory should be.

#include "tests/sqlite/Soundness.hpp"
#include "tests/sqlite/Tree.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/storage/PageSeals.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>

namespace test {

namespace {

namespace provider = foundation::storage::provider;
using provider::Path;
using provider::WriteMode;

constexpr std::uint64_t kMebi = 1024 * 1024;
constexpr long kMaxKibibytes = 64 * 1024;

void expectLittleMemory() {
    struct rusage usage = {};
    ASSERT_EQ(::getrusage(RUSAGE_SELF, &usage), 0);
    std::printf("peak memory: %ld KiB\n", usage.ru_maxrss);
    EXPECT_TRUE(kIsSanitized || usage.ru_maxrss < kMaxKibibytes) << usage.ru_maxrss;
}

/// Eight bytes at each multiple of eight, made from the place: wherever a read begins, it can be judged.
void fillPattern(std::uint64_t offset, std::string& bytes) {
    for (std::size_t at = 0; at < bytes.size(); at += 8) {
        const std::uint64_t word = (offset + at) * 0x9E3779B97F4A7C15U ^ 0x5A5A5A5A5A5A5A5AU;
        std::memcpy(bytes.data() + at, &word, 8);
    }
}

void writeLarge(const StoreFile& file, std::uint64_t size) {
    const auto writer = file.open()->openWriter(Path(u"large"), WriteMode::Create);
    std::string piece(kMebi, '\0');
    for (std::uint64_t offset = 0; offset < size; offset += kMebi) {
        fillPattern(offset, piece);
        writer->write(piece.data(), piece.size());
    }
    writer->commit();
    expectLittleMemory();
}

void readLarge(const StoreFile& file, std::uint64_t size) {
    const auto reader = file.open()->openReader(Path(u"large"));
    ASSERT_EQ(reader->size(), size);
    std::string expected(kMebi, '\0');
    std::string piece(kMebi, '\0');
    for (std::uint64_t offset = 0; offset < size; offset += kMebi) {
        ASSERT_EQ(reader->read(piece.data(), kMebi), kMebi) << offset;
        fillPattern(offset, expected);
        ASSERT_TRUE(piece == expected) << offset;
    }
    EXPECT_EQ(reader->read(piece.data(), 1), 0U);
    expectLittleMemory();
}

void seekInLarge(const StoreFile& file, std::uint64_t size) {
    const auto reader = file.open()->openReader(Path(u"large"));
    std::mt19937_64 random(1);
    std::string expected(4096, '\0');
    std::string piece(4096, '\0');
    for (int i = 0; i < 2'000; ++i) {
        const std::uint64_t offset = i == 0 ? size - 4096 : random() % ((size - 4096) / 8) * 8;
        ASSERT_EQ(reader->readAt(offset, piece.data(), 4096), 4096U) << offset;
        fillPattern(offset, expected);
        ASSERT_TRUE(piece == expected) << offset;
    }
    EXPECT_EQ(reader->readAt(size, piece.data(), 1), 0U);
    expectLittleMemory();
}

std::u16string nameOf(unsigned number) {
    const std::string digits = std::to_string(10'000'000 + number);
    return u"entry " + std::u16string(digits.begin(), digits.end());
}

void makeEntries(const StoreFile& file, unsigned count) {
    const auto store = file.open();
    store->createFolder(Path(u"d"));
    for (unsigned i = 0; i < count; ++i) {
        // Not in their order.
        store->createFolder(Path(u"d").child(nameOf(static_cast<unsigned>(i * 7'919ULL % count))));
    }
    expectLittleMemory();
}

void listEntries(const StoreFile& file, unsigned count) {
    const auto lister = file.open()->list(Path(u"d"));
    unsigned number = 0;
    for (auto page = lister->next(); !page.empty(); page = lister->next()) {
        EXPECT_LE(page.size(), 1'000U);
        for (const provider::ListItem& item : page) ASSERT_TRUE(item.name == nameOf(number++)) << number;
    }
    EXPECT_EQ(number, count);
    expectLittleMemory();
}

// PKGCORE_SQLITE_MEBIBYTES=6144 asks for a file of that size; on the disk, then.
TEST(SqliteSize, ALargeFileIsWrittenReadAndSoughtInWithLittleMemory) {
    const std::uint64_t size = amountOf("PKGCORE_SQLITE_MEBIBYTES", 300) * kMebi;
    const StoreFile file(size > 1'000 * kMebi ? "/tmp" : fastFolder());
    runInChild([&] { writeLarge(file, size); });
    runInChild([&] { readLarge(file, size); });
    runInChild([&] { seekInLarge(file, size); });
    file.open()->remove(Path(u"large"));
    expectSound(file);
}

// PKGCORE_SQLITE_ENTRIES=1000000 asks for as many; no multiple of 7919.
TEST(SqliteSize, AFolderOfManyEntriesIsListedWithLittleMemory) {
    const unsigned count = amountOf("PKGCORE_SQLITE_ENTRIES", 50'000);
    ASSERT_NE(count % 7'919, 0U) << "some numbers would come twice";
    const StoreFile file;
    runInChild([&] { makeEntries(file, count); });
    runInChild([&] { listEntries(file, count); });
    expectSound(file);
}

/// Adds a hole to a store that nobody has open, so that it has as many pages. False where no file can be so
/// large.
bool enlarge(const StoreFile& file, std::uint64_t pages) {
    constexpr std::size_t kPageCountAt = 28;  // in the header of every SQLite database
    const auto size = static_cast<off_t>(pages * PageSeals::kPageSize);
    if (::truncate(file.native().c_str(), size) != 0) return false;
    std::fstream bytes(file.native(), std::ios::in | std::ios::out | std::ios::binary);
    std::array<char, PageSeals::kPageSize> first{};
    bytes.read(first.data(), first.size());
    for (std::size_t i = 0; i < 4; ++i) first[kPageCountAt + i] = static_cast<char>(pages >> (24 - 8 * i));
    PageSeals::seal(first.data(), 1);
    bytes.seekp(0).write(first.data(), first.size());
    return bytes.flush().good();
}

// The limit that SQLite has unless it is told otherwise.
TEST(SqliteSize, AStoreGrowsBeyondFourTebibytes) {
    const StoreFile file;
    file.open();
    constexpr std::uint64_t kUsualLimit = 1'073'741'823;
    if (!enlarge(file, kUsualLimit + 5)) GTEST_SKIP() << "no file can be so large here";
    const auto store = file.open();
    writeFile(*store, u"f", patternOf(1, 300'000));
    EXPECT_TRUE(readFile(*store, u"f") == patternOf(1, 300'000));
    EXPECT_GT(static_cast<std::uint64_t>(statusOf(file.native()).st_size), (kUsualLimit + 5) * 4096);
}

}  // namespace

}  // namespace test
