// A store that has no place to grow.

#include <pkgcore/platform/storage/Exceptions.hpp>

#include "tests/sqlite/Change.hpp"
#include "tests/sqlite/Log.hpp"
#include "tests/sqlite/Soundness.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/SmallDisk.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gmock/gmock.h>
#include <unistd.h>

#include <optional>

namespace test {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using provider::Path;
using provider::SqliteDurability;
using vfs::ErrorCode;

/// A store with a small file, a large one, and a folder.
void fill(provider::Provider& store) {
    store.createFolder(Path(u"d"));
    writeFile(store, u"small", patternOf(1, 500));
    writeFile(store, u"large", patternOf(2, 300'000));
}

std::optional<ErrorCode> codeOf(provider::Provider& store, const Change& change) {
    try {
        change.makeIn(store);
        return std::nullopt;
    } catch (const vfs::Exception& failure) {
        return failure.getErrorCode();
    }
}

Change writing(const std::u16string& path, std::size_t size, Change::Verb verb = Change::Verb::Write) {
    Change change;
    change.verb = verb;
    change.path = path;
    change.size = size;
    change.seed = size;
    return change;
}

/// Everything that needs more room than there is fails so, and changes nothing.
void expectNoRoom(provider::Provider& store) {
    const Tree before = contentsOf(store);
    using Verb = Change::Verb;
    for (const Change& change :
         {writing(u"new", 3'000'000), writing(u"small", 3'000'000), writing(u"new", 9'000'000),
          writing(u"large", 9'000'000), writing(u"large", 3'000'000, Verb::Append),
          writing(u"large", 9'000'000, Verb::Append)}) {
        SCOPED_TRACE(textOf(change));
        EXPECT_EQ(codeOf(store, change), ErrorCode::NoSpace);
        EXPECT_EQ(difference(before, contentsOf(store)), "");
    }
}

/// Until nothing of any size is taken any more.
void fillUp(provider::Provider& store) {
    Tree tree = contentsOf(store);
    for (std::size_t size = 100'000; size > 0; size /= 4) {
        for (char16_t name = u'a'; true; ++name) {
            const Change change = writing(u"d/" + test::text(std::to_string(size)) + name, size);
            const std::optional<ErrorCode> code = codeOf(store, change);
            if (code) {
                EXPECT_EQ(*code, ErrorCode::NoSpace);
                break;
            }
            change.makeIn(tree);
        }
    }
    EXPECT_EQ(difference(tree, contentsOf(store)), "");
}

void expectUsable(const StoreFile& file, const std::shared_ptr<provider::Provider>& store) {
    store->removeTree(Path(u"d"));
    writeFile(*store, u"small", patternOf(3, 200'000));
    EXPECT_EQ(readFile(*store, u"small"), patternOf(3, 200'000));
    EXPECT_EQ(readFile(*file.open(), u"large"), patternOf(2, 300'000));
}

/// So much becomes free on the disk in the end. A log is emptied where there is room for all that it holds.
std::size_t ballastSize() { return storesHaveLog() ? 2'400'000 : 300'000; }

class SqliteRoom : public testing::TestWithParam<SqliteDurability> {
protected:
    static StoreFile::Options options() {
        StoreFile::Options options;
        options.durability = GetParam();
        return options;
    }
};

TEST_P(SqliteRoom, AFullDiskTakesNothingAway) {
    if (!canMountSmallDisk()) GTEST_SKIP() << "this machine mounts no file systems for tests";
    runInChild([] {
        const TempTree place;
        ASSERT_TRUE(mountSmallDisk(place.path(), storesHaveLog() ? "4m" : "2m"));
        const StoreFile file(place.path());
        const std::string ballast = place / "ballast";
        makeFile(ballast, std::string(ballastSize(), 'x'));
        auto store = file.open(options());
        fill(*store);
        expectNoRoom(*store);
        fillUp(*store);
        expectNoRoom(*store);
        EXPECT_EQ(difference(contentsOf(*store), contentsOf(*file.open(options()))), "");
        ::unlink(ballast.c_str());
        expectUsable(file, store);
        store.reset();
        expectSound(file);
    });
}

TEST_P(SqliteRoom, ALimitForFilesTakesNothingAway) {
    runInChild([] {
        const StoreFile file;
        auto store = file.open(options());
        fill(*store);
        limitFileSize(2'000'000);
        expectNoRoom(*store);
        fillUp(*store);
        expectNoRoom(*store);
        EXPECT_EQ(difference(contentsOf(*store), contentsOf(*file.open(options()))), "");
        limitFileSize(RLIM_INFINITY);
        expectUsable(file, store);
        store.reset();
        expectSound(file);
    });
}

INSTANTIATE_TEST_SUITE_P(Durability, SqliteRoom,
                         testing::Values(SqliteDurability::Full, SqliteDurability::Normal),
                         [](const auto& each) {
                             return std::string(each.param == SqliteDurability::Full ? "Full" : "Normal");
                         });

TEST(SqliteRoomForNothing, AStoreIsNotMadeOnAFullDisk) {
    if (!canMountSmallDisk()) GTEST_SKIP() << "this machine mounts no file systems for tests";
    runInChild([] {
        const TempTree place;
        ASSERT_TRUE(mountSmallDisk(place.path(), "64k"));
        const StoreFile file(place.path());
        const std::string ballast = place / "ballast";
        makeFile(ballast, std::string(60'000, 'x'));
        try {
            file.open();
            ADD_FAILURE() << "there is no room for it";
        } catch (const vfs::Exception& failure) {
            EXPECT_EQ(failure.getErrorCode(), ErrorCode::NoSpace) << failure.what();
        }
        EXPECT_TRUE(filesBeside(file).empty());
    });
}

}  // namespace

}  // namespace test
