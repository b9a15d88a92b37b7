#pragma once

#include <cstddef>
#include <cstdint>

namespace foundation::storage::sqlite {

/// The pages of a store, which are also what is read and written of it.
inline constexpr std::size_t kPageSize = 4096;

/// At the end of each page, where SQLite keeps nothing.
inline constexpr std::size_t kPageSealSize = 8;

/// XXH3 of a page, with its number in the seed and the high byte first: a page that was changed, or that
/// turns up in the place of another one, does not fit its seal. `page` is kPageSize bytes, the last ones
/// being the seal's; numbers begin with 1.
void sealPage(char* page, std::uint64_t number) noexcept;

/// Whether a page is as it was sealed.
bool fitsSeal(const char* page, std::uint64_t number) noexcept;

/// Whether a page was never written: it is all zeros, which no sealed page is.
bool isHole(const char* page) noexcept;

}  // namespace foundation::storage::sqlite
