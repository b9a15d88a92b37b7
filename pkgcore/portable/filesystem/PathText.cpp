#include <pkgcore/portable/filesystem/PathText.hpp>

#include <pkgcore/portable/i18n/AsciiRun.hpp>
#include <pkgcore/portable/i18n/CodePoints.hpp>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

namespace fl::filesystem::posix {

namespace {

using Byte = unsigned char;

constexpr char16_t kFirstEscape = 0xDC80;  // stands for byte 0x80
constexpr char16_t kLastEscape = 0xDCFF;

constexpr std::size_t kShortName = 256;  // as long as a name can be on any file system of Linux

/// `byte` is from 0x80 on.
char16_t escapeOf(Byte byte) { return static_cast<char16_t>(kFirstEscape + (byte - 0x80)); }

bool isEscapedByte(char32_t point) { return point >= kFirstEscape && point <= kLastEscape; }

/// Writes the UTF-8 of a scalar value; returns its length.
std::size_t encodeScalar(char32_t point, char* out) {
    constexpr unsigned char kLeads[] = {0, 0x00, 0xC0, 0xE0, 0xF0};  // the first byte's mark of each length
    const std::size_t length = U8_LENGTH(point);
    for (std::size_t i = length - 1; i > 0; --i, point >>= 6) {
        out[i] = static_cast<char>(0x80 | (point & 0x3F));
    }
    out[0] = static_cast<char>(kLeads[length] | point);
    return length;
}

/// Writes one scalar value, or the byte that an escape stands for; false for anything else.
bool encodeOne(char32_t point, char* out, std::size_t& size) {
    if (isEscapedByte(point)) {
        out[size++] = static_cast<char>(point - kFirstEscape + 0x80);
        return true;
    }
    if (point > 0x10FFFF || U_IS_SURROGATE(point)) {
        return false;
    }
    size += encodeScalar(point, out + size);
    return true;
}

/// Narrows the ASCII at the beginning, in whole blocks that the compiler turns into vectors, and returns how
/// much.
std::size_t narrowAsciiBlocks(std::wstring_view text, char* out) {
    constexpr std::size_t kBlock = 8;
    std::size_t at = 0;
    for (; at + kBlock <= text.size(); at += kBlock) {
        char32_t block[kBlock];
        std::memcpy(block, text.data() + at, sizeof block);
        char32_t bits = 0;
        for (const char32_t character : block) bits |= character;
        if (bits >= 0x80) break;
        std::transform(block, block + kBlock, out + at,
                       [](char32_t ascii) { return static_cast<char>(ascii); });
    }
    return at;
}

/// Decodes the sequence at `at` and moves past it; each byte of a malformed one is escaped by itself.
char16_t* decodeAt(const Byte* bytes, std::size_t length, std::size_t& at, char16_t* out) {
    const std::size_t start = at;
    UChar32 point = 0;
    U8_NEXT(bytes, at, length, point);
    if (point < 0) {
        return std::transform(bytes + start, bytes + at, out, escapeOf);
    }
    std::size_t units = 0;
    U16_APPEND_UNSAFE(out, units, point);
    return out + units;
}

}  // namespace

std::size_t encodeText(std::u16string_view text, char* out) noexcept {
    std::size_t at = i18n::portable::narrowAsciiRun(text.data(), text.size(), out);
    std::size_t size = at;
    while (at < text.size()) {
        if (!encodeOne(i18n::portable::nextCodePoint(text.data(), at, text.size()), out, size)) {
            return kInvalidText;
        }
        const std::size_t run =
            i18n::portable::narrowAsciiRun(text.data() + at, text.size() - at, out + size);
        at += run;
        size += run;
    }
    // Of the text as it was given: wide loads of the bytes would wait for the narrower stores that have just
    // written them.
    return i18n::portable::holdsNul(text.data(), text.size()) ? kInvalidText : size;
}

static_assert(sizeof(wchar_t) == 4, "wide characters are UTF-32 on every POSIX host");

std::size_t encodeText(std::wstring_view text, char* out) noexcept {
    std::size_t at = narrowAsciiBlocks(text, out);
    std::size_t size = at;
    for (; at < text.size(); ++at) {
        if (!encodeOne(static_cast<char32_t>(text[at]), out, size)) {
            return kInvalidText;
        }
    }
    return text.find(L'\0') != text.npos ? kInvalidText : size;
}

std::size_t decodeText(std::string_view bytes, char16_t* out) noexcept {
    const auto* const units = reinterpret_cast<const Byte*>(bytes.data());
    char16_t* end = out;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t run = i18n::portable::widenAsciiRun(bytes.data() + at, bytes.size() - at, end);
        at += run;
        end += run;
        while (at < bytes.size() && units[at] >= 0x80) {
            end = decodeAt(units, bytes.size(), at, end);
        }
    }
    return static_cast<std::size_t>(end - out);
}

// By way of another buffer, since growing a string first clears what is written over at once.
void appendDecoded(std::string_view bytes, std::u16string& out) {
    char16_t shortName[kShortName];
    if (bytes.size() <= kShortName) {
        out.append(shortName, decodeText(bytes, shortName));
        return;
    }
    const std::unique_ptr<char16_t[]> longText(new char16_t[bytes.size()]);
    out.append(longText.get(), decodeText(bytes, longText.get()));
}

}  // namespace fl::filesystem::posix
