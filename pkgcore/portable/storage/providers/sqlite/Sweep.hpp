#pragma once

#include <cstdint>

namespace foundation::storage::sqlite {

class Store;

/// Erases what no entry leads to and nobody uses, of this process or another one, in short transactions. What
/// cannot be erased now is left for the next time.
void sweep(Store& store) noexcept;

/// The same, if this content is an orphan.
void sweepContent(Store& store, std::int64_t content) noexcept;

/// Throws what it is that somebody has swept away what is still being written: who does not see the pins, as
/// where their file was deleted or the store has a second name, takes it for left behind.
[[noreturn]] void failSwept();

}  // namespace foundation::storage::sqlite
