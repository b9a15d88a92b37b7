#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace foundation::storage::sqlite {

/// A number as it is sealed: the low byte first, on every machine.
using NumberBytes = std::array<char, 8>;
NumberBytes bytesOf(std::int64_t number) noexcept;

/// What the rows of a store are sealed with: XXH3 in 64 bits, over the row and over where it belongs. A row
/// that was changed, or that turns up in the place of another one or in another store, does not fit its seal.
///
/// XXH3 finds changes that happen; it is no protection from somebody who makes them fit.
class Sealer {
public:
    /// `key` is the store's own.
    explicit Sealer(std::int64_t key) noexcept : key_(key) {}

    /// Of bytes that belong to the row with this number.
    std::int64_t seal(std::int64_t row, std::string_view bytes) const noexcept;

private:
    std::int64_t key_;
};

}  // namespace foundation::storage::sqlite
