#include <pkgcore/platform/i18n/Conversion.hpp>

#include <pkgcore/portable/i18n/ChunkedText.hpp>
#include <pkgcore/portable/i18n/CodePoints.hpp>
#include <pkgcore/portable/i18n/ConversionErrors.hpp>

#include <unicode/utf16.h>

#include <cstdint>

namespace fl::i18n {
namespace {

static_assert(sizeof(wchar_t) == 4, "this file is for hosts whose wide strings are UTF-32");

class WideDecoder {
public:
    explicit WideDecoder(const std::wstring& text) noexcept : text_(text) {}

    bool done() const noexcept { return position_ == text_.size(); }
    std::size_t consumed() const noexcept { return position_; }
    std::size_t remaining() const noexcept { return text_.size() - position_; }

    std::size_t fill(char16_t* out, std::size_t capacity) {
        std::size_t written = 0;
        while (!done() && written + U16_MAX_LENGTH <= capacity) {
            // A negative value becomes a large one here, and is refused like one.
            // NOLINTNEXTLINE(bugprone-signed-char-misuse,cert-str34-c): a wide character, not a signed char
            const auto value = static_cast<std::uint32_t>(text_[position_]);
            if (value > 0x10FFFF) portable::throwNoCodePoint(position_, value);
            U16_APPEND_UNSAFE(out, written, value);
            ++position_;
        }
        return written;
    }

private:
    const std::wstring& text_;
    std::size_t position_ = 0;
};

class WideEncoder {
public:
    explicit WideEncoder(const std::u16string& text) noexcept : text_(text) {}

    bool done() const noexcept { return position_ == text_.size(); }
    std::size_t consumed() const noexcept { return position_; }
    std::size_t remaining() const noexcept { return text_.size() - position_; }

    std::size_t fill(wchar_t* out, std::size_t capacity) noexcept {
        std::size_t written = 0;
        while (!done() && written != capacity) {
            out[written++] =
                static_cast<wchar_t>(portable::nextCodePoint(text_.data(), position_, text_.size()));
        }
        return written;
    }

private:
    const std::u16string& text_;
    std::size_t position_ = 0;
};

}  // namespace

std::u16string to_ustring(const std::wstring& text) {
    return portable::collectChunks<char16_t>(WideDecoder(text));
}

std::wstring to_wstring(const std::u16string& text) {
    return portable::collectChunks<wchar_t>(WideEncoder(text));
}

}  // namespace fl::i18n
