// How the virtual back end turns what the platform throws into a message and a code: by type, the first match
// wins.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/platform/i18n/CvtException.hpp>

#include "tests/contract/VirtualContract.hpp"

#include <new>
#include <stdexcept>

using contract::VirtualContract;
using namespace foundation::storage::vfs;
namespace errc = boost::system::errc;

namespace {

class VirtualTranslation : public VirtualContract {
protected:
    template <typename Failure>
    void fail(Failure failure) {
        msg = kOldMessage;
        ec = kOldCode;
        storage.createFolder.forget();
        storage.createFolder.throws(failure);
        ops.doCreateFolder(u"a", msg, ec);
    }

    static AbsoluteIRI at(const std::u16string& text) { return AbsoluteIRI(CheckedIRI{text}); }
};

/// Not even derived from std::exception.
struct Odd {};

TEST_F(VirtualTranslation, InvalidIRI) {
    fail(InvalidIRIException("words of the library", u"a b"));
    expectReported(errc::bad_address, "words of the library: user(a b)");
}

TEST_F(VirtualTranslation, InvalidIRIThatIsEmptyKeepsItsColon) {
    fail(InvalidIRIException("words", u""));
    expectReported(errc::bad_address, "words: user()");
}

TEST_F(VirtualTranslation, UnsupportedScheme) {
    fail(UnsupportedIRISchemeException("words of the library", u"gopher"));
    expectReported(errc::address_family_not_supported, "words of the library: user(gopher)");
}

TEST_F(VirtualTranslation, EveryCodeOfTheStorage) {
    const errc::errc_t expected[] = {errc::directory_not_empty,
                                     errc::no_such_device_or_address,
                                     errc::permission_denied,
                                     errc::file_exists,
                                     errc::no_such_file_or_directory,
                                     errc::read_only_file_system,
                                     errc::file_too_large,
                                     errc::resource_unavailable_try_again,
                                     errc::no_space_on_device,
                                     errc::io_error,
                                     errc::state_not_recoverable,
                                     errc::operation_not_supported};
    for (unsigned code = 0; code < 12; ++code) {
        SCOPED_TRACE(code);
        fail(Exception(static_cast<ErrorCode>(code), "words", at(u"p")));
        expectReported(expected[code], "words: user(p)");
    }
}

TEST_F(VirtualTranslation, TheNamesOfTheCodesHaveTheirValues) {
    const ErrorCode named[] = {
        ErrorCode::FolderNotEmpty, ErrorCode::NoSuchStorage,   ErrorCode::AccessDenied,
        ErrorCode::AlreadyExists,  ErrorCode::NotFound,        ErrorCode::ReadOnlyStorage,
        ErrorCode::FileTooLarge,   ErrorCode::TemporarilyBusy, ErrorCode::NoSpace,
        ErrorCode::IOError,        ErrorCode::NotRecoverable,  ErrorCode::NotSupported};
    unsigned value = 0;
    for (const ErrorCode code : named) {
        EXPECT_EQ(static_cast<unsigned>(code), value++);
    }
    EXPECT_EQ(value, 12u);
}

TEST_F(VirtualTranslation, ACodeOfTwelveOrMoreGivesWordsAndLeavesTheCodeAlone) {
    for (const unsigned code : {12u, 13u, 255u, 4096u, ~0u}) {
        SCOPED_TRACE(code);
        fail(Exception(static_cast<ErrorCode>(code), "words", at(u"p")));
        EXPECT_EQ(msg, "words: user(p)");
        EXPECT_EQ(ec, kOldCode);
    }
}

TEST_F(VirtualTranslation, ACodeOfTwelveOrMoreIsNoFailureForTheClient) {
    storage.createFolder.throws(Exception(static_cast<ErrorCode>(12), "words", at(u"p")));
    opc::FileSystemOps& client = ops;
    EXPECT_NO_THROW(client.createFolder(u"a"));
    client.createFolder(u"a", ec);
    EXPECT_EQ(ec, Code());
    EXPECT_FALSE(ec.failed());
}

TEST_F(VirtualTranslation, AStorageFailureWithoutAPlaceHasNoColon) {
    fail(Exception(ErrorCode::IOError, "words", AbsoluteIRI()));
    expectReported(errc::io_error, "words");
    fail(Exception(static_cast<ErrorCode>(12), "words"));
    EXPECT_EQ(msg, "words");
}

TEST_F(VirtualTranslation, AStorageFailureWithoutWordsKeepsItsPlace) {
    fail(Exception(ErrorCode::NoSpace, "", at(u"p")));
    expectReported(errc::no_space_on_device, ": user(p)");
}

TEST_F(VirtualTranslation, AnyRuntimeErrorKeepsItsWords) {
    fail(std::runtime_error("words of somebody else"));
    expectReported(errc::io_error, "words of somebody else");
    fail(foundation::core::except::Exception("words of the base"));
    expectReported(errc::io_error, "words of the base");
    fail(opc::Exception("words of the library", Code(5, boost::system::system_category())));
    expectReported(errc::io_error, "words of the library");
    fail(std::range_error(""));
    expectReported(errc::io_error, "");
}

TEST_F(VirtualTranslation, AnythingElseIsUnknown) {
    fail(std::logic_error("unused words"));
    expectReported(errc::io_error, "Unknown error");
    fail(std::out_of_range("unused words"));
    expectReported(errc::io_error, "Unknown error");
    fail(std::bad_alloc());
    expectReported(errc::io_error, "Unknown error");
    fail(Odd());
    expectReported(errc::io_error, "Unknown error");
    fail(7);
    expectReported(errc::io_error, "Unknown error");
}

template <typename Base>
class Derived : public Base {
public:
    using Base::Base;
};

TEST_F(VirtualTranslation, AKindDerivedFromANamedOneCountsAsThat) {
    fail(Derived<InvalidIRIException>("words", u"p"));
    expectReported(errc::bad_address, "words: user(p)");
    fail(Derived<UnsupportedIRISchemeException>("words", u"p"));
    expectReported(errc::address_family_not_supported, "words: user(p)");
    fail(Derived<Exception>(ErrorCode::NoSpace, "words", at(u"p")));
    expectReported(errc::no_space_on_device, "words: user(p)");
}

/// The bases have a name in common.
using StorageFailure = Exception;

/// Of two kinds, each listed behind the one that comes later in the order, so that only that order decides.
class InvalidAndUnsupported : public UnsupportedIRISchemeException, public InvalidIRIException {
public:
    InvalidAndUnsupported()
        : UnsupportedIRISchemeException("second", u"q"), InvalidIRIException("first", u"p") {}
};

class UnsupportedAndFailure : public StorageFailure, public UnsupportedIRISchemeException {
public:
    UnsupportedAndFailure()
        : StorageFailure(ErrorCode::NoSpace, "second"), UnsupportedIRISchemeException("first", u"p") {}
};

class InvalidAndFailure : public StorageFailure, public InvalidIRIException {
public:
    InvalidAndFailure() : StorageFailure(ErrorCode::NoSpace, "second"), InvalidIRIException("first", u"p") {}
};

class FailureAndRuntimeError : public std::range_error, public StorageFailure {
public:
    FailureAndRuntimeError() : std::range_error("second"), StorageFailure(ErrorCode::NoSpace, "first") {}
};

TEST_F(VirtualTranslation, OfTwoKindsTheFirstInTheOrderWins) {
    fail(InvalidAndUnsupported());
    expectReported(errc::bad_address, "first: user(p)");
    fail(InvalidAndFailure());
    expectReported(errc::bad_address, "first: user(p)");
    fail(UnsupportedAndFailure());
    expectReported(errc::address_family_not_supported, "first: user(p)");
    fail(FailureAndRuntimeError());
    expectReported(errc::no_space_on_device, "first");
}

TEST_F(VirtualTranslation, TheMessageIsReplacedAndNotAppendedTo) {
    fail(Exception(ErrorCode::IOError, "words", at(u"p")));
    const std::string once = msg;
    ops.doCreateFolder(u"a", msg, ec);
    EXPECT_EQ(msg, once);
}

TEST_F(VirtualTranslation, APlaceThatTheUsersEncodingCannotSpellIsSpeltLeniently) {
    platform.to_string.throws(fl::i18n::CvtUnmappableCharacter("no such character"));
    fail(Exception(ErrorCode::NoSpace, "words", at(u"p")));
    expectReported(errc::no_space_on_device, "words: lenient(p)");
    fail(InvalidIRIException("words", u"q"));
    expectReported(errc::bad_address, "words: lenient(q)");
}

TEST_F(VirtualTranslation, KeepsTheCodeWhenThereIsNoMemoryToDescribe) {
    platform.to_string.throws(std::bad_alloc());
    EXPECT_NO_THROW(fail(Exception(ErrorCode::NoSpace, "words", at(u"p"))));
    EXPECT_EQ(ec, errc::make_error_code(errc::no_space_on_device));
    EXPECT_EQ(msg, "");
    fail(InvalidIRIException("words", u"p"));
    EXPECT_EQ(ec, errc::make_error_code(errc::bad_address));
    fail(UnsupportedIRISchemeException("words", u"p"));
    EXPECT_EQ(ec, errc::make_error_code(errc::address_family_not_supported));
}

TEST_F(VirtualTranslation, ReachesTheClientWithThePrefixOfTheOperation) {
    storage.createFolder.throws(Exception(ErrorCode::AlreadyExists, "words", at(u"p")));
    try {
        static_cast<opc::FileSystemOps&>(ops).createFolder(u"a");
        FAIL() << "nothing was thrown";
    } catch (const opc::Exception& failure) {
        EXPECT_STREQ(failure.what(), "createFolder failed: words: user(p)");
        EXPECT_EQ(failure.code(), errc::make_error_code(errc::file_exists));
    }
}

}  // namespace
