#include <pkgcore/platform/filesystem/Temporary.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/ScopedEnvironment.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <set>

namespace {

using namespace fl::filesystem;
using fl::filesystem::posix::kHostCalls;
using test::failedPath;
using test::ScopedEnvironment;
using test::ScopedSystemCalls;
using test::TempTree;

/// The four variables for as long as it lives; null is unset.
struct TempVariables {
    TempVariables(const char* first, const char* second, const char* third, const char* fourth)
        : tmpdir("TMPDIR", first), tmp("TMP", second), temp("TEMP", third), tempdir("TEMPDIR", fourth) {}
    ScopedEnvironment tmpdir;
    ScopedEnvironment tmp;
    ScopedEnvironment temp;
    ScopedEnvironment tempdir;
};

TEST(TempDirectoryName, IsTheFirstVariableThatNamesAFolder) {
    const TempTree tree;
    test::makeFolder(tree / "one");
    test::makeFolder(tree / "two");
    test::makeFile(tree / "file");
    test::makeLink("one", tree / "link");
    const std::string one = tree / "one";
    const std::string two = tree / "two";
    const std::string file = tree / "file";
    const std::string missing = tree / "missing";
    const std::string link = tree / "link";
    struct {
        const char* values[4];
        std::u16string expected;
    } const cases[] = {
        {{one.c_str(), two.c_str(), nullptr, nullptr}, tree.text("one")},
        {{nullptr, two.c_str(), one.c_str(), nullptr}, tree.text("two")},
        {{nullptr, nullptr, one.c_str(), two.c_str()}, tree.text("one")},
        {{nullptr, nullptr, nullptr, two.c_str()}, tree.text("two")},
        {{missing.c_str(), file.c_str(), "", two.c_str()}, tree.text("two")},
        {{link.c_str(), two.c_str(), nullptr, nullptr}, tree.text("link")},
        {{nullptr, nullptr, nullptr, nullptr}, u"/tmp"},
        {{missing.c_str(), "", file.c_str(), "/dev/null"}, u"/tmp"},
    };
    for (const auto& [values, expected] : cases) {
        const TempVariables variables(values[0], values[1], values[2], values[3]);
        EXPECT_EQ(expected, temp_directory_name());
    }
}

// What is made in a folder that goes by a relative path could not be found again from another one.
TEST(TempDirectoryName, IsNeverRelative) {
    test::runInChild([] {
        const TempTree tree;
        test::makeFolder(tree / "temp");
        test::makeFolder(tree / "other");
        ASSERT_EQ(0, ::chdir(tree.path().c_str()));
        const std::string other = tree / "other";
        for (const char* const relative : {"temp", "./temp", ".", "temp/../temp"}) {
            const TempVariables alone(relative, nullptr, nullptr, nullptr);
            EXPECT_EQ(u"/tmp", temp_directory_name()) << relative;
            const TempVariables first(relative, other.c_str(), nullptr, nullptr);
            EXPECT_EQ(tree.text("other"), temp_directory_name()) << relative;
        }
    });
}

TEST(TempDirectoryName, IsEmptyWhereNoneIsKnown) {
    const TempVariables variables(nullptr, nullptr, nullptr, nullptr);
    ScopedSystemCalls calls;
    calls->fstatat = [](int, const char*, struct stat*, int) {
        errno = ENOENT;
        return -1;
    };
    EXPECT_EQ(u"", temp_directory_name());
}

TEST(TempDirectoryName, MayHaveBytesThatAreNotUtf8) {
    const TempTree tree;
    test::makeFolder(tree / "t\xE4mp");
    const TempVariables variables((tree / "t\xE4mp").c_str(), nullptr, nullptr, nullptr);
    EXPECT_EQ(tree.text(u"t\xDCE4mp"), temp_directory_name());
}

TEST(CurrentPath, IsTheWorkingDirectory) {
    test::runInChild([] {
        const TempTree tree;
        test::makeFolder(tree / "w\xC3\xB6rk\xFF");
        ASSERT_EQ(0, ::chdir((tree / "w\xC3\xB6rk\xFF").c_str()));
        EXPECT_EQ(tree.text(u"w\u00F6rk\xDCFF"), get_current_path());
        ASSERT_EQ(0, ::chdir("/"));
        EXPECT_EQ(u"/", get_current_path());
    });
}

TEST(CurrentPath, MayHaveAnyLength) {
    test::runInChild([] {
        const TempTree tree;
        const std::string name(250, 'w');
        ASSERT_EQ(0, ::chdir(tree.path().c_str()));
        std::string path = tree.path();
        for (int level = 0; level < 40; ++level, path += '/' + name) {
            ASSERT_EQ(0, ::mkdir(name.c_str(), 0700));
            ASSERT_EQ(0, ::chdir(name.c_str()));
        }
        EXPECT_EQ(test::text(path), get_current_path());
        ASSERT_EQ(0, ::chdir("/"));
    });
}

TEST(CurrentPath, OfARemovedFolderIsAFailure) {
    test::runInChild([] {
        const TempTree tree;
        test::makeFolder(tree / "gone");
        ASSERT_EQ(0, ::chdir((tree / "gone").c_str()));
        ASSERT_EQ(0, ::rmdir((tree / "gone").c_str()));
        EXPECT_EQ(u"", failedPath<PathNotFound>(get_current_path));
    });
}

TEST(CurrentPath, OutsideTheRootIsAFailure) {
    ScopedSystemCalls calls;
    calls->getcwd = [](char* path, size_t) { return std::strcpy(path, "(unreachable)/home"); };
    EXPECT_EQ(u"", failedPath<PathNotFound>(get_current_path));
}

TEST(CurrentPath, OtherFailuresKeepTheirNumber) {
    ScopedSystemCalls calls;
    calls->getcwd = [](char*, size_t) -> char* {
        errno = ENOMEM;
        return nullptr;
    };
    EXPECT_EQ(ENOMEM, test::failedNumber(get_current_path));
}

bool isRandomName(const std::u16string& name) {
    return name.size() == 20 && std::all_of(name.begin(), name.end(), [](char16_t unit) {
               return (unit >= u'a' && unit <= u'z') || (unit >= u'0' && unit <= u'9');
           });
}

TEST(Tmpnam, IsFolderPrefixRandomCharactersExtension) {
    const std::u16string name = tmpnam(u"/some/folder", u"pre", u".ext");
    EXPECT_EQ(u"/some/folder/pre", name.substr(0, 16));
    EXPECT_TRUE(isRandomName(name.substr(16, 20))) << testing::PrintToString(name);
    EXPECT_EQ(u".ext", name.substr(36));
}

TEST(Tmpnam, JoinsWithOneSeparator) {
    EXPECT_EQ(u"folder/.", tmpnam(u"folder/", u".", u"").substr(0, 8));
    EXPECT_EQ(u"/.", tmpnam(u"/", u".", u"").substr(0, 2));
    EXPECT_EQ(21U, tmpnam(u"", u".", u"").size());
}

TEST(Tmpnam, TheDiskIsNotLookedAt) { EXPECT_NE(u"", tmpnam(u"/no/such/folder", u"a", u"b")); }

TEST(Tmpnam, NoTwoAreTheSame) {
    std::set<std::u16string> names;
    for (int i = 0; i < 10'000; ++i) names.insert(tmpnam(u"d", u"", u""));
    EXPECT_EQ(10'000U, names.size());
}

unsigned char scriptedByte = 0;
int randomCalls = 0;

TEST(Tmpnam, EveryCharacterIsAsLikelyAsAnyOther) {
    ScopedSystemCalls calls;
    calls->getrandom = [](void* bytes, size_t count, unsigned) {
        std::memset(bytes, randomCalls++ == 0 ? scriptedByte : 0, count);
        return static_cast<ssize_t>(count);
    };
    std::map<std::u16string, int> names;
    int thrownAway = 0;
    for (unsigned byte = 0; byte <= 0xFF; ++byte) {
        scriptedByte = static_cast<unsigned char>(byte);
        randomCalls = 0;
        ++names[tmpnam(u"", u"", u"")];
        thrownAway += randomCalls - 1;
    }
    EXPECT_EQ(36U, names.size());
    EXPECT_EQ(4, thrownAway);  // 256 is 7 times 36 and 4
    EXPECT_EQ(7 + 4, names[std::u16string(20, u'a')]);
    names.erase(std::u16string(20, u'a'));
    for (const auto& [name, count] : names) EXPECT_EQ(7, count) << testing::PrintToString(name);
}

TEST(Tmpnam, GoesOnAfterSignalsAndShortAnswers) {
    ScopedSystemCalls calls;
    calls->getrandom = [](void* bytes, size_t count, unsigned) -> ssize_t {
        if (randomCalls++ % 2 == 0) {
            errno = EINTR;
            return -1;
        }
        std::memset(bytes, 1, std::min<size_t>(count, 3));
        return 3;
    };
    randomCalls = 0;
    EXPECT_EQ(std::u16string(20, u'b'), tmpnam(u"", u"", u""));
}

TEST(Tmpnam, FailingRandomSourceIsAFailure) {
    ScopedSystemCalls calls;
    calls->getrandom = [](void*, size_t, unsigned) -> ssize_t {
        errno = EIO;
        return -1;
    };
    EXPECT_EQ(EIO, test::failedNumber([] { tmpnam(u"d", u"p", u"e"); }));
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

TEST(Tmpfile, IsANewFileForItsOwnerAlone) {
    test::runInChild([] {
        const TempTree tree;
        ::umask(0);
        std::u16string name = u"overwritten";
        const File file(tmpfile(name, test::text(tree.path()), u"pre", u".ext"));
        ASSERT_NE(nullptr, file);
        EXPECT_EQ(tree.text("pre"), name.substr(0, tree.path().size() + 4));
        EXPECT_TRUE(isRandomName(name.substr(tree.path().size() + 4, 20)));
        const std::string path(name.begin(), name.end());
        EXPECT_EQ(0600U, test::modeOf(path));
        EXPECT_EQ(FD_CLOEXEC, ::fcntl(::fileno(file.get()), F_GETFD));
    });
}

TEST(Tmpfile, IsOfItsOwnerWhateverTheMaskTakes) {
    test::runInChild([] {
        const TempTree tree;
        for (const mode_t mask : {0200U, 0400U, 0777U}) {
            ::umask(mask);
            std::u16string name;
            const File file(tmpfile(name, test::text(tree.path()), u"p", u""));
            ASSERT_NE(nullptr, file);
            EXPECT_EQ(0600U, test::modeOf(std::string(name.begin(), name.end()))) << std::oct << mask;
        }
    });
}

TEST(Tmpfile, IsMadeWherePermissionsCannotBeSet) {
    const TempTree tree;
    ScopedSystemCalls calls;
    calls->fchmod = [](int, mode_t) {
        errno = EPERM;
        return -1;
    };
    std::u16string name;
    EXPECT_NE(nullptr, File(tmpfile(name, test::text(tree.path()), u"p", u"")));
}

TEST(Tmpfile, IsOfItsOwnerBeforePermissionsAreSet) {
    test::runInChild([] {
        const TempTree tree;
        ::umask(0);
        ScopedSystemCalls calls;
        calls->fchmod = [](int, mode_t) {
            errno = EPERM;
            return -1;
        };
        std::u16string name;
        const File file(tmpfile(name, test::text(tree.path()), u"p", u""));
        ASSERT_NE(nullptr, file);
        EXPECT_EQ(0600U, test::modeOf(std::string(name.begin(), name.end())));
    });
}

TEST(Tmpfile, CanBeWrittenAndRead) {
    const TempTree tree;
    std::u16string name;
    const File file(tmpfile(name, test::text(tree.path()), u".", u".tmp"));
    ASSERT_NE(nullptr, file);
    std::fputs("text", file.get());
    std::rewind(file.get());
    char read[8] = {};
    EXPECT_STREQ("text", std::fgets(read, sizeof read, file.get()));
}

/// A random source that says `first` for a number of names and then something new for each.
class ScriptedNames {
public:
    explicit ScriptedNames(int repetitions) {
        left = repetitions;
        next = 0;
        calls_->getrandom = [](void* bytes, size_t count, unsigned) {
            std::memset(bytes, left-- > 0 ? 0 : ++next, count);
            return static_cast<ssize_t>(count);
        };
    }
    ScopedSystemCalls& calls() { return calls_; }

private:
    static int left;
    static int next;
    ScopedSystemCalls calls_;
};

int ScriptedNames::left;
int ScriptedNames::next;

TEST(Tmpfile, NeverTakesAFileThatIsThere) {
    const TempTree tree;
    test::makeFile(tree / std::string(20, 'a'), "kept");
    test::makeLink("nowhere", tree / std::string(20, 'b'));
    test::makeFolder(tree / std::string(20, 'c'));
    const ScriptedNames names(5);
    std::u16string name;
    const File file(tmpfile(name, test::text(tree.path()), u"", u""));
    ASSERT_NE(nullptr, file);
    EXPECT_EQ(tree.text(std::string(20, 'd')), name);
    EXPECT_EQ("kept", test::contentOf(tree / std::string(20, 'a')));
    EXPECT_FALSE(test::isThere(tree / "nowhere"));
}

TEST(Tmpfile, EndsWhereEveryNameIsTaken) {
    const TempTree tree;
    test::makeFile(tree / std::string(20, 'a'));
    const ScriptedNames names(1'000'000);
    std::u16string name = u"unchanged";
    EXPECT_EQ(test::text(tree.path()),
              failedPath<FileExistsError>([&] { tmpfile(name, test::text(tree.path()), u"", u""); }));
    EXPECT_EQ(u"unchanged", name);
}

TEST(Tmpfile, LeavesNothingWhereNoStreamCanBeHad) {
    const test::NoDescriptorLeft noneLeft;
    const TempTree tree;
    ScriptedNames names(1);
    names.calls()->fdopen = [](int, const char*) -> std::FILE* {
        errno = ENOMEM;
        return nullptr;
    };
    std::u16string name = u"unchanged";
    EXPECT_EQ(nullptr, tmpfile(name, test::text(tree.path()), u"", u""));
    EXPECT_EQ(u"unchanged", name);
    EXPECT_FALSE(test::isThere(tree / std::string(20, 'a')));
}

TEST(Tmpfile, LeavesNothingWhereSignalsInterruptTheRemoval) {
    const TempTree tree;
    ScriptedNames names(1);
    static int removals;
    removals = 0;
    names.calls()->fdopen = [](int, const char*) -> std::FILE* { return nullptr; };
    names.calls()->unlinkat = [](int folder, const char* path, int flags) {
        if (removals++ < 3) {
            errno = EINTR;
            return -1;
        }
        return kHostCalls.unlinkat(folder, path, flags);
    };
    std::u16string name;
    EXPECT_EQ(nullptr, tmpfile(name, test::text(tree.path()), u"", u""));
    EXPECT_EQ(4, removals);
    EXPECT_FALSE(test::isThere(tree / std::string(20, 'a')));
}

TEST(Tmpfile, FailuresOfTheFolderAreExceptions) {
    const TempTree tree;
    test::makeFile(tree / "file");
    std::u16string name = u"unchanged";
    EXPECT_THROW(tmpfile(name, tree.text("missing"), u"", u""), PathNotFound);
    EXPECT_THROW(tmpfile(name, tree.text("file"), u"", u""), NotDirectoryError);
    EXPECT_THROW(tmpfile(name, test::text(tree.path()), std::u16string(240, u'p'), u""), FileNameTooLarge);
    EXPECT_THROW(tmpfile(name, test::text(tree.path()), std::u16string(1, u'\0'), u""),
                 FileNameConversionFailure);
    EXPECT_THROW(tmpfile(name, test::text(tree.path()), u"\xD800", u""), FileNameConversionFailure);
    EXPECT_EQ(u"unchanged", name);
}

TEST(Tmpfile, StaysRelativeWhereTheFolderWas) {
    test::runInChild([] {
        const TempTree tree;
        test::makeFolder(tree / "folder");
        ASSERT_EQ(0, ::chdir(tree.path().c_str()));
        std::u16string name;
        const File file(tmpfile(name, u"folder", u"p", u""));
        ASSERT_NE(nullptr, file);
        EXPECT_EQ(u"folder/p", name.substr(0, 8));
        EXPECT_TRUE(test::isThere(std::string(name.begin(), name.end())));
    });
}

}  // namespace
