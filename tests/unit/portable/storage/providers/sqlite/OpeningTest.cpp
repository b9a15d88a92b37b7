#include <pkgcore/portable/storage/providers/sqlite/SqliteProvider.hpp>

#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/sqlite/FaultyVfs.hpp"
#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/storage/PageSeals.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/RawDatabase.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <thread>
#include <vector>

namespace {

using namespace foundation::storage;
using namespace foundation::storage::conformance;
using foundation::storage::provider::openSqliteProvider;
using foundation::storage::provider::Path;
using foundation::storage::provider::SqliteOptions;
using test::StoreFile;
using testing::HasSubstr;

SqliteOptions existing() {
    SqliteOptions options = StoreFile::fast();
    options.mayCreate = false;
    return options;
}

SqliteOptions readOnly() {
    SqliteOptions options = StoreFile::fast();
    options.isReadOnly = true;
    return options;
}

/// Code and message with which opening fails; and nothing around it changes.
class Refusal : public testing::Test {
protected:
    void expectRefused(ErrorCode code, const std::string& message) {
        setTime();
        const std::string before = test::contentOf(file_.native());
        for (const SqliteOptions& options : {StoreFile::fast(), existing(), readOnly()}) {
            try {
                file_.open(options);
                ADD_FAILURE() << "it was opened";
            } catch (const vfs::Exception& failure) {
                EXPECT_EQ(failure.getErrorCode(), code) << failure.what();
                EXPECT_THAT(failure.what(), HasSubstr(message));
            }
        }
        EXPECT_EQ(test::contentOf(file_.native()), before);
        const struct stat status = test::statusOf(file_.native());
        EXPECT_EQ(status.st_mtim.tv_sec, kOldTime.tv_sec);
        EXPECT_EQ(status.st_mtim.tv_nsec, kOldTime.tv_nsec);
        for (const char* const beside : {"-journal", "-wal", "-shm", "-pins"}) {
            EXPECT_FALSE(test::isThere(file_.native() + beside)) << beside;
        }
    }
    void makeFile(const std::string& content) const { test::makeFile(file_.native(), content); }

    /// The bytes of a store with something in it.
    std::string someStore() const {
        const StoreFile other;
        test::writeFile(*other.open(), u"f", std::string(50'000, 'x'));
        return test::contentOf(other.native());
    }

    StoreFile file_;

private:
    static constexpr timespec kOldTime{1'000'000'000, 123'000};
    void setTime() const { test::setModifiedTime(file_.native(), kOldTime); }
    test::NoDescriptorLeft noDescriptorLeft_;
};

TEST_F(Refusal, AnEmptyFileIsNotAdopted) {
    makeFile("");
    expectRefused(ErrorCode::NotSupported, "an empty file");
}

TEST_F(Refusal, ATextIsNoStore) {
    makeFile("Dear diary,\n");
    expectRefused(ErrorCode::NotSupported, "no SQLite database");
    ::unlink(file_.native().c_str());
    makeFile(std::string(10'000, '\n'));
    expectRefused(ErrorCode::NotSupported, "no SQLite database");
}

TEST_F(Refusal, TheDatabaseOfAnotherProgramIsNoStore) {
    test::RawDatabase(file_.native()).run("CREATE TABLE notes(text); PRAGMA application_id = 252006673");
    expectRefused(ErrorCode::NotSupported, "another program (its application id is 0x0F055111)");
}

TEST_F(Refusal, ADatabaseWithoutAnApplicationIdIsNoStore) {
    test::RawDatabase(file_.native()).run("CREATE TABLE notes(text)");
    expectRefused(ErrorCode::NotSupported, "another program");
}

TEST_F(Refusal, ANewerStoreIsLeftAlone) {
    makeFile(someStore());
    test::RawDatabase(file_.native()).run("PRAGMA user_version = 2");
    expectRefused(ErrorCode::NotSupported, "The store has version 2, and this library knows version 1");
}

TEST_F(Refusal, AStoreIsCutOff) {
    const std::string whole = someStore();
    for (const std::size_t size : {std::size_t{16}, std::size_t{99}}) {
        makeFile(whole.substr(0, size));
        expectRefused(ErrorCode::NotRecoverable, "cut off");
        ::unlink(file_.native().c_str());
    }
    for (const std::size_t size :
         {std::size_t{100}, std::size_t{4096}, whole.size() / 2, whole.size() - 4096}) {
        makeFile(whole.substr(0, size));
        expectRefused(ErrorCode::NotRecoverable, "cut off");
        ::unlink(file_.native().c_str());
    }
}

TEST_F(Refusal, TablesOfAnotherShapeAreDamage) {
    makeFile(someStore());
    test::changeRows(file_.native(), "ALTER TABLE orphan ADD COLUMN more INTEGER");
    expectRefused(ErrorCode::NotRecoverable, "its tables are not those of a store");
}

TEST_F(Refusal, AStoreWithoutRoomForTheSealsOfPagesIsLeftAlone) {
    constexpr std::size_t kReservedAt = 20;
    std::string bytes = someStore();
    bytes[kReservedAt] = 0;
    makeFile(bytes);
    expectRefused(ErrorCode::NotSupported, "no room for checksums");
}

TEST_F(Refusal, WhatSqliteAloneHasWrittenIsDamage) {
    const StoreFile other;
    other.open();
    test::RawDatabase(other.native()).run("VACUUM INTO '" + file_.native() + "'");
    expectRefused(ErrorCode::NotRecoverable, "a page of the file does not fit its checksum");
}

TEST(SqliteOpening, AFolderAndAPipeAreNoStores) {
    const StoreFile file;
    test::makeFolder(file.tree() / "d");
    test::makePipe(file.tree() / "p");
    for (const char* const name : {"d", "p"}) {
        PKGCORE_EXPECT_FAILURE(NotSupported, openSqliteProvider(file.tree().text(name)));
    }
}

TEST(SqliteOpening, AStoreIsMadeOnlyWhereThatIsWanted) {
    const StoreFile file;
    PKGCORE_EXPECT_FAILURE(NotFound, file.open(existing()));
    PKGCORE_EXPECT_FAILURE(NotFound, file.open(readOnly()));
    EXPECT_FALSE(test::isThere(file.native()));
    file.open();
    EXPECT_NO_THROW(file.open(existing()));
    EXPECT_NO_THROW(file.open(readOnly()));
}

TEST(SqliteOpening, TheFolderAroundAStoreMustBeThere) {
    const StoreFile file;
    PKGCORE_EXPECT_FAILURE(NotFound, openSqliteProvider(file.tree().text("missing/store.db")));
    test::makeFile(file.tree() / "f");
    PKGCORE_EXPECT_FAILURE(NotFound, openSqliteProvider(file.tree().text("f/store.db")));
    PKGCORE_EXPECT_FAILURE(NotFound, openSqliteProvider(u""));
    PKGCORE_EXPECT_FAILURE(NotSupported, openSqliteProvider(std::u16string(u"a\0b", 3)));
    PKGCORE_EXPECT_FAILURE(NotSupported, openSqliteProvider(u"a\xD800"));
}

TEST(SqliteOpening, ClosedAStoreIsOneFile) {
    const StoreFile file;
    {
        const auto store = file.open();
        test::writeFile(*store, u"large", std::string(300'000, 'x'));
        const auto reader = store->openReader(Path(u"large"));
        EXPECT_TRUE(test::isThere(file.native() + "-pins"));
    }
    EXPECT_EQ(std::system(("test \"$(ls -A '" + file.tree().path() + "')\" = store.db").c_str()), 0);
}

TEST(SqliteOpening, WhatWasWrittenIsThereAgain) {
    const StoreFile file;
    const std::string large = test::someBytes(5'000'000);
    {
        const auto store = file.open();
        store->createFolder(Path(u"d"));
        test::writeFile(*store, u"d/small", "text");
        test::writeFile(*store, u"d/large", large);
    }
    const auto store = file.open();
    EXPECT_EQ(test::readFile(*store, u"d/small"), "text");
    EXPECT_EQ(test::readFile(*store, u"d/large"), large);
}

TEST(SqliteOpening, NamesThatMeanSomethingToSqliteAreFiles) {
    const StoreFile file;
    test::runInChild([&] {
        ASSERT_EQ(::chdir(file.tree().path().c_str()), 0);
        for (const char16_t* const name : {u":memory:", u"file:a?mode=memory", u"%41"}) {
            test::writeFile(*openSqliteProvider(name, StoreFile::fast()), u"f", "text");
            EXPECT_EQ(test::readFile(*openSqliteProvider(name, existing()), u"f"), "text");
            EXPECT_TRUE(test::isThere(file.tree() / [name] {
                return std::string(name, name + std::char_traits<char16_t>::length(name));
            }()));
        }
    });
}

TEST(SqliteOpening, TheWorkingDirectoryIsOfNoFurtherInterest) {
    const StoreFile file;
    test::runInChild([&] {
        ASSERT_EQ(::chdir(file.tree().path().c_str()), 0);
        const auto store = openSqliteProvider(u"store.db", StoreFile::fast());
        ASSERT_EQ(::chdir("/"), 0);
        std::thread([&] { test::writeFile(*store, u"f", "text"); }).join();
        const auto reader = store->openReader(Path(u"f"));
        std::thread([&] { EXPECT_EQ(test::readFile(*store, u"f"), "text"); }).join();
    });
}

TEST(SqliteOpening, AByteThatIsNoTextIsPartOfAPath) {
    const StoreFile file;
    openSqliteProvider(file.tree().text(std::u16string_view(u"\xDCFF.db")), StoreFile::fast());
    EXPECT_TRUE(test::isThere(file.tree() / "\xFF.db"));
}

TEST(SqliteOpening, AReadOnlyStoreIsReadAndNothingElse) {
    const StoreFile file;
    const std::string large = test::someBytes(300'000);
    test::writeFile(*file.open(), u"f", large);
    const std::string before = test::contentOf(file.native());
    const auto store = file.open(readOnly());
    EXPECT_EQ(test::readFile(*store, u"f"), large);
    EXPECT_TRUE(store->find(Path(u"f")));
    const Path f(u"f");
    const Path g(u"g");
    PKGCORE_EXPECT_FAILURE(ReadOnlyStorage, store->openWriter(g, provider::WriteMode::Create));
    PKGCORE_EXPECT_FAILURE(ReadOnlyStorage, store->createFolder(g));
    PKGCORE_EXPECT_FAILURE(ReadOnlyStorage, store->remove(f));
    PKGCORE_EXPECT_FAILURE(ReadOnlyStorage, store->removeTree(f));
    PKGCORE_EXPECT_FAILURE(ReadOnlyStorage, store->copy(f, g, kFail));
    PKGCORE_EXPECT_FAILURE(ReadOnlyStorage, store->move(f, g, kFail));
    PKGCORE_EXPECT_FAILURE(ReadOnlyStorage, store->setWritable(f, false));
    PKGCORE_EXPECT_FAILURE(ReadOnlyStorage, store->setLastModified(f, boost::posix_time::ptime()));
    EXPECT_EQ(test::contentOf(file.native()), before);
}

TEST(SqliteOpening, AFileThatMayNotBeWrittenIsOpenedForReadingAlone) {
    test::runAsOrdinaryUser([] {
        const StoreFile file;
        test::writeFile(*file.open(), u"f", "text");
        test::setMode(file.native(), 0400);
        PKGCORE_EXPECT_FAILURE(AccessDenied, file.open());
        EXPECT_EQ(test::readFile(*file.open(readOnly()), u"f"), "text");
        test::setMode(file.native(), 0000);
        PKGCORE_EXPECT_FAILURE(AccessDenied, file.open(readOnly()));
    });
}

TEST(SqliteOpening, AFolderThatMayNotBeWrittenHasNoPlaceForANewStoreNorForAJournal) {
    test::runAsOrdinaryUser([] {
        const StoreFile file;
        test::setMode(file.tree().path(), 0500);
        PKGCORE_EXPECT_FAILURE(AccessDenied, file.open());
        test::setMode(file.tree().path(), 0700);
        file.open();
        test::setMode(file.tree().path(), 0500);
        PKGCORE_EXPECT_FAILURE(AccessDenied, file.open());
        test::setMode(file.tree().path(), 0700);
    });
}

// Not those of who started the process, as in a program with set-user-id.
TEST(SqliteOpening, TheRightsOfTheEffectiveUserCount) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root has the rights of two users";
    constexpr uid_t kOther = 65534;
    test::runInChild([] {
        const StoreFile file;
        test::writeFile(*file.open(), u"f", "text");
        test::setMode(file.tree().path(), 0755);
        test::setMode(file.native(), 0644);
        ASSERT_EQ(::setresuid(0, kOther, 0), 0);
        PKGCORE_EXPECT_FAILURE(AccessDenied, file.open());
        EXPECT_EQ(test::readFile(*file.open(readOnly()), u"f"), "text");
        ASSERT_EQ(::setresuid(kOther, 0, 0), 0);
        EXPECT_NO_THROW(test::writeFile(*file.open(), u"f", "more"));
    });
}

TEST(SqliteOpening, BehindALinkTheFolderOfTheFileItselfIsThatOfTheJournal) {
    test::runAsOrdinaryUser([] {
        const StoreFile file;
        test::writeFile(*file.open(), u"f", "text");
        const test::TempTree links;
        test::makeLink(file.native(), links / "link.db");
        const std::u16string link = links.text("link.db");
        test::setMode(file.tree().path(), 0500);
        PKGCORE_EXPECT_FAILURE(AccessDenied, openSqliteProvider(link, existing()));
        EXPECT_EQ(test::readFile(*openSqliteProvider(link, readOnly()), u"f"), "text");
        test::setMode(file.tree().path(), 0700);
        test::setMode(links.path(), 0500);
        EXPECT_NO_THROW(test::writeFile(*openSqliteProvider(link, existing()), u"f", "more"));
        test::setMode(links.path(), 0700);
    });
}

TEST(SqliteOpening, AReadOnlyFolderIsNoHindranceForReading) {
    test::runAsOrdinaryUser([] {
        const StoreFile file;
        const std::string large = test::someBytes(300'000);
        test::writeFile(*file.open(), u"f", large);
        test::setMode(file.tree().path(), 0500);
        EXPECT_EQ(test::readFile(*file.open(readOnly()), u"f"), large);
        test::setMode(file.tree().path(), 0700);
    });
}

/// A store as a process leaves it that is killed within a change of the database.
void makeCutOff(const StoreFile& file) {
    const StoreFile other;
    test::writeFile(*other.open(), u"f", "text");
    test::FaultyVfs killed;
    killed.onCall([&](const test::VfsCall& call) {
        const bool isInChange = call.kind == test::VfsCall::Kind::Sync && call.path == other.native();
        if (isInChange && !test::isThere(file.native())) {
            test::makeFile(file.native(), test::contentOf(other.native()));
            test::makeFile(file.native() + "-journal", test::contentOf(other.native() + "-journal"));
        }
        return SQLITE_OK;
    });
    test::writeFile(*other.open(), u"f", "other text");
}

// Undoing it would be a change; what the file says before that is half of one.
TEST(SqliteOpening, AChangeThatWasCutOffMustBeUndoneBeforeReadingAlone) {
    const StoreFile file;
    makeCutOff(file);
    const std::string before = test::contentOf(file.native());
    try {
        file.open(readOnly());
        ADD_FAILURE() << "it was opened";
    } catch (const vfs::Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), ErrorCode::IOError);
        EXPECT_THAT(failure.what(), HasSubstr("A change was cut off: open the store once for writing"));
    }
    EXPECT_EQ(test::contentOf(file.native()), before);
    EXPECT_EQ(test::readFile(*file.open(existing()), u"f"), "text");
    EXPECT_EQ(test::readFile(*file.open(readOnly()), u"f"), "text");
}

// Also of a kind that would need files beside it while it is open.
TEST(SqliteOpening, ClosedAStoreHasTheJournalThatNeedsNoFile) {
    const StoreFile file;
    auto one = file.open();
    auto other = file.open();
    test::writeFile(*one, u"f", "text");
    one.reset();
    test::writeFile(*other, u"g", "text");
    other.reset();
    EXPECT_EQ(test::RawDatabase(file.native()).run("PRAGMA journal_mode"), "delete");
}

TEST(SqliteOpening, BusyTimeIsTheLimitOfWaiting) {
    const StoreFile file;
    SqliteOptions options = StoreFile::fast();
    options.busyTime = std::chrono::milliseconds(50);
    const auto store = file.open(options);
    test::RawDatabase other(file.native());
    other.run("BEGIN IMMEDIATE");
    const auto begin = std::chrono::steady_clock::now();
    PKGCORE_EXPECT_FAILURE(TemporarilyBusy, store->createFolder(Path(u"d")));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, options.busyTime);
    EXPECT_FALSE(store->find(Path(u"d"))) << "reading goes on";
    other.run("ROLLBACK");
    EXPECT_NO_THROW(store->createFolder(Path(u"d")));
}

/// An SQLite that knows no files.
class NoFiles {
public:
    NoFiles() {
        while (sqlite3_vfs* const one = sqlite3_vfs_find(nullptr)) {
            old_.push_back(one);
            sqlite3_vfs_unregister(one);
        }
    }
    ~NoFiles() {
        for (auto one = old_.rbegin(); one != old_.rend(); ++one) sqlite3_vfs_register(*one, 1);
    }
    NoFiles(const NoFiles&) = delete;
    NoFiles& operator=(const NoFiles&) = delete;

private:
    std::vector<sqlite3_vfs*> old_;
};

TEST(SqliteOpening, FailsWhereSqliteHasNoFiles) {
    const StoreFile file;
    file.open();
    const NoFiles none;
    PKGCORE_EXPECT_FAILURE(IOError, file.open());
}

/// What the store is on the disk, with its log.
std::string bytesOf(const StoreFile& file) {
    const std::string log = file.native() + "-wal";
    return test::contentOf(file.native()) + (test::isThere(log) ? test::contentOf(log) : "");
}

TEST(SqliteOpening, SyncingWritesOnlyWhereChangesMayNotBeOnTheDisk) {
    const StoreFile file;
    test::writeFile(*file.open(), u"f", "text");
    SqliteOptions full = StoreFile::fast();
    full.durability = provider::SqliteDurability::Full;
    for (const SqliteOptions& options : {readOnly(), full, StoreFile::fast()}) {
        const auto store = file.open(options);
        const std::string before = bytesOf(file);
        store->sync(Path(u"f"));
        const bool mayBeMissing = !options.isReadOnly && options.durability != full.durability;
        EXPECT_EQ(bytesOf(file) != before, mayBeMissing);
    }
}

/// Files that cannot be opened, with the errno of something else.
class StaleFiles {
public:
    StaleFiles() : vfs_(*sqlite3_vfs_find(nullptr)) {
        vfs_.zName = "stale";
        vfs_.xOpen = [](sqlite3_vfs*, const char*, sqlite3_file* file, int, int*) {
            file->pMethods = nullptr;
            return SQLITE_IOERR;
        };
        vfs_.xGetLastError = [](sqlite3_vfs*, int, char*) { return EEXIST; };
        sqlite3_vfs_register(&vfs_, 1);
    }
    ~StaleFiles() { sqlite3_vfs_unregister(&vfs_); }
    StaleFiles(const StaleFiles&) = delete;
    StaleFiles& operator=(const StaleFiles&) = delete;

private:
    sqlite3_vfs vfs_;
};

TEST(SqliteOpening, OfAStoreThatCannotBeReadDoesNotSayThatItExists) {
    const StoreFile file;
    file.open();
    const StaleFiles stale;
    PKGCORE_EXPECT_FAILURE(IOError, file.open());
}

}  // namespace
