#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

/// Paths by the rules of docs/paths.md, for comparison: a path is a root and a list of names, and every other
/// form is put together from those.
namespace reference {

using PathText = std::u16string;

struct PathParts {
    PathText root;  ///< with the separator behind it, if there is one
    std::vector<PathText> names;
    bool isAbsolute;
};

inline std::vector<PathText> namesBetween(const PathText& path, char16_t separator) {
    std::vector<PathText> names(1);
    for (const char16_t unit : path) {
        if (unit != separator) {
            names.back() += unit;
        } else if (!names.back().empty()) {
            names.emplace_back();
        }
    }
    if (names.back().empty()) names.pop_back();
    return names;
}

inline PathText joinedNames(const std::vector<PathText>& names, std::size_t count, char16_t separator) {
    PathText joined;
    for (std::size_t i = 0; i < count; ++i)
        joined += (i > 0 ? PathText(1, separator) : PathText()) + names[i];
    return joined;
}

/// The text after the last dot of a name.
inline PathText extensionOfName(const PathText& name) {
    PathText extension;
    bool found = false;
    for (const char16_t unit : name) {
        if (unit == u'.') {
            found = true;
            extension.clear();
        } else if (found) {
            extension += unit;
        }
    }
    return extension;
}

/// What both syntaxes make of their roots and names.
template <typename Syntax>
struct PathForms {
    static PathText tidied(const PathText& path) {
        const PathParts parts = Syntax::take(path);
        return parts.root + joinedNames(parts.names, parts.names.size(), Syntax::kSeparator);
    }

    static PathText filename(const PathText& path) {
        const PathParts parts = Syntax::take(path);
        return parts.names.empty() ? PathText() : parts.names.back();
    }

    static PathText parent(const PathText& path) {
        const PathParts parts = Syntax::take(path);
        if (parts.names.empty()) return {};
        return parts.root + joinedNames(parts.names, parts.names.size() - 1, Syntax::kSeparator);
    }

    static PathText extension(const PathText& path) { return extensionOfName(filename(path)); }

    static bool isAbsolute(const PathText& path) { return Syntax::take(path).isAbsolute; }

    /// One separator between; nothing is added to or by an empty text, and nothing by separators alone.
    static PathText joined(PathText base, PathText rest, char16_t separator) {
        if (base.empty()) return rest;
        if (Syntax::isDriveAlone(base) && (rest.empty() || !Syntax::separates(rest[0]))) return base + rest;
        while (!rest.empty() && Syntax::separates(rest[0])) rest.erase(0, 1);
        if (rest.empty()) return base;
        while (!base.empty() && Syntax::separates(base.back())) base.pop_back();
        return base + separator + rest;
    }
};

struct PosixPaths : PathForms<PosixPaths> {
    static constexpr char16_t kSeparator = u'/';
    static bool separates(char16_t unit) { return unit == u'/'; }
    static bool isDriveAlone(const PathText&) { return false; }

    static PathParts take(const PathText& path) {
        const bool isRooted = !path.empty() && path[0] == u'/';
        return {isRooted ? u"/" : u"", namesBetween(path, u'/'), isRooted};
    }
};

struct WindowsPaths : PathForms<WindowsPaths> {
    static constexpr char16_t kSeparator = u'\\';
    static bool separates(char16_t unit) { return unit == u'/' || unit == u'\\'; }
    static bool isDriveAlone(const PathText& path) { return path.size() == 2 && hasDrive(path); }

    static PathText native(PathText path) {
        std::replace(path.begin(), path.end(), u'/', u'\\');
        return path;
    }

    static PathText generic(PathText path) {
        std::replace(path.begin(), path.end(), u'\\', u'/');
        return path;
    }

    static PathParts take(const PathText& given) {
        const PathText path = native(given);
        if (opensWithTwo(path)) return takeRemote(path);
        const PathText drive = hasDrive(path) ? path.substr(0, 2) : PathText();
        const PathText rest = path.substr(drive.size());
        const bool isRooted = !rest.empty() && rest[0] == u'\\';
        return {drive + (isRooted ? u"\\" : u""), namesBetween(rest, u'\\'), isRooted && !drive.empty()};
    }

    /// A tidied absolute path as the host takes it to the letter: dots are worked off, never above the root.
    static PathText access(const PathText& path) {
        const PathParts parts = take(path);
        if (!parts.isAbsolute || isDevice(path)) return path;
        std::vector<PathText> names;
        for (const PathText& name : parts.names) {
            if (name != u"." && name != u"..") names.push_back(name);
            if (name == u".." && !names.empty()) names.pop_back();
        }
        const bool isShare = opensWithTwo(path);
        PathText root = isShare ? u"UNC\\" + parts.root.substr(2) : parts.root;
        if (root.back() != u'\\') root += u'\\';
        return u"\\\\?\\" + root + joinedNames(names, names.size(), u'\\');
    }

private:
    static bool hasDrive(const PathText& path) {
        return path.size() > 1 && path[1] == u':' &&
               ((path[0] >= u'a' && path[0] <= u'z') || (path[0] >= u'A' && path[0] <= u'Z'));
    }

    static bool opensWithTwo(const PathText& path) {
        return path.size() > 2 && path[0] == u'\\' && path[1] == u'\\' && path[2] != u'\\';
    }

    static bool isDevice(const PathText& path) {
        const std::vector<PathText> names = namesBetween(path, u'\\');
        return opensWithTwo(path) && (names[0] == u"?" || names[0] == u".");
    }

    static bool isUNC(const PathText& name) {
        return name.size() == 3 && (name[0] | 0x20) == u'u' && (name[1] | 0x20) == u'n' &&
               (name[2] | 0x20) == u'c';
    }

    /// Two names are the root: a server and its share, or a mark and a device; four where that is UNC.
    static PathParts takeRemote(const PathText& path) {
        std::vector<PathText> names = namesBetween(path, u'\\');
        const bool isLong = isDevice(path) && names.size() > 1 && isUNC(names[1]);
        const std::size_t count = std::min<std::size_t>(isLong ? 4 : 2, names.size());
        PathText root = u"\\\\" + joinedNames(names, count, u'\\');
        if (names.size() > count || path.back() == u'\\') root += u'\\';
        names.erase(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(count));
        return {root, names, true};
    }
};

}  // namespace reference
