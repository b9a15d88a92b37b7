// SQLite's calls to its files fail, one after the other.

#include <pkgcore/platform/storage/Exceptions.hpp>

#include "tests/sqlite/Change.hpp"
#include "tests/sqlite/FaultyVfs.hpp"
#include "tests/sqlite/Log.hpp"
#include "tests/sqlite/Soundness.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gtest/gtest.h>

#include <unistd.h>
#include <algorithm>

namespace test {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using Kind = VfsCall::Kind;

/// Which call fails, and with what.
struct Fault {
    const char* name;
    Kind kind;
    int result;
    bool lasts;
};

/// In which store, and with how large a file.
struct Setting {
    const char* name;
    provider::SqliteDurability durability;
    std::size_t largeSize;
    unsigned step;          ///< from one call that fails to the next one
    unsigned transferStep;  ///< the same for reading and writing
};

using Case = std::tuple<Setting, Fault>;

std::string caseName(const testing::TestParamInfo<Case>& info) {
    return std::string(std::get<Setting>(info.param).name) + std::get<Fault>(info.param).name;
}

void expectCode(const vfs::Exception& failure) {
    const int code = static_cast<int>(failure.getErrorCode());
    EXPECT_TRUE(code >= 0 && code <= 11) << code;
}

class SqliteFault : public testing::TestWithParam<Case> {
protected:
    static const Fault& fault() { return std::get<Fault>(GetParam()); }
    static const Setting& setting() { return std::get<Setting>(GetParam()); }

    static unsigned step() {
        const bool transfers = fault().kind == Kind::Read || fault().kind == Kind::Write;
        return transfers ? setting().transferStep : setting().step;
    }

    /// The scenario with this call failing. False if it was never reached.
    bool run(unsigned number) {
        SCOPED_TRACE(number);
        removeStore(file_);
        calls_ = 0;
        possible_ = {Tree()};
        number_ = number;
        {
            FaultyVfs faulty;
            faulty.onCall([this](const VfsCall& call) { return answer(call); });
            makeChanges();
            faulty.onCall({});
            goOn();
            store_.reset();
        }
        EXPECT_EQ(difference(possible_[0], contentsOf(*file_.open())), "") << "what was seen does not last";
        expectSound(file_);
        return calls_ >= number_;
    }

private:
    int answer(const VfsCall& call) {
        if (call.kind != fault().kind) return SQLITE_OK;
        ++calls_;
        const bool strikes = fault().lasts ? calls_ >= number_ : calls_ == number_;
        return strikes ? fault().result : SQLITE_OK;
    }

    void open() {
        StoreFile::Options options;
        options.durability = setting().durability;
        options.busyTime = std::chrono::milliseconds(1);
        try {
            store_ = file_.open(options);
        } catch (const vfs::Exception& failure) {
            expectCode(failure);
        }
    }

    /// Makes the store, and closes and opens it half way.
    void makeChanges() {
        open();
        const std::vector<Change> changes = allKinds(setting().largeSize);
        for (std::size_t i = 0; i < changes.size(); ++i) {
            if (i == changes.size() / 2) {
                store_.reset();
                open();
            }
            if (store_) make(changes[i]);
        }
    }

    /// What did not fail is done; what failed is done or not.
    void make(const Change& change) {
        std::vector<Tree> after;
        for (const Tree& tree : possible_) {
            Tree changed = tree;
            if (change.makeIn(changed)) after.push_back(changed);
        }
        try {
            change.makeIn(*store_);
            EXPECT_FALSE(after.empty()) << textOf(change) << " was not possible";
            possible_ = after;
        } catch (const vfs::Exception& failure) {
            expectCode(failure);
            possible_.insert(possible_.end(), after.begin(), after.end());
        }
        if (!fault().lasts && calls_ >= number_) decide();
    }

    /// Which of the possible states it is, now that calls do not fail any more.
    void decide() {
        const Tree found = contentsOf(*store_);
        const auto known = std::find_if(possible_.begin(), possible_.end(), [&found](const Tree& tree) {
            return difference(tree, found).empty();
        });
        ASSERT_NE(known, possible_.end()) << difference(possible_.back(), found);
        possible_ = {*known};
    }

    /// As after a fault that has gone: with the same store, and in it.
    void goOn() {
        if (!store_) open();
        ASSERT_TRUE(store_);
        decide();
        Change last;
        last.path = u"last";
        last.size = 100'000;
        last.makeIn(*store_);
        last.makeIn(possible_[0]);
    }

    StoreFile file_;
    std::shared_ptr<provider::Provider> store_;
    std::vector<Tree> possible_;
    unsigned calls_ = 0;
    unsigned number_ = 0;
};

/// The journal of this durability is deleted and not truncated.
bool hasNoTruncation(const Setting& setting) {
    return !storesHaveLog() && setting.durability == provider::SqliteDurability::Normal;
}

TEST_P(SqliteFault, LosesNothingThatWasDone) {
    const bool isRare = fault().kind == Kind::Truncate && hasNoTruncation(setting());
    unsigned number = 1;
    unsigned faults = 0;
    for (; run(number) && !HasFailure(); number += faultStep() * step()) ++faults;
    RecordProperty("faults", static_cast<int>(faults));
    if (faults == 0 && isRare) GTEST_SKIP() << "the journal is deleted and not truncated";
    EXPECT_GE(faults, 1U) << "no call of this kind was made";
}

constexpr Setting kSettings[] = {
    {"Full", provider::SqliteDurability::Full, 80'000, 1, 1},
    {"Normal", provider::SqliteDurability::Normal, 80'000, 1, 1},
    // What is stored before it is published.
    {"Large", provider::SqliteDurability::Normal, 4'400'000, 23, 101},
};

const std::vector<Fault> kFaults = {
    {"OpenOnce", Kind::Open, SQLITE_CANTOPEN, false},
    {"OpenFromThenOn", Kind::Open, SQLITE_CANTOPEN, true},
    {"DeleteOnce", Kind::Delete, SQLITE_IOERR_DELETE, false},
    {"DeleteFromThenOn", Kind::Delete, SQLITE_IOERR_DELETE, true},
    {"ReadOnce", Kind::Read, SQLITE_IOERR_READ, false},
    {"ReadFromThenOn", Kind::Read, SQLITE_IOERR_READ, true},
    {"WriteOnce", Kind::Write, SQLITE_IOERR_WRITE, false},
    {"WriteFromThenOn", Kind::Write, SQLITE_IOERR_WRITE, true},
    {"FullOnce", Kind::Write, SQLITE_FULL, false},
    {"FullFromThenOn", Kind::Write, SQLITE_FULL, true},
    {"TruncateOnce", Kind::Truncate, SQLITE_IOERR_TRUNCATE, false},
    {"TruncateFromThenOn", Kind::Truncate, SQLITE_IOERR_TRUNCATE, true},
    {"SyncOnce", Kind::Sync, SQLITE_IOERR_FSYNC, false},
    {"SyncFromThenOn", Kind::Sync, SQLITE_IOERR_FSYNC, true},
    {"FileSizeOnce", Kind::FileSize, SQLITE_IOERR_FSTAT, false},
    {"FileSizeFromThenOn", Kind::FileSize, SQLITE_IOERR_FSTAT, true},
    {"LockOnce", Kind::Lock, SQLITE_IOERR_LOCK, false},
    {"LockFromThenOn", Kind::Lock, SQLITE_IOERR_LOCK, true},
    {"BusyOnce", Kind::Lock, SQLITE_BUSY, false},
    {"BusyFromThenOn", Kind::Lock, SQLITE_BUSY, true},
};

const std::vector<Fault> kLogFaults = {
    {"MapOnce", Kind::MapShared, SQLITE_IOERR_SHMMAP, false},
    {"MapFromThenOn", Kind::MapShared, SQLITE_IOERR_SHMMAP, true},
    {"ShareOnce", Kind::MapShared, SQLITE_IOERR_SHMSIZE, false},
    {"OpenSharedOnce", Kind::MapShared, SQLITE_CANTOPEN, false},
    {"LockSharedOnce", Kind::LockShared, SQLITE_IOERR_SHMLOCK, false},
    {"LockSharedFromThenOn", Kind::LockShared, SQLITE_IOERR_SHMLOCK, true},
    // Not from then on: nobody can hold all of these locks, and SQLite waits ten seconds to be sure of it.
    {"BusySharedOnce", Kind::LockShared, SQLITE_BUSY, false},
};

std::vector<Fault> allFaults() {
    std::vector<Fault> faults = kFaults;
    if (storesHaveLog()) faults.insert(faults.end(), kLogFaults.begin(), kLogFaults.end());
    return faults;
}

INSTANTIATE_TEST_SUITE_P(Call, SqliteFault,
                         testing::Combine(testing::ValuesIn(kSettings), testing::ValuesIn(allFaults())),
                         caseName);

}  // namespace

}  // namespace test
