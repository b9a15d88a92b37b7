// The power fails: of what was not brought to the disk, anything may be there or not.

#include <pkgcore/platform/storage/Exceptions.hpp>

#include "tests/sqlite/Change.hpp"
#include "tests/sqlite/FaultyVfs.hpp"
#include "tests/sqlite/Log.hpp"
#include "tests/sqlite/Soundness.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <random>

namespace test {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using foundation::storage::provider::SqliteDurability;
using Kind = VfsCall::Kind;

/// What becomes of what was not synced.
enum class Loss : unsigned char {
    All,
    Some,            ///< of each sector, but nothing of what came behind a truncation that is lost
    SomeInAnyOrder,  ///< of each sector and each truncation
    Nothing
};

/// A disk with a cache in front of it.
class Disk {
public:
    explicit Disk(unsigned seed) : random_(seed) {}

    void note(const VfsCall& call) {
        if (call.kind == Kind::Open) open(call.path);
        if (call.kind == Kind::Write) pending(call).push_back({call.offset, textOf(call), false});
        if (call.kind == Kind::Truncate) pending(call).push_back({call.size, {}, true});
        if (call.kind == Kind::Sync) sync(call.path);
        if (call.kind == Kind::Delete) remove(call);
    }

    /// Makes the files what is found after the cut.
    void cut(Loss loss) {
        for (const auto& [path, file] : files_) {
            ::unlink(path.c_str());
            const auto deleted = deleted_.find(path);
            const bool isBack = deleted != deleted_.end() && !arrives(loss);
            const bool isNamed = file.isNamed || (loss != Loss::All && !file.pending.empty());
            if (isBack || isNamed) makeFile(path, isBack ? deleted->second : after(file, loss));
        }
    }

private:
    struct Write {
        sqlite3_int64 offset;
        std::string bytes;
        bool isTruncation;
    };
    struct File {
        std::string durable;
        bool isNamed = false;
        bool isNew = false;
        std::vector<Write> pending;
    };

    void open(const std::string& path) {
        if (!isThere(path)) {
            files_[path].isNew = true;
        } else {
            files_.try_emplace(path, File{contentOf(path), true, false, {}});
        }
    }

    /// A new file is synced with its folder, and with what is no longer in it.
    void sync(const std::string& path) {
        deleted_.erase(path);
        if (files_[path].isNew) deleted_.clear();
        files_[path] = {contentOf(path), true, false, {}};
    }

    /// Where the folder is not synced, the old file may come back.
    void remove(const VfsCall& call) {
        const bool isSynced = call.size != 0;
        if (isSynced) deleted_.erase(call.path);
        if (!isSynced && isThere(call.path)) deleted_.insert_or_assign(call.path, contentOf(call.path));
        files_[call.path] = {};
    }

    static std::string textOf(const VfsCall& call) {
        return {static_cast<const char*>(call.bytes), static_cast<std::size_t>(call.size)};
    }

    std::vector<Write>& pending(const VfsCall& call) { return files_[call.path].pending; }

    std::string after(const File& file, Loss loss) {
        std::string content = file.durable;
        for (const Write& write : file.pending) {
            if (!write.isTruncation) {
                writeSectors(content, write, loss);
            } else if (arrives(loss)) {
                content.resize(static_cast<std::size_t>(write.offset));
            } else if (loss == Loss::Some) {
                break;
            }
        }
        return content;
    }

    bool arrives(Loss loss) {
        const bool isOpen = loss == Loss::Some || loss == Loss::SomeInAnyOrder;
        return loss == Loss::Nothing || (isOpen && random_() % 2 == 0);
    }

    /// A disk writes sectors whole or not at all.
    void writeSectors(std::string& content, const Write& write, Loss loss) {
        constexpr std::size_t kSector = 512;
        for (std::size_t at = 0; at < write.bytes.size(); at += kSector) {
            const std::size_t size = std::min(kSector, write.bytes.size() - at);
            const std::size_t to = static_cast<std::size_t>(write.offset) + at;
            if (!arrives(loss)) continue;
            if (content.size() < to + size) content.resize(to + size);
            content.replace(to, size, write.bytes, at, size);
        }
    }

    std::mt19937 random_;
    std::map<std::string, File> files_;
    std::map<std::string, std::string> deleted_;  ///< the contents of files whose end is not on the disk
};

struct Case {
    const char* name;
    SqliteDurability durability;
    Loss loss;
    bool syncs = false;  ///< after each change
    std::size_t largeSize = 80'000;
    unsigned step = 1;  ///< from one cut to the next one
};

class SqlitePowerCut : public testing::TestWithParam<Case> {
protected:
    SqlitePowerCut() {
        file_.open(options());
        empty_ = contentOf(file_.native());
    }

    /// The scenario with the power failing at this change of a file. False if it was never reached.
    bool run(unsigned number) {
        SCOPED_TRACE(number);
        removeStore(file_);
        makeFile(file_.native(), empty_);
        Disk disk(number);
        states_ = {Tree()};
        unsigned calls = 0;
        {
            FaultyVfs faulty;
            faulty.onCall([&](const VfsCall& call) {
                const bool changes = call.kind == Kind::Write || call.kind == Kind::Truncate ||
                                     call.kind == Kind::Sync || call.kind == Kind::Delete;
                if (changes) ++calls;
                if (calls >= number) return SQLITE_IOERR;
                disk.note(call);
                return SQLITE_OK;
            });
            makeChanges();
        }
        disk.cut(GetParam().loss);
        compare();
        return calls >= number;
    }

private:
    static StoreFile::Options options() {
        StoreFile::Options options;
        options.durability = GetParam().durability;
        options.busyTime = std::chrono::milliseconds(1);
        return options;
    }

    /// Notes each state that was acknowledged, and that which was not.
    void makeChanges() {
        try {
            auto store = file_.open(options());
            const std::vector<Change> changes = allKinds(GetParam().largeSize);
            for (const Change& change : changes) {
                if (&change == &changes[changes.size() / 2]) {
                    store.reset();
                    store = file_.open(options());
                }
                Tree next = states_.back();
                ASSERT_TRUE(change.makeIn(next));
                isLastOpen_ = true;
                states_.push_back(next);
                change.makeIn(*store);
                if (GetParam().syncs) store->sync(provider::Path());
                isLastOpen_ = false;
            }
        } catch (const vfs::Exception&) {
            // The machine is off.
        }
    }

    void compare() {
        const Tree found = contentsOf(*file_.open(options()));
        const bool lasts = GetParam().durability == SqliteDurability::Full || GetParam().syncs;
        const std::size_t oldest = lasts ? states_.size() - (isLastOpen_ ? 2 : 1) : 0;
        const auto first = states_.begin() + static_cast<std::ptrdiff_t>(oldest);
        const bool isKnown = std::any_of(
            first, states_.end(), [&found](const Tree& tree) { return difference(tree, found).empty(); });
        EXPECT_TRUE(isKnown) << "after " << states_.size() - 1 << " changes: " << difference(*first, found);
        expectSound(file_);
    }

    StoreFile file_;
    std::string empty_;
    std::vector<Tree> states_;
    bool isLastOpen_ = false;
};

TEST_P(SqlitePowerCut, LeavesWhatWasPromised) {
    unsigned number = 1;
    unsigned cuts = 0;
    for (; run(number) && !HasFailure(); number += faultStep() * GetParam().step) ++cuts;
    RecordProperty("cuts", static_cast<int>(cuts));
    EXPECT_GE(number, 50U) << "so often at least is a file changed";
}

constexpr Case kCases[] = {
    {"FullWithAllLost", SqliteDurability::Full, Loss::All},
    {"FullWithSomeLost", SqliteDurability::Full, Loss::Some},
    {"FullWithSomeLostInAnyOrder", SqliteDurability::Full, Loss::SomeInAnyOrder},
    {"FullWithNothingLost", SqliteDurability::Full, Loss::Nothing},
    {"NormalWithAllLost", SqliteDurability::Normal, Loss::All},
    {"NormalWithSomeLost", SqliteDurability::Normal, Loss::Some},
    {"NormalWithSomeLostInAnyOrder", SqliteDurability::Normal, Loss::SomeInAnyOrder},
    {"SyncedWithAllLost", SqliteDurability::Normal, Loss::All, true},
    {"SyncedWithSomeLost", SqliteDurability::Normal, Loss::Some, true},
    // With what is stored before it is published.
    {"FullAndLargeWithSomeLost", SqliteDurability::Full, Loss::SomeInAnyOrder, false, 4'400'000, 101},
    {"NormalAndLargeWithSomeLost", SqliteDurability::Normal, Loss::SomeInAnyOrder, false, 4'400'000, 101},
};

INSTANTIATE_TEST_SUITE_P(Loss, SqlitePowerCut, testing::ValuesIn(kCases),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace

}  // namespace test
