// The virtual back end as an object: it holds a reference to a storage system, and nothing else.

#include "tests/contract/VirtualContract.hpp"

#include <type_traits>
#include <utility>

using contract::OpenVirtualOps;
using foundation::storage::vfs::StorageSystem;
using foundation::storage::vfs::StorageSystemReference;
using opc::VirtualFileSystemOps;
using scripted::Calls;
using scripted::storageSystem;

namespace {

static_assert(std::is_base_of_v<opc::FileSystemOps, VirtualFileSystemOps>);
static_assert(std::has_virtual_destructor_v<VirtualFileSystemOps>);
static_assert(!std::is_default_constructible_v<VirtualFileSystemOps>);
static_assert(std::is_constructible_v<VirtualFileSystemOps, StorageSystemReference>);
static_assert(std::is_copy_constructible_v<VirtualFileSystemOps>);
static_assert(std::is_nothrow_move_constructible_v<VirtualFileSystemOps>);
static_assert(std::is_copy_assignable_v<VirtualFileSystemOps>);
static_assert(std::is_nothrow_move_assignable_v<VirtualFileSystemOps>);
static_assert(sizeof(VirtualFileSystemOps) == sizeof(opc::FileSystemOps) + sizeof(StorageSystemReference));

class VirtualObject : public testing::Test {
protected:
    scripted::Platform platform;
    std::string msg;
    boost::system::error_code ec;

    /// The name of the storage system that the back end works on.
    std::string storageOf(OpenVirtualOps& ops) {
        ops.doExists(u"a", msg, ec);
        const std::string call = platform.calls().back();
        return call.substr(call.find('@') + 1);
    }
};

TEST_F(VirtualObject, MakingOneAsksThePlatformForNothing) {
    const OpenVirtualOps ops(storageSystem("S"));
    EXPECT_EQ(platform.calls(), Calls{});
}

TEST_F(VirtualObject, KeepsItsStorageSystemAliveAndLetsItGo) {
    const auto system = std::make_shared<StorageSystem>();
    auto ops = std::make_unique<OpenVirtualOps>(StorageSystemReference(system));
    EXPECT_EQ(system.use_count(), 2);
    ops->doExists(u"a", msg, ec);
    ops->doCreateFolder(u"a", msg, ec);
    EXPECT_EQ(system.use_count(), 2);
    ops.reset();
    EXPECT_EQ(system.use_count(), 1);
}

TEST_F(VirtualObject, TakesTheReferenceThatItIsGiven) {
    const auto system = std::make_shared<StorageSystem>();
    StorageSystemReference reference(system);
    const OpenVirtualOps ops(std::move(reference));
    EXPECT_EQ(system.use_count(), 2);
}

TEST_F(VirtualObject, IsDestroyedThroughTheInterface) {
    const auto system = std::make_shared<StorageSystem>();
    std::unique_ptr<opc::FileSystemOps> ops =
        std::make_unique<VirtualFileSystemOps>(StorageSystemReference(system));
    ops.reset();
    EXPECT_EQ(system.use_count(), 1);
}

TEST_F(VirtualObject, CopyingSharesTheStorageSystem) {
    OpenVirtualOps ops(storageSystem("S"));
    OpenVirtualOps copy(ops);
    EXPECT_EQ(storageOf(copy), "S)");
    EXPECT_EQ(storageOf(ops), "S)");
}

TEST_F(VirtualObject, MovingTakesTheStorageSystemAlong) {
    const auto system = std::make_shared<StorageSystem>();
    OpenVirtualOps ops{StorageSystemReference(system)};
    const OpenVirtualOps moved(std::move(ops));
    EXPECT_EQ(system.use_count(), 2);
}

TEST_F(VirtualObject, AssigningReplacesTheStorageSystem) {
    OpenVirtualOps ops(storageSystem("S"));
    const OpenVirtualOps other(storageSystem("T"));
    EXPECT_EQ(&(ops = other), &ops);
    EXPECT_EQ(storageOf(ops), "T)");
}

TEST_F(VirtualObject, AssigningToItselfChangesNothing) {
    OpenVirtualOps ops(storageSystem("S"));
    const OpenVirtualOps& same = ops;
    ops = same;
    EXPECT_EQ(storageOf(ops), "S)");
}

TEST_F(VirtualObject, MoveAssigningTakesTheStorageSystemAndLetsTheOldOneGo) {
    const auto oldSystem = std::make_shared<StorageSystem>();
    const auto newSystem = std::make_shared<StorageSystem>();
    OpenVirtualOps ops{StorageSystemReference(oldSystem)};
    OpenVirtualOps other{StorageSystemReference(newSystem)};
    EXPECT_EQ(&(ops = std::move(other)), &ops);
    EXPECT_EQ(oldSystem.use_count(), 1);
    EXPECT_EQ(newSystem.use_count(), 2);
}

}  // namespace
