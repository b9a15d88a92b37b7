// Files that are copied and moved in stores that do neither: a failure leaves the old file with its mark, or
// none.

#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>
#include <pkgcore/testing/FaultProvider.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/storage/BareProvider.hpp"

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time_types.hpp>

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

}  // namespace
