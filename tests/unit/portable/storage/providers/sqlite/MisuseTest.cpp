// What should not be done to a store while it is open.

#include <pkgcore/portable/storage/providers/sqlite/SqliteProvider.hpp>

#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/RawDatabase.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <thread>
#include <vector>

namespace {

using namespace foundation::storage;
using namespace foundation::storage::conformance;
using foundation::storage::provider::Path;
using test::StoreFile;

/// Calls the body while a thread waits for leave to write, with the only connection that there is.
template <typename Body>
void withoutIdleConnection(const StoreFile& file, provider::Provider& store, Body body) {
    test::RawDatabase other(file.native());
    other.run("BEGIN IMMEDIATE");
    std::thread writer([&store] {
        try {
            store.createFolder(Path(u"d"));
        } catch (const vfs::Exception&) {
            // Whatever has become of the store.
        }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    body();
    other.run("ROLLBACK");
    writer.join();
}

TEST(SqliteMisuse, AStoreThatHasGoneIsNoMissingItem) {
    const StoreFile file;
    const auto store = file.open();
    test::writeFile(*store, u"f", "text");
    withoutIdleConnection(file, *store, [&] {
        ASSERT_EQ(::unlink(file.native().c_str()), 0);
        PKGCORE_EXPECT_FAILURE(IOError, store->find(Path(u"f")));
    });
}

TEST(SqliteMisuse, AFolderThatHasGoneIsNoMissingItem) {
    const StoreFile file;
    test::writeFile(*file.open(), u"large", std::string(300'000, 'x'));
    const auto store = file.open();
    const std::string folder = file.tree().path();
    ASSERT_EQ(std::rename(folder.c_str(), (folder + "-away").c_str()), 0);
    PKGCORE_EXPECT_FAILURE(IOError, store->openReader(Path(u"large")));
    ASSERT_EQ(std::rename((folder + "-away").c_str(), folder.c_str()), 0);
    EXPECT_EQ(test::readFile(*store, u"large"), std::string(300'000, 'x'));
}

TEST(SqliteMisuse, NothingIsAcknowledgedInAFileThatHasGone) {
    for (const auto durability : {provider::SqliteDurability::Full, provider::SqliteDurability::Normal}) {
        const StoreFile file;
        provider::SqliteOptions options;
        options.durability = durability;
        const auto store = file.open(options);
        test::writeFile(*store, u"f", "text");
        ASSERT_EQ(::unlink(file.native().c_str()), 0);
        PKGCORE_EXPECT_FAILURE(IOError, store->createFolder(Path(u"d")));
        PKGCORE_EXPECT_FAILURE(IOError, test::writeFile(*store, u"g", "text"));
    }
}

// The right to write is asked for when the file is opened, as everywhere on the system.
TEST(SqliteMisuse, AFileThatMayNotBeWrittenAnyMoreIsWrittenByWhoHasItOpen) {
    test::runAsOrdinaryUser([] {
        const StoreFile file;
        const auto store = file.open();
        test::setMode(file.native(), 0444);
        store->createFolder(Path(u"d"));
        PKGCORE_EXPECT_FAILURE(AccessDenied, file.open());
        EXPECT_TRUE(store->find(Path(u"d")));
    });
}

TEST(SqliteMisuse, WhoReadsWhileTheFileMayNotBeWrittenKeepsNobodyFromWritingAfterThat) {
    test::runAsOrdinaryUser([] {
        const StoreFile file;
        const auto store = file.open();
        test::writeFile(*store, u"f", "text");  // SQLite gives an empty log the mode of the file
        withoutIdleConnection(file, *store, [&] {
            test::setMode(file.native(), 0444);
            EXPECT_FALSE(store->find(Path(u"d")));
            test::setMode(file.native(), 0644);
        });
        test::RawDatabase other(file.native());
        other.run("BEGIN EXCLUSIVE");
        std::thread reader([&store] { EXPECT_TRUE(store->find(Path(u"d"))); });
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        std::thread writer([&store] { EXPECT_NO_THROW(store->createFolder(Path(u"e"))); });
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        other.run("ROLLBACK");
        writer.join();
        reader.join();
    });
}

// A backup that is put in the place of a store has its key.
TEST(SqliteMisuse, AStoreThatTookThePlaceIsLeftAlone) {
    const StoreFile file;
    test::writeFile(*file.open(), u"f", "text");
    const std::string backup = test::contentOf(file.native());
    {
        const auto store = file.open();
        test::writeFile(*store, u"g", "text");
        test::makeFile(file.tree() / "backup", backup);
        ASSERT_EQ(std::rename((file.tree() / "backup").c_str(), file.native().c_str()), 0);
        PKGCORE_EXPECT_FAILURE(IOError, store->createFolder(Path(u"d")));
        PKGCORE_EXPECT_FAILURE(IOError, store->remove(Path(u"f")));
    }
    EXPECT_EQ(test::contentOf(file.native()), backup);
}

TEST(SqliteMisuse, NoThreadReadsAnotherStoreThanTheOthers) {
    const StoreFile file;
    test::writeFile(*file.open(), u"f", "text");
    const std::string backup = test::contentOf(file.native());
    const auto store = file.open();
    withoutIdleConnection(file, *store, [&] {
        test::makeFile(file.tree() / "backup", backup);
        ASSERT_EQ(std::rename((file.tree() / "backup").c_str(), file.native().c_str()), 0);
        PKGCORE_EXPECT_FAILURE(IOError, store->find(Path(u"f")));
    });
}

TEST(SqliteMisuse, NoThreadReadsAnotherStoreThatWasCopiedOverThisOne) {
    const StoreFile file;
    const StoreFile another;
    for (const StoreFile* const each : {&file, &another}) test::writeFile(*each->open(), u"f", "text");
    const auto store = file.open();
    withoutIdleConnection(file, *store, [&] {
        test::writeInPlace(file.native(), test::contentOf(another.native()));
        PKGCORE_EXPECT_FAILURE(IOError, store->find(Path(u"f")));
    });
}

// Its mode would be set.
TEST(SqliteMisuse, PinsThatAreALinkAreNotFollowed) {
    for (const bool dangles : {true, false}) {
        const StoreFile file;
        test::writeFile(*file.open(), u"large", std::string(300'000, 'x'));
        const std::string target = file.tree() / "target";
        if (!dangles) test::makeFile(target, "text", 0600);
        test::makeLink("target", file.native() + "-pins");
        const auto store = file.open();
        PKGCORE_EXPECT_FAILURE(IOError, store->openReader(Path(u"large")));
        EXPECT_EQ(test::isThere(target), !dangles);
        EXPECT_EQ(dangles ? 0600U : test::modeOf(target), 0600U);
    }
}

/// What a store, a reader and a writer in use are to a process that was forked.
class Forked : public testing::Test {
protected:
    Forked() {
        test::writeFile(*store_, u"large", large_);
        reader_ = store_->openReader(Path(u"large"));
        writer_ = store_->openWriter(Path(u"new"), provider::WriteMode::Create);
        writer_->write(huge_.data(), huge_.size());
    }

    /// The other store removes what nobody uses; this one must not lose anything.
    void expectUnharmed() {
        test::writeFile(*file_.open(), u"large", "other");
        file_.open();
        EXPECT_TRUE(test::isThere(file_.native() + "-pins"));
        EXPECT_TRUE(test::readRest(*reader_) == large_);
        writer_->commit();
        EXPECT_TRUE(test::readFile(*store_, u"new") == huge_);
        EXPECT_NO_THROW(store_->createFolder(Path(u"d")));
    }

    const StoreFile file_;
    std::shared_ptr<provider::Provider> store_ = file_.open();
    const std::string large_ = test::someBytes(300'000);
    const std::string huge_ = test::someBytes(9'000'000);
    std::unique_ptr<provider::Reader> reader_;
    std::unique_ptr<provider::Writer> writer_;
};

TEST_F(Forked, LeavingHarmsNothing) {
    test::runInChild([this] {
        writer_.reset();
        reader_.reset();
        store_.reset();
    });
    expectUnharmed();
}

TEST_F(Forked, LeavingWaitsForNoThreadOfTheParent) {
    test::RawDatabase other(file_.native());
    other.run("BEGIN IMMEDIATE");
    std::vector<std::thread> writers;
    for (int i = 0; i < 3; ++i) {
        writers.emplace_back([this] { EXPECT_NO_THROW(store_->setWritable(Path(u"large"), true)); });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    test::runInChild([this] {
        ::alarm(3);
        writer_.reset();
        reader_.reset();
        store_.reset();
    });
    other.run("ROLLBACK");
    for (std::thread& writer : writers) {
        writer.join();
    }
    expectUnharmed();
}

TEST_F(Forked, UsingIsRefusedAndHarmsNothing) {
    test::runInChild([this] {
        char byte = 0;
        PKGCORE_EXPECT_FAILURE(NotSupported, store_->find(Path(u"large")));
        PKGCORE_EXPECT_FAILURE(NotSupported, store_->createFolder(Path(u"d")));
        PKGCORE_EXPECT_FAILURE(NotSupported, store_->openReader(Path(u"large")));
        PKGCORE_EXPECT_FAILURE(NotSupported, reader_->read(&byte, 1));
        PKGCORE_EXPECT_FAILURE(NotSupported, writer_->commit());
        PKGCORE_EXPECT_FAILURE(NotSupported, store_->sync(Path()));
    });
    expectUnharmed();
}

TEST(SqliteMisuse, NoForkedProcessIsToldThatTheChangesAreOnTheDisk) {
    provider::SqliteOptions full;
    provider::SqliteOptions readOnly;
    readOnly.isReadOnly = true;
    for (const auto& options : {full, readOnly}) {
        const StoreFile file;
        file.open();
        const auto store = file.open(options);
        test::runInChild([&store] { PKGCORE_EXPECT_FAILURE(NotSupported, store->sync(Path())); });
    }
}

}  // namespace
