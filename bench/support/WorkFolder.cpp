#include "bench/support/WorkFolder.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <vector>

namespace bench {

namespace fs = std::filesystem;

namespace {

fs::path fromEnvironment(const char* name, const fs::path& otherwise) {
    const char* const value = std::getenv(name);
    return value != nullptr && *value != '\0' ? fs::path(value) : otherwise;
}

std::vector<char> randomBytes(std::size_t size) {
    static std::mt19937_64 random{42};
    std::vector<char> bytes(size);
    std::generate(bytes.begin(), bytes.end(), [] { return static_cast<char>(random()); });
    return bytes;
}

fs::path uniqueFolder(const fs::path& parent) {
    std::string name = (parent / "pkgcore-bench-XXXXXX").string();
    require(::mkdtemp(name.data()) != nullptr, "no scratch folder in " + parent.string());
    return name;
}

}  // namespace

WorkFolder::WorkFolder(const fs::path& parent) : path_(uniqueFolder(parent)) {}

WorkFolder::~WorkFolder() {
    std::error_code ignored;  // what cannot be removed at the end of a measurement harms nobody
    fs::remove_all(path_, ignored);
}

fs::path diskFolder() { return fromEnvironment("PKGCORE_BENCH_DISK", fs::temp_directory_path()); }

fs::path memoryFolder() { return fromEnvironment("PKGCORE_BENCH_MEMORY", "/dev/shm"); }

void writeFile(const fs::path& path, std::size_t size) {
    constexpr std::size_t kChunkSize = 256 * 1024;
    const std::vector<char> chunk = randomBytes(std::min(size, kChunkSize));
    std::ofstream file(path, std::ios::binary);
    for (std::size_t left = size; left > 0;) {
        const std::size_t count = std::min(left, chunk.size());
        file.write(chunk.data(), static_cast<std::streamsize>(count));
        left -= count;
    }
    file.close();
    require(!file.fail(), "cannot write " + path.string());
}

void makeTree(const fs::path& root, std::size_t folders, std::size_t files, std::size_t size) {
    for (std::size_t folder = 0; folder < folders; ++folder) {
        const fs::path path = root / ("folder" + std::to_string(folder));
        fs::create_directories(path);
        for (std::size_t file = 0; file < files; ++file) {
            writeFile(path / ("file" + std::to_string(file) + ".bin"), size);
        }
    }
}

void require(bool fine, std::string_view what) {
    if (!fine) {
        std::fprintf(stderr, "benchmark cannot go on: %.*s\n", static_cast<int>(what.size()), what.data());
        std::exit(1);
    }
}

}  // namespace bench
