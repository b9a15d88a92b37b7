#pragma once

#include <cstdint>

namespace foundation::storage::sqlite {

class Store;

/// Erases what no entry leads to and nobody uses, of this process or another one, in short transactions. What
/// cannot be erased now is left for the next time.
void sweep(Store& store) noexcept;

/// The same, if this content is an orphan.
void sweepContent(Store& store, std::int64_t content) noexcept;

}  // namespace foundation::storage::sqlite
