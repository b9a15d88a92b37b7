#pragma once

#include <pkgcore/platform/Export.hpp>

#include <stdexcept>
#include <string>

namespace foundation::core::except {

/// The base of the exceptions of the platform's storage libraries. Required of a platform: derived from
/// std::exception, copying never throws, and what() is an English text for people.
class PKGCORE_PLATFORM_API Exception : public std::runtime_error {
public:
    /// `message` is what what() gives.
    explicit Exception(const std::string& message) : std::runtime_error(message) {}
};

}  // namespace foundation::core::except
