#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The border between plain names and encoded IRIs. Every plain text has one encoding: what may stand for
/// itself does, everything else is the triplets of its UTF-8, with capital digits.
namespace foundation::storage::portable {

class LiteralSet;

/// Appends one character, or the triplets for it. A unit from U+DC80 to U+DCFF is the triplet of its byte.
void appendEncoded(char32_t point, const LiteralSet& literals, std::u16string& out);

/// Where a plain text holds what no IRI can: a NUL, an unpaired surrogate and, unless `mayHoldBytes`, one
/// that stands for a byte. npos if nowhere.
std::size_t findUnencodable(std::u16string_view plain, bool mayHoldBytes) noexcept;

/// Appends a plain text without such a place. A "/" stays what it is.
void appendEncoded(std::u16string_view plain, const LiteralSet& literals, std::u16string& out);

/// The plain text of an encoded one that was checked before.
std::u16string decoded(std::u16string_view encoded);

}  // namespace foundation::storage::portable
