#include <pkgcore/portable/path/PathElements.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace fl::filesystem::syntax {

namespace {

constexpr std::uint64_t kOneInEachUnit = 0x0001'0001'0001'0001;
constexpr std::uint64_t kTopBitOfEachUnit = kOneInEachUnit << 15;

std::uint64_t fourUnits(const char16_t* units) noexcept {
    std::uint64_t word;
    std::memcpy(&word, units, sizeof word);
    return word;
}

/// The top bit of some unit is set exactly where one of the four pairs that begin at `units` is two
/// separators.
std::uint64_t pairsOfSeparators(const char16_t* units, std::uint64_t separators) noexcept {
    const std::uint64_t differences = (fourUnits(units) ^ separators) | (fourUnits(units + 1) ^ separators);
    return (differences - kOneInEachUnit) & ~differences;
}

/// Whether two separators stand side by side. A listing asks this of each path, and almost never is it so:
/// four pairs are compared at once, without a way out in the middle. The last four may have been compared
/// before.
bool hasAdjacentSeparators(std::u16string_view text, char16_t separator) noexcept {
    if (text.size() <= 4) {
        const char16_t pair[] = {separator, separator};
        return text.find(std::u16string_view(pair, 2)) != text.npos;
    }
    const std::uint64_t separators = kOneInEachUnit * separator;
    const char16_t* const lastFour = text.data() + text.size() - 5;
    std::uint64_t found = pairsOfSeparators(lastFour, separators);
    for (const char16_t* units = text.data(); units < lastFour; units += 4) {
        found |= pairsOfSeparators(units, separators);
    }
    return (found & kTopBitOfEachUnit) != 0;
}

/// The length of the path without the separators at its end, the root's excepted.
std::size_t lengthWithoutTrailing(std::u16string_view path, std::size_t rootLength,
                                  std::u16string_view separators) {
    const std::size_t last = path.find_last_not_of(separators);
    const std::size_t length = last == path.npos ? 0 : last + 1;
    return std::max(length, rootLength);
}

/// Where the last element of a path without trailing separators begins.
std::size_t lastElementStart(std::u16string_view path, std::size_t rootLength,
                             std::u16string_view separators) {
    const std::size_t separator = path.find_last_of(separators);
    return separator == path.npos ? rootLength : std::max(separator + 1, rootLength);
}

}  // namespace

void collapseSeparators(std::u16string& path, std::size_t from, char16_t separator) {
    if (!hasAdjacentSeparators(std::u16string_view(path).substr(from), separator)) {
        return;
    }
    const auto bothSeparate = [separator](char16_t left, char16_t right) {
        return left == separator && right == separator;
    };
    const auto start = path.begin() + static_cast<std::ptrdiff_t>(from);
    path.erase(std::unique(start, path.end(), bothSeparate), path.end());
}

void dropTrailingSeparators(std::u16string& path, std::size_t rootLength, std::u16string_view separators) {
    path.erase(lengthWithoutTrailing(path, rootLength, separators));
}

std::u16string_view lastElement(std::u16string_view path, std::size_t rootLength,
                                std::u16string_view separators) {
    path = path.substr(0, lengthWithoutTrailing(path, rootLength, separators));
    return path.substr(lastElementStart(path, rootLength, separators));
}

std::u16string_view withoutLastElement(std::u16string_view path, std::size_t rootLength,
                                       std::u16string_view separators) {
    path = path.substr(0, lengthWithoutTrailing(path, rootLength, separators));
    if (path.size() == rootLength) {
        return {};
    }
    path = path.substr(0, lastElementStart(path, rootLength, separators));
    return path.substr(0, lengthWithoutTrailing(path, rootLength, separators));
}

std::u16string_view extensionOfName(std::u16string_view name) {
    const std::size_t dot = name.rfind(u'.');
    // "." and ".." need no case of their own: nothing follows their last dot.
    return dot == name.npos ? std::u16string_view() : name.substr(dot + 1);
}

std::u16string join(std::u16string_view base, std::u16string_view joint, std::u16string_view rest,
                    std::u16string_view separators) {
    const std::size_t restStart = rest.find_first_not_of(separators);
    if (base.empty() || restStart == rest.npos) {
        return std::u16string(base.empty() ? rest : base);
    }
    const std::u16string_view head = base.substr(0, lengthWithoutTrailing(base, 0, separators));
    const std::u16string_view tail = rest.substr(restStart);
    std::u16string joined;
    joined.reserve(head.size() + joint.size() + tail.size());
    return joined.append(head).append(joint).append(tail);
}

}  // namespace fl::filesystem::syntax
