#include <pkgcore/core/Exception.hpp>

namespace opc {

Exception::Exception(const std::string& message, boost::system::error_code code)
    : std::runtime_error(message), code_(code) {}

Exception::Exception(const Exception& other) noexcept = default;

// NOLINTBEGIN(cert-oop11-cpp,performance-move-constructor-init)

// A copy on purpose: what() must go on working on the source. The text is shared by count, so this cannot
// fail.
Exception::Exception(Exception&& other) noexcept
    : std::runtime_error(static_cast<const std::runtime_error&>(other)), code_(other.code_) {}

// NOLINTEND(cert-oop11-cpp,performance-move-constructor-init)

Exception::~Exception() noexcept = default;

const boost::system::error_code& Exception::code() const { return code_; }

}  // namespace opc
