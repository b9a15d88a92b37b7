#pragma once

#include <string>

namespace fl::filesystem::posix {

/// Throws the exception that an error number of the system stands for, with the path concerned. The one place
/// where errno values become exceptions; call it with the value read once, right after the call that failed.
[[noreturn]] void throwError(int error, const std::u16string& path);

}  // namespace fl::filesystem::posix
