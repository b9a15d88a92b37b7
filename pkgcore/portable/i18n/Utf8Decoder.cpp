#include <pkgcore/portable/i18n/Utf8.hpp>

#include <pkgcore/portable/i18n/AsciiRun.hpp>
#include <pkgcore/portable/i18n/ChunkedText.hpp>
#include <pkgcore/portable/i18n/ConversionErrors.hpp>

#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>

namespace fl::i18n::portable {
namespace {

class Utf8Decoder {
public:
    Utf8Decoder(const char* text, std::size_t length, bool lenient) noexcept
        : text_(text), length_(length), lenient_(lenient) {}

    bool done() const noexcept { return position_ == length_; }
    std::size_t consumed() const noexcept { return position_; }
    std::size_t remaining() const noexcept { return length_ - position_; }

    std::size_t fill(char16_t* out, std::size_t capacity) {
        std::size_t written = 0;
        while (!done() && capacity - written >= kMinPiece) {
            const std::size_t room = capacity - written;
            const std::size_t run =
                widenAsciiRun(text_ + position_, std::min(remaining(), room), out + written);
            position_ += run;
            written += run;
            if (!done()) written += decodePiece(out + written, std::min(room - run, kMaxPiece));
        }
        return written;
    }

private:
    static constexpr std::size_t kMinPiece = 16;    // more than any character
    static constexpr std::size_t kMaxPiece = 1024;  // after so much, ASCII may have come back

    /// Decodes at most `bytes` bytes, of which none becomes more than one unit.
    std::size_t decodePiece(char16_t* out, std::size_t bytes) {
        const std::size_t taken = wholeCharacters(std::min(bytes, remaining()));
        std::int32_t units = 0;
        UErrorCode error = U_ZERO_ERROR;
        u_strFromUTF8WithSub(out, static_cast<std::int32_t>(bytes), &units, text_ + position_,
                             static_cast<std::int32_t>(taken), lenient_ ? 0xFFFD : U_SENTINEL, nullptr,
                             &error);
        if (U_FAILURE(error)) throwFirstMalformed();
        position_ += taken;
        return static_cast<std::size_t>(units);
    }

    /// The length of a piece without a character that goes on behind it. At the end of the text there is no
    /// such thing: what is unfinished there is malformed.
    std::size_t wholeCharacters(std::size_t length) const noexcept {
        if (length == remaining()) return length;
        const std::uint8_t* const piece = bytes() + position_;
        auto whole = static_cast<std::int32_t>(length);  // signed: the macro steps back before it compares
        U8_TRUNCATE_IF_INCOMPLETE(piece, 0, whole);
        return static_cast<std::size_t>(whole);
    }

    [[noreturn]] void throwFirstMalformed() const {
        std::size_t start = position_;
        std::size_t end = start;
        for (UChar32 c = 0; c >= 0;) {
            start = end;
            U8_NEXT(bytes(), end, length_, c);
        }
        throwMalformedBytes("UTF-8", start, text_ + start, end - start);
    }

    /// The text as ICU's macros want it.
    const std::uint8_t* bytes() const noexcept { return reinterpret_cast<const std::uint8_t*>(text_); }

    const char* text_;
    std::size_t length_;
    std::size_t position_ = 0;
    bool lenient_;
};

}  // namespace

std::u16string decodeUtf8(const char* text, std::size_t length, bool lenient) {
    return collectChunks<char16_t>(Utf8Decoder(text, length, lenient));
}

}  // namespace fl::i18n::portable
