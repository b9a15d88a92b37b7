#include <pkgcore/portable/filesystem/PathText.hpp>

#include <pkgcore/portable/i18n/AsciiRun.hpp>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <cstring>

namespace fl::filesystem::posix {

namespace {

using Byte = unsigned char;

constexpr char16_t firstEscape = 0xDC80;  // stands for byte 0x80
constexpr char16_t lastEscape = 0xDCFF;

bool isEscapedByte(UChar32 point) { return point >= firstEscape && point <= lastEscape; }

/// Writes one scalar value, or the byte that an escape stands for; false for anything else.
bool encodeOne(UChar32 point, char* out, std::size_t& size) {
    if (isEscapedByte(point)) {
        out[size++] = static_cast<char>(point - firstEscape + 0x80);
        return true;
    }
    if (point < 0 || point > 0x10FFFF || U_IS_SURROGATE(point)) {
        return false;
    }
    U8_APPEND_UNSAFE(out, size, point);
    return true;
}

bool holdsNul(const char* bytes, std::size_t size) { return std::memchr(bytes, '\0', size) != nullptr; }

/// Encodes the character at `at`, of one unit or two, and moves past it.
bool encodeAt(std::u16string_view text, std::size_t& at, char* out, std::size_t& size) {
    UChar32 point = 0;
    U16_NEXT(text.data(), at, text.size(), point);
    return encodeOne(point, out, size);
}

void appendEscaped(const Byte* bytes, std::size_t from, std::size_t to, std::u16string& out) {
    for (; from < to; ++from) {
        out.push_back(static_cast<char16_t>(firstEscape + (bytes[from] - 0x80)));
    }
}

void appendPoint(UChar32 point, std::u16string& out) {
    if (U_IS_BMP(point)) {
        out.push_back(static_cast<char16_t>(point));
    } else {
        out.push_back(U16_LEAD(point));
        out.push_back(U16_TRAIL(point));
    }
}

/// Decodes the sequence at `at` and moves past it; each byte of a malformed one is escaped by itself.
void decodeAt(const Byte* bytes, std::size_t length, std::size_t& at, std::u16string& out) {
    const std::size_t start = at;
    UChar32 point = 0;
    U8_NEXT(bytes, at, length, point);
    if (point < 0) {
        appendEscaped(bytes, start, at, out);
    } else {
        appendPoint(point, out);
    }
}

}  // namespace

std::size_t encodeText(std::u16string_view text, char* out) noexcept {
    std::size_t at = i18n::portable::narrowAsciiRun(text.data(), text.size(), out);
    std::size_t size = at;
    while (at < text.size()) {
        if (!encodeAt(text, at, out, size)) {
            return invalidText;
        }
        const std::size_t run =
            i18n::portable::narrowAsciiRun(text.data() + at, text.size() - at, out + size);
        at += run;
        size += run;
    }
    return holdsNul(out, size) ? invalidText : size;
}

static_assert(sizeof(wchar_t) == 4, "wide characters are UTF-32 on every POSIX host");

std::size_t encodeText(std::wstring_view text, char* out) noexcept {
    std::size_t size = 0;
    for (const wchar_t character : text) {
        if (character > 0 && character < 0x80) {
            out[size++] = static_cast<char>(character);
        } else if (character == 0 || !encodeOne(static_cast<UChar32>(character), out, size)) {
            return invalidText;
        }
    }
    return size;
}

void appendDecoded(std::string_view bytes, std::u16string& out) {
    const auto* const units = reinterpret_cast<const Byte*>(bytes.data());
    std::size_t at = 0;
    while (at < bytes.size()) {
        const std::size_t start = out.size();
        out.resize(start + (bytes.size() - at));
        const std::size_t run =
            i18n::portable::widenAsciiRun(bytes.data() + at, bytes.size() - at, out.data() + start);
        out.resize(start + run);
        at += run;
        while (at < bytes.size() && units[at] >= 0x80) {
            decodeAt(units, bytes.size(), at, out);
        }
    }
}

}  // namespace fl::filesystem::posix
