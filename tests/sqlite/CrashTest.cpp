// Processes that are killed while they change a store.

#include "tests/sqlite/Change.hpp"
#include "tests/sqlite/Child.hpp"
#include "tests/sqlite/Soundness.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>

namespace test {

namespace {

using foundation::storage::provider::SqliteDurability;

/// What the kills have come to, to be sure that they strike at moments of all kinds.
struct Tally {
    unsigned changes = 0;
    unsigned journals = 0;    ///< a transaction was cut off
    unsigned unanswered = 0;  ///< a change was made, but its answer did not get out
};

bool isCutOff(const StoreFile& file) {
    struct stat status = {};
    for (const char* const journal : {"-journal", "-wal"}) {
        if (::stat((file.native() + journal).c_str(), &status) == 0 && status.st_size > 0) return true;
    }
    return false;
}

/// One store, and a line of processes that go on where the one before was killed.
class KilledWriters {
public:
    /// Kills while the store is made have a test of their own.
    explicit KilledWriters(unsigned seed) : random_(seed) { file_.open(); }

    void runOne() {
        const unsigned seed = static_cast<unsigned>(random_());
        const unsigned done = killSomewhere(seed);
        tally_.changes += done;
        if (isCutOff(file_)) ++tally_.journals;
        compare(seed, done);
        if (!testing::Test::HasFailure()) expectSound(file_);
    }

    const Tally& tally() const noexcept { return tally_; }

private:
    [[noreturn]] void change(unsigned seed, const Signals& done) const {
        StoreFile::Options options;
        options.durability = seed % 2 == 0 ? SqliteDurability::Full : SqliteDurability::Normal;
        const auto store = file_.open(options);
        std::mt19937 random(seed);
        Tree tree = tree_;
        while (true) {
            const Change change = randomChange(random, tree);
            change.makeIn(*store);
            change.makeIn(tree);
            done.send();
        }
    }

    /// How many changes were acknowledged.
    unsigned killSomewhere(unsigned seed) {
        const unsigned changes = static_cast<unsigned>(random_() % 6);
        const std::chrono::microseconds delay(random_() % (changes == 0 ? 8'000 : 3'000));
        Signals signals;
        Child child([&] { change(seed, signals); });
        signals.receiveOnly();
        unsigned done = 0;
        while (done < changes && signals.receive()) ++done;
        std::this_thread::sleep_for(delay);
        child.kill();
        EXPECT_EQ(child.wait(), "signal 9");
        while (signals.receive()) ++done;
        return done;
    }

    /// Finds all that was acknowledged and perhaps the next change, and goes on from there.
    void compare(unsigned seed, unsigned done) {
        std::mt19937 random(seed);
        for (unsigned i = 0; i < done; ++i) randomChange(random, tree_).makeIn(tree_);
        const Change next = randomChange(random, tree_);
        Tree after = tree_;
        next.makeIn(after);
        const Tree found = contentsOf(*file_.open());
        const std::string lost = difference(tree_, found);
        if (lost.empty()) return;
        ++tally_.unanswered;
        EXPECT_EQ(difference(after, found), "") << "seed " << seed << ", after " << done
                                                << " changes and during " << textOf(next) << "; or " << lost;
        tree_ = after;
    }

    StoreFile file_;
    Tree tree_;
    std::mt19937 random_;
    Tally tally_;
};

class SqliteCrash : public testing::TestWithParam<unsigned> {};

/// Ten processes of tests share the kills.
constexpr unsigned kParts = 10;

// PKGCORE_SQLITE_KILLS=10000 asks for as many kills; PKGCORE_SQLITE_SEED for others.
TEST_P(SqliteCrash, KeepsWhatWasAcknowledgedAndNothingHalf) {
    const unsigned kills = amountOf("PKGCORE_SQLITE_KILLS", 500) / kParts;
    KilledWriters writers(GetParam() + amountOf("PKGCORE_SQLITE_SEED", 0) * kParts);
    for (unsigned kill = 0; kill < kills && !HasFailure(); ++kill) {
        SCOPED_TRACE(kill);
        writers.runOne();
    }
    const Tally& tally = writers.tally();
    RecordProperty("changes", static_cast<int>(tally.changes));
    RecordProperty("journals", static_cast<int>(tally.journals));
    RecordProperty("unanswered", static_cast<int>(tally.unanswered));
    EXPECT_GE(tally.changes, kills);
    EXPECT_GT(tally.journals, 0U) << "no kill met a transaction";
}

INSTANTIATE_TEST_SUITE_P(Part, SqliteCrash, testing::Range(0U, kParts));

// A kill while the store is made leaves no store, or an empty one, and perhaps the file it was made in.
TEST(SqliteCrashInCreation, AStoreIsThereOrNot) {
    std::mt19937 random(1);
    for (int kill = 0; kill < 60; ++kill) {
        SCOPED_TRACE(kill);
        const StoreFile file;
        Child child([&] { file.open(); });
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 8'000));
        child.kill();
        child.wait();
        for (const std::string& name : filesBeside(file)) {
            EXPECT_TRUE(name.compare(0, 9, "store.db.") != 0 || name.find(".new") != std::string::npos)
                << name;
        }
        EXPECT_TRUE(contentsOf(*file.open()).empty());
    }
}

}  // namespace

}  // namespace test
