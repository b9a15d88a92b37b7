#include <pkgcore/platform/i18n/Codecvt.hpp>

#include <pkgcore/platform/i18n/Conversion.hpp>
#include <pkgcore/portable/i18n/AsciiRun.hpp>
#include <pkgcore/portable/i18n/ChunkedText.hpp>
#include <pkgcore/portable/i18n/CodePoints.hpp>
#include <pkgcore/portable/i18n/ConversionErrors.hpp>

#include <algorithm>
#include <cstring>

namespace fl::i18n {
namespace {

constexpr char kSubstitute = 0x1A;
constexpr char16_t kReplacement = 0xFFFD;

[[noreturn]] void throwNotAscii(std::size_t offset, char16_t unit, char32_t character) {
    if (U_IS_SURROGATE(character)) portable::throwUnpairedSurrogate(offset, unit);
    portable::throwUnmappable("ASCII", offset, character);
}

class AsciiEncoder {
public:
    AsciiEncoder(const std::u16string& text, bool lenient) noexcept : text_(text), lenient_(lenient) {}

    bool done() const noexcept { return position_ == text_.size(); }
    std::size_t consumed() const noexcept { return position_; }
    std::size_t remaining() const noexcept { return text_.size() - position_; }

    std::size_t fill(char* out, std::size_t capacity) {
        std::size_t written = 0;
        while (!done() && written != capacity) {
            const std::size_t room = std::min(remaining(), capacity - written);
            const std::size_t run = portable::narrowAsciiRun(text_.data() + position_, room, out + written);
            position_ += run;
            written += run;
            if (run != room) out[written++] = substitute();
        }
        return written;
    }

private:
    char substitute() {
        const std::size_t start = position_;
        const char32_t character = portable::nextCodePoint(text_.data(), position_, text_.size());
        if (!lenient_) throwNotAscii(start, text_[start], character);
        return kSubstitute;
    }

    const std::u16string& text_;
    std::size_t position_ = 0;
    bool lenient_;
};

class AsciiDecoder {
public:
    AsciiDecoder(const char* text, std::size_t length, bool lenient) noexcept
        : text_(text), length_(length), lenient_(lenient) {}

    bool done() const noexcept { return position_ == length_; }
    std::size_t consumed() const noexcept { return position_; }
    std::size_t remaining() const noexcept { return length_ - position_; }

    std::size_t fill(char16_t* out, std::size_t capacity) {
        std::size_t written = 0;
        while (!done() && written != capacity) {
            const std::size_t room = std::min(remaining(), capacity - written);
            const std::size_t run = portable::widenAsciiRun(text_ + position_, room, out + written);
            position_ += run;
            written += run;
            if (run != room) out[written++] = replace();
        }
        return written;
    }

private:
    char16_t replace() {
        if (!lenient_) portable::throwMalformedBytes("ASCII", position_, text_ + position_, 1);
        ++position_;
        return kReplacement;
    }

    const char* text_;
    std::size_t length_;
    std::size_t position_ = 0;
    bool lenient_;
};

}  // namespace

codecvt_ustring_to_ascii::codecvt_ustring_to_ascii(bool lenient) : lenient_(lenient) {}

codecvt_ascii_to_ustring::codecvt_ascii_to_ustring(bool lenient) : lenient_(lenient) {}

std::string to_string(const std::u16string& text, const codecvt_ustring_to_ascii& converter) {
    return portable::collectChunks<char>(AsciiEncoder(text, converter.lenient()));
}

std::u16string to_ustring(const char* text, const codecvt_ascii_to_ustring& converter) {
    const std::size_t length = text == nullptr ? 0 : std::strlen(text);
    return portable::collectChunks<char16_t>(AsciiDecoder(text, length, converter.lenient()));
}

}  // namespace fl::i18n
