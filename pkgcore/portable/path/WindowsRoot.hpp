#pragma once

#include <cstddef>
#include <string_view>

namespace fl::filesystem::syntax::windows {

/// What a Windows path begins with.
enum class RootKind {
    none,    ///< a name, or a separator: the current folder or the current drive counts
    drive,   ///< C: or C:\ .
    share,   ///< \\server\share
    device,  ///< \\?\C: , \\?\UNC\server\share , \\?\Volume{...} , \\.\pipe
};

/// The root of a path, as lengths in code units. "/" and "\" both separate.
struct Root {
    RootKind kind = RootKind::none;
    std::size_t nameLength = 0;  ///< up to the drive, the share or the device
    std::size_t length = 0;      ///< with the separators after it
};

/// Finds the root. `Char` is char16_t or wchar_t.
template <typename Char>
Root findRoot(std::basic_string_view<Char> path);

extern template Root findRoot(std::basic_string_view<char16_t> path);
extern template Root findRoot(std::basic_string_view<wchar_t> path);

}  // namespace fl::filesystem::syntax::windows
