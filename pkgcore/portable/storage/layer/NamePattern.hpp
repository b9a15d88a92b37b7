#pragma once

#include <string_view>

namespace foundation::storage::portable {

/// Whether a name matches a pattern in which "*" stands for any characters and "?" for one; letter case
/// counts. Every name matches the empty pattern.
bool matches(std::u16string_view name, std::u16string_view pattern) noexcept;

}  // namespace foundation::storage::portable
