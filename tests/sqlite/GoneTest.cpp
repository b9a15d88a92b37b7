// The file of a store goes while a change is on its way into it.

#include <pkgcore/platform/storage/Exceptions.hpp>

#include "tests/sqlite/FaultyVfs.hpp"
#include "tests/sqlite/Soundness.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gmock/gmock.h>

#include <unistd.h>
#include <cstdio>
#include <functional>

namespace test {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using provider::Path;

/// Has strike() called before the first call of the kind.
template <typename Strike>
void strikeAt(FaultyVfs& files, VfsCall::Kind kind, bool& isStruck, Strike strike) {
    files.onCall([kind, &isStruck, strike](const VfsCall& call) {
        if (call.kind == kind && !isStruck) {
            isStruck = true;
            strike();
        }
        return SQLITE_OK;
    });
}

void expectIOError(const std::function<void()>& body) {
    try {
        body();
        ADD_FAILURE() << "it was acknowledged";
    } catch (const vfs::Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), vfs::ErrorCode::IOError) << failure.what();
    }
}

/// Calls strike() at the first write to a file of the store, and expects that the change is not acknowledged.
template <typename Strike, typename Change>
void expectRefused(const StoreFile& file, Strike strike, Change change) {
    FaultyVfs files;
    bool isStruck = false;  // until the store is closed, which writes, too
    const auto store = file.open();
    writeFile(*store, u"f", "text");
    strikeAt(files, VfsCall::Kind::Write, isStruck, strike);
    expectIOError([&] { change(*store); });
    EXPECT_TRUE(isStruck);
}

void makeFolder(provider::Provider& store) { store.createFolder(Path(u"d")); }

void sync(provider::Provider& store) { store.sync(Path()); }

TEST(SqliteGone, AChangeOfAStoreThatIsDeletedAtThatInstantIsNotAcknowledged) {
    for (const auto change : {makeFolder, sync}) {
        const StoreFile file;
        expectRefused(
            file, [&file] { ::unlink(file.native().c_str()); }, change);
    }
}

TEST(SqliteGone, AStoreThatTakesThePlaceAtThatInstantIsNotTheOneThatWasChanged) {
    const StoreFile file;
    writeFile(*file.open(), u"f", "backup");
    const std::string backup = contentOf(file.native());
    makeFile(file.tree() / "backup", backup);
    expectRefused(
        file, [&file] { std::rename((file.tree() / "backup").c_str(), file.native().c_str()); }, makeFolder);
}

// Whether it has gone is asked of the file that was opened, not of the one that is found afterwards.
TEST(SqliteGone, AStoreThatTakesThePlaceOfOneThatIsBeingOpenedIsRefused) {
    const StoreFile file;
    writeFile(*file.open(), u"f", "text");
    makeFile(file.tree() / "backup", contentOf(file.native()));
    FaultyVfs files;
    bool isStruck = false;
    strikeAt(files, VfsCall::Kind::Lock, isStruck,
             [&file] { std::rename((file.tree() / "backup").c_str(), file.native().c_str()); });
    expectIOError([&file] { file.open(); });
    EXPECT_TRUE(isStruck);
}

// The change is on the disk, whoever may look at that.
TEST(SqliteGone, AChangeThatWasMadeIsAcknowledgedThoughNobodyMayFollowThePathAnyMore) {
    runAsOrdinaryUser([] {
        FaultyVfs files;
        const StoreFile file;
        bool isStruck = false;  // until the store is closed, which writes, too
        const auto store = file.open({});
        strikeAt(files, VfsCall::Kind::Write, isStruck, [&file] { setMode(file.tree().path(), 0); });
        EXPECT_NO_THROW(makeFolder(*store));
        EXPECT_TRUE(isStruck);
        setMode(file.tree().path(), 0700);
        EXPECT_TRUE(store->find(Path(u"d")));
    });
}

}  // namespace

}  // namespace test
