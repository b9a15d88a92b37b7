// Temporary files and folders on the real disk, for as long as their guards live.

#include <pkgcore/util/TempdirGuard.hpp>
#include <pkgcore/util/TempfileGuard.hpp>

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/filesystem/PathHelpers.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/util/TempNames.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/util/GuardedNames.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <type_traits>

using opc::ustring;
using opc::detail::getFilename;
using opc::detail::getParentPath;
using opc::util::TempdirGuard;
using opc::util::TempfileGuard;
using test::bytes;

namespace {

static_assert(!std::is_copy_constructible_v<TempfileGuard> && !std::is_copy_assignable_v<TempfileGuard>);
static_assert(!std::is_copy_constructible_v<TempdirGuard> && !std::is_copy_assignable_v<TempdirGuard>);

bool isEmptyFolder(const std::string& path) {
    const bool gone = ::rmdir(path.c_str()) == 0;
    if (gone) {
        test::makeFolder(path);
    }
    return gone;
}

TEST(TempfileGuard, MakesAnEmptyFileOfItsOwnerAloneAndDeletesIt) {
    const test::TempTree tree;
    std::string name;
    {
        const TempfileGuard guard(tree.text(""), u"pre", u".ext");
        name = bytes(guard.getFileName());
        EXPECT_TRUE(S_ISREG(test::statusOf(name).st_mode));
        EXPECT_EQ(test::modeOf(name), 0600U);
        EXPECT_EQ(test::contentOf(name), "");
        EXPECT_EQ(getParentPath(guard.getFileName()), test::text(tree.path()));
        EXPECT_EQ(getFilename(guard.getFileName()).substr(0, 3), u"pre");
        EXPECT_EQ(name.substr(name.size() - 4), ".ext");
    }
    EXPECT_FALSE(test::isThere(name));
    EXPECT_TRUE(isEmptyFolder(tree.path()));
}

TEST(TempfileGuard, WithoutArgumentsStandsInTheTemporaryFolder) {
    const TempfileGuard guard;
    EXPECT_EQ(getParentPath(guard.getFileName()), opc::util::getTempDir());
    EXPECT_EQ(getFilename(guard.getFileName()).front(), u'.');
    const ustring name = guard.getFileName();
    EXPECT_EQ(name.substr(name.size() - 4), u".tmp");
    EXPECT_TRUE(test::isThere(bytes(name)));
}

TEST(TempfileGuard, LeavesAReleasedFileAndStillKnowsItsName) {
    const test::TempTree tree;
    std::string name;
    {
        TempfileGuard guard(tree.text(""));
        guard.release();
        name = bytes(guard.getFileName());
    }
    EXPECT_TRUE(test::isThere(name));
}

TEST(TempfileGuard, EndsQuietlyWhereTheFileIsGone) {
    const test::TempTree tree;
    const TempfileGuard guard(tree.text(""));
    ASSERT_EQ(::unlink(bytes(guard.getFileName()).c_str()), 0);
}

TEST(TempfileGuard, LeavesAFilledFolderThatTookTheFilesPlace) {
    const test::TempTree tree;
    std::string name;
    {
        const TempfileGuard guard(tree.text(""));
        name = bytes(guard.getFileName());
        ASSERT_EQ(::unlink(name.c_str()), 0);
        test::makeFolder(name);
        test::makeFile(name + "/kept");
    }
    EXPECT_TRUE(test::isThere(name + "/kept"));
}

TEST(TempfileGuard, DeletesALinkThatTookTheFilesPlaceAndNotItsTarget) {
    const test::TempTree tree;
    test::makeFile(tree / "target");
    std::string name;
    {
        const TempfileGuard guard(tree.text(""));
        name = bytes(guard.getFileName());
        ASSERT_EQ(::unlink(name.c_str()), 0);
        test::makeLink("target", name);
    }
    EXPECT_FALSE(test::isThere(name));
    EXPECT_TRUE(test::isThere(tree / "target"));
}

TEST(TempfileGuard, FailsForAFolderThatIsMissing) {
    const test::TempTree tree;
    EXPECT_THROW(TempfileGuard(tree.text("missing")), fl::filesystem::PathNotFound);
    EXPECT_TRUE(isEmptyFolder(tree.path()));
}

TEST(TempfileGuard, OfARelativeFolderFindsItsFileFromAnywhere) {
    test::runInChild([] {
        const test::TempTree tree;
        ASSERT_EQ(::chdir(tree.path().c_str()), 0);
        test::makeFolder("sub");
        std::optional<TempfileGuard> guard(std::in_place, u"sub");
        const std::string name = bytes(guard->getFileName());
        EXPECT_EQ(name.front(), '/');
        ASSERT_EQ(::chdir("/"), 0);
        EXPECT_TRUE(test::isThere(name));
        guard.reset();
        EXPECT_FALSE(test::isThere(name));
        EXPECT_TRUE(isEmptyFolder(tree / "sub"));
    });
}

TEST(TempdirGuard, MakesAFolderAndDeletesItWithAllThatItHolds) {
    const test::TempTree tree;
    std::string name;
    {
        const TempdirGuard guard(tree.text(""), u"pre", u".ext");
        name = bytes(guard.getDirectoryName());
        EXPECT_TRUE(S_ISDIR(test::statusOf(name).st_mode));
        EXPECT_EQ(getParentPath(guard.getDirectoryName()), test::text(tree.path()));
        test::makeFolder(name + "/sub");
        test::makeFile(name + "/sub/file", "text", 0400);
        test::makeFile(tree / "outside");
        test::makeLink(tree / "outside", name + "/link");
    }
    EXPECT_FALSE(test::isThere(name));
    EXPECT_TRUE(test::isThere(tree / "outside"));
}

TEST(TempdirGuard, WithoutArgumentsStandsInTheTemporaryFolder) {
    const TempdirGuard guard;
    EXPECT_EQ(getParentPath(guard.getDirectoryName()), opc::util::getTempDir());
    EXPECT_TRUE(test::isThere(bytes(guard.getDirectoryName())));
}

TEST(TempdirGuard, LeavesAReleasedFolderAndStillKnowsItsName) {
    const test::TempTree tree;
    std::string name;
    {
        TempdirGuard guard(tree.text(""));
        guard.release();
        name = bytes(guard.getDirectoryName());
    }
    EXPECT_TRUE(test::isThere(name));
}

TEST(TempdirGuard, EndsQuietlyWhereTheFolderIsGone) {
    const test::TempTree tree;
    const TempdirGuard guard(tree.text(""));
    ASSERT_EQ(::rmdir(bytes(guard.getDirectoryName()).c_str()), 0);
}

TEST(TempdirGuard, EndsQuietlyWhereItMayNotDelete) {
    test::runAsOrdinaryUser([] {
        const test::TempTree tree;
        std::string name;
        {
            const TempdirGuard guard(tree.text(""));
            name = bytes(guard.getDirectoryName());
            test::makeFile(name + "/file");
            test::setMode(name, 0500);
        }
        EXPECT_EQ(test::isThere(name + "/file"), ::geteuid() != 0);
    });
}

TEST(TempdirGuard, FailsWithTheTextAndThePathForAFolderThatIsMissing) {
    const test::TempTree tree;
    try {
        const TempdirGuard guard(tree.text("missing"), u"p", u"e");
        ADD_FAILURE() << "nothing was thrown";
    } catch (const opc::Exception& failure) {
        const std::string start =
            "Temporary directory could not be created. Path not found: " + (tree / "missing/p");
        EXPECT_EQ(std::string(failure.what()).substr(0, start.size()), start);
        EXPECT_EQ(failure.code(), boost::system::error_code());
    }
    EXPECT_TRUE(isEmptyFolder(tree.path()));
}

TEST(TempdirGuard, OfARelativeFolderFindsItsFolderFromAnywhere) {
    test::runInChild([] {
        const test::TempTree tree;
        ASSERT_EQ(::chdir(tree.path().c_str()), 0);
        test::makeFolder("sub");
        std::optional<TempdirGuard> guard(std::in_place, u"sub");
        const std::string name = bytes(guard->getDirectoryName());
        ASSERT_EQ(::chdir("/"), 0);
        EXPECT_TRUE(test::isThere(name));
        guard.reset();
        EXPECT_FALSE(test::isThere(name));
    });
}

}  // namespace
