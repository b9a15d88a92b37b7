// The main function of a fuzz target that is built without libFuzzer: runs the target once over each file
// below the folders given. An empty corpus is a failure, since it would prove nothing.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesBelow(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<char> contentOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + file.string());
    return {std::istreambuf_iterator<char>(in), {}};
}

void replay(const fs::path& file) {
    // Named before it runs, so that a crash tells which seed it was.
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);
    const std::vector<char> content = contentOf(file);
    // An exact heap copy, as libFuzzer makes it: a sanitizer sees a read of one byte too many.
    const std::vector<std::uint8_t> input(content.begin(), content.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

std::size_t replayFolder(const fs::path& folder) {
    const std::vector<fs::path> files = filesBelow(folder);
    for (const fs::path& file : files) replay(file);
    return files.size();
}

}  // namespace

int main(int argc, char** argv) try {
    std::size_t count = 0;
    for (int index = 1; index < argc; ++index) count += replayFolder(argv[index]);
    std::printf("%zu seeds replayed\n", count);
    return count > 0 ? 0 : 1;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
