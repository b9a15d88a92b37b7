// testing.md: a scripted platform. With one, the table of codes in errors.md is compared with what the local
// back end says of each exception of the platform.

#include <pkgcore/pkgcore.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include "tests/docs/Documents.hpp"
#include "tests/support/scripted_platform/Platform.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace fl::filesystem;

TEST(Scripts, SayWhatThePlatformAnswers) {
#include "testing/scripted.inc"
    opc::LocalFileSystemOps files;
    EXPECT_TRUE(files.isFolder(u"a"));
    boost::system::error_code ec;
    files.remove(u"b", ec);
    EXPECT_EQ(ec, boost::system::errc::permission_denied);
    EXPECT_EQ(platform.callsTo({"remove"}).size(), 1U);
}

/// The code and the text with which the local back end reports what the platform throws.
template <typename Failure>
void expectRow(const std::string& text, boost::system::errc::errc_t code, const std::string& codeName) {
    scripted::Platform platform;
    platform.remove.throws(Failure(u""));
    opc::LocalFileSystemOps files;
    boost::system::error_code ec;
    files.remove(u"b", ec);
    EXPECT_EQ(ec, code) << codeName;
    const std::string row = documents::rowOf(text, "`" + codeName + "`");
    const std::string cell = std::string(Failure(u"").what()) + " (E";  // an error number stands behind it
    EXPECT_NE(row.find(cell), std::string::npos) << cell << " is not in " << row;
}

TEST(ErrorsTable, HasEveryFailureOfTheHost) {
    namespace errc = boost::system::errc;
    const std::string text = documents::textOf("errors.md");
    expectRow<AccessDenied>(text, errc::permission_denied, "permission_denied");
    expectRow<PathNotFound>(text, errc::no_such_file_or_directory, "no_such_file_or_directory");
    expectRow<FileExistsError>(text, errc::file_exists, "file_exists");
    expectRow<FileNameTooLarge>(text, errc::filename_too_long, "filename_too_long");
    expectRow<NotDirectoryError>(text, errc::not_a_directory, "not_a_directory");
    expectRow<DirectoryNotEmpty>(text, errc::directory_not_empty, "directory_not_empty");
    expectRow<FileIsDirectory>(text, errc::is_a_directory, "is_a_directory");
    expectRow<InvalidOperation>(text, errc::operation_not_supported, "operation_not_supported");
    expectRow<InvalidArgument>(text, errc::invalid_argument, "invalid_argument");
    expectRow<FileNameConversionFailure>(text, errc::invalid_argument, "invalid_argument");
}

}  // namespace
