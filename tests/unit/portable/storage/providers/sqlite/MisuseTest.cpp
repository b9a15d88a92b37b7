// What should not be done to a store while it is open.

#include <pkgcore/portable/storage/providers/sqlite/SqliteProvider.hpp>

#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/RawDatabase.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <thread>

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

}  // namespace
