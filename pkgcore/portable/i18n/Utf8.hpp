#pragma once

#include <cstddef>
#include <string>

/// UTF-8 to UTF-16 and back, without a converter to open and without filling memory twice.
///
/// Strict: the first malformed sequence throws CvtInvalidSequence. Lenient: each maximal malformed
/// subsequence, and each unpaired surrogate, becomes U+FFFD.
namespace fl::i18n::portable {

std::u16string decodeUtf8(const char* text, std::size_t length, bool lenient);

std::string encodeUtf8(const char16_t* text, std::size_t length, bool lenient);

}  // namespace fl::i18n::portable
