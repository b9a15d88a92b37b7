// Which back ends a selector with virtual storage hands out, and how long they live.

#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/filesystem/VirtualFileSystemOps.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>
#include <utility>

using foundation::storage::vfs::StorageSystem;
using foundation::storage::vfs::StorageSystemReference;
using opc::FileSystemOps;
using opc::FileSystemOpsSelector;
using scripted::Calls;

namespace {

static_assert(std::is_constructible_v<FileSystemOpsSelector, const StorageSystemReference&>);

class SelectorWithStorage : public testing::Test {
protected:
    SelectorWithStorage() { system->name = "S"; }

    scripted::Platform platform;
    const std::shared_ptr<StorageSystem> system = std::make_shared<StorageSystem>();
    std::unique_ptr<FileSystemOpsSelector> selector =
        std::make_unique<FileSystemOpsSelector>(StorageSystemReference(system));
};

TEST_F(SelectorWithStorage, MakingOneAsksThePlatformForNothing) { EXPECT_EQ(platform.calls(), Calls{}); }

TEST_F(SelectorWithStorage, HasALocalAndAVirtualBackEnd) {
    EXPECT_NE(dynamic_cast<opc::LocalFileSystemOps*>(&selector->getLocal()), nullptr);
    EXPECT_NE(dynamic_cast<opc::VirtualFileSystemOps*>(&selector->getVirtual()), nullptr);
    EXPECT_EQ(&selector->getPhysical(), &selector->getLocal());
}

TEST_F(SelectorWithStorage, TheVirtualBackEndWorksOnTheGivenStorage) {
    EXPECT_FALSE(selector->getVirtual().exists(u"a"));
    EXPECT_EQ(platform.callsTo({"vfs::exists"}), Calls{"vfs::exists('canonical(a)'@S)"});
}

TEST_F(SelectorWithStorage, APathWithAnIRIPrefixIsVirtualAndAnyOtherIsLocal) {
    platform.storage.hasIRIPrefix.at(u"x").returns(true);
    EXPECT_EQ(&selector->getForPath(u"x"), &selector->getVirtual());
    EXPECT_EQ(&selector->getForPath(u"/a/b"), &selector->getLocal());
    EXPECT_EQ(&selector->getForPath(u""), &selector->getLocal());
    EXPECT_EQ(platform.calls(), (Calls{"hasIRIPrefix('x')", "hasIRIPrefix('/a/b')", "hasIRIPrefix('')"}));
}

TEST_F(SelectorWithStorage, ConstSelectorsHandOutBackEndsThatCanBeUsed) {
    const FileSystemOpsSelector& constant = *selector;
    static_assert(std::is_same_v<decltype(constant.getVirtual()), FileSystemOps&>);
    EXPECT_NO_THROW(constant.getVirtual().createFolder(u"a"));
}

TEST_F(SelectorWithStorage, HoldsTheStorageOnceAndLetsItGo) {
    EXPECT_EQ(system.use_count(), 2);
    const auto copy = std::make_unique<FileSystemOpsSelector>(*selector);
    EXPECT_EQ(system.use_count(), 2);
    selector.reset();
    EXPECT_EQ(system.use_count(), 2);
    *copy = FileSystemOpsSelector();
    EXPECT_EQ(system.use_count(), 1);
}

TEST_F(SelectorWithStorage, CopiesShareBothBackEnds) {
    const FileSystemOpsSelector copy(*selector);
    FileSystemOpsSelector assigned;
    assigned = *selector;
    for (const FileSystemOpsSelector* other : {&copy, static_cast<const FileSystemOpsSelector*>(&assigned)}) {
        EXPECT_EQ(&other->getLocal(), &selector->getLocal());
        EXPECT_EQ(&other->getVirtual(), &selector->getVirtual());
    }
}

TEST_F(SelectorWithStorage, SelectorsOfOneStorageHaveBackEndsOfTheirOwn) {
    const FileSystemOpsSelector other{StorageSystemReference(system)};
    EXPECT_NE(&other.getLocal(), &selector->getLocal());
    EXPECT_NE(&other.getVirtual(), &selector->getVirtual());
}

TEST_F(SelectorWithStorage, BackEndsOutliveTheSelectorTheyCameFromWhileACopyLives) {
    FileSystemOps& local = selector->getLocal();
    FileSystemOps& virtualOps = selector->getVirtual();
    const FileSystemOpsSelector copy(*selector);
    selector.reset();
    EXPECT_EQ(&copy.getVirtual(), &virtualOps);
    EXPECT_FALSE(local.exists(u"a"));
    EXPECT_FALSE(virtualOps.exists(u"a"));
}

TEST_F(SelectorWithStorage, MovingTakesTheBackEndsAlong) {
    FileSystemOps* const virtualOps = &selector->getVirtual();
    FileSystemOpsSelector moved(std::move(*selector));
    selector.reset();
    FileSystemOpsSelector assigned;
    assigned = std::move(moved);
    EXPECT_EQ(&assigned.getVirtual(), virtualOps);
    EXPECT_EQ(system.use_count(), 2);
}

TEST_F(SelectorWithStorage, AMovedFromSelectorHoldsNothingAndCanBeAssigned) {
    const auto moved = std::make_unique<FileSystemOpsSelector>(std::move(*selector));
    *moved = FileSystemOpsSelector();
    EXPECT_EQ(system.use_count(), 1);
    *selector = FileSystemOpsSelector(StorageSystemReference(system));
    EXPECT_EQ(&selector->getForPath(u"/a"), &selector->getLocal());
}

TEST_F(SelectorWithStorage, AssigningToItselfKeepsTheBackEnds) {
    FileSystemOps* const virtualOps = &selector->getVirtual();
    const FileSystemOpsSelector& same = *selector;
    *selector = same;
    EXPECT_EQ(&selector->getVirtual(), virtualOps);
}

TEST_F(SelectorWithStorage, TheReferenceThatItWasMadeFromIsOnlyCopied) {
    const StorageSystemReference reference(system);
    const FileSystemOpsSelector other(reference);
    EXPECT_EQ(reference.get(), system.get());
    EXPECT_EQ(system.use_count(), 4);
}

}  // namespace
