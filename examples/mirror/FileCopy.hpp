#pragma once

#include "Place.hpp"

#include <cstdint>

namespace mirror {

/// The length of a file. Throws if it cannot be read.
std::uintmax_t lengthOf(const Item& file);

/// Whether `copy` is a file of the same length and either of the same time or of the same content. Throws if
/// that cannot be found out.
bool isUpToDate(const Item& original, const Item& copy);

/// Copies content, permissions and time, or throws. What is there stays until the new file is complete; a
/// link there gives way to the file.
void copyFile(const Item& original, const Item& copy);

/// Whether `copy` is a link with the same text.
bool isSameLink(const Item& original, const Item& copy);

/// Copies a link of this machine with its text to this machine; what is there stays until then.
void copyLink(const Item& original, const Item& copy);

}  // namespace mirror
