#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Names between UTF-16 and the bytes of the host. Names are UTF-8 whatever the locale. A byte of a name that
/// is not valid UTF-8 stands as U+DC80..U+DCFF in UTF-16 and goes back to that byte, so that no file is out
/// of reach.
namespace fl::filesystem::posix {

/// The most bytes that one UTF-16 unit can need.
inline constexpr std::size_t kMaxBytesPerUnit = 3;

/// Writes the bytes of `text` to `out`, which has room for kMaxBytesPerUnit per unit, and returns how many
/// there are; none is terminated. `kInvalidText` for a NUL and for an unpaired surrogate that stands for no
/// byte.
inline constexpr std::size_t kInvalidText = static_cast<std::size_t>(-1);
std::size_t encodeText(std::u16string_view text, char* out) noexcept;

/// The same for wide characters (UTF-16 or UTF-32 by their size), with room for 4 bytes per character.
std::size_t encodeText(std::wstring_view text, char* out) noexcept;

/// Writes the name that `bytes` stand for to `out`, which has room for one unit per byte, and returns its
/// length. Every sequence of bytes has a name, and encoding that gives the same bytes again.
std::size_t decodeText(std::string_view bytes, char16_t* out) noexcept;

/// The same, behind what is in `out` already.
void appendDecoded(std::string_view bytes, std::u16string& out);

}  // namespace fl::filesystem::posix
