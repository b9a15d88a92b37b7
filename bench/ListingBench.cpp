// How much a recursive listing costs beside a walk over the kernel's records that widens each name once.

#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include "bench/support/Peers.hpp"
#include "bench/support/Raw.hpp"
#include "bench/support/Suite.hpp"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using Paths = std::vector<std::u16string>;

constexpr std::size_t kFolders = 1000;
constexpr std::size_t kFilesPerFolder = 100;
constexpr std::size_t kLongestPath = 4096;

/// A walk that keeps the widened path of the folder and writes each name behind it.
class RawListing {
public:
    RawListing(const std::string& root, Paths& paths) : paths_(paths) {
        path_.resize(kLongestPath);
        const bench::raw::Descriptor folder(AT_FDCWD, root.c_str(), O_RDONLY | O_DIRECTORY);
        list(folder.get(), widen(root.c_str(), root.size(), 0));
    }

private:
    using Bytes [[gnu::vector_size(8)]] = unsigned char;
    using Units [[gnu::vector_size(16)]] = unsigned short;

    /// Eight ASCII characters at a time; up to seven more than asked for are written.
    std::size_t widen(const char* name, std::size_t size, std::size_t at) {
        for (std::size_t done = 0; done < size; done += sizeof(Bytes)) {
            Bytes bytes;
            std::memcpy(&bytes, name + done, sizeof bytes);
            const auto units = __builtin_convertvector(bytes, Units);
            std::memcpy(path_.data() + at + done, &units, sizeof units);
        }
        return at + size;
    }

    void list(int folder, std::size_t prefix) {
        path_[prefix++] = u'/';
        bench::raw::forEachEntry(folder, [&](const bench::raw::Record& record) {
            const std::size_t end = widen(record.d_name, std::strlen(record.d_name), prefix);
            if (record.d_type == DT_DIR) {
                const bench::raw::Descriptor below(folder, record.d_name,
                                                   O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
                list(below.get(), end);
            } else {
                paths_.emplace_back(path_, 0, end);
            }
        });
    }

    Paths& paths_;
    std::u16string path_;
};

Paths listRaw(const std::u16string& root) {
    Paths paths;
    RawListing(fs::path(root).string(), paths);
    return paths;
}

Paths listWithPkgcore(const std::u16string& root) {
    opc::LocalFileSystemOps local;
    opc::FileSystemOps& ops = local;
    boost::system::error_code error;
    Paths paths;
    ops.getFiles(root, paths, true, error);
    return paths;
}

Paths listWithStd(const std::u16string& root) {
    Paths paths;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(bench::stdPath(root))) {
        if (!entry.is_directory()) {
            paths.push_back(entry.path().u16string());
        }
    }
    return paths;
}

Paths listWithBoost(const std::u16string& root) {
    Paths paths;
    namespace bfs = boost::filesystem;
    for (const bfs::directory_entry& entry : bfs::recursive_directory_iterator(bench::boostPath(root))) {
        if (entry.symlink_status().type() != bfs::directory_file) {
            paths.push_back(bench::fromBoostPath(entry.path()));
        }
    }
    return paths;
}

void requireSame(Paths a, Paths b) {
    std::sort(a.begin(), a.end());
    std::sort(b.begin(), b.end());
    bench::require(a == b && a.size() == kFolders * kFilesPerFolder, "the listings differ");
}

}  // namespace

int main(int argc, char** argv) {
    bench::Session session(argc, argv);
    bench::WorkFolder work(bench::diskFolder());
    bench::makeTree(work.path(), kFolders, kFilesPerFolder, 0);
    const std::u16string root = work.path().u16string();
    const Paths expected = listRaw(root);
    requireSame(expected, listWithPkgcore(root));
    requireSame(expected, listWithStd(root));
    requireSame(expected, listWithBoost(root));

    bench::Suite suite(session, "Listing: 100,000 files in 1,000 folders into a vector of UTF-16 paths",
                       bench::Sampling::single, 31);
    suite.limit("getdents64, widened", [&] { return listRaw(root).size(); });
    suite.row("pkgcore getFiles(folder, files, true, ec)", [&] { return listWithPkgcore(root).size(); })
        .atMost(1.30);
    suite.row("std::filesystem, u16string()", [&] { return listWithStd(root).size(); });
    suite.row("Boost.Filesystem, utf_to_utf", [&] { return listWithBoost(root).size(); });
    suite.run();
    return session.exitCode();
}
