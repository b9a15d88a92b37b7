#include <pkgcore/portable/storage/iri/PercentEncoding.hpp>

#include <pkgcore/portable/filesystem/PathText.hpp>
#include <pkgcore/portable/i18n/AsciiRun.hpp>
#include <pkgcore/portable/i18n/CodePoints.hpp>
#include <pkgcore/portable/storage/iri/IRICharacters.hpp>

#include <unicode/utf16.h>

namespace foundation::storage::portable {

namespace {

using fl::i18n::portable::nextCodePoint;

constexpr std::u16string_view kHexDigits = u"0123456789ABCDEF";
constexpr std::size_t kTripletLength = 3;

bool isByte(char32_t point) noexcept { return point >= 0xDC80 && point <= 0xDCFF; }

void appendPoint(char32_t point, std::u16string& out) {
    if (point > 0xFFFF) {
        out += static_cast<char16_t>(U16_LEAD(point));
        out += static_cast<char16_t>(U16_TRAIL(point));
    } else {
        out += static_cast<char16_t>(point);
    }
}

void appendTriplet(unsigned char byte, std::u16string& out) {
    out += u'%';
    out += kHexDigits[byte >> 4];
    out += kHexDigits[byte & 0xF];
}

void appendTriplets(char32_t point, std::u16string& out) {
    std::u16string text;
    appendPoint(point, text);
    char bytes[2 * fl::filesystem::posix::kMaxBytesPerUnit];
    const std::size_t size = fl::filesystem::posix::encodeText(text, bytes);
    for (std::size_t i = 0; i < size; ++i) {
        appendTriplet(static_cast<unsigned char>(bytes[i]), out);
    }
}

/// The bytes of the triplets from `at` on, which moves behind them.
std::string bytesAt(std::u16string_view encoded, std::size_t& at) {
    std::string bytes;
    for (; at < encoded.size() && encoded[at] == u'%'; at += kTripletLength) {
        bytes += static_cast<char>(hexDigitValue(encoded[at + 1]) * 16 + hexDigitValue(encoded[at + 2]));
    }
    return bytes;
}

/// The first triplet from `from` on, or the end.
std::size_t findTriplet(std::u16string_view encoded, std::size_t from) noexcept {
    return from + fl::i18n::portable::findUnit(encoded.data() + from, encoded.size() - from, u'%');
}

}  // namespace

void appendEncoded(char32_t point, const LiteralSet& literals, std::u16string& out) {
    if (literals.contains(point)) {
        appendPoint(point, out);
    } else {
        appendTriplets(point, out);
    }
}

std::size_t findUnencodable(std::u16string_view plain, bool mayHoldBytes) noexcept {
    for (std::size_t at = 0; at < plain.size();) {
        const std::size_t start = at;
        const char32_t point = nextCodePoint(plain.data(), at, plain.size());
        if (point == 0 || (U_IS_SURROGATE(point) && !(mayHoldBytes && isByte(point)))) {
            return start;
        }
    }
    return std::u16string_view::npos;
}

void appendEncoded(std::u16string_view plain, const LiteralSet& literals, std::u16string& out) {
    for (std::size_t at = 0; at < plain.size();) {
        const char32_t point = nextCodePoint(plain.data(), at, plain.size());
        if (point == U'/') {
            out += u'/';
        } else {
            appendEncoded(point, literals, out);
        }
    }
}

std::u16string decoded(std::u16string_view encoded) {
    std::size_t at = findTriplet(encoded, 0);
    std::u16string plain(encoded.substr(0, at));
    while (at < encoded.size()) {
        fl::filesystem::posix::appendDecoded(bytesAt(encoded, at), plain);
        const std::size_t next = findTriplet(encoded, at);
        plain += encoded.substr(at, next - at);
        at = next;
    }
    return plain;
}

}  // namespace foundation::storage::portable
