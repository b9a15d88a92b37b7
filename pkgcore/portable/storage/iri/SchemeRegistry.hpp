#pragma once

#include <string>
#include <string_view>

/// The schemes of storage systems: those known from the start, and every one that was mounted in this
/// process. Any thread may ask and add at any time; asking takes no lock.
namespace foundation::storage::portable {

/// In any letter case.
bool isRegisteredScheme(std::u16string_view scheme) noexcept;

/// Whether names of this scheme may hold bytes that are no UTF-8. In any letter case.
bool hasByteNames(std::u16string_view scheme) noexcept;

/// Adds a scheme, in any letter case, for the rest of the process. A scheme that has had byte names once
/// keeps them.
void registerScheme(std::u16string_view scheme, bool hasByteNames);

/// The length of the registered scheme with which the text begins before "://", or 0.
std::size_t registeredPrefix(std::u16string_view text) noexcept;

}  // namespace foundation::storage::portable
