// A store that is made, and what may be in the way of that.

#include <pkgcore/portable/storage/providers/sqlite/SqliteProvider.hpp>

#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/RawDatabase.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gmock/gmock.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <deque>
#include <filesystem>

namespace {

/// What syncing a folder comes to in this program, if it is not 0.
int folderSyncError = 0;

/// What renaming and linking come to in this program, if it is not 0.
int renameError = 0;
int linkError = 0;

/// What drawing random numbers comes to, if it is not 0, call for call; it succeeds then.
std::deque<int> randomErrors;

}  // namespace

// The library takes the program's functions instead of the system's.
extern "C" __attribute__((visibility("default"))) ssize_t getrandom(void* out, size_t size, unsigned flags) {
    const int error = randomErrors.empty() ? 0 : randomErrors.front();
    if (!randomErrors.empty()) randomErrors.pop_front();
    if (error != 0) {
        errno = error;
        return -1;
    }
    return ::syscall(SYS_getrandom, out, size, flags);
}

extern "C" __attribute__((visibility("default"))) int renameat2(int from, const char* name, int to,
                                                                const char* newName,
                                                                unsigned flags) noexcept {
    if (renameError != 0) {
        errno = renameError;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_renameat2, from, name, to, newName, flags));
}

extern "C" __attribute__((visibility("default"))) int link(const char* name, const char* newName) noexcept {
    if (linkError != 0) {
        errno = linkError;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_link, name, newName));
}

extern "C" __attribute__((visibility("default"))) int fsync(int file) {
    struct stat status = {};
    if (folderSyncError != 0 && ::fstat(file, &status) == 0 && S_ISDIR(status.st_mode)) {
        errno = folderSyncError;
        return -1;
    }
    return ::fdatasync(file);
}

namespace {

using namespace foundation::storage;
using namespace foundation::storage::conformance;
using test::StoreFile;
using testing::ElementsAre;
using testing::HasSubstr;

/// Opening fails with this code and message.
void expectRefused(const StoreFile& file, ErrorCode code, const std::string& message) {
    try {
        file.open();
        ADD_FAILURE() << "it was opened";
    } catch (const vfs::Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), code) << failure.what();
        EXPECT_THAT(failure.what(), HasSubstr(message));
    }
}

std::vector<std::string> namesIn(const test::TempTree& tree) {
    std::vector<std::string> names;
    for (const auto& item : std::filesystem::directory_iterator(tree.path())) {
        names.push_back(item.path().filename());
    }
    return names;
}

/// The journal of a change of the store that is going on, as a process leaves it that is killed.
std::string hotJournalOf(const StoreFile& file) {
    test::writeFile(*file.open(), u"f", test::someBytes(300'000));
    test::RawDatabase database(file.native());
    database.run("PRAGMA cache_size = 1; BEGIN; UPDATE chunk SET bytes = zeroblob(65536)");
    return test::contentOf(file.native() + "-journal");
}

TEST(SqliteCreation, TheJournalOfAStoreThatHasGoneIsNotTakenOver) {
    const StoreFile file;
    const std::string journal = hotJournalOf(file);
    ASSERT_GT(journal.size(), 100'000U);
    ::unlink(file.native().c_str());
    for (const std::string name : {"store.db-journal", "store.db-wal"}) {
        const std::string path = file.tree() / name;
        test::makeFile(path, journal);
        expectRefused(file, ErrorCode::NotRecoverable, path);
        EXPECT_THAT(namesIn(file.tree()), ElementsAre(name));
        EXPECT_TRUE(test::contentOf(path) == journal);
        ::unlink(path.c_str());
    }
    EXPECT_FALSE(file.open()->find(provider::Path(u"f")));
}

/// Makes a store where syncing a folder comes to this error.
void makeStoreWith(int error) {
    folderSyncError = error;
    std::optional<ErrorCode> code;
    const StoreFile file;
    try {
        file.open();
    } catch (const vfs::Exception& failure) {
        code = failure.getErrorCode();
    }
    folderSyncError = 0;
    const bool canSync = error != EINVAL && error != ENOTSUP;
    EXPECT_EQ(code, canSync ? std::optional<ErrorCode>(ErrorCode::IOError) : std::nullopt);
    EXPECT_THAT(namesIn(file.tree()), ElementsAre("store.db"));
    EXPECT_NO_THROW(test::writeFile(*file.open(), u"f", "text"));
}

TEST(SqliteCreation, ANameThatMayNotBeOnTheDiskIsAFailure) { makeStoreWith(EIO); }

TEST(SqliteCreation, AFolderThatCannotBeSyncedIsNone) {
    makeStoreWith(EINVAL);
    makeStoreWith(ENOTSUP);
}

// Its owner alone may read it, and others may make files in it.
TEST(SqliteCreation, AFolderThatMayNotBeReadIsNotSynced) {
    const StoreFile file;
    test::setMode(file.tree().path(), 0333);
    test::runAsOrdinaryUser([&] { EXPECT_NO_THROW(test::writeFile(*file.open(), u"f", "text")); });
    test::setMode(file.tree().path(), 0700);
    EXPECT_EQ(test::readFile(*file.open(), u"f"), "text");
}

/// Names are given with these errors while it lives.
struct Naming {
    Naming(int ofRenaming, int ofLinking) {
        renameError = ofRenaming;
        linkError = ofLinking;
    }
    ~Naming() { renameError = linkError = 0; }
};

TEST(SqliteCreation, WhereARenamingWouldReplaceTheStoreIsLinkedToItsName) {
    for (const int unknown : {EINVAL, ENOSYS}) {
        const Naming naming(unknown, 0);
        const StoreFile file;
        EXPECT_NO_THROW(test::writeFile(*file.open(), u"f", "text"));
        EXPECT_THAT(namesIn(file.tree()), ElementsAre("store.db"));
    }
}

TEST(SqliteCreation, ANameThatIsNotGivenIsAFailureThatLeavesNothing) {
    const StoreFile file;
    {
        const Naming naming(EIO, 0);
        expectRefused(file, ErrorCode::IOError, "cannot be given its name");
    }
    const Naming naming(ENOSYS, EPERM);
    expectRefused(file, ErrorCode::AccessDenied, "cannot be given its name");
    EXPECT_TRUE(namesIn(file.tree()).empty());
}

TEST(SqliteCreation, ARandomSourceThatFailsIsAFailure) {
    for (const auto& errors : {std::deque<int>{ENOSYS}, std::deque<int>{0, ENOSYS}}) {
        const StoreFile file;
        randomErrors = errors;
        expectRefused(file, ErrorCode::IOError, "random");
        EXPECT_TRUE(randomErrors.empty());
        EXPECT_TRUE(namesIn(file.tree()).empty());
    }
}

TEST(SqliteCreation, ASignalDoesNotKeepRandomNumbersAway) {
    const StoreFile file;
    randomErrors = {EINTR, 0, EINTR};
    EXPECT_NO_THROW(file.open());
    EXPECT_TRUE(randomErrors.empty());
}

// The file that is to become the store has a longer name, and so have the files beside both.
TEST(SqliteCreation, ANameIsAsLongAsTheFileSystemAndSqliteLetIt) {
    for (const std::size_t length : {222U, 223U, 230U, 231U, 247U}) {
        SCOPED_TRACE(length);
        const test::TempTree tree(test::fastFolder());
        const std::u16string path = tree.text(std::u16string(length, u'n'));
        const std::string large = test::someBytes(5'000'000);
        test::writeFile(*provider::openSqliteProvider(path), u"f", large);
        EXPECT_TRUE(test::readFile(*provider::openSqliteProvider(path), u"f") == large);
        EXPECT_THAT(namesIn(tree), ElementsAre(std::string(length, 'n')));
    }
}

TEST(SqliteCreation, AStoreWhoseJournalWouldHaveNoNameIsNotMade) {
    for (const std::size_t length : {248U, 255U}) {
        const test::TempTree tree(test::fastFolder());
        const std::u16string path = tree.text(std::u16string(length, u'n'));
        PKGCORE_EXPECT_FAILURE(NotSupported, provider::openSqliteProvider(path));
        EXPECT_TRUE(namesIn(tree).empty());
    }
}

TEST(SqliteCreation, ANameThatNoFileCanHaveLeadsToNothing) {
    const test::TempTree tree(test::fastFolder());
    const std::u16string inFolder = std::u16string(256, u'd') + u"/store";
    for (const std::u16string& name :
         {std::u16string(256, u'n'), std::u16string(300, u'\x4E2D'), std::u16string(5'000, u'n'), inFolder}) {
        provider::SqliteOptions options;
        if (name == inFolder) {
            PKGCORE_EXPECT_FAILURE(NotFound, provider::openSqliteProvider(tree.text(name), options));
        } else {
            PKGCORE_EXPECT_FAILURE(NotSupported, provider::openSqliteProvider(tree.text(name), options));
        }
        options.mayCreate = false;
        PKGCORE_EXPECT_FAILURE(NotFound, provider::openSqliteProvider(tree.text(name), options));
        options.isReadOnly = true;
        PKGCORE_EXPECT_FAILURE(NotFound, provider::openSqliteProvider(tree.text(name), options));
    }
    EXPECT_TRUE(namesIn(tree).empty());
}

TEST(SqliteCreation, APathIsAsLongAsSqliteLetsIt) {
    const test::TempTree tree(test::fastFolder());
    std::string store;
    std::string folder;
    for (int i = 0; i < 8; ++i) {
        folder += std::string(100, 'd');
        test::makeFolder(tree / folder);
        folder += '/';
        const std::u16string path = tree.text(folder + "store");
        if (path.size() < 450) {
            test::writeFile(*provider::openSqliteProvider(path), u"f", std::string(100'000, 'x'));
            store = test::contentOf(tree / folder + "store");
        } else {
            PKGCORE_EXPECT_FAILURE(NotSupported, provider::openSqliteProvider(path));
            test::makeFile(tree / folder + "store", store);
            PKGCORE_EXPECT_FAILURE(NotSupported, provider::openSqliteProvider(path));
        }
    }
}

/// Makes a store whose full path has so many bytes, in a folder that leaves little of them to the name.
std::optional<ErrorCode> codeOfLength(std::size_t length, bool isRelative) {
    const test::TempTree tree(test::fastFolder());
    const std::string folder = std::string(200, 'd') + '/' + std::string(200, 'd');
    test::makeFolder(tree / std::string(200, 'd'));
    test::makeFolder(tree / folder);
    const std::string start = tree / folder + '/';
    const std::string name(length - start.size(), 'n');
    const std::filesystem::path home = std::filesystem::current_path();
    if (isRelative) std::filesystem::current_path(start);
    const std::u16string path = test::text(isRelative ? name : start + name);
    const auto code = failureOf([&] { provider::openSqliteProvider(path); });
    std::filesystem::current_path(home);
    EXPECT_EQ(test::isThere(start + name), !code);
    return code;
}

TEST(SqliteCreation, AllPathsBeyondTheLimitAreRefusedAlike) {
    std::vector<std::size_t> refused;
    for (std::size_t length = 450; length < 530; ++length) {
        const auto code = codeOfLength(length, false);
        EXPECT_EQ(code, codeOfLength(length, true)) << length;
        if (code) refused.push_back(length);
        EXPECT_EQ(code.value_or(ErrorCode::NotSupported), ErrorCode::NotSupported) << length;
    }
    ASSERT_FALSE(refused.empty());
    EXPECT_EQ(refused.size(), 530 - refused.front()) << "none that is longer may be made";
    EXPECT_EQ(refused.front(), 480U);
}

TEST(SqliteCreation, AnEmptyJournalIsNotInTheWay) {
    const StoreFile file;
    test::makeFile(file.native() + "-journal");
    test::writeFile(*file.open(), u"f", "text");
    EXPECT_EQ(test::readFile(*file.open(), u"f"), "text");
}

}  // namespace
