#include "tests/support/RawFiles.hpp"

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace test {

namespace {

template <typename Result>
Result checked(Result result, const std::string& path) {
    if (result == -1) {
        throw std::system_error(errno, std::system_category(), path);
    }
    return result;
}

class Descriptor {
public:
    Descriptor(const std::string& path, int flags, mode_t mode = 0)
        : Descriptor(AT_FDCWD, path, flags, mode) {}
    Descriptor(int folder, const std::string& path, int flags, mode_t mode = 0)
        : number_(checked(::openat(folder, path.c_str(), flags | O_CLOEXEC, mode), path)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { ::close(number_); }

    int get() const noexcept { return number_; }
    void swap(Descriptor& other) noexcept { std::swap(number_, other.number_); }

private:
    int number_;
};

void writeAt(const Descriptor& file, std::string_view content, off_t offset, const std::string& path) {
    while (!content.empty()) {
        const ssize_t written = checked(::pwrite(file.get(), content.data(), content.size(), offset), path);
        content.remove_prefix(static_cast<std::size_t>(written));
        offset += written;
    }
}

}  // namespace

void makeFile(const std::string& path, std::string_view content, mode_t mode) {
    const Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    writeAt(file, content, 0, path);
    checked(::fchmod(file.get(), mode), path);
}

void writeInPlace(const std::string& path, std::string_view content) {
    const Descriptor file(path, O_WRONLY);
    checked(::write(file.get(), content.data(), content.size()), path);
}

void makeFolder(const std::string& path, mode_t mode) {
    checked(::mkdir(path.c_str(), 0700), path);
    setMode(path, mode);
}

void makeLink(const std::string& target, const std::string& path) {
    checked(::symlink(target.c_str(), path.c_str()), path);
}

void makePipe(const std::string& path) { checked(::mkfifo(path.c_str(), 0644), path); }

void setMode(const std::string& path, mode_t mode) { checked(::chmod(path.c_str(), mode), path); }

void setModifiedTime(const std::string& path, timespec time) {
    const timespec times[2] = {{0, UTIME_OMIT}, time};
    checked(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), path);
}

void makeSparseFile(const std::string& path, off_t size, off_t offset, std::string_view island) {
    const Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC, 0644);
    checked(::ftruncate(file.get(), size), path);
    writeAt(file, island, offset, path);
}

void makeChain(const std::string& base, const std::string& name, int levels) {
    Descriptor folder(base, O_RDONLY | O_DIRECTORY);
    for (int level = 0; level < levels; ++level) {
        checked(::mkdirat(folder.get(), name.c_str(), 0755), name);
        Descriptor inner(folder.get(), name, O_RDONLY | O_DIRECTORY);
        folder.swap(inner);
    }
    writeAt(Descriptor(folder.get(), "leaf", O_WRONLY | O_CREAT | O_EXCL, 0644), "leaf", 0, "leaf");
}

bool isThere(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

struct stat statusOf(const std::string& path) {
    struct stat status {};
    checked(::lstat(path.c_str(), &status), path);
    return status;
}

unsigned modeOf(const std::string& path) { return statusOf(path).st_mode & 07777; }

std::string contentOf(const std::string& path) {
    const Descriptor file(path, O_RDONLY);
    std::string content;
    char chunk[65536];
    while (const ssize_t count = checked(::read(file.get(), chunk, sizeof chunk), path)) {
        content.append(chunk, static_cast<std::size_t>(count));
    }
    return content;
}

std::string linkTextOf(const std::string& path) {
    char target[PATH_MAX];
    const ssize_t size = checked(::readlink(path.c_str(), target, sizeof target), path);
    return std::string(target, static_cast<std::size_t>(size));
}

std::string someBytes(std::size_t count) {
    std::string bytes(count, '\0');
    std::uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

}  // namespace test
