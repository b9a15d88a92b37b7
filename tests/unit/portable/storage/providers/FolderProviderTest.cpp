#include <pkgcore/portable/storage/providers/folder/FolderProvider.hpp>

#include <pkgcore/portable/storage/providers/folder/ClosedFolder.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/Swapper.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <functional>
#include <thread>

using namespace foundation::storage;
using namespace foundation::storage::conformance;

namespace {

/// How folders are opened: by the one call for it, or folder by folder as on a system without that.
enum class Way { OneCall, ByTurns };

/// A folder "world" with a secret beside it.
class ClosedWorld : public testing::TestWithParam<Way> {
protected:
    ClosedWorld() {
        if (GetParam() == Way::ByTurns) {
            calls_->openat2 = [](int /*directory*/, const char* /*path*/, const open_how* /*how*/) {
                errno = ENOSYS;
                return -1;
            };
        }
        test::makeFolder(tree_ / "outside");
        test::makeFile(tree_ / "outside/secret", "secret");
    }

    std::string native(const std::string& name) const { return tree_ / ("world/" + name); }

    /// Everything that could reach the secret by the path `way` to the folder around it.
    void expectNoWayOut(const std::u16string& way) const {
        SCOPED_TRACE(testing::PrintToString(way));
        const std::u16string secret = way + u"/secret";
        EXPECT_TRUE(place_.isMissing(secret));
        EXPECT_EQ(place_.read(secret), "(none)");
        EXPECT_FALSE(place_.write(secret, "overwritten"));
        EXPECT_FALSE(place_.write(way + u"/new", "made"));
        EXPECT_FALSE(place_.write(secret, "added", std::ios_base::app));
        EXPECT_TRUE(failureOf([&] { place_.list(way); }));
        EXPECT_TRUE(failureOf([&] { place_.folder(way + u"/new").createFolder(); }));
        EXPECT_TRUE(failureOf([&] { place_.file(secret).removeFile(); }));
        EXPECT_TRUE(failureOf([&] { place_.file(secret).setWritable(false); }));
        EXPECT_TRUE(failureOf([&] { place_.file(secret).copyFile(place_.file(u"stolen"), kFail); }));
        EXPECT_TRUE(failureOf([&] { place_.file(u"own").copyFile(place_.file(secret), kReplace); }));
        EXPECT_TRUE(failureOf([&] { place_.file(u"own").moveFile(place_.file(way + u"/own"), kFail); }));
        EXPECT_EQ(test::contentOf(tree_ / "outside/secret"), "secret");
        EXPECT_FALSE(test::isThere(tree_ / "outside/new"));
        EXPECT_EQ(place_.read(u"own"), "own");
    }

    test::ScopedSystemCalls calls_;
    test::TempTree tree_{test::fastFolder()};
    std::shared_ptr<provider::Provider> store_ = makeStore();
    Workplace place_{Ground{vfs::StorageSystemBuilder().mount(u"box", u"inbox", store_).build(),
                            u"box://inbox/", store_, provider::Path(), nullptr}};

private:
    std::shared_ptr<provider::Provider> makeStore() {
        test::makeFolder(tree_ / "world");
        test::makeFile(tree_ / "world/own", "own");
        return provider::makeFolderProvider(tree_.text("world"));
    }
};

TEST_P(ClosedWorld, HasNoWayOutByALink) {
    test::makeLink("../outside", native("relative"));
    test::makeLink(tree_ / "outside", native("absolute"));
    test::makeLink("/", native("root"));
    test::makeFolder(native("d"));
    test::makeLink("../../outside", native("d/deeper"));
    test::makeLink("/proc/self/root", native("magic"));
    for (const std::u16string way : {u"relative", u"absolute", u"d/deeper"}) {
        expectNoWayOut(way);
    }
    expectNoWayOut(u"root" + tree_.text("outside"));
    expectNoWayOut(u"magic" + tree_.text("outside"));
}

TEST_P(ClosedWorld, HasNoWayOutByALinkToAFile) {
    test::makeLink("../outside/secret", native("link"));
    EXPECT_EQ(place_.read(u"link"), "(none)");
    EXPECT_FALSE(place_.write(u"link", "new"));
    EXPECT_FALSE(place_.write(u"link", "new", std::ios_base::app));
    EXPECT_TRUE(failureOf([&] { place_.file(u"link").setWritable(false); }));
    EXPECT_EQ(test::contentOf(tree_ / "outside/secret"), "secret");
    EXPECT_EQ(test::modeOf(tree_ / "outside/secret"), 0644u);
    EXPECT_EQ(place_.list(u""), (Names{u"link", u"own"}));
    place_.file(u"link").moveFile(place_.file(u"moved"), kFail);
    EXPECT_EQ(test::linkTextOf(native("moved")), "../outside/secret");
    place_.file(u"moved").removeFile();
    EXPECT_EQ(test::contentOf(tree_ / "outside/secret"), "secret");
}

TEST_P(ClosedWorld, TakesALinkToAFolderInsideForNoFolder) {
    test::makeFolder(native("d"));
    test::makeFile(native("d/file"), "inside");
    test::makeLink("d", native("link"));
    EXPECT_TRUE(place_.isMissing(u"link/file"));
    EXPECT_EQ(place_.read(u"link/file"), "(none)");
    EXPECT_FALSE(place_.write(u"link/file", "overwritten"));
    EXPECT_TRUE(failureOf([&] { place_.list(u"link"); }));
    EXPECT_EQ(test::contentOf(native("d/file")), "inside");
}

TEST_P(ClosedWorld, HasNoWayOutByDots) {
    const portable::ClosedFolder world(tree_.text("world"));
    for (const std::u16string path : {u"..", u".", u"../outside", u"a/../..", u"a//b", u"/etc", u"a/"}) {
        EXPECT_ANY_THROW(world.open(provider::Path(path), O_RDONLY)) << testing::PrintToString(path);
        EXPECT_ANY_THROW(world.hold(provider::Path(path))) << testing::PrintToString(path);
    }
    EXPECT_EQ(place_.read(u"../outside/secret"), "(none)");
}

TEST_P(ClosedWorld, RemovesLinksAndNotWhatTheyLeadTo) {
    test::makeFolder(native("d"));
    test::makeLink("../../outside", native("d/link"));
    place_.folder(u"d").removeFolder(FolderRemovalPolicy::WithContents);
    EXPECT_EQ(place_.list(u""), Names{u"own"});
    EXPECT_EQ(test::contentOf(tree_ / "outside/secret"), "secret");
}

constexpr std::time_t kYear2026 = 1'767'225'600;
const boost::posix_time::ptime kEarlier(boost::gregorian::date(2001, 2, 3));

void expectNone(const std::u16string& name, const Names& names) {
    EXPECT_EQ(std::count(names.begin(), names.end(), name), 0);
}

/// Each in turn, whatever the one before has left; any of them may fail.
const std::function<void(const Workplace&)> kVerbs[] = {
    [](const Workplace& place) { place.folder(u"d/sub").createFolderRecursive(); },
    [](const Workplace& place) { place.write(u"d/secret", "inside"); },
    [](const Workplace& place) { place.write(u"d/secret", "inside", std::ios_base::app); },
    [](const Workplace& place) { EXPECT_EQ(place.read(u"d/secret").find("secret"), std::string::npos); },
    [](const Workplace& place) { expectNone(u"d/only there", place.listTree(u"")); },
    [](const Workplace& place) { expectNone(u"only there", place.list(u"d")); },
    [](const Workplace& place) { place.file(u"d/secret").setWritable(false); },
    [](const Workplace& place) { place.folder(u"d").setWritable(true); },
    [](const Workplace& place) { place.file(u"d/secret").setLastModified(kEarlier); },
    [](const Workplace& place) { place.folder(u"d").setLastModified(kEarlier); },
    [](const Workplace& place) { place.file(u"d/secret").copyFile(place.file(u"d/second"), kReplace); },
    [](const Workplace& place) { place.file(u"own").copyFile(place.file(u"d/secret"), kReplace); },
    [](const Workplace& place) { place.file(u"d/second").moveFile(place.file(u"d/sub/third"), kReplace); },
    [](const Workplace& place) { place.folder(u"d").copyFolder(place.folder(u"e"), kReplace); },
    [](const Workplace& place) { place.folder(u"e").moveFolder(place.folder(u"d/sub"), kReplace); },
    [](const Workplace& place) { place.file(u"d/only there").removeFile(); },
    [](const Workplace& place) { place.folder(u"d").moveFolder(place.folder(u"e"), kReplace); },
    [](const Workplace& place) { place.folder(u"e").moveFolder(place.folder(u"d"), kReplace); },
    [](const Workplace& place) { place.folder(u"d").removeFolder(vfs::FolderRemovalPolicy::WithContents); },
};

TEST_P(ClosedWorld, HasNoWayOutWhileFoldersTurnIntoLinks) {
    const std::string outside = tree_ / "outside";
    test::makeFile(outside + "/only there", "secret");
    const test::TreeSnapshot before = test::snapshot(outside);
    const test::Swapper swapper(native("d"), native("link"));
    while (swapper.swaps() < test::Swapper::wanted()) {
        // Where the last round has removed or moved them.
        ::mkdir(native("d").c_str(), 0755);
        ::symlink("../outside", native("link").c_str());
        for (const auto& verb : kVerbs) {
            failureOf([&] { verb(place_); });
        }
    }
    EXPECT_EQ(test::snapshot(outside), before);
    for (const char* const item : {"", "/secret", "/only there"}) {
        EXPECT_GT(test::statusOf(outside + item).st_mtim.tv_sec, kYear2026) << item;
    }
}

TEST_P(ClosedWorld, StaysWithItsFolder) {
    ASSERT_EQ(::rename((tree_ / "world").c_str(), (tree_ / "elsewhere").c_str()), 0);
    EXPECT_EQ(place_.read(u"own"), "own");
    EXPECT_TRUE(place_.write(u"more", "text"));
    EXPECT_EQ(test::contentOf(tree_ / "elsewhere/more"), "text");
}

TEST_P(ClosedWorld, GoesDeeperThanOneCallCan) {
    std::u16string path = std::u16string(200, u'd');
    for (int i = 0; i < 24; ++i) {
        path += u'/' + std::u16string(200, u'd');
    }
    place_.folder(path).createFolderRecursive();
    EXPECT_TRUE(place_.write(path + u"/f", "text"));
    EXPECT_EQ(place_.read(path + u"/f"), "text");
    place_.folder(std::u16string(200, u'd')).removeFolder(FolderRemovalPolicy::WithContents);
}

TEST_P(ClosedWorld, OpensNothingThatIsNoFile) {
    test::makePipe(native("pipe"));
    EXPECT_EQ(place_.read(u"pipe"), "(none)");
    EXPECT_FALSE(place_.write(u"pipe", "text"));
    EXPECT_TRUE(S_ISFIFO(test::statusOf(native("pipe")).st_mode));
}

TEST_P(ClosedWorld, TellsThatItsDiskFailsToTakeWhatWasWritten) {
    EXPECT_NO_THROW(store_->sync(provider::Path(u"own")));
    test::failCall<&test::SystemCalls::syncfs>(calls_, 1, EIO);
    PKGCORE_EXPECT_FAILURE(IOError, store_->sync(provider::Path(u"own")));
    PKGCORE_EXPECT_FAILURE(IOError, store_->sync(provider::Path()));
}

TEST_P(ClosedWorld, LeavesNoDescriptorOpen) {
    const test::NoDescriptorLeft check;
    place_.folder(u"a/b").createFolderRecursive();
    EXPECT_TRUE(place_.write(u"a/b/f", "text"));
    EXPECT_EQ(place_.listTree(u"").size(), 4u);
    place_.folder(u"a").copyFolder(place_.folder(u"c"), kFail);
    place_.folder(u"a").moveFolder(place_.folder(u"c"), kReplace);
    EXPECT_FALSE(place_.write(u"x/y", "text"));
}

INSTANTIATE_TEST_SUITE_P(Ways, ClosedWorld, testing::Values(Way::OneCall, Way::ByTurns),
                         [](const auto& way) { return way.param == Way::OneCall ? "oneCall" : "byTurns"; });

TEST(FolderProvider, NeedsItsFolder) {
    const test::TempTree tree;
    test::makeFile(tree / "f");
    PKGCORE_EXPECT_FAILURE(NotFound, provider::makeFolderProvider(tree.text("missing")));
    PKGCORE_EXPECT_FAILURE(NotFound, provider::makeFolderProvider(tree.text("f")));
}

}  // namespace
