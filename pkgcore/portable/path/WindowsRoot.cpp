#include <pkgcore/portable/path/WindowsRoot.hpp>

namespace fl::filesystem::syntax::windows {

namespace {

template <typename Char>
constexpr Char kSlashes[] = {Char('/'), Char('\\'), Char()};

template <typename Char>
bool isSeparator(Char unit) {
    return unit == Char('/') || unit == Char('\\');
}

template <typename Char>
Char lowered(Char unit) {
    return unit >= Char('A') && unit <= Char('Z') ? static_cast<Char>(unit - Char('A') + Char('a')) : unit;
}

template <typename Char>
bool isLetter(Char unit) {
    return lowered(unit) >= Char('a') && lowered(unit) <= Char('z');
}

template <typename Char>
std::size_t skipSeparators(std::basic_string_view<Char> path, std::size_t from) {
    const std::size_t found = path.find_first_not_of(kSlashes<Char>, from);
    return found == path.npos ? path.size() : found;
}

/// The end of the element that follows the separators at `from`; `from` itself if none follows.
template <typename Char>
std::size_t endOfNextElement(std::basic_string_view<Char> path, std::size_t from) {
    const std::size_t start = skipSeparators(path, from);
    if (start == path.size()) {
        return from;
    }
    const std::size_t end = path.find_first_of(kSlashes<Char>, start);
    return end == path.npos ? path.size() : end;
}

/// Two separators, and no third one, open the name of a share or a device.
template <typename Char>
bool beginsWithTwoSeparators(std::basic_string_view<Char> path) {
    return path.size() > 2 && isSeparator(path[0]) && isSeparator(path[1]) && !isSeparator(path[2]);
}

template <typename Char>
bool isDeviceMark(std::basic_string_view<Char> element) {
    return element.size() == 1 && (element[0] == Char('?') || element[0] == Char('.'));
}

template <typename Char>
bool endsInUNC(std::basic_string_view<Char> path) {
    const std::size_t start = path.size() - 3;
    return isSeparator(path[start - 1]) && lowered(path[start]) == Char('u') &&
           lowered(path[start + 1]) == Char('n') && lowered(path[start + 2]) == Char('c');
}

template <typename Char>
std::size_t endOfShare(std::basic_string_view<Char> path, std::size_t from) {
    return endOfNextElement(path, endOfNextElement(path, from));
}

template <typename Char>
std::size_t endOfDevice(std::basic_string_view<Char> path) {
    constexpr std::size_t kMarkLength = 3;   // \\? or \\.
    constexpr std::size_t kShortestUNC = 7;  // \\?\UNC
    const std::size_t end = endOfNextElement(path, kMarkLength);
    const bool isUNC = end >= kShortestUNC && endsInUNC(path.substr(0, end));
    return isUNC ? endOfShare(path, end) : end;
}

template <typename Char>
Root rootName(std::basic_string_view<Char> path) {
    if (beginsWithTwoSeparators(path)) {
        const bool isDevice = isDeviceMark(path.substr(2, endOfNextElement(path, 2) - 2));
        return isDevice ? Root{RootKind::device, endOfDevice(path)}
                        : Root{RootKind::share, endOfShare(path, 2)};
    }
    if (path.size() > 1 && isLetter(path[0]) && path[1] == Char(':')) {
        return {RootKind::drive, 2};
    }
    return {};
}

}  // namespace

template <typename Char>
Root findRoot(std::basic_string_view<Char> path) {
    Root root = rootName(path);
    root.length = skipSeparators(path, root.nameLength);
    return root;
}

template Root findRoot(std::basic_string_view<char16_t> path);
template Root findRoot(std::basic_string_view<wchar_t> path);

}  // namespace fl::filesystem::syntax::windows
