#include <pkgcore/portable/filesystem/Errors.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include "tests/support/RunInChild.hpp"
#include "tests/support/ScopedEnvironment.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"

#include <cerrno>
#include <clocale>
#include <system_error>
#include <vector>

namespace {

using namespace fl::filesystem;

const std::u16string kPath = u"/a/p\u00E4th";

struct Meaning {
    int error;
    std::u16string (*pathOf)(int error);
    const char* text;
};

template <typename Failure>
std::u16string pathOf(int error) {
    return test::failedPath<Failure>([&] { posix::throwError(error, kPath); });
}

const Meaning kMeanings[] = {
    {EACCES, pathOf<AccessDenied>, "Access denied"},
    {EPERM, pathOf<AccessDenied>, "Access denied"},
    {ENOENT, pathOf<PathNotFound>, "Path not found"},
    {EEXIST, pathOf<FileExistsError>, "File exists"},
    {ENAMETOOLONG, pathOf<FileNameTooLarge>, "File name too long"},
    {ENOTDIR, pathOf<NotDirectoryError>, "Not a directory"},
    {ENOTEMPTY, pathOf<DirectoryNotEmpty>, "Directory not empty"},
    {EISDIR, pathOf<FileIsDirectory>, "File is a directory"},
    {ENOTSUP, pathOf<InvalidOperation>, "Invalid operation"},
    {EOPNOTSUPP, pathOf<InvalidOperation>, "Invalid operation"},
    {ENOSYS, pathOf<InvalidOperation>, "Invalid operation"},
    {EINVAL, pathOf<InvalidArgument>, "Invalid argument"},
    {ELOOP, pathOf<InvalidArgument>, "Invalid argument"},
    {EILSEQ, pathOf<FileNameConversionFailure>, "File name cannot be converted"},
};

std::string textOf(int error) {
    try {
        posix::throwError(error, kPath);
    } catch (const FsysExceptionBase& failure) {
        return failure.what();
    }
}

TEST(Errors, EachNumberIsOneException) {
    for (const Meaning& meaning : kMeanings) {
        EXPECT_EQ(kPath, meaning.pathOf(meaning.error)) << meaning.error;
        EXPECT_EQ(meaning.text, textOf(meaning.error));
    }
}

TEST(Errors, AnyOtherKeepsItsNumberAndText) {
    for (const int error : {EIO, ENOSPC, EDQUOT, EMFILE, EXDEV, EBUSY, EROFS, 4711}) {
        EXPECT_EQ(error, test::failedNumber([&] { posix::throwError(error, kPath); }));
        EXPECT_EQ(kPath, pathOf<SystemError>(error));
        EXPECT_EQ(std::system_category().message(error), textOf(error));
    }
}

TEST(Errors, TextsAreEnglishInEveryLocale) {
    test::runInChild([] {
        const test::ScopedEnvironment german("LANGUAGE", "de");
        ASSERT_NE(nullptr, std::setlocale(LC_ALL, "C.UTF-8"));
        EXPECT_EQ("No space left on device", textOf(ENOSPC));
        EXPECT_EQ("Input/output error", textOf(EIO));
        EXPECT_EQ("Unknown error 4711", textOf(4711));
    });
}

TEST(Errors, NameThePathConcernedAndTheOthersThatTookPart) {
    const FsysExceptionBase failure("text", u"/from", {u"/to"});
    EXPECT_EQ(u"/from", failure.get_path_name());
    EXPECT_EQ(std::vector<std::u16string>{u"/to"}, failure.get_further_paths());
    EXPECT_TRUE(AccessDenied(u"/from").get_further_paths().empty());
}

TEST(Errors, EntryOfAnEndedListingIsAnInvalidOperationWithoutPath) {
    EXPECT_EQ(u"", test::failedPath<InvalidOperation>(detail::throw_invalid_operation_exception));
}

}  // namespace
