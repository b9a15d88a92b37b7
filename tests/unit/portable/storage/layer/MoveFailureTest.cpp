// What is left of a folder that is moved to another store, whose source then cannot be removed.

#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>
#include <pkgcore/testing/FaultProvider.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/storage/BareProvider.hpp"

#include <gtest/gtest.h>

#include <new>
#include <utility>

using namespace foundation::storage;
using namespace foundation::storage::conformance;

namespace {

const Contents kTree{{u"a", "A"}, {u"sub/", "(folder)"}, {u"sub/b", "B"}, {u"z", "Z"}};

/// from://s/d, to be moved to to://s/d.
class MoveFailure : public testing::Test {
protected:
    static std::shared_ptr<provider::Provider> source(bool movesFolders) {
        const auto hide = [movesFolders](provider::Traits& traits) {
            traits.removesTrees = false;
            traits.movesFolders = movesFolders;
        };
        return std::make_shared<test::BareProvider>(provider::makeMemoryProvider(), hide);
    }

    void mount(bool movesFolders) {
        store_ = std::make_shared<FaultProvider>(source(movesFolders));
        target_ = std::make_shared<FaultProvider>(provider::makeMemoryProvider());
        storage_ = vfs::StorageSystemBuilder().mount(u"from", store_).mount(u"to", target_).build();
        makeTree();
    }

    Workplace at(const std::u16string& root) const {
        return Workplace(Ground{*storage_, root, store_, provider::Path(u"", u"s"), nullptr});
    }
    Folder from() const { return at(u"from://s/").folder(u"d"); }
    Folder to() const { return at(u"to://s/").folder(u"d"); }
    Contents moved() const { return at(u"to://s/d").everything(); }

    void makeTree() {
        from().createFolderRecursive();
        at(u"from://s/").folder(u"d/sub").createFolder();
        for (const auto& [path, content] : kTree) {
            if (path.back() == u'/') continue;
            EXPECT_TRUE(at(u"from://s/d").write(path, content));
        }
    }

    /// The place that the failure of a move tells.
    std::u16string failingPlace() const {
        try {
            from().moveFolder(to(), kReplace);
        } catch (const vfs::Exception& failure) {
            return failure.getLocation().toString();
        }
        return u"";
    }

    std::shared_ptr<FaultProvider> store_;
    std::shared_ptr<FaultProvider> target_;
    std::optional<vfs::StorageSystemReference> storage_;
};

bool isTemporary(const std::u16string& iri) { return iri.compare(0, 10, u"from://s/.") == 0; }

TEST_F(MoveFailure, LeavesTheRestUnderAnotherName) {
    for (std::size_t number = 1;; ++number) {
        SCOPED_TRACE(number);
        mount(true);
        store_->fail({number, Verb::Remove, Effect::FailBefore, ErrorCode::AccessDenied, true});
        const std::u16string place = failingPlace();
        if (store_->struck() == 0) {
            EXPECT_EQ(number, 6U) << "four entries and the folder itself";
            EXPECT_EQ(at(u"from://s/").list(u""), Names{});
            break;
        }
        EXPECT_TRUE(isTemporary(place)) << testing::PrintToString(place);
        EXPECT_EQ(moved(), kTree);
        EXPECT_TRUE(at(u"from://s/").isMissing(u"d"));
        PKGCORE_EXPECT_FAILURE(NotFound, from().moveFolder(to(), kReplace));
        EXPECT_EQ(moved(), kTree) << "tried again, it does not take the rest for the whole";
    }
}

TEST_F(MoveFailure, LeavesBothWholeWhereTheNameCannotBeTaken) {
    mount(true);
    store_->fail({1, Verb::Move, Effect::FailBefore, ErrorCode::TemporarilyBusy});
    EXPECT_EQ(failingPlace(), u"from://s/d");
    EXPECT_EQ(moved(), kTree);
    EXPECT_EQ(at(u"from://s/d").everything(), kTree);
    from().moveFolder(to(), kReplace);
    EXPECT_EQ(moved(), kTree);
    EXPECT_EQ(at(u"from://s/").list(u""), Names{});
}

TEST_F(MoveFailure, LeavesBothWholeWhereTheCopyIsNotBroughtToTheDisk) {
    mount(true);
    target_->fail({1, Verb::Sync, Effect::FailBefore, ErrorCode::IOError});
    EXPECT_EQ(failingPlace(), u"to://s/d");
    EXPECT_EQ(moved(), kTree);
    EXPECT_EQ(at(u"from://s/d").everything(), kTree);
}

TEST_F(MoveFailure, TakesTheNameOfTheSourceWhenTheWholeCopyIsOnTheDisk) {
    mount(true);
    std::size_t changes = 0;
    target_->onCall([&](Verb verb) {
        if (verb == Verb::Sync) {
            changes = target_->calls(Verb::Move);
            EXPECT_EQ(store_->calls(Verb::Move), 0U);
        }
    });
    from().moveFolder(to(), kReplace);
    EXPECT_EQ(target_->calls(Verb::Sync), 1U);
    EXPECT_EQ(changes, 1U) << "the copy has its name by then";
    EXPECT_EQ(store_->calls(Verb::Move), 1U);
}

TEST_F(MoveFailure, GivesTheNameBackForWantOfMemoryToo) {
    mount(true);
    bool isShort = true;
    store_->onCall([&](Verb verb) {
        const bool isAside = store_->calls(Verb::Move) == 1;
        if (isAside && verb == Verb::ListNext && std::exchange(isShort, false)) throw std::bad_alloc();
    });
    EXPECT_THROW(from().moveFolder(to(), kReplace), std::bad_alloc);
    EXPECT_FALSE(isShort);
    EXPECT_EQ(at(u"from://s/d").everything(), kTree);
    EXPECT_EQ(at(u"from://s/").list(u""), Names{u"d/"});
}

TEST_F(MoveFailure, IsToldBeforeAnythingIsCopiedWhereTheStoreRemovesNothing) {
    mount(true);
    const auto keeping = std::make_shared<test::BareProvider>(
        store_, [](provider::Traits& traits) { traits.removes = traits.removesTrees = false; });
    storage_ = vfs::StorageSystemBuilder().mount(u"from", keeping).mount(u"to", target_).build();
    PKGCORE_EXPECT_FAILURE(NotSupported, from().moveFolder(to(), kReplace));
    PKGCORE_EXPECT_FAILURE(NotSupported,
                           at(u"from://s/").file(u"d/a").moveFile(at(u"to://s/").file(u"a"), kReplace));
    EXPECT_EQ(at(u"to://s/").list(u""), Names{});
    EXPECT_EQ(at(u"from://s/d").everything(), kTree);
}

TEST_F(MoveFailure, LeavesTheRestUnderItsNameWhereTheStoreMovesNoFolders) {
    mount(false);
    store_->fail({2, Verb::Remove, Effect::FailBefore, ErrorCode::AccessDenied, true});
    EXPECT_EQ(failingPlace(), u"from://s/d/sub/b");
    EXPECT_EQ(moved(), kTree);
    EXPECT_EQ(at(u"from://s/d").list(u""), (Names{u"sub/", u"z"}));
}

}  // namespace
