#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace test {

/// The place of a virtual function in the table, counted from 0, by the Itanium C++ ABI (2.3): a pointer to
/// the member holds the offset plus 1 on most hosts, the offset on some.
template <typename Member>
std::size_t slotOf(Member member) {
    std::uintptr_t stored;
    static_assert(sizeof member >= sizeof stored);
    std::memcpy(&stored, &member, sizeof stored);
    return (stored & ~std::uintptr_t{1}) / sizeof(void*);
}

}  // namespace test
