// Memory that runs out in the middle of an operation on virtual storage: it is reported or thrown, the store
// holds what it held before or what the operation makes of it, and the operation works once there is memory.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "tests/fault/AllocationCounter.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <map>
#include <new>
#include <string>
#include <vector>

namespace test {

namespace {

using opc::FileSystemOps;
using opc::ustring;

/// Reports by its code, so that nothing but the operation allocates.
using Code = boost::system::error_code;

struct VirtualOperation {
    std::string name;
    std::function<void(FileSystemOps&, Code&)> run;
};

inline void PrintTo(const VirtualOperation& operation, std::ostream* out) { *out << operation.name; }

// Names are too long for the room that a short string has in itself.

/// Paths with their content; folders hold "/".
using Contents = std::map<ustring, std::string>;

class MemoryStore {
public:
    MemoryStore() {
        ops().createFolders(u"mem://some-authority/source-folder/inner-folder");
        ops().createFolders(u"mem://some-authority/target-folder");
        write(u"mem://some-authority/single-file", "file");
        write(u"mem://some-authority/source-folder/first-file", "A");
        write(u"mem://some-authority/source-folder/inner-folder/second-file", "B");
        write(u"mem://some-authority/target-folder/old-file", "old");
    }

    FileSystemOps& ops() const { return selector_.getVirtual(); }

    Contents contents() const {
        std::vector<ustring> files;
        ops().getFiles(u"mem://some-authority", files, true);
        Contents found;
        for (const ustring& path : files) {
            const auto stream = ops().createInputStream(path, std::ios::binary);
            found[path].assign(std::istreambuf_iterator<char>(*stream), {});
        }
        for (const char16_t* folder :
             {u"mem://some-authority/source-folder", u"mem://some-authority/target-folder",
              u"mem://some-authority/newly-made-item"}) {
            if (ops().isFolder(folder)) {
                found[folder] = "/";
            }
        }
        return found;
    }

private:
    void write(const ustring& path, const std::string& content) const {
        *ops().createOutputStream(path, std::ios::binary) << content << std::flush;
    }

    opc::FileSystemOpsSelector selector_{
        foundation::storage::vfs::StorageSystemBuilder()
            .mount(u"mem", foundation::storage::provider::makeMemoryProvider())
            .build()};
};

const ustring kFile = u"mem://some-authority/single-file";
const ustring kFrom = u"mem://some-authority/source-folder";
const ustring kTo = u"mem://some-authority/target-folder";
const ustring kNew = u"mem://some-authority/newly-made-item";
const ustring kStore = u"mem://some-authority";
const ustring kOld = u"mem://some-authority/target-folder/old-file";
const ustring kDeep = u"mem://some-authority/source-folder/inner-folder/second-file";
const ustring kNative = u"/tmp/a b/c";
const ustring kOddName = u"100% done?.txt";
const ustring kMissing = u"mem://some-authority/missing";

/// For operations whose failure is thrown: the code of the failure.
template <typename Operation>
void reportThrown(Code& ec, Operation operation) {
    try {
        operation();
    } catch (const opc::Exception& failure) {
        ec = failure.code();
    } catch (const std::bad_alloc&) {
        ec = make_error_code(boost::system::errc::not_enough_memory);
    }
}

/// For operations that are refused whether there is memory or not.
template <typename Operation>
void refused(Code& ec, Operation operation) {
    operation();
    EXPECT_EQ(ec, boost::system::errc::operation_not_supported);
    ec = Code();
}

void readAll(FileSystemOps& ops, Code& ec) {
    const auto stream = ops.createInputStream(kFile, std::ios::binary, ec);
    char text[16] = {};
    if (stream && (!stream->read(text, 4) || std::string_view(text) != "file")) {
        ec = make_error_code(boost::system::errc::io_error);
    }
}

void writeAll(FileSystemOps& ops, Code& ec) {
    const auto stream = ops.createOutputStream(kFile, std::ios::binary, ec);
    if (stream && !(*stream << "other" << std::flush)) {
        ec = make_error_code(boost::system::errc::io_error);
    }
}

std::vector<VirtualOperation> virtualOperations() {
    return {
        {"exists", [](auto& ops, auto& ec) { ops.exists(kFile, ec); }},
        {"getPermissions", [](auto& ops, auto& ec) { ops.getPermissions(kFile, ec); }},
        {"setPermissions", [](auto& ops, auto& ec) { ops.setPermissions(kFile, opc::Perms::ReadWrite, ec); }},
        {"getLastModifiedTime", [](auto& ops, auto& ec) { ops.getLastModifiedTime(kFrom, ec); }},
        {"setLastModifiedTime",
         [](auto& ops, auto& ec) { ops.setLastModifiedTime(kFile, boost::posix_time::ptime(), ec); }},
        {"getFiles",
         [](auto& ops, auto& ec) {
             std::vector<ustring> files;
             ops.getFiles(kStore, files, true, ec);
         }},
        {"createInputStream", readAll},
        {"createOutputStream", writeAll},
        {"createFolder", [](auto& ops, auto& ec) { ops.createFolder(kNew, ec); }},
        {"createFolders", [](auto& ops, auto& ec) { ops.createFolders(kNew, ec); }},
        {"copyFile", [](auto& ops, auto& ec) { ops.copy(kFile, kNew, opc::Fail, ec); }},
        {"copyFileReplacing", [](auto& ops, auto& ec) { ops.copy(kFile, kOld, opc::Replace, ec); }},
        {"renameFile", [](auto& ops, auto& ec) { ops.rename(kFile, kOld, ec); }},
        {"renameFileBelow", [](auto& ops, auto& ec) { ops.rename(kDeep, kOld, ec); }},
        {"renameFolder", [](auto& ops, auto& ec) { ops.rename(kFrom, kTo, ec); }},
        {"removeFile", [](auto& ops, auto& ec) { ops.remove(kFile, ec); }},
        {"removeFolder", [](auto& ops, auto& ec) { ops.removeAll(kFrom, ec); }},
        {"copyFolderReplacing", [](auto& ops, auto& ec) { ops.copy(kFrom, kTo, opc::Replace, ec); }},
        {"getParentPath", [](auto& ops, auto& ec) { reportThrown(ec, [&] { ops.getParentPath(kDeep); }); }},
        {"appendPath",
         [](auto& ops, auto& ec) { reportThrown(ec, [&] { ops.appendPath(kFrom, kOddName); }); }},
        {"normalizePath", [](auto& ops, auto& ec) { reportThrown(ec, [&] { ops.normalizePath(kNative); }); }},
        {"getLinkTarget", [](auto& ops, auto& ec) { refused(ec, [&] { ops.getLinkTarget(kFile, ec); }); }},
        {"createSymlink",
         [](auto& ops, auto& ec) { refused(ec, [&] { ops.createSymlink(kFile, kNew, ec); }); }},
        {"getTempName", [](auto& ops, auto& ec) { reportThrown(ec, [&] { ops.getTempName(kTo); }); }},
    };
}

class VirtualAllocation : public ::testing::TestWithParam<VirtualOperation> {
protected:
    void SetUp() override {
        const MemoryStore store;
        Code ec;
        before = store.contents();
        operation.run(store.ops(), ec);
        ASSERT_FALSE(ec.failed()) << ec.message();
        done = store.contents();
    }

    /// False once the operation is done before memory runs out.
    bool runWith(long at, bool persistent) const {
        const MemoryStore store;
        Code ec;
        {
            const ScarceMemory scarce(at, persistent);
            operation.run(store.ops(), ec);
        }
        const Contents after = store.contents();
        if (ec.failed()) {
            EXPECT_TRUE(ScarceMemory::wasReached());
            EXPECT_TRUE(after == before || after == done);
            expectToWorkNow(store);
        } else {
            EXPECT_EQ(after, done);
        }
        return ScarceMemory::wasReached();
    }

    void expectToWorkNow(const MemoryStore& store) const {
        if (store.contents() == before) {
            Code ec;
            operation.run(store.ops(), ec);
            EXPECT_FALSE(ec.failed()) << ec.message();
            EXPECT_EQ(store.contents(), done);
        }
    }

    void failEachAllocation(bool persistent) const {
        long at = 1;
        for (bool reached = true; reached; ++at) {
            reached = runWith(at, persistent);
            if (HasFailure()) {
                FAIL() << "after allocation " << at << " had failed";
            }
        }
        EXPECT_GT(at, 2) << "no allocation was counted";
    }

    const VirtualOperation& operation = GetParam();
    Contents before;
    Contents done;
};

TEST_P(VirtualAllocation, NothingIsLostWhenOneFails) { failEachAllocation(false); }

TEST_P(VirtualAllocation, NothingIsLostWhenMemoryIsUsedUp) { failEachAllocation(true); }

INSTANTIATE_TEST_SUITE_P(Every, VirtualAllocation, ::testing::ValuesIn(virtualOperations()),
                         [](const auto& one) { return one.param.name; });

TEST(VirtualAllocationOfAFailure, StillHasTheCodeOfTheFailure) {
    const MemoryStore store;
    for (long at = 1;; ++at) {
        Code ec;
        {
            const ScarceMemory scarce(at, false);
            store.ops().remove(kMissing, ec);
        }
        EXPECT_TRUE(ec == boost::system::errc::no_such_file_or_directory ||
                    ec == boost::system::errc::io_error)
            << ec;
        if (!ScarceMemory::wasReached()) {
            EXPECT_EQ(ec, make_error_code(boost::system::errc::no_such_file_or_directory));
            break;
        }
    }
}

}  // namespace

}  // namespace test
