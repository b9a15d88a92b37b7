#include <pkgcore/filesystem/FsysExceptionTranslator.hpp>

#include <pkgcore/core/FailureText.hpp>
#include <pkgcore/filesystem/Translated.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include <boost/filesystem/exception.hpp>

namespace opc::detail {

using boost::system::error_code;
namespace errc = boost::system::errc;

namespace {

/// The code is assigned first, so that a failure to describe leaves the caller with the right code.
void report(const fl::filesystem::FsysExceptionBase& failure, error_code code, std::string& msg,
            error_code& ec) {
    ec = code;
    msg = describeFailure(failure);
}

void report(const fl::filesystem::FsysExceptionBase& failure, errc::errc_t code, std::string& msg,
            error_code& ec) {
    report(failure, errc::make_error_code(code), msg, ec);
}

}  // namespace

// One handler per type, the first match wins: the order is part of the contract.
void translateFsysException(std::string& msg, error_code& ec) {
    using namespace fl::filesystem;
    try {
        throw;
    } catch (const AccessDenied& failure) {
        report(failure, errc::permission_denied, msg, ec);
    } catch (const PathNotFound& failure) {
        report(failure, errc::no_such_file_or_directory, msg, ec);
    } catch (const FileExistsError& failure) {
        report(failure, errc::file_exists, msg, ec);
    } catch (const FileNameTooLarge& failure) {
        report(failure, errc::filename_too_long, msg, ec);
    } catch (const NotDirectoryError& failure) {
        report(failure, errc::not_a_directory, msg, ec);
    } catch (const DirectoryNotEmpty& failure) {
        report(failure, errc::directory_not_empty, msg, ec);
    } catch (const FileIsDirectory& failure) {
        report(failure, errc::is_a_directory, msg, ec);
    } catch (const InvalidOperation& failure) {
        report(failure, errc::operation_not_supported, msg, ec);
    } catch (const InvalidArgument& failure) {
        report(failure, errc::invalid_argument, msg, ec);
    } catch (const FileNameConversionFailure& failure) {
        report(failure, errc::invalid_argument, msg, ec);
    } catch (const SystemError& failure) {
        report(failure, error_code(failure.get_error_code(), boost::system::system_category()), msg, ec);
    } catch (const FsysExceptionBase& failure) {
        report(failure, errc::io_error, msg, ec);
    } catch (const boost::filesystem::filesystem_error& failure) {
        ec = failure.code();
        msg = failure.what();
    } catch (...) {
        reportUnknownFailure(msg, ec);
    }
}

}  // namespace opc::detail
