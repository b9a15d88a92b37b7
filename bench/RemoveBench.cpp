// How much removing a tree costs beside a plain walk with unlinkat. In memory: on a disk, the file system's
// own work on deleted blocks would hide everything else.

#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include "bench/support/Peers.hpp"
#include "bench/support/Raw.hpp"
#include "bench/support/Suite.hpp"

#include <string>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFolders = 100;
constexpr std::size_t kFilesPerFolder = 100;
constexpr std::size_t kSmallFile = 4096;

void removeContentRaw(int folder) {
    bench::raw::forEachEntry(folder, [&](const bench::raw::Record& record) {
        if (record.d_type == DT_DIR) {
            const bench::raw::Descriptor below(folder, record.d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
            removeContentRaw(below.get());
            bench::require(::unlinkat(folder, record.d_name, AT_REMOVEDIR) == 0, record.d_name);
        } else {
            bench::require(::unlinkat(folder, record.d_name, 0) == 0, record.d_name);
        }
    });
}

void removeRaw(const fs::path& root) {
    {
        const bench::raw::Descriptor folder(AT_FDCWD, root.c_str(), O_RDONLY | O_DIRECTORY);
        removeContentRaw(folder.get());
    }
    bench::require(::rmdir(root.c_str()) == 0, root.native());
}

}  // namespace

int main(int argc, char** argv) {
    bench::Session session(argc, argv);
    bench::WorkFolder work(bench::memoryFolder());
    const fs::path root = work.fresh();
    const std::u16string text = root.u16string();
    const auto makeTree = [&] {
        bench::require(!fs::exists(root), "a tree was not removed");
        bench::makeTree(root, kFolders, kFilesPerFolder, kSmallFile);
    };
    opc::LocalFileSystemOps local;
    opc::FileSystemOps& ops = local;

    bench::Suite suite(session, "Remove: a tree of 10,000 files of 4 KiB in memory", bench::Sampling::single,
                       31);
    suite.limit("getdents64, unlinkat", [&] { removeRaw(root); }).preparedBy(makeTree);
    suite.row("pkgcore removeAll(path)", [&] { ops.removeAll(text); }).preparedBy(makeTree).atMost(1.05);
    suite.row("std::filesystem::remove_all", [&] { return fs::remove_all(root); }).preparedBy(makeTree);
    suite.row("boost::filesystem::remove_all", [&] { return boost::filesystem::remove_all(root.native()); })
        .preparedBy(makeTree);
    suite.run();
    return session.exitCode();
}
