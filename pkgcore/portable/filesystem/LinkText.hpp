#pragma once

#include <string>

namespace fl::filesystem::posix {

/// Reads the text of a link, as the bytes that it consists of, into `text`. 0, or the error number; EINVAL
/// for an item that is no link.
int readLinkText(int directory, const char* path, std::string& text);

}  // namespace fl::filesystem::posix
