#pragma once

#include <cstddef>
#include <cstdint>

namespace foundation::storage::sqlite {

/// The pages of a store, which are also what is read and written of it.
inline constexpr std::size_t kPageSize = 4096;

/// At the end of each page, where SQLite keeps nothing.
inline constexpr std::size_t kPageSealSize = 12;

/// XXH3 of a page, with its number in the seed and the high byte first, and in front of that half of the XXH3
/// of its first four bytes: a page that was changed, or that turns up in the place of another one, does not
/// fit its seal. `page` is kPageSize bytes, the last ones
/// being the seal's; numbers begin with 1.
void sealPage(char* page, std::uint64_t number) noexcept;

/// Whether a page is as it was sealed.
bool fitsSeal(const char* page, std::uint64_t number) noexcept;

/// Whether its first four bytes are: in a page with the rest of a row that is too long for one, they are the
/// number of the next page. The others are not looked at.
bool fitsLinkSeal(const char* page, std::uint64_t number) noexcept;

/// Whether this is a page of a table or an index, or may be one since it is damaged.
bool isTreePage(const char* page, std::uint64_t number) noexcept;

/// Whether a page was never written: it is all zeros, which no sealed page is.
bool isHole(const char* page) noexcept;

}  // namespace foundation::storage::sqlite
