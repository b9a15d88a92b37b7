#pragma once

#include <cstddef>

namespace foundation::storage::sqlite {

/// Fills memory, up to 256 bytes, from the system's random source. IOError if that fails.
void fillRandom(void* out, std::size_t size);

}  // namespace foundation::storage::sqlite
