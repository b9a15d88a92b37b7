// Several processes, of several threads each, at work in one store.

#include <pkgcore/platform/storage/Exceptions.hpp>

#include "tests/sqlite/Child.hpp"
#include "tests/sqlite/Log.hpp"
#include "tests/sqlite/Soundness.hpp"
#include "tests/sqlite/Tree.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/RawDatabase.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>
#include <vector>

namespace test {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using namespace std::chrono_literals;
using provider::Path;
using provider::WriteMode;
using vfs::ErrorCode;

constexpr unsigned kProcesses = 4;
constexpr unsigned kThreads = 4;
constexpr unsigned kFilesEach = 50;
constexpr unsigned kJobs = 200;
constexpr unsigned kStepsEach = 50;

std::u16string numbered(const char* name, unsigned number) { return text(name + std::to_string(number)); }

StoreFile::Options patient() {
    StoreFile::Options options = StoreFile::fast();
    options.busyTime = 2min;
    return options;
}

/// One of the sixteen threads.
class Worker {
public:
    Worker(provider::Provider& store, unsigned number) : store_(store), number_(number) {}

    void run() {
        makeFiles();
        claimJobs();
        for (unsigned step = 0; step < kStepsEach; ++step) count();
    }

private:
    void makeFiles() {
        const std::u16string folder = numbered("own", number_);
        store_.createFolder(Path(folder));
        for (unsigned i = 0; i < kFilesEach; ++i) {
            writeFile(store_, folder + numbered("/f", i),
                      patternOf(number_ + i, i % 5 == 4 ? 150'000 : i * 100), WriteMode::CreateNew);
        }
    }

    /// Who moves a job to a place of his own has it.
    void claimJobs() {
        for (unsigned i = 0; i < kJobs; ++i) {
            const unsigned job = (i + number_ * 7) % kJobs;
            succeeds(ErrorCode::NotFound, [&] {
                store_.move(Path(numbered("jobs/j", job)),
                            Path(numbered("done/j", job) + numbered("by", number_)),
                            provider::ReplacementPolicy::FailIfExists);
            });
        }
    }

    /// Adds one to a number, under a lock that is a file.
    void count() {
        const Path lock(u"lock");
        const auto takeLock = [&] { writeFile(store_, u"lock", "mine", WriteMode::CreateNew); };
        while (!succeeds(ErrorCode::AlreadyExists, takeLock)) std::this_thread::yield();
        const unsigned old = static_cast<unsigned>(std::stoul(readFile(store_, u"counter")));
        writeFile(store_, u"counter", std::to_string(old + 1));
        store_.remove(lock);
    }

    /// False for a failure with this code; any other one is thrown.
    template <typename Call>
    static bool succeeds(ErrorCode code, Call call) {
        try {
            call();
            return true;
        } catch (const vfs::Exception& failure) {
            if (failure.getErrorCode() != code) throw;
            return false;
        }
    }

    provider::Provider& store_;
    unsigned number_;
};

void work(const StoreFile& file, unsigned process) {
    const auto store = file.open(patient());
    std::vector<std::thread> threads;
    for (unsigned thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&store, number = process * kThreads + thread] {
            try {
                Worker(*store, number).run();
            } catch (const std::exception& failure) {
                ADD_FAILURE() << "worker " << number << ": " << failure.what();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

void workTogether(const StoreFile& file) {
    std::vector<Child> children;
    for (unsigned process = 0; process < kProcesses; ++process) {
        children.emplace_back([&file, process] { work(file, process); });
    }
    for (Child& child : children) EXPECT_EQ(child.wait(), "exit 0");
}

void expectOwnFiles(const Tree& tree) {
    for (unsigned worker = 0; worker < kProcesses * kThreads; ++worker) {
        for (unsigned i = 0; i < kFilesEach; ++i) {
            const auto found = tree.find(numbered("own", worker) + numbered("/f", i));
            ASSERT_NE(found, tree.end()) << worker << ' ' << i;
            EXPECT_TRUE(*found->second.bytes == patternOf(worker + i, i % 5 == 4 ? 150'000 : i * 100));
        }
    }
}

void expectJobsOnce(const Tree& tree) {
    std::vector<unsigned> claims(kJobs);
    for (const auto& [path, thing] : tree) {
        EXPECT_NE(path.compare(0, 5, u"jobs/"), 0) << "nobody has it: " << utf8(path);
        if (path.compare(0, 6, u"done/j") == 0) ++claims.at(std::stoul(utf8(path.substr(6))));
    }
    EXPECT_THAT(claims, testing::Each(1U));
}

TEST(SqliteProcesses, NoUpdateIsLost) {
    const StoreFile file;
    {
        const auto store = file.open();
        store->createFolder(Path(u"jobs"));
        store->createFolder(Path(u"done"));
        for (unsigned job = 0; job < kJobs; ++job) writeFile(*store, numbered("jobs/j", job), "do it");
        writeFile(*store, u"counter", "0");
    }
    workTogether(file);
    const Tree tree = contentsOf(*file.open());
    expectOwnFiles(tree);
    expectJobsOnce(tree);
    EXPECT_EQ(*tree.at(u"counter").bytes, std::to_string(kProcesses * kThreads * kStepsEach));
    EXPECT_EQ(tree.count(u"lock"), 0U);
    expectSound(file);
}

TEST(SqliteProcesses, ManyThreadsMakeOneStore) {
    const StoreFile file;
    std::vector<std::thread> threads;
    for (char16_t name = u'a'; name < u'i'; ++name) {
        threads.emplace_back([&file, name] { file.open()->createFolder(Path(std::u16string(1, name))); });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(file.open()->list(Path())->next().size(), 8U);
    expectSound(file);
}

TEST(SqliteProcesses, OneMakesAFileOfThatName) {
    const StoreFile file;
    file.open();
    std::vector<Child> children;
    for (unsigned process = 0; process < kProcesses; ++process) {
        children.emplace_back([&file, process] {
            const auto store = file.open(patient());
            for (unsigned i = 0; i < 30; ++i) {
                const auto writer =
                    beginFile(*store, numbered("f", i), std::to_string(process), WriteMode::CreateNew);
                try {
                    writer->commit();
                    writeFile(*store, numbered("winner", i) + numbered("-", process), "");
                } catch (const vfs::Exception& failure) {
                    EXPECT_EQ(failure.getErrorCode(), ErrorCode::AlreadyExists) << failure.what();
                }
            }
        });
    }
    for (Child& child : children) EXPECT_EQ(child.wait(), "exit 0");
    const Tree tree = contentsOf(*file.open());
    EXPECT_EQ(tree.size(), 60U);
    for (unsigned i = 0; i < 30; ++i) {
        const std::string winner = *tree.at(numbered("f", i)).bytes;
        EXPECT_EQ(tree.count(numbered("winner", i) + text("-" + winner)), 1U) << i;
    }
}

/// A process that keeps a lock on the store until it is told to end.
class Holder {
public:
    Holder(const StoreFile& file, const char* sql)
        : child_([this, &file, sql] {
              RawDatabase database(file.native());
              database.run(sql);
              held_.send();
              leave_.receive();
          }) {
        held_.receiveOnly();
        EXPECT_TRUE(held_.receive());
    }
    ~Holder() {
        leave_.send();
        EXPECT_EQ(child_.wait(), "exit 0");
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

private:
    Signals held_;
    Signals leave_;
    Child child_;
};

/// Waits so long at least, and not forever: slow machines are given time.
template <typename Call>
void expectBusy(std::chrono::milliseconds bound, Call call) {
    const auto begin = std::chrono::steady_clock::now();
    try {
        call();
        ADD_FAILURE() << "it is busy";
    } catch (const vfs::Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), ErrorCode::TemporarilyBusy) << failure.what();
    }
    const auto waited = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(waited, bound);
    EXPECT_LT(waited, bound + 10s);
}

TEST(SqliteProcesses, AWriterWaitsForAnotherOneAsLongAsItWasTold) {
    const StoreFile file;
    StoreFile::Options options = StoreFile::fast();
    options.busyTime = 300ms;
    const auto store = file.open(options);
    {
        const Holder holder(file, "BEGIN IMMEDIATE");
        std::vector<std::thread> threads;
        for (unsigned thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([&, thread] {
                expectBusy(options.busyTime, [&] { store->createFolder(Path(numbered("d", thread))); });
            });
        }
        for (std::thread& thread : threads) thread.join();
    }
    EXPECT_TRUE(contentsOf(*store).empty());
    EXPECT_NO_THROW(store->createFolder(Path(u"d")));
}

// Its turn among the threads of its process is a part of what it waits for.
TEST(SqliteProcesses, TheQueueCountsAsWaiting) {
    const StoreFile file;
    StoreFile::Options options = StoreFile::fast();
    options.busyTime = 2s;
    const auto store = file.open(options);
    const Holder holder(file, "BEGIN IMMEDIATE");
    std::thread first([&] { expectBusy(options.busyTime, [&] { store->createFolder(Path(u"first")); }); });
    std::this_thread::sleep_for(options.busyTime / 2);
    const auto begin = std::chrono::steady_clock::now();
    expectBusy(options.busyTime, [&] { store->createFolder(Path(u"second")); });
    EXPECT_LT(std::chrono::steady_clock::now() - begin, options.busyTime + 900ms);
    first.join();
}

TEST(SqliteProcesses, OneCanWaitForEver) {
    const StoreFile file;
    StoreFile::Options options = StoreFile::fast();
    options.busyTime = std::chrono::milliseconds::max();
    const auto store = file.open(options);
    std::thread thread;
    {
        const Holder holder(file, "BEGIN IMMEDIATE");
        thread = std::thread([&] { EXPECT_NO_THROW(store->createFolder(Path(u"d"))); });
        std::this_thread::sleep_for(100ms);
    }
    thread.join();
    EXPECT_TRUE(store->find(Path(u"d")));
}

TEST(SqliteProcesses, ANegativeTimeIsNoTime) {
    const StoreFile file;
    StoreFile::Options options = StoreFile::fast();
    options.busyTime = std::chrono::milliseconds::min();
    const auto store = file.open(options);
    store->createFolder(Path(u"d"));
    const Holder holder(file, "BEGIN IMMEDIATE");
    expectBusy(0ms, [&] { store->createFolder(Path(u"e")); });
}

TEST(SqliteProcesses, AReaderWaitsForWhoHasItAloneAsLongAsItWasTold) {
    const StoreFile file;
    StoreFile::Options options = StoreFile::fast();
    options.busyTime = 300ms;
    const auto store = file.open(options);
    if (storesHaveLog()) GTEST_SKIP() << "with a log, readers wait for nobody";
    {
        const Holder holder(file, "BEGIN EXCLUSIVE");
        expectBusy(options.busyTime, [&] { store->find(Path(u"d")); });
        expectBusy(options.busyTime, [&] { file.open(options); });
    }
    EXPECT_FALSE(store->find(Path(u"d")));
}

// What is refused at the last moment, when readers do not let go, has not happened.
TEST(SqliteProcesses, AReaderThatStaysKeepsAChangeFromHappeningAtAll) {
    const StoreFile file;
    StoreFile::Options options = StoreFile::fast();
    options.busyTime = 300ms;
    const auto store = file.open(options);
    writeFile(*store, u"f", "old");
    if (storesHaveLog()) GTEST_SKIP() << "with a log, nobody waits for readers";
    {
        const Holder holder(file, "BEGIN; SELECT count(*) FROM entry");
        expectBusy(options.busyTime, [&] { writeFile(*store, u"f", "new"); });
        EXPECT_EQ(readFile(*store, u"f"), "old");
    }
    writeFile(*store, u"f", "newer");
    EXPECT_EQ(readFile(*store, u"f"), "newer");
}

// Before 3.51.3, several connections can damage a database that has a write-ahead log.
TEST(SqliteProcesses, TheJournalIsThatWhichThisSqliteIsSafeWith) {
    const StoreFile file;
    const auto store = file.open(StoreFile::Options());  // the journal of Normal stays for no time
    writeFile(*store, u"f", "text");
    const bool hasLog = storesHaveLog();
    EXPECT_EQ(isThere(file.native() + "-wal"), hasLog);
    EXPECT_EQ(isThere(file.native() + "-journal"), !hasLog);
}

}  // namespace

}  // namespace test
