#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace foundation::storage::sqlite {

/// In UTF-16 units: longer than file systems have them. The row of an entry stays within its page then, of
/// which SQLite gives 1000 bytes to each, 80 for all but the name. What a row has in pages of its own may be
/// read as zeros where such a page was lost (see SealedFile.cpp), and the name is what the row is found by.
inline constexpr std::size_t kMaxNameLength = 450;

/// A name as it is stored: UTF-16, the high byte of each unit first, so that bytes compare as units do. Every
/// sequence of units has its form, unpaired surrogates too.
std::string encodeName(std::u16string_view name);

/// The name that encodeName has given the form of; throws "damaged" for an odd number of bytes.
std::u16string decodeName(std::string_view bytes);

}  // namespace foundation::storage::sqlite
