// Journals of killed writers: what they bring back is what there was, whatever happens to them meanwhile.

#include <pkgcore/platform/storage/Exceptions.hpp>

#include "tests/sqlite/FaultyVfs.hpp"
#include "tests/sqlite/Soundness.hpp"
#include "tests/sqlite/Tree.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/storage/PageSeals.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/RawDatabase.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <random>

namespace test {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using provider::Path;
using vfs::ErrorCode;
using Kind = VfsCall::Kind;

constexpr std::size_t kSector = 512;
constexpr std::size_t kRecord = 4 + 4096 + 4;

/// Of the header, in which SQLite leaves the rest of the sector free.
constexpr std::size_t kSealedHeader = 28 + 8;

/// A store with what a process had beside it when it was killed.
struct Files {
    std::string store;
    std::string journal;
};

/// The moment of the kill: before this call for the file of which the name ends so, when it is made for the
/// first time.
struct Moment {
    Kind kind;
    std::string ending;
};

/// All pages are in the store, and the change is not committed.
const Moment kWritten{Kind::Sync, ""};

/// The journal is not on the disk, and so no page is in the store.
const Moment kUnsynced{Kind::Sync, "-journal"};

using Work = std::function<void()>;

Files filesAt(const StoreFile& file, const Moment& moment, FaultyVfs& faulty, const Work& work) {
    Files files;
    bool isOver = false;
    faulty.onCall([&](const VfsCall& call) {
        const bool isNow = !isOver && call.kind == moment.kind && call.path == file.native() + moment.ending;
        if (isNow) files = {contentOf(file.native()), contentOf(file.native() + "-journal")};
        isOver = isOver || isNow;
        return SQLITE_OK;
    });
    work();
    faulty.onCall({});
    return files;
}

enum class Outcome : unsigned char { Right, Refused };

class SqliteJournal : public testing::Test {
protected:
    SqliteJournal() {
        const auto store = file_.open();
        store->createFolder(Path(u"d"));
        for (unsigned i = 0; i < 60; ++i) writeFile(*store, nameOf(i), patternOf(i, 60));
        truth_ = contentsOf(*store);
    }

    static std::u16string nameOf(unsigned number) {
        return u"d/name" + std::u16string(1, static_cast<char16_t>(u'A' + number));
    }

    Files killedIn(const Moment& moment, const std::function<void(provider::Provider&)>& change) {
        FaultyVfs faulty;
        const auto store = file_.open();
        return filesAt(file_, moment, faulty, [&] { change(*store); });
    }

    /// By SQLite alone.
    Files killedByOther(const Moment& moment, const std::string& sql) {
        FaultyVfs faulty;
        RawDatabase database(file_.native());
        return filesAt(file_, moment, faulty, [&] { database.run(sql); });
    }

    Files killedAt(const Moment& moment) {
        return killedIn(moment, [](auto& store) { writeFile(store, nameOf(30), patternOf(999, 70)); });
    }

    void restore(const Files& files) const {
        removeStore(file_);
        makeFile(file_.native(), files.store);
        makeFile(file_.native() + "-journal", files.journal);
    }

    /// Opens the store: it is as it was before the change, or nothing is touched.
    Outcome judge(const Files& files) {
        restore(files);
        try {
            const auto store = file_.open();
            EXPECT_EQ(difference(truth_, contentsOf(*store)), "");
            return Outcome::Right;
        } catch (const vfs::Exception& failure) {
            EXPECT_EQ(failure.getErrorCode(), ErrorCode::NotRecoverable) << failure.what();
        }
        EXPECT_TRUE(contentOf(file_.native()) == files.store) << "the store was changed";
        EXPECT_TRUE(contentOf(file_.native() + "-journal") == files.journal) << "the journal was changed";
        return Outcome::Refused;
    }

    Outcome judgeWithByte(const Files& files, std::size_t at, unsigned byte) {
        SCOPED_TRACE("byte " + std::to_string(at) + " becomes " + std::to_string(byte));
        Files damaged = files;
        damaged.journal[at] = static_cast<char>(byte);
        return judge(damaged);
    }

    /// Each bit of each byte, and all of them, and none.
    void expectNoOtherByteIn(const Files& files, std::size_t begin, std::size_t end) {
        for (std::size_t at = begin; at < end && !HasFailure(); ++at) {
            const unsigned byte = static_cast<unsigned char>(files.journal[at]);
            for (unsigned bit = 1; bit < 256; bit <<= 1U) {
                EXPECT_EQ(judgeWithByte(files, at, byte ^ bit), Outcome::Refused);
            }
            EXPECT_EQ(judgeWithByte(files, at, byte ^ 0xFFU), Outcome::Refused);
            if (byte != 0) {
                EXPECT_EQ(judgeWithByte(files, at, 0), Outcome::Refused);
            }
        }
    }

    /// How many of so many random changes of a bit were refused.
    unsigned refusedOf(const Files& files, unsigned changes) {
        std::mt19937 random(amountOf("PKGCORE_SQLITE_SEED", 0));
        unsigned refused = 0;
        for (unsigned i = 0; i < changes && !HasFailure(); ++i) {
            const std::size_t at = random() % files.journal.size();
            const unsigned byte = static_cast<unsigned char>(files.journal[at]);
            refused += judgeWithByte(files, at, byte ^ 1U << random() % 8) == Outcome::Refused ? 1U : 0U;
        }
        return refused;
    }

    Outcome judgeCutOff(const Files& files, std::size_t size) {
        SCOPED_TRACE("cut off at " + std::to_string(size));
        return judge({files.store, files.journal.substr(0, size)});
    }

    StoreFile file_;
    Tree truth_;
};

/// Sanitizers make it ten times slower.
constexpr unsigned kFlips = kIsSanitized ? 100 : 1'000;

TEST_F(SqliteJournal, BringsBackWhatThereWas) {
    const Files files = killedAt(kWritten);
    ASSERT_GT(files.journal.size(), kSector + 2 * kRecord);
    EXPECT_EQ(judge(files), Outcome::Right);
    expectSound(file_);
}

TEST_F(SqliteJournal, NoOtherByteIsTakenInTheHeader) {
    expectNoOtherByteIn(killedAt(kWritten), 0, kSealedHeader);
}

TEST_F(SqliteJournal, TheRestOfTheHeaderSaysNothing) {
    const Files files = killedAt(kWritten);
    for (std::size_t at = kSealedHeader; at < kSector; at += 17) {
        EXPECT_EQ(judgeWithByte(files, at, 0xA5), Outcome::Right);
    }
}

TEST_F(SqliteJournal, NoOtherByteIsTakenAroundAPage) {
    const Files files = killedAt(kWritten);
    expectNoOtherByteIn(files, kSector, kSector + 6);
    expectNoOtherByteIn(files, kSector + kRecord - 14, kSector + kRecord + 6);
}

// PKGCORE_SQLITE_MUTANTS=100000 asks for as many; PKGCORE_SQLITE_SEED for others.
TEST_F(SqliteJournal, NoOtherBitIsTaken) {
    const Files files = killedAt(kWritten);
    const unsigned flips = amountOf("PKGCORE_SQLITE_MUTANTS", kFlips);
    EXPECT_GT(refusedOf(files, flips), flips * 9 / 10) << "only the rest of the header may be anything";
}

TEST_F(SqliteJournal, OneThatIsCutOffIsRefused) {
    const Files files = killedAt(kWritten);
    const std::size_t size = files.journal.size();
    for (std::size_t cut = 1; cut < size; cut += kIsSanitized ? 611 : 61) {
        EXPECT_EQ(judgeCutOff(files, cut), Outcome::Refused);
    }
    for (std::size_t border = kSector; border < size && !HasFailure(); border += kRecord) {
        EXPECT_EQ(judgeCutOff(files, border), Outcome::Refused);
        EXPECT_EQ(judgeCutOff(files, border - 1), Outcome::Refused);
    }
    EXPECT_EQ(judgeCutOff(files, size - 1), Outcome::Refused);
}

TEST_F(SqliteJournal, ASectorOfZerosIsRefused) {
    const Files files = killedAt(kWritten);
    for (std::size_t at = 0; at < files.journal.size(); at += kSector) {
        SCOPED_TRACE(at);
        Files damaged = files;
        const std::size_t size = std::min(kSector, files.journal.size() - at);
        damaged.journal.replace(at, size, size, '\0');
        const bool isChanged = damaged.journal != files.journal;
        EXPECT_EQ(judge(damaged), isChanged ? Outcome::Refused : Outcome::Right);
    }
}

TEST_F(SqliteJournal, APageOfAnotherPlaceIsRefused) {
    Files files = killedAt(kWritten);
    const std::string page = files.journal.substr(kSector + kRecord + 4, kRecord - 4);
    files.journal.replace(kSector + 4, page.size(), page);
    EXPECT_EQ(judge(files), Outcome::Refused);
}

TEST_F(SqliteJournal, OneThatNeverReachedTheDiskIsIgnored) {
    const Files files = killedAt(kUnsynced);
    ASSERT_GT(files.journal.size(), kSector + 2 * kRecord);
    EXPECT_EQ(judge(files), Outcome::Right);
    for (std::size_t cut = 0; cut < files.journal.size(); cut += 311) {
        EXPECT_EQ(judgeCutOff(files, cut), Outcome::Right);
    }
    for (std::size_t at = 0; at < files.journal.size(); at += kSector) {
        Files partial = files;
        const std::size_t size = std::min(kSector, files.journal.size() - at);
        partial.journal.replace(at, size, size, '\0');
        EXPECT_EQ(judge(partial), Outcome::Right) << "without the sector at " << at;
    }
}

// It is longer, and where the header of a next segment would be, it has anything.
TEST_F(SqliteJournal, WhatAnEarlierOneHasLeftBehindItIsNoPartOfIt) {
    {
        const auto store = file_.open();
        writeFile(*store, u"large", patternOf(500, 300'000));
        truth_ = contentsOf(*store);
    }
    const Files earlier = killedByOther(kUnsynced, "UPDATE chunk SET bytes = randomblob(length(bytes))");
    ASSERT_GT(earlier.journal.size(), 300'000U);
    ASSERT_EQ(judge(earlier), Outcome::Right);
    restore(earlier);
    const Files files = killedAt(kWritten);
    EXPECT_LT(files.journal.size(), 100'000U);
    EXPECT_EQ(judge(files), Outcome::Right);
}

std::optional<ErrorCode> codeOfOpening(const StoreFile& file, const StoreFile::Options& options) {
    try {
        file.open(options);
        return std::nullopt;
    } catch (const vfs::Exception& failure) {
        return failure.getErrorCode();
    }
}

TEST_F(SqliteJournal, WhoOnlyReadsIsToldThatAChangeIsToBeUndone) {
    Files files = killedAt(kWritten);
    StoreFile::Options options;
    options.isReadOnly = true;
    restore(files);
    EXPECT_EQ(codeOfOpening(file_, options), ErrorCode::IOError);
    files.journal[kSector + 1000] = static_cast<char>(files.journal[kSector + 1000] ^ 1);
    restore(files);
    EXPECT_EQ(codeOfOpening(file_, options), ErrorCode::IOError);
    files.journal[0] = 0;
    restore(files);
    EXPECT_EQ(codeOfOpening(file_, options), ErrorCode::NotRecoverable);
    EXPECT_TRUE(contentOf(file_.native()) == files.store);
}

TEST_F(SqliteJournal, AnOldOneUndoesNothingThatWasDoneSince) {
    Files files = killedAt(kWritten);
    restore(files);
    {
        const auto store = file_.open();
        for (unsigned i = 0; i < 3; ++i) writeFile(*store, nameOf(80 + i), patternOf(i, 60));
    }
    files.store = contentOf(file_.native());
    EXPECT_EQ(judge(files), Outcome::Refused);
    EXPECT_TRUE(contentOf(file_.native()) == files.store);
}

TEST_F(SqliteJournal, ThatOfAnotherProgramIsRefused) {
    const Files files = killedByOther(kWritten, "UPDATE entry SET modified = 1");
    ASSERT_GT(files.journal.size(), kSector + kRecord);
    EXPECT_EQ(judge(files), Outcome::Refused);
}

TEST_F(SqliteJournal, AnotherProgramMayRollItBack) {
    restore(killedAt(kWritten));
    RawDatabase(file_.native()).run("SELECT count(*) FROM entry");
    EXPECT_FALSE(isThere(file_.native() + "-journal"));
    EXPECT_EQ(PageSeals::firstBroken(contentOf(file_.native())), 0U);
    EXPECT_EQ(difference(truth_, contentsOf(*file_.open())), "");
}

/// A change of more pages than SQLite keeps in memory: some go into the store early, and the journal has a
/// header for each time.
class SqliteLongJournal : public SqliteJournal {
protected:
    SqliteLongJournal() {
        {
            const auto store = file_.open();
            for (unsigned i = 0; i < 6; ++i) writeFile(*store, nameOf(70 + i), patternOf(70 + i, 3'000'000));
            store->remove(Path(nameOf(70)));
            truth_ = contentsOf(*store);
        }
        FaultyVfs faulty;
        faulty.onCall([this, writes = 0U](const VfsCall& call) mutable {
            const bool isStore = call.path == file_.native();
            if (isStore && call.kind == Kind::Write && ++writes == 100) spilled_ = now();
            if (isStore && call.kind == Kind::Sync && files_.store.empty()) files_ = now();
            return SQLITE_OK;
        });
        provider::compactSqliteStore(file_.path());
        faulty.onCall({});
    }

    std::vector<std::size_t> headers() const {
        const std::string magic("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7");
        std::vector<std::size_t> found;
        for (std::size_t at = 0; at < files_.journal.size(); at += kSector) {
            if (files_.journal.compare(at, magic.size(), magic) == 0) found.push_back(at);
        }
        return found;
    }

    Files now() const { return {contentOf(file_.native()), contentOf(file_.native() + "-journal")}; }

    Files files_;    ///< when all is written
    Files spilled_;  ///< when the first pages are, and not yet the one that each change writes
};

TEST_F(SqliteLongJournal, BringsBackWhatThereWas) {
    for (const Files& files : {files_, spilled_}) {
        EXPECT_EQ(judge(files), Outcome::Right);
        expectSound(file_);
    }
}

TEST_F(SqliteLongJournal, NoOtherByteIsTakenInAnyHeader) {
    const std::vector<std::size_t> found = headers();
    ASSERT_GE(found.size(), 2U);
    for (const std::size_t header : {found[1], found.back()}) {
        for (std::size_t at = 0; at < kSealedHeader; at += kIsSanitized ? 7 : 1) {
            const unsigned byte = static_cast<unsigned char>(files_.journal[header + at]);
            EXPECT_EQ(judgeWithByte(files_, header + at, byte ^ 0x10U), Outcome::Refused);
        }
        EXPECT_EQ(judgeWithByte(files_, header, 0), Outcome::Refused);
    }
}

TEST_F(SqliteLongJournal, NoOtherBitIsTaken) {
    const unsigned flips = kFlips / 20;
    EXPECT_GT(refusedOf(files_, flips), flips * 9 / 10);
}

TEST_F(SqliteLongJournal, OneThatIsCutOffIsRefused) {
    const std::size_t last = headers().back();
    for (const std::size_t cut : {last + 1, last + 30, last + 100, last + kSector, last + kSector + kRecord,
                                  last - kRecord, files_.journal.size() - 1}) {
        EXPECT_EQ(judgeCutOff(files_, cut), Outcome::Refused);
    }
}

// Who brings it back must be alone with the store for a moment.
TEST_F(SqliteLongJournal, IsNotReadByWhoOnlyAsksWhetherItIsToBeBroughtBack) {
    restore(files_);
    StoreFile::Options options;
    options.isReadOnly = true;
    unsigned reads = 0;
    FaultyVfs faulty;
    faulty.onCall([&](const VfsCall& call) {
        reads += call.kind == Kind::Read && call.path == file_.native() + "-journal" ? 1U : 0U;
        return SQLITE_OK;
    });
    EXPECT_EQ(codeOfOpening(file_, options), ErrorCode::IOError);
    EXPECT_GT(reads, 0U);
    EXPECT_LT(reads, 20U) << "of thousands of pages";
}

TEST_F(SqliteLongJournal, ZerosOverItsHeaderAreFoundWhereOnlySomePagesAreInTheStore) {
    Files damaged = spilled_;
    damaged.journal.replace(0, kSector, kSector, '\0');
    EXPECT_EQ(judge(damaged), Outcome::Refused);
}

TEST_F(SqliteLongJournal, AHeaderOfZerosIsRefused) {
    for (const std::size_t header : headers()) {
        SCOPED_TRACE(header);
        Files damaged = files_;
        damaged.journal.replace(header, kSector, kSector, '\0');
        EXPECT_EQ(judge(damaged), Outcome::Refused);
    }
}

}  // namespace

}  // namespace test
