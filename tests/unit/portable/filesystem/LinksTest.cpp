#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

using namespace fl::filesystem;
using test::failedPath;
using test::ScopedSystemCalls;
using test::TempTree;

void makeLinkTo(const std::u16string& target, const std::u16string& link) {
    create_symlink(target, link, file_status::regular_file);
}

TEST(CreateSymlink, KeepsTheTargetToTheLetter) {
    const std::pair<std::u16string, std::string> targets[] = {
        {u"file", "file"},
        {u"folder/", "folder/"},
        {u"a//b///", "a//b///"},
        {u"./a/../b/.", "./a/../b/."},
        {u"/", "/"},
        {u" ", " "},
        {u"a\\b\\c", "a\\b\\c"},
        {u"\u00E4\U0001F600", "\xC3\xA4\xF0\x9F\x98\x80"},
        {u"\xDCFF/\xDCC3", "\xFF/\xC3"},
        {std::u16string(4095, u't'), std::string(4095, 't')},
    };
    for (const auto& [target, bytes] : targets) {
        const TempTree tree;
        makeLinkTo(target, tree.text("link"));
        EXPECT_EQ(bytes, test::linkTextOf(tree / "link"));
        EXPECT_EQ(target, read_symlink(tree.text("link")));
    }
}

TEST(CreateSymlink, KindOfTheTargetMakesNoDifference) {
    const TempTree tree;
    create_symlink(u"t", tree.text("link"), file_status::directory_file);
    EXPECT_EQ("t", test::linkTextOf(tree / "link"));
}

TEST(CreateSymlink, RefusesATargetWithoutBytesAndMakesNothing) {
    const TempTree tree;
    const std::u16string targets[] = {std::u16string(u"a\0b", 3), u"\xD800", u"a\xDFFF"};
    for (const std::u16string& target : targets) {
        EXPECT_EQ(target,
                  failedPath<FileNameConversionFailure>([&] { makeLinkTo(target, tree.text("link")); }));
        EXPECT_FALSE(test::isThere(tree / "link"));
    }
}

TEST(CreateSymlink, RefusesEmptyAndOverlongTargets) {
    const TempTree tree;
    EXPECT_THROW(makeLinkTo(u"", tree.text("link")), PathNotFound);
    EXPECT_THROW(makeLinkTo(std::u16string(4096, u't'), tree.text("link")), FileNameTooLarge);
    EXPECT_FALSE(test::isThere(tree / "link"));
}

TEST(CreateSymlink, ReplacesNothing) {
    const TempTree tree;
    test::makeFile(tree / "file", "kept");
    test::makeFolder(tree / "folder");
    test::makeLink("nowhere", tree / "dangling");
    for (const char* const name : {"file", "folder", "dangling", "dangling/"}) {
        EXPECT_EQ(tree.text(name), failedPath<FileExistsError>([&] { makeLinkTo(u"x", tree.text(name)); }));
    }
    EXPECT_EQ("kept", test::contentOf(tree / "file"));
    EXPECT_EQ("nowhere", test::linkTextOf(tree / "dangling"));
}

TEST(CreateSymlink, TrailingSeparatorOfTheLinkMakesNoDifference) {
    const TempTree tree;
    makeLinkTo(u"t", tree.text("link/"));
    EXPECT_EQ("t", test::linkTextOf(tree / "link"));
}

TEST(CreateSymlink, NeedsAFolderToStandIn) {
    const TempTree tree;
    test::makeFile(tree / "file");
    EXPECT_THROW(makeLinkTo(u"x", tree.text("missing/link")), PathNotFound);
    EXPECT_THROW(makeLinkTo(u"x", tree.text("file/link")), NotDirectoryError);
    EXPECT_THROW(makeLinkTo(u"x", u""), PathNotFound);
}

TEST(ReadSymlink, OfWhatIsNoLinkIsAnInvalidArgument) {
    const TempTree tree;
    test::makeFile(tree / "file");
    EXPECT_EQ(tree.text("file"), failedPath<InvalidArgument>([&] { read_symlink(tree.text("file")); }));
    EXPECT_THROW(read_symlink(tree.path() == "" ? u"" : test::text(tree.path())), InvalidArgument);
}

TEST(ReadSymlink, OfNothingIsNotFound) {
    const TempTree tree;
    EXPECT_EQ(tree.text("missing"), failedPath<PathNotFound>([&] { read_symlink(tree.text("missing")); }));
    EXPECT_THROW(read_symlink(u""), PathNotFound);
}

TEST(ReadSymlink, OfASizeThatIsNotToldBefore) {
    char name[4096] = {};
    ASSERT_GT(::readlink("/proc/self/exe", name, sizeof name - 1), 0);
    EXPECT_EQ(test::text(name), read_symlink(u"/proc/self/exe"));
}

TEST(ReadSymlink, OfEveryLengthAroundTheFirstBuffer) {
    const TempTree tree;
    for (std::size_t length = 250; length < 260; ++length) {
        makeLinkTo(std::u16string(length, u't'), tree.text("link"));
        EXPECT_EQ(std::u16string(length, u't'), read_symlink(tree.text("link")));
        remove(tree.text("link"));
    }
}

TEST(ReadSymlink, OfALinkThatGrowsMeanwhileIsNeverCut) {
    static std::size_t length;
    length = 100;
    ScopedSystemCalls calls;
    // A longer one each time until there is room.
    calls->readlinkat = [](int, const char*, char* text, size_t size) -> ssize_t {
        length = length < 3'000 ? length * 3 : length;
        std::memset(text, 'g', std::min(length, size));
        return static_cast<ssize_t>(std::min(length, size));
    };
    EXPECT_EQ(std::u16string(length = 8'100, u'g'), read_symlink(u"/x"));
}

TEST(CopySymlink, CarriesTheBytesOver) {
    const TempTree tree;
    for (const std::string target : {"a/b/", "\xFF\xC3/\xED\xA0\x80", "nowhere", "\xF0\x9F\x98\x80"}) {
        test::makeLink(target, tree / "link");
        copy_symlink(tree.text("link"), tree.text("copy"));
        EXPECT_EQ(target, test::linkTextOf(tree / "copy"));
        remove(tree.text("link"));
        remove(tree.text("copy"));
    }
}

TEST(CopySymlink, ReplacesNothingAndNamesWhatIsThere) {
    const TempTree tree;
    test::makeLink("t", tree / "link");
    test::makeFile(tree / "file", "kept");
    EXPECT_EQ(tree.text("file"),
              failedPath<FileExistsError>([&] { copy_symlink(tree.text("link"), tree.text("file")); }));
    EXPECT_EQ(tree.text("link"),
              failedPath<FileExistsError>([&] { copy_symlink(tree.text("link"), tree.text("link")); }));
    EXPECT_EQ("kept", test::contentOf(tree / "file"));
}

TEST(CopySymlink, NamesASourceThatIsMissingOrNoLink) {
    const TempTree tree;
    test::makeFile(tree / "file");
    EXPECT_EQ(tree.text("missing"),
              failedPath<PathNotFound>([&] { copy_symlink(tree.text("missing"), tree.text("copy")); }));
    EXPECT_EQ(tree.text("file"),
              failedPath<InvalidArgument>([&] { copy_symlink(tree.text("file"), tree.text("copy")); }));
    EXPECT_FALSE(test::isThere(tree / "copy"));
}

}  // namespace
