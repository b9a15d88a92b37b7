#include <pkgcore/portable/i18n/Utf8.hpp>

#include <pkgcore/portable/i18n/AsciiRun.hpp>
#include <pkgcore/portable/i18n/ChunkedText.hpp>
#include <pkgcore/portable/i18n/CodePoints.hpp>
#include <pkgcore/portable/i18n/ConversionErrors.hpp>

#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>

namespace fl::i18n::portable {
namespace {

class Utf8Encoder {
public:
    Utf8Encoder(const char16_t* text, std::size_t length, bool lenient) noexcept
        : text_(text), length_(length), lenient_(lenient) {}

    bool done() const noexcept { return position_ == length_; }
    std::size_t consumed() const noexcept { return position_; }
    std::size_t remaining() const noexcept { return length_ - position_; }

    std::size_t fill(char* out, std::size_t capacity) {
        std::size_t written = 0;
        while (!done() && capacity - written >= kMinRoom) {
            const std::size_t room = capacity - written;
            const std::size_t run =
                narrowAsciiRun(text_ + position_, std::min(remaining(), room), out + written);
            position_ += run;
            written += run;
            if (!done())
                written += encodePiece(out + written, std::min((room - run) / kBytesPerUnit, kMaxPiece));
        }
        return written;
    }

private:
    static constexpr std::size_t kBytesPerUnit = 3;  // at most; a pair takes four for two
    static constexpr std::size_t kMinRoom = 16;      // more than any character
    static constexpr std::size_t kMaxPiece = 4096;   // after so much, ASCII may have come back

    std::size_t encodePiece(char* out, std::size_t units) {
        const std::size_t taken = wholeCharacters(std::min(units, remaining()));
        std::int32_t bytes = 0;
        UErrorCode error = U_ZERO_ERROR;
        u_strToUTF8WithSub(out, static_cast<std::int32_t>(units * kBytesPerUnit), &bytes, text_ + position_,
                           static_cast<std::int32_t>(taken), lenient_ ? 0xFFFD : U_SENTINEL, nullptr, &error);
        if (U_FAILURE(error)) throwFirstUnpaired();
        position_ += taken;
        return static_cast<std::size_t>(bytes);
    }

    /// The length of a piece without a lead surrogate whose other half stands behind it.
    std::size_t wholeCharacters(std::size_t length) const noexcept {
        const bool cut = length != 0 && length != remaining() && U16_IS_LEAD(text_[position_ + length - 1]);
        return cut ? length - 1 : length;
    }

    [[noreturn]] void throwFirstUnpaired() const {
        std::size_t start = position_;
        std::size_t end = start;
        for (char32_t c = 0; !U_IS_SURROGATE(c);) {
            start = end;
            c = nextCodePoint(text_, end, length_);
        }
        throwUnpairedSurrogate(start, text_[start]);
    }

    const char16_t* text_;
    std::size_t length_;
    std::size_t position_ = 0;
    bool lenient_;
};

}  // namespace

std::string encodeUtf8(const char16_t* text, std::size_t length, bool lenient) {
    return collectChunks<char>(Utf8Encoder(text, length, lenient));
}

}  // namespace fl::i18n::portable
