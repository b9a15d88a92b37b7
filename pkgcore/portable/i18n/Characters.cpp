#include <pkgcore/platform/i18n/Characters.hpp>

#include <pkgcore/portable/i18n/AsciiRun.hpp>

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>

namespace fl::i18n::detail {
namespace {

constexpr std::size_t kMaxLength = std::numeric_limits<std::int32_t>::max();

std::size_t lowerByUnicode(char16_t* out, std::size_t capacity, const char16_t* in, std::size_t length) {
    if (length > kMaxLength) throw std::length_error("Text is too long to be lower-cased");
    UErrorCode error = U_ZERO_ERROR;
    const auto room = static_cast<std::int32_t>(std::min(capacity, kMaxLength));
    const std::int32_t needed = u_strToLower(out, room, in, static_cast<std::int32_t>(length), "", &error);
    if (error == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
    if (error == U_INDEX_OUTOFBOUNDS_ERROR) throw std::length_error("Text is too long when lower-cased");
    if (U_FAILURE(error) && error != U_BUFFER_OVERFLOW_ERROR) {
        throw std::runtime_error(std::string("Text cannot be lower-cased: ") + u_errorName(error));
    }
    return static_cast<std::size_t>(needed);
}

}  // namespace

std::size_t transform(char16_t* out, std::size_t capacity, const char16_t* in, std::size_t length,
                      transformation /*operation: there is one*/) {
    // What a character becomes may depend on all that stands before it, so a text that is not wholly ASCII is
    // done from its beginning.
    const std::size_t fitting = std::min(length, capacity);
    const bool ascii = portable::lowerAsciiRun(in, fitting, out) == fitting &&
                       portable::asciiRun(in + fitting, length - fitting) == length - fitting;
    if (ascii) return length;
    return lowerByUnicode(out, capacity, in, length);
}

std::size_t scan(const char16_t* text, std::size_t length, unsigned mask, classification_rules) noexcept {
    if ((mask & white_space_class) == 0) return length;
    // Every white space character is a single code unit, so pairs need no attention.
    const char16_t* const end = text + length;
    const auto isWhiteSpace = [](char16_t unit) { return u_isUWhiteSpace(unit) != 0; };
    return static_cast<std::size_t>(std::find_if(text, end, isWhiteSpace) - text);
}

}  // namespace fl::i18n::detail
