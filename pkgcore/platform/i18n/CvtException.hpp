#pragma once

#include <pkgcore/platform/Export.hpp>

#include <stdexcept>
#include <string>

namespace fl::i18n {

/// The root of what a text conversion throws when the text cannot be converted.
///
/// Required of a platform: what() is an English text for people that says what is wrong and where, with the
/// offset counted from 0 in the units of the input. Copying never throws.
class PKGCORE_PLATFORM_API CvtExceptionBase : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The input is no text of its encoding: a malformed or unfinished byte sequence, an unpaired surrogate, a
/// wide character beyond U+10FFFF.
class PKGCORE_PLATFORM_API CvtInvalidSequence : public CvtExceptionBase {
public:
    using CvtExceptionBase::CvtExceptionBase;
};

/// The input is text, but the target encoding has no form of one of its characters.
class PKGCORE_PLATFORM_API CvtUnmappableCharacter : public CvtExceptionBase {
public:
    using CvtExceptionBase::CvtExceptionBase;
};

/// No encoding goes by the name that a converter was asked for.
class PKGCORE_PLATFORM_API CvtUnknownEncoding : public CvtExceptionBase {
public:
    using CvtExceptionBase::CvtExceptionBase;
};

}  // namespace fl::i18n
