#pragma once

#include <pkgcore/platform/Export.hpp>

#include <cstddef>

/// @file
/// Properties of characters and mappings between them, as the Unicode Character Database gives them.
namespace fl::i18n {

/// What transform() does to a text.
enum class transformation : unsigned {
    lower,  ///< full lower-casing in the root locale (Unicode, section 3.13, toLowercase), final sigma
            ///< included
};
/// transformation::lower, by the name that callers use.
inline constexpr transformation to_lower = transformation::lower;

/// By whose rules scan() classifies.
enum class classification_rules : unsigned {
    posix,  ///< the same for every user, whatever the locale
};
/// classification_rules::posix, by the name that callers use.
inline constexpr classification_rules is_posix = classification_rules::posix;

namespace detail {

/// The class of white space in the masks of scan(): the Unicode property White_Space, no-break spaces
/// included.
inline constexpr unsigned white_space_class = 16;

/// Transforms `length` code units at `in` into `out`, which has room for `capacity` and does not overlap
/// `in`.
///
/// Returns the length that the whole result has. Where that is at most `capacity`, `out` holds the result;
/// otherwise what `out` holds is of no use. Nothing is written behind `capacity`, and no NUL is added. An
/// unpaired surrogate stays as it is. std::length_error for a text of 2^31 code units and more.
PKGCORE_PLATFORM_API std::size_t transform(char16_t* out, std::size_t capacity, const char16_t* in,
                                           std::size_t length, transformation operation);

/// The offset of the first character of one of the classes in `mask`, or `length` where there is none. Bits
/// of `mask` other than white_space_class stand for no class. Never throws.
PKGCORE_PLATFORM_API std::size_t scan(const char16_t* text, std::size_t length, unsigned mask,
                                      classification_rules rules) noexcept;

}  // namespace detail
}  // namespace fl::i18n
