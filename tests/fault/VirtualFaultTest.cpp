// Whatever call of a store fails, nothing is lost: every operation of virtual storage runs with its first
// call failing, then with its second, and so on until it succeeds.

#include <pkgcore/testing/FaultProvider.hpp>

#include "tests/fault/StoreOperations.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

namespace test {

namespace {

using foundation::storage::conformance::Effect;
using foundation::storage::conformance::Fault;
using foundation::storage::conformance::Verb;
using foundation::storage::vfs::ErrorCode;

/// Each call fails in its turn; with sanitizers, which take time, every third one.
constexpr std::size_t kStride = PKGCORE_SANITIZED ? 3 : 1;

/// Whether it is, or lies in, what is made beside a destination and moved there when it is complete.
bool isTemporary(const std::string& path) {
    const std::size_t name = path.rfind('/', path.find(".tmp"));
    return path.find(".tmp") != std::string::npos && path.compare(name, 2, "/.") == 0;
}

Contents withoutTemporaries(Contents contents) {
    for (auto entry = contents.begin(); entry != contents.end();) {
        entry = isTemporary(entry->first) ? contents.erase(entry) : std::next(entry);
    }
    return contents;
}

bool isAt(const std::string& path, const std::string& place) {
    return path == place || path.compare(0, place.size() + 1, place + '/') == 0;
}

/// Whether all that `one` has at a place is the same in `other`.
bool isWholeIn(const Contents& other, const Contents& one, const std::string& place) {
    return std::all_of(one.begin(), one.end(), [&](const auto& entry) {
        const auto found = other.find(entry.first);
        return !isAt(entry.first, place) || (found != other.end() && found->second == entry.second);
    });
}

bool has(const Contents& contents, const Contents::value_type& entry) {
    const auto found = contents.find(entry.first);
    return found != contents.end() && found->second == entry.second;
}

class VirtualFault : public testing::TestWithParam<std::tuple<StoreKind, StoreOperation>> {
protected:
    const StoreKind& kind = std::get<0>(GetParam());
    const StoreOperation& operation = std::get<1>(GetParam());
    const Contents before = contentsAfter([](StoreGround& /*ground*/) {});
    const Contents done =
        contentsAfter([this](StoreGround& ground) { EXPECT_EQ(operation.run(ground.ops()), error_code()); });

    template <typename Work>
    Contents contentsAfter(Work work) const {
        StoreGround ground(kind);
        work(ground);
        return ground.contents();
    }

    /// Where the store cannot move what is complete into its place, a new read-only file is writable first.
    /// It is removed again where it cannot be marked, if that works and its publication was not denied.
    bool isStillToBeMarked(const Contents::value_type& entry, const Fault& fault) const {
        const auto marked = done.find(entry.first);
        return !kind.movesFolders && (fault.lasts || fault.effect == Effect::FailAfter) &&
               marked != done.end() && '+' + marked->second.substr(1) == entry.second;
    }

    /// A file that is replaced there has the new mark first, and gets the old one back if that works.
    bool isMarkedAlready(const Contents::value_type& entry, const Fault& fault) const {
        const auto old = before.find(entry.first);
        return !kind.movesFolders && fault.lasts && old != before.end() &&
               '-' + old->second.substr(1) == entry.second;
    }

    /// Each file is the old one or the new one; nothing has a name that nobody gave.
    void expectNothingHalfway(const Contents& now, const Fault& fault) const {
        for (const auto& entry : now) {
            EXPECT_TRUE(has(before, entry) || has(done, entry) || isStillToBeMarked(entry, fault) ||
                        isMarkedAlready(entry, fault))
                << entry.first << " is neither old nor new";
        }
    }

    /// What goes on failing cannot be cleaned up, nor can a source that is not removed when all of it is at
    /// the destination.
    bool mayLeaveTemporaries(const Contents& now, const Fault& fault) const {
        const bool isMoved = operation.takesSource && kind.movesFolders && !operation.to.empty() &&
                             isWholeIn(now, done, operation.to) && now.count(operation.from) == 0;
        return fault.lasts || isMoved;
    }

    void expectNothingLost(const Contents& now) const {
        if (!operation.takesSource) {
            EXPECT_TRUE(isWholeIn(now, before, operation.from)) << "the source is not whole";
        } else if (!operation.to.empty()) {
            EXPECT_TRUE(isWholeIn(now, before, operation.from) || isWholeIn(now, done, operation.to))
                << "neither the source nor the destination is whole";
        }
        const bool mayBeGone = operation.replacesFolder && !kind.movesFolders;
        if (!mayBeGone && !operation.to.empty() && before.count(operation.to) != 0) {
            EXPECT_EQ(now.count(operation.to), 1U) << "the old destination is gone, and no new one is there";
        }
    }

    /// What a client would do who was told of the failure.
    void finish(StoreGround& ground, const Contents& left) const {
        if (operation.takesSource && withoutTemporaries(left) == done) {
            return;  // the answer was lost, not the work
        }
        error_code ec;
        if (!isWholeIn(left, before, operation.from) && !operation.to.empty()) {
            ground.ops().removeAll(toIRI(operation.from), ec);  // the rest behind a complete destination
        } else {
            ec = operation.runAgain(ground.ops());
        }
        EXPECT_EQ(ec, error_code());
        EXPECT_EQ(withoutTemporaries(ground.contents()), done) << "trying again";
    }

    /// Whether the fault was reached.
    bool runWith(const Fault& fault) const {
        SCOPED_TRACE("call " + std::to_string(fault.number) +
                     (fault.effect == Effect::FailAfter ? ", after it" : ", before it") +
                     (fault.lasts ? ", and all later ones" : ""));
        StoreGround ground(kind);
        ground.store().fail(fault);
        const error_code ec = operation.run(ground.ops());
        const bool struck = ground.store().struck() > 0;
        ground.store().clear();
        const Contents now = ground.contents();
        const Contents seen = mayLeaveTemporaries(now, fault) ? withoutTemporaries(now) : now;
        if (!ec.failed()) {
            EXPECT_EQ(seen, done) << "no failure was reported";
            return struck;
        }
        EXPECT_TRUE(struck);
        EXPECT_EQ(ec, operation.isStream ? errc::io_error : errc::no_space_on_device);
        expectNothingHalfway(seen, fault);
        expectNothingLost(seen);
        finish(ground, now);
        return struck;
    }

    void runWithEachCallFailing(Effect effect, bool lasts) const {
        Fault fault{1, std::nullopt, effect, ErrorCode::NoSpace, lasts};
        while (runWith(fault) && !HasFailure()) {
            fault.number += kStride;
            ASSERT_LT(fault.number, 1000U);
        }
        EXPECT_GT(fault.number, 1U) << "no call was made";
        RecordProperty("points", static_cast<int>(fault.number - 1));
    }
};

TEST_P(VirtualFault, OneCallFails) { runWithEachCallFailing(Effect::FailBefore, false); }

TEST_P(VirtualFault, OneCallFailsAlthoughItTookEffect) { runWithEachCallFailing(Effect::FailAfter, false); }

TEST_P(VirtualFault, OneCallAndAllLaterOnesFail) { runWithEachCallFailing(Effect::FailBefore, true); }

std::string nameOf(const testing::TestParamInfo<VirtualFault::ParamType>& info) {
    return std::get<1>(info.param).name + std::get<0>(info.param).name;
}

INSTANTIATE_TEST_SUITE_P(Every, VirtualFault,
                         testing::Combine(testing::ValuesIn(storeKinds()),
                                          testing::ValuesIn(storeOperations())),
                         nameOf);

StoreKind storeThatMovesNothing() {
    return {"MovesNothing", [](auto& traits) { traits.movesFiles = traits.movesFolders = false; }, false};
}

/// A read that ends early without saying so is seen at the latest before the source is removed.
class VirtualTruncation : public testing::TestWithParam<bool> {};

TEST_P(VirtualTruncation, AMoveTakesNoCutCopyForTheWhole) {
    for (const char* from : {"mem/file", "mem/from"}) {
        Fault fault{1, Verb::Read, Effect::Truncate, ErrorCode::IOError, GetParam()};
        for (; fault.number < 20; ++fault.number) {
            SCOPED_TRACE(from + std::to_string(fault.number));
            StoreGround ground(storeThatMovesNothing());
            const Contents before = ground.contents();
            ground.store().fail(fault);
            error_code ec;
            ground.ops().rename(toIRI(from), toIRI("plain/new"), ec);
            ground.store().clear();
            const Contents now = ground.contents();
            EXPECT_TRUE(ec.failed() ? isWholeIn(now, before, from) : now.count("plain/new") == 1);
            EXPECT_EQ(now.at("plain/file"), before.at("plain/file"));
            if (!ec.failed()) {
                ground.ops().rename(toIRI("plain/new"), toIRI(from));
                EXPECT_EQ(ground.contents(), before) << "not all of it was moved";
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Every, VirtualTruncation, testing::Bool());

class VirtualFaultListing : public testing::TestWithParam<bool> {};

TEST_P(VirtualFaultListing, AListingIsWholeOrReported) {
    StoreGround ground(storeKinds().front());
    std::vector<opc::ustring> all;
    ground.ops().getFiles(toIRI("mem/from"), all, GetParam());
    ASSERT_FALSE(all.empty());
    for (const Effect effect : {Effect::FailBefore, Effect::FailAfter}) {
        error_code ec;
        Fault fault{1, std::nullopt, effect, ErrorCode::NoSpace};
        do {
            ground.store().fail(fault);
            std::vector<opc::ustring> found;
            ground.ops().getFiles(toIRI("mem/from"), found, GetParam(), ec);
            ASSERT_LE(found.size(), all.size());
            EXPECT_TRUE(std::equal(found.begin(), found.end(), all.begin()));
            EXPECT_EQ(ec.failed(), ground.store().struck() > 0);
            EXPECT_TRUE(ec.failed() || found == all);
        } while (ec.failed() && ++fault.number < 1000);
        EXPECT_GT(fault.number, 3U);
    }
}

INSTANTIATE_TEST_SUITE_P(Every, VirtualFaultListing, testing::Bool());

}  // namespace

}  // namespace test
