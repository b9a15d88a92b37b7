#pragma once

#include <cstddef>
#include <string>

/// What goes wrong in conversions, each put into words and thrown in one place.
namespace fl::i18n::portable {

/// CvtInvalidSequence: `count` bytes at `offset` are no text in `encoding`.
[[noreturn]] void throwMalformedBytes(const std::string& encoding, std::size_t offset, const char* bytes,
                                      std::size_t count);

/// CvtInvalidSequence: the input ends within a sequence that `count` bytes at `offset` began.
[[noreturn]] void throwTruncatedBytes(const std::string& encoding, std::size_t offset, const char* bytes,
                                      std::size_t count);

/// CvtInvalidSequence: an unpaired surrogate.
[[noreturn]] void throwUnpairedSurrogate(std::size_t offset, char16_t unit);

/// CvtInvalidSequence: a wide character that is no code point.
[[noreturn]] void throwNoCodePoint(std::size_t offset, unsigned long value);

/// CvtUnmappableCharacter: `encoding` has no form of the code point.
[[noreturn]] void throwUnmappable(const std::string& encoding, std::size_t offset, char32_t codePoint);

/// CvtUnknownEncoding.
[[noreturn]] void throwUnknownEncoding(const std::string& name);

}  // namespace fl::i18n::portable
