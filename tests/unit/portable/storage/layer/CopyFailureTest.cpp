// Files that are copied and moved in stores that do neither: a failure leaves the old file with its mark, or
// none.

#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>
#include <pkgcore/testing/FaultProvider.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/storage/BareProvider.hpp"

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <functional>

using namespace foundation::storage;
using namespace foundation::storage::conformance;

namespace {

void hideTransfers(provider::Traits& traits) {
    traits.copiesFiles = traits.copiesFolders = traits.movesFiles = traits.movesFolders = false;
}

class CopyFailure : public testing::Test, public Workplace {
protected:
    CopyFailure() : CopyFailure(makeStore()) {}

    /// Writable or not, as "w" or "r", and the content; "-" for none.
    std::string state(const std::u16string& path) const {
        return isMissing(path) ? "-" : (vfs::isWritable(file(path)) ? "w " : "r ") + read(path);
    }

    std::shared_ptr<FaultProvider> faults;

private:
    static std::shared_ptr<FaultProvider> makeStore() {
        return std::make_shared<FaultProvider>(
            std::make_shared<test::BareProvider>(provider::makeMemoryProvider(), hideTransfers));
    }
    explicit CopyFailure(const std::shared_ptr<FaultProvider>& store)
        : Workplace(storeFrom("bare", [store] { return store; }).makeGround()), faults(store) {
        EXPECT_TRUE(write(u"from", "new"));
        file(u"from").setWritable(false);
    }
};

TEST_F(CopyFailure, ANewFileThatCannotBeMarkedIsRemovedAgain) {
    faults->fail({1, Verb::SetWritable, Effect::FailBefore, ErrorCode::AccessDenied});
    PKGCORE_EXPECT_FAILURE(AccessDenied, file(u"from").copyFile(file(u"to"), kFail));
    EXPECT_EQ(state(u"to"), "-");
    file(u"from").copyFile(file(u"to"), kFail);
    EXPECT_EQ(state(u"to"), "r new");
}

TEST_F(CopyFailure, AReplacedFileThatCannotBeMarkedIsAsItWas) {
    ASSERT_TRUE(write(u"to", "old"));
    faults->fail({1, Verb::SetWritable, Effect::FailBefore, ErrorCode::AccessDenied});
    PKGCORE_EXPECT_FAILURE(AccessDenied, file(u"from").copyFile(file(u"to"), kReplace));
    EXPECT_EQ(state(u"to"), "w old");
    file(u"from").copyFile(file(u"to"), kReplace);
    EXPECT_EQ(state(u"to"), "r new");
}

TEST_F(CopyFailure, AReplacedFileThatCannotBeWrittenKeepsItsMark) {
    ASSERT_TRUE(write(u"to", "old"));
    for (const Verb verb : {Verb::OpenReader, Verb::OpenWriter, Verb::Write, Verb::Commit}) {
        faults->fail({1, verb, Effect::FailBefore, ErrorCode::NoSpace});
        PKGCORE_EXPECT_FAILURE(NoSpace, file(u"from").copyFile(file(u"to"), kReplace));
        EXPECT_EQ(state(u"to"), "w old") << static_cast<int>(verb);
    }
}

TEST_F(CopyFailure, AMarkThatIsNotGivenBackDoesNotHideWhyTheContentFailed) {
    ASSERT_TRUE(write(u"to", "old"));
    faults->onCall([this](Verb verb) {
        if (verb == Verb::Write) throw vfs::Exception(ErrorCode::NoSpace, "full");
        if (verb == Verb::SetWritable && faults->calls(verb) > 2) {
            throw vfs::Exception(ErrorCode::AccessDenied, "no more marks");
        }
    });
    ASSERT_EQ(faults->calls(Verb::SetWritable), 1U) << "that of the source";
    PKGCORE_EXPECT_FAILURE(NoSpace, file(u"from").copyFile(file(u"to"), kReplace));
    EXPECT_EQ(state(u"to"), "r old");
}

TEST_F(CopyFailure, AMoveThatFailsAfterTheContentLeavesNoNewFile) {
    const auto time = vfs::getLastModified(file(u"from"));
    for (const Verb verb : {Verb::SetLastModified, Verb::SetWritable}) {
        faults->fail({1, verb, Effect::FailBefore, ErrorCode::AccessDenied});
        PKGCORE_EXPECT_FAILURE(AccessDenied, file(u"from").moveFile(file(u"to"), kFail));
        EXPECT_EQ(state(u"to"), "-");
        EXPECT_EQ(state(u"from"), "r new");
    }
    file(u"from").moveFile(file(u"to"), kFail);
    EXPECT_EQ(state(u"to"), "r new");
    EXPECT_EQ(state(u"from"), "-");
    EXPECT_EQ(vfs::getLastModified(file(u"to")), time);
}

TEST_F(CopyFailure, WhatSomebodyElseMadeMeanwhileStays) {
    faults->onCall([this](Verb verb) {
        if (verb != Verb::Commit) return;
        faults->onCall(nullptr);
        EXPECT_TRUE(write(u"to", "theirs"));
    });
    PKGCORE_EXPECT_FAILURE(AlreadyExists, file(u"from").copyFile(file(u"to"), kFail));
    EXPECT_EQ(state(u"to"), "w theirs");
}

/// large://s/f, to be copied to small://s/f, which takes five bytes.
class CopyToSmallStore : public testing::TestWithParam<bool> {
protected:
    static std::shared_ptr<provider::Provider> bare(const std::function<void(provider::Traits&)>& hide) {
        return std::make_shared<test::BareProvider>(provider::makeMemoryProvider(), hide);
    }

    Workplace at(const std::u16string& root) const {
        return Workplace(Ground{storage_, root, small_, provider::Path(u"", u"s"), nullptr});
    }

    std::shared_ptr<FaultProvider> small_ =
        std::make_shared<FaultProvider>(bare([](provider::Traits& traits) { traits.maxFileSize = 5; }));
    vfs::StorageSystemReference storage_ =
        vfs::StorageSystemBuilder()
            .mount(u"small", small_)
            .mount(u"large", bare([](provider::Traits& traits) { traits.readsAt = knowsSizes(); }))
            .build();

    static bool knowsSizes() { return GetParam(); }
};

TEST_P(CopyToSmallStore, OfWhatIsTooLargeLeavesNothing) {
    const Workplace from = at(u"large://s/");
    const Workplace to = at(u"small://s/");
    ASSERT_TRUE(from.write(u"f", "123456"));
    PKGCORE_EXPECT_FAILURE(FileTooLarge, from.file(u"f").copyFile(to.file(u"f"), kFail));
    PKGCORE_EXPECT_FAILURE(FileTooLarge, from.file(u"f").moveFile(to.file(u"f"), kFail));
    EXPECT_EQ(to.list(u""), Names{});
    EXPECT_EQ(from.read(u"f"), "123456");
    EXPECT_EQ(small_->calls(Verb::OpenWriter), knowsSizes() ? 0U : 2U) << "nothing is written in vain";
}

TEST_P(CopyToSmallStore, OfWhatJustFitsSucceeds) {
    ASSERT_TRUE(at(u"large://s/").write(u"f", "12345"));
    at(u"large://s/").file(u"f").copyFile(at(u"small://s/").file(u"f"), kFail);
    EXPECT_EQ(at(u"small://s/").read(u"f"), "12345");
}

INSTANTIATE_TEST_SUITE_P(Sizes, CopyToSmallStore, testing::Bool());

}  // namespace
