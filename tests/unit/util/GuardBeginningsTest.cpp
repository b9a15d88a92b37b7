// How guards begin: where, under which names, and what is left where they cannot.

#include <pkgcore/util/TempdirGuard.hpp>
#include <pkgcore/util/TempfileGuard.hpp>

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/filesystem/PathHelpers.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/ScopedEnvironment.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/util/GuardedNames.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <optional>

namespace fsys = fl::filesystem;
using fl::filesystem::posix::kHostCalls;
using opc::ustring;
using opc::util::TempdirGuard;
using opc::util::TempfileGuard;
using test::bytes;
using test::ScopedSystemCalls;
using test::snapshot;
using test::TempTree;
using test::TreeSnapshot;

namespace {

const std::string kNotCreated = "Temporary directory could not be created. ";

template <typename Failure>
bool throwsThis(const std::function<void()>& work) {
    try {
        work();
    } catch (const Failure&) {
        return true;
    }
    return false;
}

/// The text of the opc::Exception that a guard of a folder fails with.
std::string failureOfFolder(const ustring& directory, const ustring& prefix = u"p") {
    try {
        const TempdirGuard guard(directory, prefix, u"e");
    } catch (const opc::Exception& failure) {
        EXPECT_EQ(boost::system::error_code(), failure.code());
        return failure.what();
    }
    return "nothing was thrown";
}

TEST(GuardBeginnings, ThatFailLeaveNothing) {
    const TempTree tree;
    test::makeFile(tree / "file");
    test::makeLink("nowhere", tree / "dangling");
    const TreeSnapshot before = snapshot(tree.path());
    const ustring here = test::text(tree.path());
    struct {
        ustring directory;
        ustring prefix;
        bool (*fileFails)(const std::function<void()>&);
        std::string folderText;
    } const cases[] = {
        {tree.text("missing"), u"p", throwsThis<fsys::PathNotFound>, "Path not found: "},
        {tree.text("file"), u"p", throwsThis<fsys::NotDirectoryError>, "Not a directory: "},
        {tree.text("dangling"), u"p", throwsThis<fsys::PathNotFound>, "Path not found: "},
        {here, u"missing/p", throwsThis<fsys::PathNotFound>, "Path not found: "},
    };
    const test::NoDescriptorLeft noneLeft;
    for (const auto& [directory, prefix, fileFails, folderText] : cases) {
        EXPECT_TRUE(fileFails([&where = directory, &start = prefix] { TempfileGuard(where, start, u"e"); }))
            << folderText;
        const std::string start = kNotCreated + folderText + bytes(directory);
        EXPECT_EQ(start, failureOfFolder(directory, prefix).substr(0, start.size()));
    }
    EXPECT_EQ(before, snapshot(tree.path()));
}

// A folder's name is looked for before it is taken, and that fails as the platform says.
TEST(GuardBeginnings, WhereNothingCanBeLookedForFailAlikeForFilesAndFolders) {
    const TempTree tree;
    test::makeLink("round", tree / "round");
    const TreeSnapshot before = snapshot(tree.path());
    EXPECT_THROW(TempfileGuard(tree.text("round")), fsys::InvalidArgument);
    EXPECT_THROW(TempdirGuard(tree.text("round")), fsys::InvalidArgument);
    EXPECT_THROW(TempfileGuard(test::text(tree.path()), ustring(240, u'p')), fsys::FileNameTooLarge);
    EXPECT_THROW(TempdirGuard(test::text(tree.path()), ustring(240, u'p')), fsys::FileNameTooLarge);
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST(GuardBeginnings, OfNamesThatNoHostTakesFailBeforeAnythingIsMade) {
    const TempTree tree;
    for (const ustring& odd : {ustring(1, u'\0'), ustring(1, u'\xD800')}) {
        EXPECT_THROW(TempfileGuard(test::text(tree.path()), odd), fsys::FileNameConversionFailure);
        EXPECT_THROW(TempfileGuard(tree.text("") + odd), fsys::FileNameConversionFailure);
        EXPECT_THROW(TempdirGuard(test::text(tree.path()), odd), fsys::FileNameConversionFailure);
        EXPECT_THROW(TempdirGuard(test::text(tree.path()), u"p", odd), fsys::FileNameConversionFailure);
    }
    EXPECT_EQ(TreeSnapshot(), snapshot(tree.path()));
}

int failedNumber = 0;

TEST(GuardBeginnings, KeepTheNumberOfAFailureOfTheDisk) {
    const TempTree tree;
    ScopedSystemCalls calls;
    calls->openat = [](int folder, const char* path, int flags, mode_t mode) {
        if ((flags & O_CREAT) == 0) {
            return kHostCalls.openat(folder, path, flags, mode);
        }
        errno = failedNumber;
        return -1;
    };
    calls->mkdirat = [](int, const char*, mode_t) {
        errno = failedNumber;
        return -1;
    };
    for (const int number : {ENOSPC, EROFS, EMFILE, EIO}) {
        failedNumber = number;
        try {
            const TempfileGuard guard(test::text(tree.path()));
            ADD_FAILURE() << "nothing was thrown";
        } catch (const fsys::SystemError& failure) {
            EXPECT_EQ(number, failure.get_error_code());
        }
        const std::string start = kNotCreated + std::strerror(number) + ": " + tree.path() + "/p";
        EXPECT_EQ(start, failureOfFolder(test::text(tree.path())).substr(0, start.size()));
    }
    EXPECT_EQ(TreeSnapshot(), snapshot(tree.path()));
}

TEST(GuardBeginnings, WithoutAStreamFailInWordsAndLeaveNothing) {
    const test::NoDescriptorLeft noneLeft;
    const TempTree tree;
    ScopedSystemCalls calls;
    calls->fdopen = [](int, const char*) -> std::FILE* { return nullptr; };
    try {
        const TempfileGuard guard(test::text(tree.path()));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const opc::Exception& failure) {
        EXPECT_STREQ("Temp file could not be created", failure.what());
        EXPECT_EQ(boost::system::error_code(), failure.code());
    }
    EXPECT_EQ(TreeSnapshot(), snapshot(tree.path()));
}

TEST(GuardBeginnings, InAFolderThatMayNotBeWrittenFail) {
    test::runAsOrdinaryUser([] {
        const TempTree tree;
        test::makeFolder(tree / "locked", 0500);
        EXPECT_THROW(TempfileGuard(tree.text("locked")), fsys::AccessDenied);
        const std::string start = kNotCreated + "Access denied: " + (tree / "locked/p");
        EXPECT_EQ(start, failureOfFolder(tree.text("locked")).substr(0, start.size()));
        EXPECT_EQ((TreeSnapshot{{"locked", "folder 0500"}}), snapshot(tree.path()));
    });
}

TEST(GuardBeginnings, HoldNoDescriptor) {
    const test::NoDescriptorLeft noneLeft;
    const TempTree tree;
    const auto before = test::openDescriptors();
    const TempfileGuard file(test::text(tree.path()));
    const TempdirGuard folder(test::text(tree.path()));
    EXPECT_EQ(before, test::openDescriptors());
}

TEST(GuardBeginnings, MakeFilesOfTheirOwnerAloneWhateverTheMask) {
    test::runAsOrdinaryUser([] {
        const TempTree tree;
        for (const mode_t mask : {0000U, 0022U, 0077U, 0277U, 0777U}) {
            ::umask(mask);
            const TempfileGuard guard(test::text(tree.path()));
            EXPECT_EQ(0600U, test::modeOf(bytes(guard.getFileName()))) << std::oct << mask;
        }
    });
}

/// Somebody else makes a folder under the name that was just found free.
TEST(GuardBeginnings, NeverTakeAFolderThatSomebodyElseMakesInBetween) {
    const TempTree tree;
    static std::string theirs;
    {
        ScopedSystemCalls calls;
        calls->mkdirat = [](int folder, const char* path, mode_t mode) {
            theirs = path;
            EXPECT_EQ(0, kHostCalls.mkdirat(folder, path, mode));
            return kHostCalls.mkdirat(folder, path, mode);
        };
        EXPECT_EQ(kNotCreated + "File exists: ", failureOfFolder(test::text(tree.path())).substr(0, 55));
    }
    EXPECT_EQ(1U, snapshot(tree.path()).size()) << theirs;
    EXPECT_EQ(0, ::rmdir(theirs.c_str()));
}

TEST(GuardBeginnings, NeverTakeWhatIsThere) {
    const TempTree tree;
    test::makeFile(tree / ('x' + std::string(20, 'a') + '.'), "kept");
    const TreeSnapshot before = snapshot(tree.path());
    static int draws;
    draws = 0;
    {
        // A random source that gives the same name nine times, and then another one.
        ScopedSystemCalls calls;
        calls->getrandom = [](void* drawn, size_t count, unsigned) {
            ++draws;
            std::memset(drawn, draws % 10 == 0 ? draws / 10 : 0, count);
            return static_cast<ssize_t>(count);
        };
        const TempfileGuard file(test::text(tree.path()), u"x", u".");
        const TempdirGuard folder(test::text(tree.path()), u"x", u".");
        EXPECT_EQ(20, draws);
    }
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST(GuardBeginnings, TakeNamesOfEveryKind) {
    const TempTree tree;
    for (const ustring& odd :
         {ustring(u"with blanks  "), ustring(u"100%25 %s"), ustring(u"t\u00E4st \u65E5\u672C"),
          ustring(u"\U0001F600"), ustring(u"a\nb\\c:d*"), ustring(u"-"), ustring(u"..")}) {
        const ustring folder = tree.text(u"in " + odd);
        test::makeFolder(bytes(folder));
        {
            const TempfileGuard file(folder, odd, odd);
            const TempdirGuard inner(folder, odd, odd);
            for (const ustring& name : {file.getFileName(), inner.getDirectoryName()}) {
                EXPECT_TRUE(test::isThere(bytes(name))) << bytes(name);
                const ustring last = opc::detail::getFilename(name);
                EXPECT_EQ(odd, last.substr(0, odd.size()));
                EXPECT_EQ(odd, last.substr(last.size() - odd.size()));
            }
        }
        EXPECT_EQ(0, ::rmdir(bytes(folder).c_str())) << bytes(folder);
    }
}

TEST(GuardBeginnings, StandInAFolderWhoseNameIsNotUtf8) {
    const TempTree tree;
    const std::string folder = tree / "f\xFF\xE4";
    test::makeFolder(folder);
    {
        const TempfileGuard file(tree.text(u"f\xDCFF\xDCE4"), u"p");
        const TempdirGuard inner(tree.text(u"f\xDCFF\xDCE4"), u"p");
        EXPECT_EQ(tree.text(u"f\xDCFF\xDCE4/p"), file.getFileName().substr(0, tree.path().size() + 6));
        EXPECT_EQ(2U, snapshot(folder).size());
    }
    EXPECT_EQ(0, ::rmdir(folder.c_str()));
    try {
        const TempdirGuard guard(tree.text(u"f\xDCFF\xDCE4"), u"p");
        ADD_FAILURE() << "nothing was thrown";
    } catch (const opc::Exception& failure) {
        EXPECT_EQ(kNotCreated + "Path not found: ", std::string(failure.what()).substr(0, 58));
    }
}

TEST(GuardBeginnings, StandBeyondTheLengthOfOnePath) {
    test::runInChild([] {
        const TempTree tree;
        const std::string element(200, 'n');
        test::makeChain(tree.path(), element, 30);
        ustring folder = test::text(tree.path());
        ASSERT_EQ(0, ::chdir(tree.path().c_str()));
        for (int level = 0; level < 30; ++level) {
            folder += u'/' + test::text(element);
            ASSERT_EQ(0, ::chdir(element.c_str()));
        }
        {
            const TempfileGuard file(folder);
            const TempdirGuard inner(folder);
            const TempfileGuard innerFile(inner.getDirectoryName());
            EXPECT_EQ(folder, opc::detail::getParentPath(file.getFileName()));
            EXPECT_EQ(4U, snapshot(".").size());
        }
        EXPECT_EQ(1U, snapshot(".").size());
        ASSERT_EQ(0, ::chdir("/"));
    });
}

/// Makes guards where `directory` says, changes the working directory, and lets them end.
void expectRemovedFromAnywhere(const ustring& directory) {
    std::optional<TempfileGuard> file(std::in_place, directory);
    std::optional<TempdirGuard> folder(std::in_place, directory);
    const std::string names[] = {bytes(file->getFileName()), bytes(folder->getDirectoryName())};
    ASSERT_EQ(0, ::chdir("/"));
    for (const std::string& name : names) {
        EXPECT_EQ('/', name.front());
        EXPECT_TRUE(test::isThere(name));
    }
    file.reset();
    folder.reset();
    for (const std::string& name : names) {
        EXPECT_FALSE(test::isThere(name));
    }
}

TEST(GuardBeginnings, InARelativeFolderHoldAfterTheWorkingDirectoryChanged) {
    test::runInChild([] {
        const TempTree tree;
        test::makeFolder(tree / "sub");
        test::makeLink("sub", tree / "link");
        const TreeSnapshot before = snapshot(tree.path());
        for (const char16_t* const directory :
             {u"sub", u"./sub/", u"sub/..", u".", u"..", u"link", u"sub//."}) {
            ASSERT_EQ(0, ::chdir((tree / "sub").c_str()));
            ASSERT_EQ(0, ::chdir(directory == ustring(u"..") ? "." : ".."));
            expectRemovedFromAnywhere(directory);
            EXPECT_EQ(before, snapshot(tree.path()));
        }
    });
}

TEST(GuardBeginnings, WithoutATemporaryFolderStandInTheWorkingDirectoryThatWas) {
    test::runInChild([] {
        const TempTree tree;
        ASSERT_EQ(0, ::chdir(tree.path().c_str()));
        test::ScopedEnvironment relative("TMPDIR", ".");
        ScopedSystemCalls calls;
        calls->fstatat = [](int folder, const char* path, struct stat* status, int flags) {
            if (path == std::string("/tmp")) {
                errno = ENOENT;
                return -1;
            }
            return kHostCalls.fstatat(folder, path, status, flags);
        };
        for (const char* const variable : {"TMP", "TEMP", "TEMPDIR"}) {
            ::unsetenv(variable);
        }
        expectRemovedFromAnywhere(ustring());
        EXPECT_EQ(TreeSnapshot(), snapshot(tree.path()));
    });
}

TEST(GuardBeginnings, InAWorkingDirectoryThatIsGoneFailAsInAnyMissingFolder) {
    test::runInChild([] {
        const TempTree tree;
        test::makeFolder(tree / "gone");
        ASSERT_EQ(0, ::chdir((tree / "gone").c_str()));
        ASSERT_EQ(0, ::rmdir((tree / "gone").c_str()));
        try {
            const TempdirGuard guard(u"sub");
            ADD_FAILURE() << "nothing was thrown";
        } catch (const opc::Exception& failure) {
            EXPECT_EQ(0U, std::string(failure.what()).find(kNotCreated)) << failure.what();
        }
        EXPECT_THROW(TempfileGuard(u"sub"), fl::filesystem::PathNotFound);
        ASSERT_EQ(0, ::chdir("/"));
    });
}

TEST(GuardBeginnings, WithARelativeTmpdirStandInTheFolderOfTheSystem) {
    test::runInChild([] {
        const TempTree tree;
        ASSERT_EQ(0, ::chdir(tree.path().c_str()));
        for (const char* const variable : {"TMP", "TEMP", "TEMPDIR"}) {
            ::unsetenv(variable);
        }
        const test::ScopedEnvironment relative("TMPDIR", ".");
        const TempfileGuard guard;
        EXPECT_EQ(u"/tmp", opc::detail::getParentPath(guard.getFileName()));
    });
}

}  // namespace
