// Memory that runs out in the middle of an operation on virtual storage: it is reported or thrown, the store
// holds what it held before or what the operation makes of it, and the operation works once there is memory.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/folder/FolderProvider.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "tests/fault/AllocationCounter.hpp"
#include "tests/fault/StarvedStores.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace test {

namespace {

namespace provider = foundation::storage::provider;
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

class FilledStore {
public:
    explicit FilledStore(const StarvedStore& kind) : FilledStore(kind.make()) {}

    explicit FilledStore(StarvedStore::Made made)
        : ground_(std::move(made.ground)),
          selector_(foundation::storage::vfs::StorageSystemBuilder()
                        .mount(u"mem", u"some-authority", made.provider)
                        .build()) {
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

    std::shared_ptr<void> ground_;
    opc::FileSystemOpsSelector selector_;
};

StarvedStore inMemory() {
    return {"Memory", [] { return StarvedStore::Made{provider::makeMemoryProvider(), nullptr}; }};
}

StarvedStore inFolder() {
    return {"Folder", [] {
                auto tree = std::make_shared<TempTree>(fastFolder());
                auto store = provider::makeFolderProvider(text(tree->path()));
                return StarvedStore::Made{std::move(store), std::move(tree)};
            }};
}

std::vector<StarvedStore> starvedStores() {
    std::vector<StarvedStore> all = optionalStarvedStores();
    all.insert(all.begin(), {inMemory(), inFolder()});
    return all;
}

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

/// Of what is made beside its place, and of what is left of an old folder.
bool isTemporary(const ustring& iri) {
    return iri.find(u"/.") != ustring::npos && iri.find(u".tmp") != ustring::npos;
}

bool has(const Contents& contents, const Contents::value_type& entry) {
    const auto found = contents.find(entry.first);
    return found != contents.end() && found->second == entry.second;
}

bool hasAllOf(const Contents& contents, const Contents& other) {
    return std::all_of(other.begin(), other.end(), [&](const auto& entry) { return has(contents, entry); });
}

class VirtualAllocation : public ::testing::TestWithParam<std::tuple<StarvedStore, VirtualOperation>> {
protected:
    void SetUp() override {
        const FilledStore store(kind);
        Code ec;
        before = store.contents();
        operation.run(store.ops(), ec);
        ASSERT_FALSE(ec.failed()) << ec.message();
        done = store.contents();
    }

    /// False once the operation is done before memory runs out.
    bool runWith(long at, bool persistent) const {
        const FilledStore store(kind);
        Code ec;
        {
            const ScarceMemory scarce(at, persistent);
            operation.run(store.ops(), ec);
        }
        const Contents after = store.contents();
        if (ec.failed()) {
            EXPECT_TRUE(ScarceMemory::wasReached());
            expectNothingLost(after);
            expectToWorkNow(store);
        } else {
            EXPECT_EQ(after, done);
        }
        return ScarceMemory::wasReached();
    }

    /// A folder is not removed in one step by every store.
    void expectNothingLost(const Contents& after) const {
        EXPECT_TRUE(hasAllOf(after, before) || hasAllOf(after, done));
        for (const auto& entry : after) {
            EXPECT_TRUE(has(before, entry) || has(done, entry) || isTemporary(entry.first))
                << testing::PrintToString(entry.first);
        }
    }

    void expectToWorkNow(const FilledStore& store) const {
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
        RecordProperty("points", static_cast<int>(at - 2));  // the last one was not reached any more
    }

    const StarvedStore& kind = std::get<0>(GetParam());
    const VirtualOperation& operation = std::get<1>(GetParam());
    Contents before;
    Contents done;
};

TEST_P(VirtualAllocation, NothingIsLostWhenOneFails) { failEachAllocation(false); }

TEST_P(VirtualAllocation, NothingIsLostWhenMemoryIsUsedUp) { failEachAllocation(true); }

INSTANTIATE_TEST_SUITE_P(Every, VirtualAllocation,
                         ::testing::Combine(::testing::ValuesIn(starvedStores()),
                                            ::testing::ValuesIn(virtualOperations())),
                         [](const auto& one) {
                             return std::get<1>(one.param).name + "In" + std::get<0>(one.param).name;
                         });

TEST(VirtualAllocationOfAFailure, StillHasTheCodeOfTheFailure) {
    const FilledStore store(inMemory());
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
