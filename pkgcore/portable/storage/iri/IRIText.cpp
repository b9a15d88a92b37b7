#include <pkgcore/portable/storage/iri/IRIText.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/iri/IRICharacters.hpp>
#include <pkgcore/portable/storage/iri/IRIErrors.hpp>
#include <pkgcore/portable/storage/iri/PercentEncoding.hpp>
#include <pkgcore/portable/storage/iri/PlainPath.hpp>
#include <pkgcore/portable/storage/iri/SchemeRegistry.hpp>

#include <algorithm>
#include <vector>

namespace foundation::storage::portable {

namespace {

constexpr std::u16string_view kMark = u"://";
constexpr const char* kInName = "in a name";

std::u16string loweredScheme(std::u16string_view scheme) {
    std::u16string result(scheme.size(), u'\0');
    std::transform(scheme.begin(), scheme.end(), result.begin(), lowered);
    return result;
}

constexpr bool isLowerOrDigit(char16_t unit) noexcept {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'0' && unit <= u'9');
}

/// The small ASCII letters and digits from `from` on end here.
std::size_t endOfLowerOrDigits(std::u16string_view text, std::size_t from) noexcept {
    while (from < text.size() && isLowerOrDigit(text[from])) {
        ++from;
    }
    return from;
}

/// Whether "://" stands there.
bool isMarkAt(std::u16string_view text, std::size_t at) noexcept {
    return text.size() - at >= kMark.size() && text[at] == u':' && text[at + 1] == u'/' &&
           text[at + 2] == u'/';
}

/// The digits of triplets stay capital.
std::u16string loweredAuthority(std::u16string_view authority) {
    std::u16string result;
    for (std::size_t i = 0; i < authority.size();) {
        if (authority[i] == u'%') {
            result += authority.substr(i, 3);
            i += 3;
        } else {
            result += lowered(authority[i++]);
        }
    }
    return result;
}

std::u16string canonicalAuthority(std::u16string_view authority, std::u16string_view scheme) {
    std::u16string result = loweredAuthority(authority);
    if (!result.empty() && result.back() == u':') {
        result.pop_back();  // a port that is not given
    }
    if (isFileScheme(scheme) && result == u"localhost") {
        result.clear();  // the same place, by RFC 8089
    }
    return result;
}

/// The names from the root down; dot segments and empty ones are worked off.
std::vector<std::u16string_view> canonicalNames(std::u16string_view path) {
    std::vector<std::u16string_view> names;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(u'/'), path.size());
        const std::u16string_view name = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (name == u"..") {
            if (!names.empty()) names.pop_back();
        } else if (!name.empty() && name != u".") {
            names.push_back(name);
        }
    }
    return names;
}

/// Whether what stands behind a host's ":" can be its port.
bool isPort(std::u16string_view text) noexcept { return std::all_of(text.begin(), text.end(), isAsciiDigit); }

void requireEncodable(std::u16string_view plain, bool mayHoldBytes) {
    const std::size_t offset = findUnencodable(plain, mayHoldBytes);
    if (offset != std::u16string_view::npos) {
        refuseCharacter(plain, offset, kInName);
    }
}

}  // namespace

IRIParts partsOf(std::u16string_view checked) noexcept {
    const std::size_t mark = std::min(checked.find(u':'), checked.size());
    if (!isMarkAt(checked, mark)) {
        return {};
    }
    const std::size_t authority = mark + kMark.size();
    const std::size_t path = std::min(checked.find(u'/', authority), checked.size());
    return {checked.substr(0, mark), checked.substr(authority, path - authority), checked.substr(path)};
}

bool isPlainIRI(std::u16string_view text) noexcept {
    const std::size_t mark = endOfLowerOrDigits(text, 0);
    if (!isMarkAt(text, mark)) {
        return false;
    }
    const std::size_t host = mark + kMark.size();
    const std::size_t path = endOfLowerOrDigits(text, host);
    return isPlainPath(text.substr(path)) && text.substr(host, path - host) != u"localhost" &&
           isRegisteredScheme(text.substr(0, mark));
}

std::u16string canonicalIRI(std::u16string checked) {
    if (checked.empty() || isPlainIRI(checked)) {
        return checked;
    }
    const IRIParts parts = partsOf(checked);
    std::u16string result = loweredScheme(parts.scheme);
    const std::u16string authority = canonicalAuthority(parts.authority, result);
    result.reserve(checked.size() + 1);
    result += kMark;
    result += authority;
    const std::vector<std::u16string_view> names = canonicalNames(parts.path);
    for (const std::u16string_view name : names) {
        result += u'/';
        result += name;
    }
    if (names.empty()) {
        result += u'/';
    }
    return result;
}

bool isFileScheme(std::u16string_view scheme) noexcept {
    constexpr std::u16string_view kFile = u"file";
    return std::equal(scheme.begin(), scheme.end(), kFile.begin(), kFile.end(),
                      [](char16_t given, char16_t wanted) { return lowered(given) == wanted; });
}

std::u16string pathOnThisHost(const std::u16string& checked) {
    const IRIParts parts = partsOf(checked);
    if (!canonicalAuthority(parts.authority, parts.scheme).empty()) {
        throw vfs::InvalidIRIException("This host has no native paths with an authority", checked);
    }
    return parts.path.empty() ? u"/" : decoded(parts.path);
}

std::u16string joinedIRI(const IRIParts& parts) {
    std::u16string result;
    result.reserve(parts.scheme.size() + kMark.size() + parts.authority.size() + parts.path.size());
    result += parts.scheme;
    result += kMark;
    result += parts.authority;
    result += parts.path;
    return result;
}

void appendPath(std::u16string_view plain, std::u16string& iri) {
    if (kPathCharacters.asciiRun(plain) == plain.size()) {
        iri += plain;
        return;
    }
    requireEncodable(plain, hasByteNames(partsOf(iri).scheme));
    appendEncoded(plain, kSegmentCharacters, iri);
}

void appendAuthority(std::u16string_view plain, std::u16string& iri) {
    requireEncodable(plain, false);
    const std::size_t bracket = plain.rfind(u']');
    if (!plain.empty() && plain[0] == u'[' && bracket != std::u16string_view::npos) {
        iri += plain;  // an address, which has no encoding
        return;
    }
    const std::size_t colon = plain.rfind(u':');
    const bool hasPort = colon != std::u16string_view::npos && isPort(plain.substr(colon + 1));
    appendEncoded(plain.substr(0, hasPort ? colon : plain.size()), kHostCharacters, iri);
    if (hasPort) {
        iri += plain.substr(colon);
    }
}

}  // namespace foundation::storage::portable
