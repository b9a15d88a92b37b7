#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/i18n/Codecvt.hpp>

#include <string>

/// @file
/// Text from one form into another. Required of all: the whole text is converted, a NUL included, or an
/// exception leaves and nothing else does; a failure of the text is a CvtExceptionBase; any thread may call
/// at any time. None needs initialize() to have been called.
namespace fl::i18n {

/// From the converter's encoding.
PKGCORE_PLATFORM_API std::u16string to_ustring(const std::string& text,
                                               const codecvt_string_to_ustring& converter);

/// `text` ends at its first NUL; a null pointer counts as empty.
PKGCORE_PLATFORM_API std::u16string to_ustring(const char* text, const codecvt_ascii_to_ustring& converter);

/// From UTF-16 or UTF-32, whichever fits wchar_t. An unpaired surrogate passes unchanged, so that no file
/// name is lost on the way. A value that is no code point, above U+10FFFF or negative, is CvtInvalidSequence.
PKGCORE_PLATFORM_API std::u16string to_ustring(const std::wstring& text);

/// Into the converter's encoding.
/// @{
PKGCORE_PLATFORM_API std::string to_string(const std::u16string& text,
                                           const codecvt_ustring_to_string& converter);
PKGCORE_PLATFORM_API std::string to_string(const std::u16string& text,
                                           const codecvt_ustring_to_ascii& converter);
/// @}

/// Into the user's default encoding, strictly.
PKGCORE_PLATFORM_API std::string to_string(const std::u16string& text);

/// Into UTF-16 or UTF-32, whichever fits wchar_t. An unpaired surrogate passes unchanged. Never fails but for
/// memory.
PKGCORE_PLATFORM_API std::wstring to_wstring(const std::u16string& text);

}  // namespace fl::i18n
