#pragma once

#include <string>

namespace fl::filesystem::posix {

/// Appends 20 characters of [a-z0-9], each as likely as any other, from the system's random source: more than
/// 100 bits, so that no name is drawn twice. An exception from throwError() without a path where that source
/// fails.
void appendRandomName(std::u16string& out);

/// A fresh name for what is made beside an item to take its place: hidden, and with nothing of the item's own
/// name, which may be as long as a name can be.
std::u16string temporaryName();

}  // namespace fl::filesystem::posix
