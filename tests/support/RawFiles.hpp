#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

/// Making and looking at items by calls of the system alone. A failure is std::system_error: the test cannot
/// go on.
namespace test {

void makeFile(const std::string& path, std::string_view content = {}, mode_t mode = 0644);
/// Into a file that exists, in one go, without changing anything else about it.
void writeInPlace(const std::string& path, std::string_view content);
void makeFolder(const std::string& path, mode_t mode = 0755);
void makeLink(const std::string& target, const std::string& path);
void makePipe(const std::string& path);
void setMode(const std::string& path, mode_t mode);
/// Seconds since 1970 and nanoseconds, of the item itself.
void setModifiedTime(const std::string& path, timespec time);

/// A file of `size` bytes that holds `island` at `offset` and a hole everywhere else.
void makeSparseFile(const std::string& path, off_t size, off_t offset, std::string_view island);

/// `levels` folders called `name` in each other below `base`, with a file called "leaf" (holding "leaf") in
/// the last one. Their path may be longer than the system takes.
void makeChain(const std::string& base, const std::string& name, int levels);

/// Whether anything is there, a dangling link included.
bool isThere(const std::string& path);
/// The status of the item itself.
struct stat statusOf(const std::string& path);
/// The 12 bits of chmod.
unsigned modeOf(const std::string& path);
std::string contentOf(const std::string& path);
std::string linkTextOf(const std::string& path);

/// `count` bytes that do not repeat within any block size.
std::string someBytes(std::size_t count);

}  // namespace test
