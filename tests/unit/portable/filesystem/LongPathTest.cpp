#include <pkgcore/portable/filesystem/NativePath.hpp>

#include <pkgcore/platform/filesystem/DirectoryIterator.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"

#include <fcntl.h>

#include <cerrno>

namespace {

using namespace fl::filesystem;
using fl::filesystem::posix::BelowRoot;
using fl::filesystem::posix::NativePath;
using fl::filesystem::posix::Place;
using test::failedPath;
using test::TempTree;

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

/// A chain of folders whose path has about `size` bytes, with one file in it, called "leaf".
class LongChain {
public:
    explicit LongChain(std::size_t size) : levels_(static_cast<int>((size - tree_.path().size()) / 101)) {
        test::makeChain(tree_.path(), name_, levels_);
    }

    /// The path of an item beside the leaf, of exactly `size` bytes: more separators make it longer.
    std::u16string pathTo(const std::string& item, std::size_t size) const {
        std::string path = tree_.path() + repeated('/' + name_, levels_) + '/';
        path.append(size - path.size() - item.size(), '/');
        return test::text(path + item);
    }

    /// As short as it can be, and still longer than the system takes.
    std::u16string pathTo(const std::string& item) const {
        return test::text(tree_.path() + repeated('/' + name_, levels_) + '/' + item);
    }

private:
    TempTree tree_;
    std::string name_ = std::string(100, 'd');
    int levels_;
};

TEST(NativePath, TrailingSeparatorsGo) {
    const std::pair<std::u16string, std::string> paths[] = {{u"a", "a"}, {u"a/", "a"},  {u"a///", "a"},
                                                            {u"/", "/"}, {u"///", "/"}, {u"/a/b//", "/a/b"},
                                                            {u"./", "."}};
    for (const auto& [text, bytes] : paths) {
        const NativePath path(text);
        EXPECT_EQ(bytes, path.bytes());
        EXPECT_EQ(bytes.size(), path.size());
    }
}

TEST(NativePath, AnyLengthFits) {
    for (std::size_t length = 330; length < 360; ++length) {
        const std::u16string text(length, u'\u20AC');  // three bytes each, the most that a unit can need
        EXPECT_EQ(repeated("\xE2\x82\xAC", static_cast<int>(length)), NativePath(text).bytes());
    }
}

TEST(NativePath, BelowTheRootBeginsWithItsSeparator) {
    const std::pair<std::u16string, std::string> paths[] = {{u"", "/"}, {u"a/b", "/a/b"}, {u"a//", "/a"}};
    for (const auto& [text, bytes] : paths) {
        const NativePath path(BelowRoot{text});
        EXPECT_EQ(bytes, path.bytes());
        EXPECT_EQ(bytes.size(), path.size());
        EXPECT_EQ(text, path.text());
    }
}

TEST(NativePath, BelowTheRootAnyLengthFits) {
    for (std::size_t length = 330; length < 360; ++length) {
        const std::u16string text(length, u'\u20AC');
        EXPECT_EQ('/' + repeated("\xE2\x82\xAC", static_cast<int>(length)),
                  NativePath(BelowRoot{text}).bytes());
    }
}

TEST(NativePath, EmptyPathIsNotFound) {
    EXPECT_EQ(u"", failedPath<PathNotFound>([] { const NativePath path(std::u16string{}); }));
}

TEST(Place, KnowsDotsAtTheEnd) {
    const std::pair<std::u16string, bool> paths[] = {
        {u".", true},     {u"..", true},   {u"/a/.", true},   {u"/a/..", true}, {u"a/../", true},
        {u"a/.//", true}, {u"...", false}, {u".a", false},    {u"a.", false},   {u"a/...", false},
        {u"../a", false}, {u"/", false},   {u"a/..b", false},
    };
    for (const auto& [path, dots] : paths)
        EXPECT_EQ(dots, Place(path).endsInDots()) << testing::PrintToString(path);
}

TEST(Place, ShortPathIsTakenAsItIs) {
    const std::u16string path = u"/no/such/place";
    const Place place(path);
    EXPECT_EQ(AT_FDCWD, place.directory());
    EXPECT_STREQ("/no/such/place", place.path());
    EXPECT_EQ(0, place.error());
}

TEST(LongPath, IsFoundAtEveryLengthAroundTheLimit) {
    const test::NoDescriptorLeft noneLeft;
    const LongChain chain(4000);
    for (std::size_t size = 4090; size <= 4100; ++size) {
        EXPECT_TRUE(exists(chain.pathTo("leaf", size))) << size;
        EXPECT_FALSE(exists(chain.pathTo("missing", size))) << size;
        EXPECT_FALSE(exists(chain.pathTo("leaf/below", size))) << size;
    }
}

TEST(LongPath, OfTenThousandBytesWorksForEveryOperation) {
    const test::NoDescriptorLeft noneLeft;
    const LongChain chain(10'000);
    ASSERT_GT(chain.pathTo("leaf").size(), 9'800U);
    EXPECT_TRUE(file_status::is_regular(symlink_status(chain.pathTo("leaf"))));
    permissions(chain.pathTo("leaf"), 0600 | file_status::perms_symlink);
    EXPECT_EQ(0600U, symlink_status(chain.pathTo("leaf")).permissions);
    EXPECT_TRUE(create_directory(chain.pathTo("folder")));
    EXPECT_TRUE(create_directories(chain.pathTo("folder/inner/innermost")));
    EXPECT_FALSE(create_directories(chain.pathTo("folder/inner/innermost")));
    create_symlink(u"leaf", chain.pathTo("link"), file_status::regular_file);
    copy_symlink(chain.pathTo("link"), chain.pathTo("copy"));
    EXPECT_EQ(u"leaf", read_symlink(chain.pathTo("copy")));
    remove(chain.pathTo("copy"));
    EXPECT_FALSE(exists(chain.pathTo("copy")));
    EXPECT_THROW(remove(chain.pathTo("folder/.")), InvalidArgument);
}

TEST(LongPath, MissingPartsAndFilesInTheWayAreNoFailure) {
    const LongChain chain(4000);
    const std::string below = repeated("/" + std::string(200, 'x'), 30);
    EXPECT_FALSE(exists(chain.pathTo("missing" + below)));
    EXPECT_FALSE(exists(chain.pathTo("leaf" + below)));
    EXPECT_THROW(create_directory(chain.pathTo("missing" + below)), PathNotFound);
    EXPECT_THROW(remove(chain.pathTo("leaf" + below)), NotDirectoryError);
    const auto list = [](const std::u16string& path) {
        detail::upath_directory_iterator_impl(path, detail::initialization_mode::standard);
    };
    EXPECT_THROW(list(chain.pathTo("missing" + below)), PathNotFound);
    EXPECT_THROW(list(chain.pathTo("leaf" + below)), NotDirectoryError);
}

TEST(LongPath, IsMadeFromNothing) {
    const test::NoDescriptorLeft noneLeft;
    const TempTree tree;
    const std::u16string path = tree.text(repeated(std::string(250, 'n') + '/', 40) + "end");
    EXPECT_TRUE(create_directories(path));
    EXPECT_TRUE(file_status::is_directory(symlink_status(path)));
    EXPECT_FALSE(create_directories(path));
}

TEST(LongPath, ElementLongerThanANameIsRefused) {
    const LongChain chain(4000);
    EXPECT_TRUE(create_directory(chain.pathTo(std::string(255, 'n'))));
    EXPECT_THROW(create_directory(chain.pathTo(std::string(256, 'n'))), FileNameTooLarge);
    const std::u16string oneElement(5'000, u'n');
    EXPECT_EQ(oneElement, failedPath<FileNameTooLarge>([&] { exists(oneElement); }));
}

TEST(LongPath, FailureOnTheWayIsToldAsWhatItIs) {
    const LongChain chain(4200);
    test::ScopedSystemCalls calls;
    calls->openat = [](int, const char*, int, mode_t) {
        errno = EMFILE;
        return -1;
    };
    EXPECT_EQ(EMFILE, test::failedNumber([&] { exists(chain.pathTo("leaf")); }));
    EXPECT_EQ(EMFILE, test::failedNumber([&] { remove(chain.pathTo("leaf")); }));
}

}  // namespace
