#pragma once

#include <unicode/ustring.h>

#include <cstdint>
#include <stdexcept>
#include <string>

/// What ICU makes of a whole text in one call, leniently.
namespace reference {

inline void requireSuccess(UErrorCode error) {
    if (U_FAILURE(error)) throw std::runtime_error(u_errorName(error));
}

inline std::u16string icuDecodeUtf8(const std::string& bytes) {
    std::u16string out(bytes.size(), u'\0');
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8WithSub(out.data(), static_cast<std::int32_t>(out.size()), &length, bytes.data(),
                         static_cast<std::int32_t>(bytes.size()), 0xFFFD, nullptr, &error);
    requireSuccess(error);
    out.resize(static_cast<std::size_t>(length));
    return out;
}

inline std::string icuEncodeUtf8(const std::u16string& text) {
    std::string out(3 * text.size(), '\0');
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strToUTF8WithSub(out.data(), static_cast<std::int32_t>(out.size()), &length, text.data(),
                       static_cast<std::int32_t>(text.size()), 0xFFFD, nullptr, &error);
    requireSuccess(error);
    out.resize(static_cast<std::size_t>(length));
    return out;
}

}  // namespace reference
