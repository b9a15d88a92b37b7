// How much a status query costs beside the one call of the system that it cannot do without.

#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include "bench/support/Peers.hpp"
#include "bench/support/Suite.hpp"
#include "bench/support/WorkFolder.hpp"

#include <sys/stat.h>

#include <string>

namespace {

namespace fs = std::filesystem;

/// `folders` folders below `root` and a name in the last one, `length` characters in all.
fs::path pathOfLength(const fs::path& root, std::size_t folders, std::size_t length) {
    fs::path path = root;
    for (std::size_t i = 0; i < folders; ++i) {
        path /= "folder";
    }
    const std::size_t used = path.native().size() + 1;
    bench::require(used < length, "the scratch folder has too long a path");
    return path / std::string(length - used, 'n');
}

void measure(bench::Session& session, const std::string& title, const fs::path& path) {
    const std::u16string text = path.u16string();
    const std::string bytes = path.string();
    opc::LocalFileSystemOps local;
    opc::FileSystemOps& ops = local;
    bench::Suite suite(session, "Status: isFile, " + title);
    suite.limit("lstat of prepared bytes", [&] {
        struct stat status;
        return ::lstat(bytes.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    });
    suite
        .row("pkgcore isFile(path, ec)",
             [&] {
                 boost::system::error_code error;
                 return ops.isFile(text, error);
             })
        .atMost(1.08);
    suite.row("pkgcore exists(path, ec)", [&] {
        boost::system::error_code error;
        return ops.exists(text, error);
    });
    suite.row("std::filesystem from UTF-16", [&] {
        std::error_code error;
        return fs::is_regular_file(fs::symlink_status(bench::stdPath(text), error));
    });
    suite.row("Boost.Filesystem from UTF-16", [&] {
        boost::system::error_code error;
        return boost::filesystem::symlink_status(bench::boostPath(text), error).type() ==
               boost::filesystem::regular_file;
    });
    suite.run();
}

}  // namespace

int main(int argc, char** argv) {
    bench::Session session(argc, argv);
    bench::WorkFolder work(bench::diskFolder());
    const fs::path shortPath = pathOfLength(work.path(), 3, 60);
    const fs::path longPath = pathOfLength(work.path(), 10, 200);
    fs::create_directories(longPath.parent_path());
    measure(session, "60 characters, missing", shortPath);
    measure(session, "200 characters, missing", longPath);
    bench::writeFile(shortPath, 10);
    bench::writeFile(longPath, 10);
    measure(session, "60 characters, existing", shortPath);
    measure(session, "200 characters, existing", longPath);
    return session.exitCode();
}
