#pragma once

#include <pkgcore/core/Export.hpp>

#include <boost/system/error_code.hpp>

#include <stdexcept>
#include <string>

namespace opc {

/// The one exception type that the library's own failures leave it as: a message and an error code.
///
/// Operations of FileSystemOps throw it with the code of the failure. String conversions, temporary names and
/// the selector throw it with a cleared code (value 0, system category, not failed): there the text is all
/// there is.
class PKGCORE_API Exception : public std::runtime_error {
public:
    /// Keeps both as given; `what()` returns `message` unchanged.
    Exception(const std::string& message, boost::system::error_code code);

    /// Moving copies: the source keeps its message, since what() must work on any live exception.
    /// @{
    Exception(const Exception& other) noexcept;
    Exception(Exception&& other) noexcept;
    /// @}
    Exception& operator=(const Exception&) = delete;
    Exception& operator=(Exception&&) = delete;
    ~Exception() noexcept override;

    /// The stored code; valid as long as the exception.
    const boost::system::error_code& code() const;

private:
    boost::system::error_code code_;
};

}  // namespace opc
