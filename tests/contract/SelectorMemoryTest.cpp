// The memory that a selector takes, what is left of it after a failure, and the order in which it is given
// back. This program replaces operator new.

#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/filesystem/VirtualFileSystemOps.hpp>

#include "tests/fault/AllocationCounter.hpp"
#include "tests/support/scripted_platform/StorageScript.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <optional>

using foundation::storage::vfs::StorageSystem;
using foundation::storage::vfs::StorageSystemReference;
using opc::FileSystemOpsSelector;
using test::PeakMemory;
using test::ScarceMemory;

namespace {

/// Whether making a selector works when allocation number `at` (from 1) fails.
template <typename... Storage>
bool canBeMadeWithout(long at, const Storage&... storage) {
    std::optional<FileSystemOpsSelector> selector;
    const ScarceMemory scarce(at, false);
    try {
        selector.emplace(storage...);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

/// Notes how much memory was in use when the last reference to the storage went.
class NotingSystem {
public:
    NotingSystem()
        : reference_(std::shared_ptr<const StorageSystem>(
              &system_, [this](const StorageSystem*) { keptAtTheEnd = memory.kept(); })) {}

    StorageSystemReference release() { return std::move(reference_); }

    PeakMemory memory;
    std::ptrdiff_t keptAtTheEnd = -1;

private:
    StorageSystem system_;
    StorageSystemReference reference_;
};

TEST(SelectorMemory, IsOneBlockForTheOwnersAndOneForTheLocalBackEnd) {
    EXPECT_FALSE(canBeMadeWithout(1));
    EXPECT_FALSE(canBeMadeWithout(2));
    EXPECT_TRUE(canBeMadeWithout(3));
}

TEST(SelectorMemory, WithStorageTakesOneBlockMore) {
    const StorageSystemReference storage = scripted::storageSystem("S");
    EXPECT_FALSE(canBeMadeWithout(1, storage));
    EXPECT_FALSE(canBeMadeWithout(2, storage));
    EXPECT_FALSE(canBeMadeWithout(3, storage));
    EXPECT_TRUE(canBeMadeWithout(4, storage));
}

TEST(SelectorMemory, OfABackEndThatCannotBeMadeNothingIsLeft) {
    const auto system = std::make_shared<StorageSystem>();
    const StorageSystemReference storage(system);
    const PeakMemory memory;
    for (long at = 1; at <= 3; ++at) {
        EXPECT_FALSE(canBeMadeWithout(at, storage));
        EXPECT_EQ(memory.kept(), 0) << at;
        EXPECT_EQ(system.use_count(), 2) << at;
    }
}

TEST(SelectorMemory, TheLocalBackEndIsMadeBeforeTheVirtualOne) {
    static_assert(sizeof(opc::LocalFileSystemOps) != sizeof(opc::VirtualFileSystemOps));
    const StorageSystemReference storage = scripted::storageSystem("S");
    canBeMadeWithout(2, storage);
    EXPECT_EQ(ScarceMemory::refusedBytes(), sizeof(opc::LocalFileSystemOps));
    canBeMadeWithout(3, storage);
    EXPECT_EQ(ScarceMemory::refusedBytes(), sizeof(opc::VirtualFileSystemOps));
}

TEST(SelectorMemory, TheVirtualBackEndGoesBeforeTheLocalOne) {
    NotingSystem noting;
    std::optional<FileSystemOpsSelector> selector(std::in_place, noting.release());
    const std::ptrdiff_t whole = noting.memory.kept();
    selector.reset();
    // Nothing had been given back when the virtual back end let go of its storage.
    EXPECT_EQ(noting.keptAtTheEnd, whole);
    EXPECT_LT(noting.memory.kept(), whole);
}

TEST(SelectorMemory, ACopyTakesNone) {
    const FileSystemOpsSelector selector(scripted::storageSystem("S"));
    const PeakMemory memory;
    const FileSystemOpsSelector copy(selector);
    EXPECT_EQ(memory.bytes(), 0);
    EXPECT_EQ(&copy.getVirtual(), &selector.getVirtual());
}

}  // namespace
