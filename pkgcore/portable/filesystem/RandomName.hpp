#pragma once

#include <string>

namespace fl::filesystem::posix {

/// Appends 20 characters of [a-z0-9], each as likely as any other, from the system's random source: more than
/// 100 bits, so that no name is drawn twice. An exception from throwError() without a path where that source
/// fails.
void appendRandomName(std::u16string& out);

}  // namespace fl::filesystem::posix
