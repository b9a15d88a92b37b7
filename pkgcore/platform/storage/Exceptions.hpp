#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/except/Exception.hpp>
#include <pkgcore/platform/storage/AbsoluteIRI.hpp>
#include <pkgcore/platform/storage/ErrorCode.hpp>

#include <memory>
#include <string>
#include <utility>

namespace foundation::storage::vfs {

/// A text is no IRI. what() says which character at which offset, but does not repeat the text.
class PKGCORE_PLATFORM_API InvalidIRIException : public core::except::Exception {
public:
    /// `message` is what what() gives.
    InvalidIRIException(const std::string& message, std::u16string invalidIRI)
        : core::except::Exception(message),
          invalidIRI_(std::make_shared<const std::u16string>(std::move(invalidIRI))) {}

    /// The text as it was given.
    const std::u16string& getInvalidIRIString() const noexcept { return *invalidIRI_; }

private:
    std::shared_ptr<const std::u16string> invalidIRI_;
};

/// The scheme of an IRI belongs to no storage system, or to none that is mounted. what() does not repeat it.
class PKGCORE_PLATFORM_API UnsupportedIRISchemeException : public core::except::Exception {
public:
    /// `message` is what what() gives.
    UnsupportedIRISchemeException(const std::string& message, std::u16string scheme)
        : core::except::Exception(message),
          scheme_(std::make_shared<const std::u16string>(std::move(scheme))) {}

    /// In the letter case in which the IRI had it.
    const std::u16string& getScheme() const noexcept { return *scheme_; }

private:
    std::shared_ptr<const std::u16string> scheme_;
};

/// A storage system could not do what it was asked. what() is the message, without the location.
class PKGCORE_PLATFORM_API Exception : public core::except::Exception {
public:
    /// With the platform's own message for the code, an English text without a full stop.
    Exception(ErrorCode code, const AbsoluteIRI& location);

    /// With a message of the caller's own.
    Exception(ErrorCode code, const std::string& message, const AbsoluteIRI& location = AbsoluteIRI())
        : core::except::Exception(message),
          location_(std::make_shared<const AbsoluteIRI>(location)),
          code_(code) {}

    /// As given; another platform may have further ones.
    ErrorCode getErrorCode() const noexcept { return code_; }

    /// The place concerned; an AbsoluteIRI of no place where there is none.
    const AbsoluteIRI& getLocation() const noexcept { return *location_; }

private:
    std::shared_ptr<const AbsoluteIRI> location_;
    ErrorCode code_;
};

}  // namespace foundation::storage::vfs
