#pragma once

#include <pkgcore/platform/Export.hpp>

#include <memory>
#include <string>

/// @file
/// Converters between UTF-16 text and narrow text. One is made for one conversion or for several in a row; it
/// belongs to one thread at a time. The functions of Conversion.hpp do the work.
///
/// The flag of every converter has one meaning. false: strict, the first malformed sequence or unmappable
/// character ends the conversion with an exception. true: lenient, each maximal malformed subsequence of the
/// input becomes one U+FFFD (Unicode, section 3.9, "U+FFFD Substitution of Maximal Subparts"), and a
/// character that the target encoding lacks becomes that encoding's substitution character. A lenient
/// conversion fails for want of memory alone.
///
/// Encoding names are those of the IANA registry, letter case and punctuation aside ("UTF-8", "utf8",
/// "ISO-8859-15", "Shift_JIS"). An unknown name makes the constructor throw CvtUnknownEncoding. An empty name
/// is the platform's default narrow encoding, which is the user's default encoding too: that of the locale
/// that the environment names, and UTF-8 where it names none that is known.
namespace fl::i18n {

namespace detail {
/// What a converter keeps for encodings other than UTF-8; known to the platform alone.
class converter_state;
}  // namespace detail

/// From bytes in an encoding to UTF-16.
class PKGCORE_PLATFORM_API codecvt_string_to_ustring {
public:
    /// Throws CvtUnknownEncoding.
    codecvt_string_to_ustring(const std::string& encodingName, bool lenient);
    ~codecvt_string_to_ustring();
    codecvt_string_to_ustring(const codecvt_string_to_ustring&) = delete;
    codecvt_string_to_ustring& operator=(const codecvt_string_to_ustring&) = delete;

    /// The flag that it was made with.
    bool lenient() const noexcept { return lenient_; }
    /// Null for UTF-8.
    detail::converter_state* state() const noexcept { return state_.get(); }

private:
    std::unique_ptr<detail::converter_state> state_;
    bool lenient_;
};

/// From UTF-16 to bytes in an encoding.
class PKGCORE_PLATFORM_API codecvt_ustring_to_string {
public:
    /// Throws CvtUnknownEncoding.
    codecvt_ustring_to_string(const std::string& encodingName, bool lenient);
    ~codecvt_ustring_to_string();
    codecvt_ustring_to_string(const codecvt_ustring_to_string&) = delete;
    codecvt_ustring_to_string& operator=(const codecvt_ustring_to_string&) = delete;

    /// The flag that it was made with.
    bool lenient() const noexcept { return lenient_; }
    /// Null for UTF-8.
    detail::converter_state* state() const noexcept { return state_.get(); }

private:
    std::unique_ptr<detail::converter_state> state_;
    bool lenient_;
};

/// From UTF-16 to ASCII. Anything else is unmappable; the substitution character is SUBSTITUTE (0x1A,
/// ECMA-48).
class PKGCORE_PLATFORM_API codecvt_ustring_to_ascii {
public:
    /// Never fails.
    explicit codecvt_ustring_to_ascii(bool lenient);

    /// The flag that it was made with.
    bool lenient() const noexcept { return lenient_; }

private:
    bool lenient_;
};

/// From ASCII to UTF-16. A byte above 0x7F is malformed.
class PKGCORE_PLATFORM_API codecvt_ascii_to_ustring {
public:
    /// Never fails.
    explicit codecvt_ascii_to_ustring(bool lenient);

    /// The flag that it was made with.
    bool lenient() const noexcept { return lenient_; }

private:
    bool lenient_;
};

}  // namespace fl::i18n
