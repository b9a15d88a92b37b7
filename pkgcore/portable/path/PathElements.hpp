#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What both path syntaxes share once the root of a path is known: the elements after it.
///
/// `rootLength` is the number of code units that belong to the root, its separators included; `separators`
/// holds every character that separates.
namespace fl::filesystem::syntax {

/// Collapses runs of `separator` from position `from` on to one each, in place. Costs one fast scan and no
/// allocation where there is nothing to do.
void collapseSeparators(std::u16string& path, std::size_t from, char16_t separator);

/// Drops the separators at the end, in place, but none of the root's.
void dropTrailingSeparators(std::u16string& path, std::size_t rootLength, std::u16string_view separators);

/// The last element; empty if there is none after the root. Separators at the end do not count.
std::u16string_view lastElement(std::u16string_view path, std::size_t rootLength,
                                std::u16string_view separators);

/// What holds the last element: the path before it, at least the root; empty if there is no element.
std::u16string_view withoutLastElement(std::u16string_view path, std::size_t rootLength,
                                       std::u16string_view separators);

/// The text after the last dot of a name, without the dot. "." and ".." have no extension.
std::u16string_view extensionOfName(std::u16string_view name);

/// `base` without its trailing separators, `joint`, and `rest` without its leading ones. Where one of the two
/// has nothing to give (`base` is empty, `rest` is empty or separators alone) the other as it stands.
std::u16string join(std::u16string_view base, std::u16string_view joint, std::u16string_view rest,
                    std::u16string_view separators);

}  // namespace fl::filesystem::syntax
