#include <pkgcore/filesystem/StorageExceptionTranslator.hpp>

#include <pkgcore/core/MessageText.hpp>
#include <pkgcore/filesystem/Translated.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>

#include <cstddef>
#include <iterator>
#include <stdexcept>

namespace opc::detail {

using boost::system::error_code;
namespace errc = boost::system::errc;
namespace vfs = foundation::storage::vfs;

namespace {

/// By the value of vfs::ErrorCode.
constexpr errc::errc_t kCodes[] = {
    errc::directory_not_empty,
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
    errc::operation_not_supported,
};

std::string describe(const std::exception& failure, const ustring& subject) {
    return std::string(failure.what()) + ": " + toMessageText(subject);
}

void report(const vfs::Exception& failure, std::string& msg, error_code& ec) {
    const auto code = static_cast<std::size_t>(failure.getErrorCode());
    // A code that came later has words alone: nothing here could name it.
    if (code < std::size(kCodes)) {
        ec = errc::make_error_code(kCodes[code]);
    }
    const ustring& location = failure.getLocation().toString();
    msg = location.empty() ? failure.what() : describe(failure, location);
}

}  // namespace

// One handler per type, the first match wins: the order is part of the contract.
void translateCurrentException(std::string& msg, error_code& ec) {
    try {
        throw;
    } catch (const vfs::InvalidIRIException& failure) {
        ec = errc::make_error_code(errc::bad_address);
        msg = describe(failure, failure.getInvalidIRIString());
    } catch (const vfs::UnsupportedIRISchemeException& failure) {
        ec = errc::make_error_code(errc::address_family_not_supported);
        msg = describe(failure, failure.getScheme());
    } catch (const vfs::Exception& failure) {
        report(failure, msg, ec);
    } catch (const std::runtime_error& failure) {
        ec = errc::make_error_code(errc::io_error);
        msg = failure.what();
    } catch (...) {
        reportUnknownFailure(msg, ec);
    }
}

}  // namespace opc::detail
