#include <pkgcore/platform/storage/NativePaths.hpp>
#include <pkgcore/portable/filesystem/FileDescriptor.hpp>
#include <pkgcore/portable/storage/providers/local/LocalProvider.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace foundation::storage;
using namespace foundation::storage::conformance;

namespace {

class LocalProvider : public testing::Test {
protected:
    std::string native(const std::string& name) const { return tree_ / name; }

    test::TempTree tree_{test::fastFolder()};
    Workplace place_{Ground{vfs::StorageSystemBuilder().build(),
                            vfs::toAbsoluteIRI(u"file", test::text(tree_.path())).toString(), nullptr,
                            provider::Path(), nullptr}};
};

TEST_F(LocalProvider, CountsALinkAsWhatItLeadsTo) {
    test::makeFolder(native("d"));
    test::makeFile(native("d/f"), "text");
    test::makeLink("d", native("toFolder"));
    test::makeLink("d/f", native("toFile"));
    EXPECT_TRUE(place_.isFolder(u"toFolder"));
    EXPECT_TRUE(place_.isFile(u"toFile"));
    EXPECT_EQ(place_.read(u"toFile"), "text");
    EXPECT_EQ(place_.list(u"toFolder"), Names{u"f"});
    EXPECT_EQ(place_.read(u"toFolder/f"), "text");
}

TEST_F(LocalProvider, MovesNothingOntoItselfByWayOfALink) {
    test::makeFolder(native("d"));
    test::makeFile(native("d/f"), "text");
    ::link(native("d/f").c_str(), native("second").c_str());
    test::makeFolder(native("d/sub"));
    test::makeFile(native("d/sub/g"), "more");
    test::makeLink("d", native("link"));
    place_.file(u"d/f").moveFile(place_.file(u"link/f"), ReplacementPolicy::ReplaceExisting);
    place_.folder(u"d/sub").moveFolder(place_.folder(u"link/sub"), ReplacementPolicy::ReplaceExisting);
    EXPECT_EQ(place_.read(u"d/f"), "text");
    EXPECT_EQ(place_.read(u"d/sub/g"), "more");
}

TEST_F(LocalProvider, CopiesNothingOntoItselfByWayOfALink) {
    test::makeFolder(native("d"));
    test::makeFile(native("d/f"), "text");
    test::makeLink("d", native("link"));
    PKGCORE_EXPECT_FAILURE(NotSupported, place_.file(u"d/f").copyFile(place_.file(u"link/f"),
                                                                      ReplacementPolicy::ReplaceExisting));
    EXPECT_EQ(place_.read(u"d/f"), "text");
}

TEST_F(LocalProvider, PutsNothingInThePlaceOfWhatHoldsItByWayOfALink) {
    test::makeFolder(native("d"));
    test::makeFile(native("d/f"), "text");
    test::makeFolder(native("d/sub"));
    test::makeLink(".", native("link"));
    const Folder sub = place_.folder(u"d/sub");
    const Folder holder = place_.folder(u"link/d");
    PKGCORE_EXPECT_FAILURE(NotSupported, sub.copyFolder(holder, ReplacementPolicy::ReplaceExisting));
    PKGCORE_EXPECT_FAILURE(NotSupported, sub.moveFolder(holder, ReplacementPolicy::ReplaceExisting));
    EXPECT_EQ(place_.list(u"d"), (Names{u"f", u"sub/"}));
}

TEST_F(LocalProvider, MovesOneOfTwoNamesOntoTheOther) {
    test::makeFile(native("one"), "text");
    ::link(native("one").c_str(), native("two").c_str());
    place_.file(u"one").moveFile(place_.file(u"two"), ReplacementPolicy::ReplaceExisting);
    EXPECT_EQ(place_.list(u""), Names{u"two"});
    EXPECT_EQ(place_.read(u"two"), "text");
}

TEST_F(LocalProvider, ReplacesNoFolderByWhatItHoldsByWayOfALink) {
    test::makeFolder(native("d"));
    test::makeFolder(native("d/e"));
    test::makeFile(native("d/f"), "text");
    test::makeLink("d", native("link"));
    PKGCORE_EXPECT_FAILURE(NotSupported, place_.folder(u"link/e").moveFolder(
                                             place_.folder(u"d"), ReplacementPolicy::ReplaceExisting));
    EXPECT_EQ(place_.read(u"d/f"), "text");
    EXPECT_TRUE(place_.isFolder(u"d/e"));
}

TEST_F(LocalProvider, WritesThroughALink) {
    test::makeFolder(native("d"));
    test::makeFile(native("d/f"), "old", 0640);
    test::makeLink("d/f", native("link"));
    test::makeLink("d/new", native("dangling"));
    EXPECT_TRUE(place_.write(u"link", "new"));
    EXPECT_TRUE(place_.write(u"dangling", "made"));
    EXPECT_EQ(test::contentOf(native("d/f")), "new");
    EXPECT_EQ(test::modeOf(native("d/f")), 0640u);
    EXPECT_EQ(test::contentOf(native("d/new")), "made");
    EXPECT_EQ(test::linkTextOf(native("link")), "d/f");
    EXPECT_EQ(test::linkTextOf(native("dangling")), "d/new");
}

TEST_F(LocalProvider, DoesNotDescendThroughLinks) {
    test::makeFolder(native("d"));
    test::makeFile(native("d/f"));
    test::makeLink(".", native("d/loop"));
    test::makeLink("d", native("link"));
    EXPECT_EQ(place_.listTree(u""), (Names{u"d/", u"d/f", u"d/loop/", u"link/"}));
}

TEST_F(LocalProvider, RemovesTheLinkItself) {
    test::makeFolder(native("d"));
    test::makeFile(native("d/f"), "text");
    test::makeLink("d", native("toFolder"));
    test::makeLink("d/f", native("toFile"));
    test::makeLink("nowhere", native("dangling"));
    place_.folder(u"toFolder").removeFolder(FolderRemovalPolicy::WithContents);
    place_.file(u"toFile").removeFile();
    EXPECT_TRUE(place_.isFile(u"dangling"));
    EXPECT_EQ(place_.read(u"dangling"), "(none)");
    place_.file(u"dangling").removeFile();
    EXPECT_EQ(place_.listTree(u""), (Names{u"d/", u"d/f"}));
}

TEST_F(LocalProvider, RemovesATreeWithItsLinksAlone) {
    test::makeFolder(native("keep"));
    test::makeFile(native("keep/f"), "text");
    test::makeFolder(native("d"));
    test::makeLink("../keep", native("d/link"));
    place_.folder(u"d").removeFolder(FolderRemovalPolicy::WithContents);
    EXPECT_EQ(place_.listTree(u""), (Names{u"keep/", u"keep/f"}));
}

TEST_F(LocalProvider, CopiesWhatALinkLeadsToAndKeepsLinksInFolders) {
    test::makeFolder(native("d"));
    test::makeFile(native("d/f"), "text");
    test::makeLink("f", native("d/link"));
    test::makeLink("d/f", native("toFile"));
    place_.file(u"toFile").copyFile(place_.file(u"copy"), kFail);
    EXPECT_TRUE(S_ISREG(test::statusOf(native("copy")).st_mode));
    EXPECT_EQ(test::contentOf(native("copy")), "text");
    place_.folder(u"d").copyFolder(place_.folder(u"d2"), kFail);
    EXPECT_EQ(test::linkTextOf(native("d2/link")), "f");
}

TEST_F(LocalProvider, ReachesNamesThatAreNotUtf8) {
    test::makeFile(native("caf\xE9"), "text");
    EXPECT_EQ(place_.list(u""), Names{u"caf\xDCE9"});
    EXPECT_EQ(place_.iri(u"caf\xDCE9").getName(), u"caf\xDCE9");
    EXPECT_EQ(place_.read(u"caf\xDCE9"), "text");
    place_.file(u"caf\xDCE9").moveFile(place_.file(u"\xDCFF"), kFail);
    EXPECT_TRUE(test::isThere(native("\xFF")));
    place_.file(u"\xDCFF").removeFile();
    EXPECT_EQ(place_.list(u""), Names{});
}

TEST_F(LocalProvider, ReadsWhatClaimsToBeEmpty) {
    const Workplace proc(Ground{vfs::StorageSystemBuilder().build(), u"file:///proc/self", nullptr,
                                provider::Path(), nullptr});
    EXPECT_NE(proc.read(u"status").find("Name:"), std::string::npos);
}

TEST_F(LocalProvider, ReadsFromAPipeWhatItHasAndNoByteBefore) {
    ASSERT_EQ(::mkfifo(native("pipe").c_str(), 0600), 0);
    const fl::filesystem::posix::FileDescriptor end(::open(native("pipe").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::write(end.get(), "text", 4), 4);
    const auto reader =
        provider::makeLocalProvider()->openReader(provider::Path(test::text(native("pipe")).substr(1)));
    EXPECT_EQ(reader->size(), std::nullopt);
    char bytes[10] = {};
    EXPECT_EQ(reader->read(bytes, sizeof bytes), 4U);
    EXPECT_STREQ(bytes, "text");
}

TEST_F(LocalProvider, RefusesByItselfWhatTheSystemOfStoresAsksForFirst) {
    test::makeFolder(native("d"));
    const auto store = provider::makeLocalProvider();
    const provider::Path folder(test::text(native("d")).substr(1));
    PKGCORE_EXPECT_FAILURE(AlreadyExists, store->openWriter(folder, provider::WriteMode::Create));
    PKGCORE_EXPECT_FAILURE(NotFound, store->setWritable(folder.child(u"missing"), false));
    EXPECT_EQ(place_.listTree(u""), Names{u"d/"});
}

TEST_F(LocalProvider, WritesToADeviceInPlace) {
    const Workplace dev(
        Ground{vfs::StorageSystemBuilder().build(), u"file:///dev", nullptr, provider::Path(), nullptr});
    ASSERT_TRUE(S_ISCHR(test::statusOf("/dev/null").st_mode));
    EXPECT_TRUE(dev.write(u"null", "text"));
    EXPECT_TRUE(S_ISCHR(test::statusOf("/dev/null").st_mode));
}

TEST_F(LocalProvider, MovesOneOfTwoNamesOfAFileOntoTheOther) {
    test::makeFile(native("f"), "text");
    ASSERT_EQ(::link(native("f").c_str(), native("g").c_str()), 0);
    place_.file(u"f").moveFile(place_.file(u"g"), kReplace);
    EXPECT_EQ(place_.list(u""), Names{u"g"});
    EXPECT_EQ(place_.read(u"g"), "text");
}

TEST_F(LocalProvider, TellsOfOneWhoReplacedTheFileMeanwhile) {
    vfs::ofstream stream(place_.file(u"f"), std::ios_base::out);
    stream << "first" << std::flush;
    ASSERT_TRUE(place_.write(u"f", "another"));
    stream << "more" << std::flush;
    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(place_.read(u"f"), "another");
}

TEST_F(LocalProvider, TellsThatTheFileToAppendToIsNotThereAnyMore) {
    ASSERT_TRUE(place_.write(u"f", "old"));
    ASSERT_TRUE(place_.write(u"g", "old"));
    vfs::ofstream replaced(place_.file(u"f"), std::ios_base::app);
    vfs::ofstream removed(place_.file(u"g"), std::ios_base::app);
    replaced << "more";
    removed << "more";
    ASSERT_TRUE(place_.write(u"f", "other"));
    place_.file(u"g").removeFile();
    EXPECT_TRUE((replaced << std::flush).bad());
    EXPECT_TRUE((removed << std::flush).bad());
    EXPECT_EQ(place_.read(u"f"), "other");
    EXPECT_TRUE(place_.isMissing(u"g"));
}

TEST_F(LocalProvider, LeavesWhatOthersHaveAppended) {
    ASSERT_TRUE(place_.write(u"f", "old"));
    std::string own;
    {
        vfs::ofstream given(place_.file(u"f"), std::ios_base::app);
        given << someBytes(100'000);
        own = test::contentOf(native("f"));
        ASSERT_TRUE(place_.write(u"f", "other", std::ios_base::app));
        given.setstate(std::ios_base::badbit);
    }
    EXPECT_EQ(test::contentOf(native("f")), own + "other");
}

TEST_F(LocalProvider, MarksWithThePermissionBits) {
    test::makeFile(native("f"), "text", 0664);
    place_.file(u"f").setWritable(false);
    EXPECT_EQ(test::modeOf(native("f")), 0444u);
    place_.file(u"f").setWritable(true);
    EXPECT_EQ(test::modeOf(native("f")), 0644u);
}

TEST_F(LocalProvider, TellsThatItsDiskFailsToTakeWhatWasWritten) {
    test::makeFile(native("f"), "text");
    const auto store = provider::makeLocalProvider();
    const provider::Path file(test::text(native("f")).substr(1));
    test::ScopedSystemCalls calls;
    EXPECT_NO_THROW(store->sync(file));
    test::failCall<&test::SystemCalls::syncfs>(calls, 1, EIO);
    PKGCORE_EXPECT_FAILURE(IOError, store->sync(file));
    PKGCORE_EXPECT_FAILURE(IOError, store->sync(provider::Path()));
}

TEST_F(LocalProvider, LeavesNoDescriptorOpen) {
    const test::NoDescriptorLeft check;
    test::makeFolder(native("d"));
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(place_.write(u"d/f", someBytes(100'000)));
        EXPECT_TRUE(place_.write(u"d/f", "more", std::ios_base::app));
        EXPECT_FALSE(place_.write(u"missing/f", "text"));
        place_.folder(u"d").copyFolder(place_.folder(u"e"), kReplace);
        EXPECT_EQ(place_.listTree(u"").size(), 4u);
        EXPECT_EQ(place_.read(u"e"), "(none)");
    }
}

}  // namespace
