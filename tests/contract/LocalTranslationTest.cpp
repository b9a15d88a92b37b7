// How the local back end turns what the platform throws into a message and a code: by type, the first match
// wins.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/i18n/CvtException.hpp>

#include "tests/contract/LocalContract.hpp"

#include <boost/filesystem/exception.hpp>

#include <new>

using contract::LocalContract;
using namespace fl::filesystem;
namespace errc = boost::system::errc;

namespace {

class LocalTranslation : public LocalContract {
protected:
    template <typename Failure>
    void fail(Failure failure) {
        msg = kOldMessage;
        ec = kOldCode;
        platform.remove.forget();
        platform.remove.throws(failure);
        ops.doRemove(u"a", msg, ec);
    }

    template <typename Failure>
    void expectTranslation(errc::errc_t code) {
        fail(Failure("words of the library", u"p", {u"q"}));
        expectReported(code, "words of the library: user(p)");
        fail(Failure("words of the library", u"", {u"q"}));
        expectReported(code, "words of the library");
    }

    /// Of an exception that is of two kinds, the one that comes first in the order counts.
    template <typename First, typename Second>
    void expectFirstWins(errc::errc_t code);
};

/// A kind that the library may add one day.
class NewKind : public FsysExceptionBase {
public:
    using FsysExceptionBase::FsysExceptionBase;
};

/// Not even derived from std::exception.
struct Odd {};

TEST_F(LocalTranslation, AccessDenied) { expectTranslation<AccessDenied>(errc::permission_denied); }
TEST_F(LocalTranslation, PathNotFound) { expectTranslation<PathNotFound>(errc::no_such_file_or_directory); }
TEST_F(LocalTranslation, FileExistsError) { expectTranslation<FileExistsError>(errc::file_exists); }
TEST_F(LocalTranslation, FileNameTooLarge) { expectTranslation<FileNameTooLarge>(errc::filename_too_long); }
TEST_F(LocalTranslation, NotDirectoryError) { expectTranslation<NotDirectoryError>(errc::not_a_directory); }
TEST_F(LocalTranslation, DirectoryNotEmpty) {
    expectTranslation<DirectoryNotEmpty>(errc::directory_not_empty);
}
TEST_F(LocalTranslation, FileIsDirectory) { expectTranslation<FileIsDirectory>(errc::is_a_directory); }
TEST_F(LocalTranslation, InvalidOperation) {
    expectTranslation<InvalidOperation>(errc::operation_not_supported);
}
TEST_F(LocalTranslation, InvalidArgument) { expectTranslation<InvalidArgument>(errc::invalid_argument); }
TEST_F(LocalTranslation, FileNameConversionFailure) {
    expectTranslation<FileNameConversionFailure>(errc::invalid_argument);
}
TEST_F(LocalTranslation, AnyOtherKindOfTheLibrary) {
    expectTranslation<FsysExceptionBase>(errc::io_error);
    expectTranslation<NewKind>(errc::io_error);
}

TEST_F(LocalTranslation, SystemErrorKeepsTheNumberOfTheHost) {
    fail(SystemError("words", 28, u"p"));
    EXPECT_EQ(ec, Code(28, boost::system::system_category()));
    EXPECT_TRUE(ec.failed());
    EXPECT_EQ(msg, "words: user(p)");
}

TEST_F(LocalTranslation, SystemErrorWithoutANumberIsNoFailureThoughItHasWords) {
    fail(SystemError("words", 0, u""));
    EXPECT_EQ(ec, Code(0, boost::system::system_category()));
    EXPECT_FALSE(ec.failed());
    EXPECT_EQ(msg, "words");
}

TEST_F(LocalTranslation, SystemErrorWithANegativeNumber) {
    fail(SystemError("words", -1, u""));
    EXPECT_EQ(ec, Code(-1, boost::system::system_category()));
}

template <typename Base>
class Derived : public Base {
public:
    using Base::Base;
};

TEST_F(LocalTranslation, AKindDerivedFromANamedOneCountsAsThat) {
    fail(Derived<AccessDenied>("words", u"p", {}));
    expectReported(errc::permission_denied, "words: user(p)");
    fail(Derived<FileNameConversionFailure>("words", u"p", {}));
    expectReported(errc::invalid_argument, "words: user(p)");
    fail(Derived<SystemError>("words", 5, u""));
    EXPECT_EQ(ec, Code(5, boost::system::system_category()));
}

/// Listed the wrong way round, so that only the order of the handlers decides.
template <typename First, typename Second>
class OfBothKinds : public Second, public First {
public:
    OfBothKinds() : Second("second", u"", {}), First("first", u"", {}) {}
};

template <typename First, typename Second>
void LocalTranslation::expectFirstWins(errc::errc_t code) {
    fail(OfBothKinds<First, Second>());
    expectReported(code, "first");
}

TEST_F(LocalTranslation, TakesTheFirstOfTwoKindsInTheOrderOfTheTable) {
    expectFirstWins<AccessDenied, PathNotFound>(errc::permission_denied);
    expectFirstWins<PathNotFound, FileExistsError>(errc::no_such_file_or_directory);
    expectFirstWins<FileExistsError, FileNameTooLarge>(errc::file_exists);
    expectFirstWins<FileNameTooLarge, NotDirectoryError>(errc::filename_too_long);
    expectFirstWins<NotDirectoryError, DirectoryNotEmpty>(errc::not_a_directory);
    expectFirstWins<DirectoryNotEmpty, FileIsDirectory>(errc::directory_not_empty);
    expectFirstWins<FileIsDirectory, InvalidOperation>(errc::is_a_directory);
    expectFirstWins<InvalidOperation, InvalidArgument>(errc::operation_not_supported);
    expectFirstWins<InvalidArgument, FileNameConversionFailure>(errc::invalid_argument);
}

class ConversionAndSystem : public SystemError, public FileNameConversionFailure {
public:
    ConversionAndSystem() : SystemError("second", 5, u""), FileNameConversionFailure("first", u"", {}) {}
};

class FsysAndBoost : public boost::filesystem::filesystem_error, public FsysExceptionBase {
public:
    FsysAndBoost()
        : filesystem_error("second", boost::system::error_code()), FsysExceptionBase("first", u"", {}) {}
};

TEST_F(LocalTranslation, TakesTheFirstOfTwoKindsAtTheEndOfTheTable) {
    fail(ConversionAndSystem());
    expectReported(errc::invalid_argument, "first");
    fail(FsysAndBoost());
    expectReported(errc::io_error, "first");
}

TEST_F(LocalTranslation, AFailureOfBoostKeepsItsWordsAndItsCode) {
    const Code code(17, boost::system::system_category());
    const boost::filesystem::filesystem_error failure("words", "p", "q", code);
    fail(failure);
    EXPECT_EQ(msg, failure.what());
    EXPECT_EQ(ec, code);
}

TEST_F(LocalTranslation, AFailureOfBoostWithACodeThatIsNoFailureStaysSo) {
    const boost::filesystem::filesystem_error failure("words", Code());
    fail(failure);
    EXPECT_EQ(msg, failure.what());
    EXPECT_FALSE(ec.failed());
    EXPECT_EQ(ec, Code());
}

TEST_F(LocalTranslation, AnythingElseIsUnknown) {
    fail(std::runtime_error("words"));
    expectReported(errc::io_error, "Unknown error");
    fail(std::bad_alloc());
    expectReported(errc::io_error, "Unknown error");
    fail(fl::i18n::CvtInvalidSequence("words"));
    expectReported(errc::io_error, "Unknown error");
    fail(opc::Exception("words", errc::make_error_code(errc::file_exists)));
    expectReported(errc::io_error, "Unknown error");
    fail(7);
    expectReported(errc::io_error, "Unknown error");
    fail(Odd());
    expectReported(errc::io_error, "Unknown error");
}

TEST_F(LocalTranslation, DescribesAPathInTheUsersEncoding) {
    fail(AccessDenied("words", u"p", {}));
    EXPECT_EQ(platform.calls(), (Calls{"remove('a')", "initialize()", "to_string('p')"}));
}

TEST_F(LocalTranslation, DescribesAPathThatTheUsersEncodingCannotSpellWithSubstitutes) {
    platform.to_string.throws(fl::i18n::CvtUnmappableCharacter("no such character"));
    fail(AccessDenied("words", u"p", {}));
    expectReported(errc::permission_denied, "words: lenient(p)");
}

TEST_F(LocalTranslation, ReportsTheCodeAlsoWhereDescribingFails) {
    platform.to_string.throws(std::bad_alloc());
    EXPECT_NO_THROW(fail(AccessDenied("words", u"p", {})));
    EXPECT_EQ(ec, errc::make_error_code(errc::permission_denied));
    EXPECT_EQ(msg, "");
    platform.to_string.forget();
    platform.to_string.throws(7);
    EXPECT_NO_THROW(fail(PathNotFound("words", u"p", {})));
    EXPECT_EQ(ec, errc::make_error_code(errc::no_such_file_or_directory));
}

TEST_F(LocalTranslation, ReachesTheClientWithThePrefixOfTheOperation) {
    platform.remove.throws(AccessDenied(u"p"));
    try {
        static_cast<opc::FileSystemOps&>(ops).remove(u"a");
        FAIL() << "nothing was thrown";
    } catch (const opc::Exception& failure) {
        EXPECT_STREQ(failure.what(), "remove failed: Access denied: user(p)");
        EXPECT_EQ(failure.code(), errc::make_error_code(errc::permission_denied));
    }
}

}  // namespace
