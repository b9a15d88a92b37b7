#include <pkgcore/portable/storage/providers/native/NativeErrors.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <stdexcept>
#include <string>

namespace foundation::storage::portable {

namespace {

namespace fs = fl::filesystem;
using vfs::ErrorCode;

struct Case {
    int error;
    ErrorCode code;
};

class NumberOfTheSystem : public testing::TestWithParam<Case> {};

TEST_P(NumberOfTheSystem, KeepsTheTextOfTheSystem) {
    try {
        asStorage(Purpose::Reading, [] { throw fs::SystemError("its text", GetParam().error, u"/a"); });
    } catch (const vfs::Exception& failure) {
        EXPECT_EQ(GetParam().code, failure.getErrorCode());
        EXPECT_STREQ("its text", failure.what());
        return;
    }
    ADD_FAILURE() << "nothing was thrown";
}

INSTANTIATE_TEST_SUITE_P(
    NativeErrors, NumberOfTheSystem,
    testing::Values(Case{EROFS, ErrorCode::ReadOnlyStorage}, Case{EFBIG, ErrorCode::FileTooLarge},
                    Case{EOVERFLOW, ErrorCode::FileTooLarge}, Case{ENOSPC, ErrorCode::NoSpace},
                    Case{EDQUOT, ErrorCode::NoSpace}, Case{EAGAIN, ErrorCode::TemporarilyBusy},
                    Case{EBUSY, ErrorCode::TemporarilyBusy}, Case{ETXTBSY, ErrorCode::TemporarilyBusy},
                    Case{EMFILE, ErrorCode::TemporarilyBusy}, Case{ENFILE, ErrorCode::TemporarilyBusy},
                    Case{ENODEV, ErrorCode::NoSuchStorage}, Case{ENXIO, ErrorCode::NoSuchStorage},
                    Case{EHOSTDOWN, ErrorCode::NoSuchStorage}, Case{EIO, ErrorCode::IOError},
                    Case{ENOMEDIUM, ErrorCode::IOError}));

/// The code that a failure of the file system becomes.
template <typename Failure>
std::optional<ErrorCode> codeOf(const Failure& failure, Purpose purpose) {
    try {
        asStorage(purpose, [&] { throw failure; });
    } catch (const vfs::Exception& translated) {
        return translated.getErrorCode();
    }
    return {};
}

TEST(NativeErrors, SaySomethingElseOfAFileInTheWayWhenSomethingIsToBeMade) {
    EXPECT_EQ(ErrorCode::NotFound, codeOf(fs::NotDirectoryError(u"/a"), Purpose::Reading));
    EXPECT_EQ(ErrorCode::AlreadyExists, codeOf(fs::NotDirectoryError(u"/a"), Purpose::Creating));
    EXPECT_EQ(ErrorCode::NotFound, codeOf(fs::FileIsDirectory(u"/a"), Purpose::Reading));
    EXPECT_EQ(ErrorCode::AlreadyExists, codeOf(fs::FileIsDirectory(u"/a"), Purpose::Creating));
}

TEST(NativeErrors, HaveACodeForEachFailureWithANameOfItsOwn) {
    EXPECT_EQ(ErrorCode::NotFound, codeOf(fs::PathNotFound(u"/a"), Purpose::Creating));
    EXPECT_EQ(ErrorCode::AlreadyExists, codeOf(fs::FileExistsError(u"/a"), Purpose::Reading));
    EXPECT_EQ(ErrorCode::FolderNotEmpty, codeOf(fs::DirectoryNotEmpty(u"/a"), Purpose::Reading));
    EXPECT_EQ(ErrorCode::AccessDenied, codeOf(fs::AccessDenied(u"/a"), Purpose::Reading));
    EXPECT_EQ(ErrorCode::NotSupported, codeOf(fs::FsysExceptionBase("text", u"/a", {}), Purpose::Reading));
}

TEST(NativeErrors, LetPassWhatIsNoFailureOfTheFileSystem) {
    EXPECT_THROW(asStorage(Purpose::Reading, [] { throw std::bad_alloc(); }), std::bad_alloc);
    EXPECT_THROW(asStorage(Purpose::Reading, [] { throw std::logic_error("text"); }), std::logic_error);
}

}  // namespace

}  // namespace foundation::storage::portable
