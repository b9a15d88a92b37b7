#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace foundation::storage::sqlite {

/// In UTF-16 units: as long as no file system has them, and short enough for a page of a listing.
inline constexpr std::size_t kMaxNameLength = 4096;

/// A name as it is stored: UTF-16, the high byte of each unit first, so that bytes compare as units do. Every
/// sequence of units has its form, unpaired surrogates too.
std::string encodeName(std::u16string_view name);

/// The name that encodeName has given the form of; throws "damaged" for an odd number of bytes.
std::u16string decodeName(std::string_view bytes);

}  // namespace foundation::storage::sqlite
