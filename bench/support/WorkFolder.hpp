#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace bench {

/// A scratch folder under `parent` that is removed at the end. Each sample that creates files on a disk takes
/// a fresh place in it: a file system may reuse what was just deleted more slowly than it makes something
/// new.
class WorkFolder {
public:
    explicit WorkFolder(const std::filesystem::path& parent);
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::filesystem::path& path() const noexcept { return path_; }
    /// A path in it that nothing has had before.
    std::filesystem::path fresh() { return path_ / std::to_string(next_++); }

private:
    std::filesystem::path path_;
    std::size_t next_ = 0;
};

/// The folder for scratch data on a disk (PKGCORE_BENCH_DISK, else the temporary folder).
std::filesystem::path diskFolder();
/// The folder for scratch data in memory (PKGCORE_BENCH_MEMORY, else /dev/shm).
std::filesystem::path memoryFolder();

/// Writes a file of `size` bytes of no pattern.
void writeFile(const std::filesystem::path& path, std::size_t size);

/// Makes `folders` folders below `root`, each with `files` files of `size` bytes.
void makeTree(const std::filesystem::path& root, std::size_t folders, std::size_t files, std::size_t size);

/// Ends the process with a text unless `fine`: a measured operation that fails would look fast.
void require(bool fine, std::string_view what);

}  // namespace bench
