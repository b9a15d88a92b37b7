#pragma once

#include <string>

namespace foundation::storage::portable {

/// A fresh path beside an item, for what will take its place.
std::u16string localSibling(const std::u16string& path);

}  // namespace foundation::storage::portable
