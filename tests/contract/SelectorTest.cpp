// Which back end a selector without virtual storage hands out, and how long it lives.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

using opc::FileSystemOps;
using opc::FileSystemOpsSelector;
using scripted::Calls;

namespace {

static_assert(std::is_nothrow_move_constructible_v<FileSystemOpsSelector>);
static_assert(std::is_nothrow_move_assignable_v<FileSystemOpsSelector>);
static_assert(std::is_copy_constructible_v<FileSystemOpsSelector>);
static_assert(std::is_copy_assignable_v<FileSystemOpsSelector>);
static_assert(sizeof(FileSystemOpsSelector) == sizeof(std::shared_ptr<void>));

class SelectorContract : public testing::Test {
protected:
    scripted::Platform platform;
    FileSystemOpsSelector selector;

    template <typename Call>
    static void expectNoVirtualSupport(Call call) {
        try {
            call();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const opc::Exception& failure) {
            EXPECT_STREQ(failure.what(),
                         "Virtual file system operations are not supported. "
                         "A StorageSystemReference was not provided.");
            EXPECT_EQ(failure.code().value(), 0);
            EXPECT_FALSE(failure.code().failed());
            EXPECT_EQ(failure.code().category(), boost::system::system_category());
        }
    }
};

TEST_F(SelectorContract, MakingOneAsksThePlatformForNothing) { EXPECT_EQ(platform.calls(), Calls{}); }

TEST_F(SelectorContract, LocalIsALocalBackEnd) {
    EXPECT_NE(dynamic_cast<opc::LocalFileSystemOps*>(&selector.getLocal()), nullptr);
}

TEST_F(SelectorContract, PhysicalIsAnotherNameOfLocal) {
    EXPECT_EQ(&selector.getPhysical(), &selector.getLocal());
    EXPECT_EQ(&selector.getLocal(), &selector.getLocal());
}

TEST_F(SelectorContract, APathWithoutAnIRIPrefixIsLocal) {
    for (const char16_t* path : {u"/a/b", u"", u"C:\\a", u"does/not exist"}) {
        EXPECT_EQ(&selector.getForPath(path), &selector.getLocal());
    }
    EXPECT_EQ(platform.calls(), (Calls{"hasIRIPrefix('/a/b')", "hasIRIPrefix('')", "hasIRIPrefix('C:\\a')",
                                       "hasIRIPrefix('does/not exist')"}));
}

TEST_F(SelectorContract, AnIRIPathIsRefused) {
    platform.storage.hasIRIPrefix.at(u"x").returns(true);
    expectNoVirtualSupport([&] { selector.getForPath(u"x"); });
    EXPECT_EQ(platform.calls(), Calls{"hasIRIPrefix('x')"});
}

TEST_F(SelectorContract, VirtualIsRefused) {
    expectNoVirtualSupport([&] { selector.getVirtual(); });
}

TEST_F(SelectorContract, ConstSelectorsHandOutBackEndsThatCanBeUsed) {
    const FileSystemOpsSelector& constant = selector;
    static_assert(std::is_same_v<decltype(constant.getLocal()), FileSystemOps&>);
    static_assert(std::is_same_v<decltype(constant.getPhysical()), FileSystemOps&>);
    static_assert(std::is_same_v<decltype(constant.getVirtual()), FileSystemOps&>);
    static_assert(std::is_same_v<decltype(constant.getForPath(u"a")), FileSystemOps&>);
    EXPECT_FALSE(constant.getLocal().exists(u"a"));
}

TEST_F(SelectorContract, CopiesShareTheirBackEnds) {
    const FileSystemOpsSelector copy(selector);
    FileSystemOpsSelector assigned;
    EXPECT_NE(&assigned.getLocal(), &selector.getLocal());
    assigned = selector;
    EXPECT_EQ(&copy.getLocal(), &selector.getLocal());
    EXPECT_EQ(&assigned.getLocal(), &selector.getLocal());
}

TEST_F(SelectorContract, ABackEndOutlivesTheSelectorItCameFromWhileACopyLives) {
    auto first = std::make_unique<FileSystemOpsSelector>();
    FileSystemOps& local = first->getLocal();
    const FileSystemOpsSelector copy(*first);
    first.reset();
    EXPECT_EQ(&copy.getLocal(), &local);
    EXPECT_FALSE(local.exists(u"a"));
}

TEST_F(SelectorContract, MovingTakesTheBackEndsAlong) {
    FileSystemOps* const local = &selector.getLocal();
    FileSystemOpsSelector moved(std::move(selector));
    EXPECT_EQ(&moved.getLocal(), local);
    FileSystemOpsSelector assigned;
    assigned = std::move(moved);
    EXPECT_EQ(&assigned.getLocal(), local);
}

TEST_F(SelectorContract, AMovedFromSelectorCanBeAssignedAndDestroyed) {
    FileSystemOpsSelector source;
    const FileSystemOpsSelector target(std::move(source));
    source = target;  // NOLINT(bugprone-use-after-move): this is what is allowed
    EXPECT_EQ(&source.getLocal(), &target.getLocal());
}

}  // namespace
