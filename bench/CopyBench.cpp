// How much copying costs beside plain loops over read and write.

#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include "bench/support/Peers.hpp"
#include "bench/support/Raw.hpp"
#include "bench/support/Suite.hpp"

#include <sys/stat.h>

#include <functional>
#include <memory>
#include <string>

namespace {

namespace fs = std::filesystem;
namespace bfs = boost::filesystem;

constexpr std::size_t kMebi = 1024 * 1024;
constexpr std::size_t kLargeFile = 256 * kMebi;
constexpr std::size_t kFolders = 100;
constexpr std::size_t kFilesPerFolder = 100;
constexpr std::size_t kSmallFile = 4096;
constexpr std::size_t kChunk = 256 * 1024;

using Copy = std::function<void(const fs::path& from, const fs::path& to)>;

char* chunkBuffer() {
    static const std::unique_ptr<char[]> buffer(new char[kChunk]);
    return buffer.get();
}

void copyFileRaw(int fromFolder, const char* from, int toFolder, const char* to) {
    const bench::raw::Descriptor source(fromFolder, from, O_RDONLY);
    const bench::raw::Descriptor destination(toFolder, to, O_WRONLY | O_CREAT | O_EXCL, 0644);
    bench::raw::copyContent(source.get(), destination.get(), chunkBuffer(), kChunk);
}

void copyFolderRaw(int from, int toFolder, const char* to) {
    bench::require(::mkdirat(toFolder, to, 0755) == 0, to);
    const bench::raw::Descriptor destination(toFolder, to, O_RDONLY | O_DIRECTORY);
    bench::raw::forEachEntry(from, [&](const bench::raw::Record& record) {
        if (record.d_type == DT_DIR) {
            const bench::raw::Descriptor below(from, record.d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
            copyFolderRaw(below.get(), destination.get(), record.d_name);
        } else {
            copyFileRaw(from, record.d_name, destination.get(), record.d_name);
        }
    });
}

void copyWithPkgcore(const fs::path& from, const fs::path& to) {
    opc::LocalFileSystemOps local;
    opc::FileSystemOps& ops = local;
    ops.copy(from.u16string(), to.u16string(), opc::Fail);
}

/// A row whose every sample copies to a fresh place; what the sample before made is removed first, and the
/// source is read so that it is in memory.
class CopyRows {
public:
    CopyRows(bench::Suite& suite, bench::WorkFolder& work, fs::path source)
        : suite_(suite), work_(work), source_(std::move(source)) {}

    void limit(const std::string& name, Copy copy) {
        prepared(suite_.limit(name, operation(std::move(copy))));
    }
    bench::Row& row(const std::string& name, Copy copy) {
        return prepared(suite_.row(name, operation(std::move(copy))));
    }

private:
    std::function<void()> operation(Copy copy) {
        return [this, copy = std::move(copy)] { copy(source_, destination_); };
    }

    bench::Row& prepared(bench::Row& row) {
        return row.preparedBy([this] {
            fs::remove_all(destination_);
            destination_ = work_.fresh();
            if (fs::is_regular_file(source_)) {
                warm();
            }
        });
    }

    void warm() {
        const bench::raw::Descriptor source(AT_FDCWD, source_.c_str(), O_RDONLY);
        while (::read(source.get(), chunkBuffer(), kChunk) > 0) {
        }
    }

    bench::Suite& suite_;
    bench::WorkFolder& work_;
    fs::path source_;
    fs::path destination_ = work_.fresh();
};

void measureLargeFile(bench::Session& session) {
    bench::WorkFolder work(bench::diskFolder());
    const fs::path source = work.fresh();
    bench::writeFile(source, kLargeFile);
    bench::Suite suite(session, "Copy: a file of 256 MiB on a disk", bench::Sampling::single, 21);
    CopyRows rows(suite, work, source);
    rows.limit("read and write, 256 KiB", [](const fs::path& from, const fs::path& to) {
        copyFileRaw(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str());
    });
    rows.row("pkgcore copy(from, to, Fail)", copyWithPkgcore).atMost(0.8);
    rows.row("std::filesystem::copy_file",
             [](const fs::path& from, const fs::path& to) { fs::copy_file(from, to); });
    rows.row("boost::filesystem::copy_file (forces to disk)",
             [](const fs::path& from, const fs::path& to) { bfs::copy_file(from.native(), to.native()); });
    suite.run();
}

void measureTree(bench::Session& session) {
    bench::WorkFolder work(bench::memoryFolder());
    const fs::path source = work.fresh();
    bench::makeTree(source, kFolders, kFilesPerFolder, kSmallFile);
    bench::Suite suite(session, "Copy: a tree of 10,000 files of 4 KiB in memory", bench::Sampling::single,
                       31);
    CopyRows rows(suite, work, source);
    rows.limit("openat, read, write", [](const fs::path& from, const fs::path& to) {
        const bench::raw::Descriptor folder(AT_FDCWD, from.c_str(), O_RDONLY | O_DIRECTORY);
        copyFolderRaw(folder.get(), AT_FDCWD, to.c_str());
    });
    rows.row("pkgcore copy(from, to, Fail)", copyWithPkgcore).atMost(1.10);
    rows.row("std::filesystem::copy, recursive", [](const fs::path& from, const fs::path& to) {
        fs::copy(from, to, fs::copy_options::recursive);
    });
    rows.row("boost::filesystem::copy, recursive", [](const fs::path& from, const fs::path& to) {
        bfs::copy(from.native(), to.native(), bfs::copy_options::recursive);
    });
    suite.run();
}

}  // namespace

int main(int argc, char** argv) {
    bench::Session session(argc, argv);
    measureTree(session);
    measureLargeFile(session);
    return session.exitCode();
}
