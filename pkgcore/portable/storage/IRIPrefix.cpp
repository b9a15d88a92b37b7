#include <pkgcore/platform/storage/IRIPrefix.hpp>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace foundation::storage::vfs {

namespace {

/// In lower case.
constexpr std::u16string_view kSchemes[] = {u"file", u"mem", u"sqlite", u"zip", u"s3", u"dav"};

constexpr std::u16string_view kSchemeEnd = u"://";

/// Schemes are ASCII, and their letter case does not count (RFC 3986, 3.1).
constexpr char16_t lowered(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
}

bool beginsWithScheme(std::u16string_view text, std::u16string_view scheme) noexcept {
    const std::size_t length = scheme.size();
    return text.size() >= length && text.substr(length, kSchemeEnd.size()) == kSchemeEnd &&
           std::equal(scheme.begin(), scheme.end(), text.begin(),
                      [](char16_t wanted, char16_t found) { return wanted == lowered(found); });
}

}  // namespace

bool hasIRIPrefix(const std::u16string& path) noexcept {
    return std::any_of(std::begin(kSchemes), std::end(kSchemes),
                       [&path](std::u16string_view scheme) { return beginsWithScheme(path, scheme); });
}

}  // namespace foundation::storage::vfs
