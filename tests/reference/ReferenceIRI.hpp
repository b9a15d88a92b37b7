#pragma once

#include "tests/reference/ReferenceNames.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// IRIs by the grammar of RFC 3986 and 3987 and the rules of docs/iris.md, for comparison: whatever is
/// encoded is decoded into bytes, and those are encoded afresh. Slow.
namespace reference {

enum class IRIKind { Valid, Invalid, Unsupported };

struct IRIReading {
    IRIKind kind;
    std::u16string text;
};

using CharacterTest = bool (*)(char32_t);

inline bool isOneOf(char32_t point, std::u32string_view characters) {
    return characters.find(point) != characters.npos;
}

constexpr bool isBetween(char32_t first, char32_t point, char32_t last) {
    return first <= point && point <= last;
}

constexpr bool isAlpha(char32_t point) {
    return isBetween(U'A', point, U'Z') || isBetween(U'a', point, U'z');
}

constexpr bool isDigit(char32_t point) { return isBetween(U'0', point, U'9'); }

inline bool isHexDigit(char32_t point) { return isDigit(point) || isOneOf(point, U"ABCDEFabcdef"); }

/// RFC 3987, 2.2; without what 4.1 there forbids, the marks of direction.
inline bool isUcschar(char32_t point) {
    if (isOneOf(point, U"\u200E\u200F\u202A\u202B\u202C\u202D\u202E")) return false;
    const char32_t plane = point >> 16;
    if (plane > 0) return plane < 15 && (point & 0xFFFF) < 0xFFFE && !isBetween(0xE0000, point, 0xE0FFF);
    return isBetween(0xA0, point, 0xD7FF) || isBetween(0xF900, point, 0xFDCF) ||
           isBetween(0xFDF0, point, 0xFFEF);
}

inline bool isRegName(char32_t point) {
    return isAlpha(point) || isDigit(point) || isOneOf(point, U"-._~!$&'()*+,;=") || isUcschar(point);
}

inline bool isPchar(char32_t point) { return isRegName(point) || isOneOf(point, U":@"); }

inline std::u16string textOfPoints(const std::u32string& points) {
    std::u16string text;
    for (const char32_t point : points) appendUtf16(text, point);
    return text;
}

inline unsigned hexValue(char32_t digit) {
    const std::u32string_view digits = U"0123456789ABCDEFabcdef";
    const std::size_t at = digits.find(digit);
    return static_cast<unsigned>(at < 16 ? at : at - 6);
}

inline std::u16string triplet(unsigned char byte) {
    constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    return {u'%', kDigits[byte / 16], kDigits[byte % 16]};
}

inline std::u16string tripletsOf(const std::string& bytes) {
    std::u16string text;
    for (const char byte : bytes) text += triplet(static_cast<unsigned char>(byte));
    return text;
}

/// The bytes that encoded text stands for. Nothing where a triplet lacks a digit or holds "/" or NUL, and
/// where a character may not stand for itself.
inline std::optional<std::string> bytesOfEncoded(const std::u32string& encoded, CharacterTest isLiteral) {
    std::string bytes;
    for (std::size_t at = 0; at < encoded.size(); ++at) {
        if (encoded[at] != U'%') {
            if (!isLiteral(encoded[at])) return std::nullopt;
            appendUtf8(bytes, encoded[at]);
            continue;
        }
        if (at + 2 >= encoded.size() || !isHexDigit(encoded[at + 1]) || !isHexDigit(encoded[at + 2]))
            return std::nullopt;
        const unsigned byte = hexValue(encoded[at + 1]) * 16 + hexValue(encoded[at + 2]);
        if (byte == 0 || byte == '/') return std::nullopt;
        bytes += static_cast<char>(static_cast<unsigned char>(byte));
        at += 2;
    }
    return bytes;
}

/// One name or one host, spelled anew.
inline std::optional<std::u16string> spelledPiece(const std::u32string& piece, CharacterTest isLiteral,
                                                  bool mayHoldBytes) {
    const std::optional<std::string> bytes = bytesOfEncoded(piece, isLiteral);
    if (!bytes) return std::nullopt;
    std::u16string spelled;
    for (const char32_t point : pointsOf(decodeName(*bytes))) {
        if (isSurrogate(point) && !mayHoldBytes) return std::nullopt;
        const std::u16string text = textOfPoints({point});
        spelled += isLiteral(point) ? text : tripletsOf(*encodeName(text));
    }
    return spelled;
}

inline bool isPortWithColon(const std::u32string& text) {
    return text.empty() || (text[0] == U':' && std::all_of(text.begin() + 1, text.end(), isDigit));
}

inline std::optional<std::u16string> spelledAuthority(const std::u32string& authority) {
    const bool isAddress = !authority.empty() && authority[0] == U'[';
    const std::size_t bracket = authority.find(U']');
    if (isAddress && bracket == authority.npos) return std::nullopt;
    const std::size_t hostEnd = isAddress ? bracket + 1 : std::min(authority.find(U':'), authority.size());
    const std::u32string host = authority.substr(0, hostEnd);
    const std::u32string port = authority.substr(hostEnd);
    if (!isPortWithColon(port)) return std::nullopt;
    if (!isAddress) {
        const auto spelled = spelledPiece(host, isRegName, false);
        return spelled ? std::optional(*spelled + textOfPoints(port)) : std::nullopt;
    }
    const bool isGood = std::all_of(host.begin() + 1, host.end() - 1, [](char32_t point) {
        return isHexDigit(point) || point == U':' || point == U'.';
    });
    const bool isEmpty = host.size() == 2;
    return isGood && !isEmpty ? std::optional(textOfPoints(authority)) : std::nullopt;
}

inline std::optional<std::u16string> spelledPath(std::u32string path, bool mayHoldBytes) {
    std::u16string spelled;
    while (!path.empty()) {
        path.erase(0, 1);  // its slash
        const std::size_t end = std::min(path.find(U'/'), path.size());
        const auto name = spelledPiece(path.substr(0, end), isPchar, mayHoldBytes);
        if (!name) return std::nullopt;
        spelled += u'/' + *name;
        path.erase(0, end);
    }
    return spelled;
}

inline std::u16string loweredAscii(std::u16string text) {
    for (char16_t& unit : text) {
        if (unit >= u'A' && unit <= u'Z') unit = static_cast<char16_t>(unit + 32);
    }
    return text;
}

inline bool isScheme(const std::u16string& text) {
    return !text.empty() && isAlpha(text[0]) && std::all_of(text.begin(), text.end(), [](char16_t unit) {
        return isAlpha(unit) || isDigit(unit) || isOneOf(unit, U"+-.");
    });
}

/// The schemes that are there from the start.
inline bool isKnownScheme(const std::u16string& scheme) {
    constexpr std::u16string_view kKnown[] = {u"file", u"mem", u"sqlite", u"zip", u"s3", u"dav"};
    const std::u16string small = loweredAscii(scheme);
    return std::find(std::begin(kKnown), std::end(kKnown), small) != std::end(kKnown);
}

/// Encoded text into its one spelling.
inline IRIReading spelledIRI(const std::u16string& text) {
    const std::size_t mark = text.find(u"://");
    const std::u16string scheme = text.substr(0, mark);
    if (mark == text.npos || !isScheme(scheme)) return {IRIKind::Invalid, {}};
    if (!isKnownScheme(scheme)) return {IRIKind::Unsupported, {}};
    const std::u32string rest = pointsOf(text.substr(mark + 3));
    const std::size_t slash = std::min(rest.find(U'/'), rest.size());
    const auto authority = spelledAuthority(rest.substr(0, slash));
    const auto path = spelledPath(rest.substr(slash), loweredAscii(scheme) == u"file");
    if (!authority || !path) return {IRIKind::Invalid, {}};
    return {IRIKind::Valid, scheme + u"://" + *authority + *path};
}

struct SpelledParts {
    std::u16string scheme, authority, path;
};

inline SpelledParts partsOfIRI(const std::u16string& spelled) {
    const std::size_t mark = spelled.find(u"://");
    const std::size_t slash = std::min(spelled.find(u'/', mark + 3), spelled.size());
    return {spelled.substr(0, mark), spelled.substr(mark + 3, slash - mark - 3), spelled.substr(slash)};
}

inline std::u16string plainText(const std::u16string& encoded) {
    const auto any = [](char32_t) { return true; };
    return decodeName(*bytesOfEncoded(pointsOf(encoded), any));
}

/// Small letters, but not in triplets; no empty port; the host of this machine goes unnamed for files.
inline std::u16string canonicalAuthority(const SpelledParts& parts) {
    std::u16string result = loweredAscii(parts.authority);
    for (std::size_t at = 0; at < result.size(); ++at) {
        if (result[at] == u'%') result.replace(at, 3, parts.authority, at, 3);
    }
    if (!result.empty() && result.back() == u':') result.pop_back();
    const bool isHere = loweredAscii(parts.scheme) == u"file" && result == u"localhost";
    return isHere ? std::u16string() : result;
}

/// Replaces the first `wanted`; false if there is none.
inline bool rewrite(std::u16string& text, std::u16string_view wanted, std::u16string_view by) {
    const std::size_t at = text.find(wanted);
    if (at != text.npos) text.replace(at, wanted.size(), by);
    return at != text.npos;
}

/// The first ".." and the name before it.
inline bool rewriteStepUp(std::u16string& path) {
    const std::size_t up = path.find(u"/../");
    if (up == path.npos) return false;
    const std::size_t start = up == 0 ? 0 : path.rfind(u'/', up - 1);
    path.replace(start, up + 4 - start, u"/");
    return true;
}

/// By rewriting until there is nothing to rewrite: runs of slashes, then ".", then "..".
inline std::u16string canonicalPath(std::u16string path) {
    path = u'/' + path + u'/';
    while (rewrite(path, u"//", u"/") || rewrite(path, u"/./", u"/") || rewriteStepUp(path)) {
    }
    if (path.size() > 1) path.pop_back();
    return path;
}

inline std::u16string canonicalIRI(const std::u16string& spelled) {
    const SpelledParts parts = partsOfIRI(spelled);
    return loweredAscii(parts.scheme) + u"://" + canonicalAuthority(parts) + canonicalPath(parts.path);
}

/// Plain text with every byte of every name as a triplet. Nothing where no IRI can hold it.
inline std::optional<std::u16string> encodedWhole(const std::u16string& plain, bool mayHoldBytes) {
    const std::u32string points = pointsOf(plain);
    const bool holdsBytes = std::any_of(points.begin(), points.end(), isLoneByte);
    const std::optional<std::string> bytes = encodeName(plain);
    if (!bytes || (holdsBytes && !mayHoldBytes)) return std::nullopt;
    std::u16string encoded;
    for (const char byte : *bytes) {
        encoded += byte == '/' ? u"/" : triplet(static_cast<unsigned char>(byte));
    }
    return encoded;
}

/// What a plain relative text names below a spelled IRI.
inline IRIReading joinedIRI(const std::u16string& base, const std::u16string& relative) {
    if (relative.empty()) return {IRIKind::Valid, base};
    const SpelledParts parts = partsOfIRI(base);
    const auto encoded = encodedWhole(relative, loweredAscii(parts.scheme) == u"file");
    if (!encoded) return {IRIKind::Invalid, {}};
    const bool hasSlash = !parts.path.empty() && parts.path.back() == u'/';
    return spelledIRI(base + (hasSlash ? u"" : u"/") + *encoded);
}

/// The name of a host in plain text: an address and a port are written as they stand.
inline std::optional<std::u16string> encodedHost(const std::u16string& plain) {
    if (!plain.empty() && plain[0] == u'[' && plain.find(u']') != plain.npos) return plain;
    const std::size_t colon = plain.rfind(u':');
    const bool hasPort = colon != plain.npos && isPortWithColon(pointsOf(plain.substr(colon)));
    const auto host = encodedWhole(plain.substr(0, hasPort ? colon : plain.size()), false);
    return host ? std::optional(*host + (hasPort ? plain.substr(colon) : u"")) : std::nullopt;
}

/// The IRI of a plain path, in which two slashes or two backslashes mark an authority.
inline IRIReading iriOfPath(const std::u16string& scheme, const std::u16string& path) {
    const std::u16string mark = path.substr(0, 2);
    const bool isMarked = mark == u"//" || mark == u"\\\\";
    const std::u16string rest = path.substr(isMarked ? 2 : 0);
    const std::size_t slash = isMarked ? std::min(rest.find(u'/'), rest.size()) : 0;
    const auto authority = encodedHost(rest.substr(0, slash));
    const auto names = encodedWhole(rest.substr(slash), scheme == u"file");
    if (!authority || !names) return {IRIKind::Invalid, {}};
    const bool hasRoot = !names->empty() && names->front() == u'/';
    return spelledIRI(scheme + u"://" + *authority + (hasRoot ? u"" : u"/") + *names);
}

}  // namespace reference
