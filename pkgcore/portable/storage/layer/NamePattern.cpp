#include <pkgcore/portable/storage/layer/NamePattern.hpp>

#include <pkgcore/portable/i18n/CodePoints.hpp>

namespace foundation::storage::portable {

namespace {

constexpr std::size_t kNone = std::u16string_view::npos;

/// Behind the character at `position`.
std::size_t step(std::u16string_view text, std::size_t position) noexcept {
    fl::i18n::portable::nextCodePoint(text.data(), position, text.size());
    return position;
}

}  // namespace

// When a character does not fit, the last star takes one more; earlier stars never have to.
bool matches(std::u16string_view name, std::u16string_view pattern) noexcept {
    if (pattern.empty()) {
        return true;
    }
    std::size_t at = 0;
    std::size_t inPattern = 0;
    std::size_t star = kNone;
    std::size_t starEnd = 0;
    while (at < name.size()) {
        const bool hasMore = inPattern < pattern.size();
        if (hasMore && pattern[inPattern] == u'*') {
            star = inPattern++;
            starEnd = at;
        } else if (hasMore && pattern[inPattern] == u'?') {
            at = step(name, at);
            ++inPattern;
        } else if (hasMore && pattern[inPattern] == name[at]) {
            ++at;
            ++inPattern;
        } else if (star != kNone) {
            starEnd = step(name, starEnd);
            at = starEnd;
            inPattern = star + 1;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u'*', inPattern) == kNone;
}

}  // namespace foundation::storage::portable
