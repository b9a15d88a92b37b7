#include "bench/storage/Fixture.hpp"
#include "bench/storage/Suites.hpp"
#include "bench/support/Peers.hpp"
#include "bench/support/Raw.hpp"

#include <sys/stat.h>

#include <cstring>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

namespace bench {

namespace {

namespace fs = std::filesystem;

using boost::system::error_code;

constexpr std::size_t kSmallFile = 4096;
constexpr std::size_t kLargeFile = std::size_t{64} * 1024 * 1024;
constexpr std::size_t kPathLength = 60;

char* chunkBuffer() {
    static const std::unique_ptr<char[]> buffer(new char[kChunk]);
    return buffer.get();
}

void readSmall(opc::FileSystemOps& ops, const std::u16string& path) {
    error_code error;
    const boost::shared_ptr<std::istream> stream = ops.createInputStream(path, std::ios_base::binary, error);
    require(stream->read(chunkBuffer(), kSmallFile).gcount() == kSmallFile, "short read");
}

void readEach(opc::FileSystemOps& ops, const Paths& paths) {
    for (const std::u16string& path : paths) {
        readSmall(ops, path);
    }
}

void readAll(std::istream& stream) {
    std::size_t total = 0;
    while (stream.read(chunkBuffer(), kChunk) || stream.gcount() > 0) {
        total += static_cast<std::size_t>(stream.gcount());
    }
    require(total == kLargeFile, "short read");
}

/// A hundred files of one folder, three folders deep, by IRIs of the same length.
Paths sixtyCharacterPaths() {
    const std::u16string folder = u"mem://store/folder/folder/folder/";
    Paths paths;
    for (std::size_t i = 100; i < 200; ++i) {
        paths.push_back(numbered(folder + std::u16string(kPathLength - folder.size() - 3, u'n'), i));
    }
    return paths;
}

bool isFile(opc::FileSystemOps& ops, const std::u16string& path) {
    error_code error;
    return ops.isFile(path, error);
}

void measureExists(Session& session, const std::string& title, const Paths& there,
                   const std::u16string& path) {
    opc::VirtualFileSystemOps storage = newStorage();
    opc::FileSystemOps& ops = storage;
    std::unordered_map<std::u16string, int> table;
    std::map<std::u16string, int> tree;
    ops.createFolders(ops.getParentPath(path));
    for (const std::u16string& name : there) {
        writeFile(ops, name, 0);
        table.emplace(name, 0);
        tree.emplace(name, 0);
    }
    Suite suite(session, "Storage: exists, an IRI of 60 characters in memory, " + title);
    suite.limit("std::unordered_map::find of the whole key", [&] { return table.find(path) != table.end(); });
    suite
        .row("pkgcore exists(path, ec)",
             [&] {
                 error_code error;
                 return ops.exists(path, error);
             })
        .atMost(8);
    suite.row("pkgcore isFile(path, ec)", [&] { return isFile(ops, path); });
    suite.row("std::map::find of the whole key", [&] { return tree.find(path) != tree.end(); });
    suite.run();
}

void measureExistence(Session& session) {
    Paths paths = sixtyCharacterPaths();
    const std::u16string missing = paths.back();
    paths.pop_back();
    measureExists(session, "existing", paths, paths[50]);
    measureExists(session, "missing", paths, missing);
}

void measureFileScheme(Session& session, const std::string& title, const fs::path& path) {
    opc::VirtualFileSystemOps storage = newStorage();
    opc::FileSystemOps& ops = storage;
    const std::u16string text = path.u16string();
    const std::u16string iri = iriOf(path);
    Suite suite(session, "Storage: isFile on a disk, " + title);
    suite.limit("pkgcore isFile(path, ec), local", [&] { return isFile(localOps(), text); });
    suite.row("pkgcore isFile(path, ec), file://", [&] { return isFile(ops, iri); }).atMost(1.5);
    suite.row("lstat of prepared bytes", [&] {
        struct stat status;
        return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    });
    suite.row("std::filesystem from UTF-16", [&] {
        std::error_code error;
        return fs::is_regular_file(fs::symlink_status(stdPath(text), error));
    });
    suite.run();
}

void measureFileSchemeStatus(Session& session) {
    WorkFolder work(diskFolder());
    const fs::path folder = work.path() / "folder" / "folder";
    fs::create_directories(folder);
    const std::size_t used = folder.native().size() + 1;
    require(used < kPathLength, "the scratch folder has too long a path");
    const fs::path path = folder / std::string(kPathLength - used, 'n');
    measureFileScheme(session, "60 characters, missing", path);
    writeFile(path, 10);
    measureFileScheme(session, "60 characters, existing", path);
}

void measureReading(Session& session) {
    opc::VirtualFileSystemOps storage = newStorage();
    opc::FileSystemOps& ops = storage;
    const std::u16string path = u"mem://store/large";
    writeFile(ops, path, kLargeFile);
    const std::string content(kLargeFile, 'x');
    std::istringstream text(content);
    Suite suite(session, "Storage: read 64 MiB from memory in chunks of 16384", Sampling::single, 31);
    suite.limit("memcpy of such chunks", [&] {
        for (std::size_t at = 0; at < kLargeFile; at += kChunk) {
            std::memcpy(chunkBuffer(), content.data() + at, kChunk);
            benchmark::DoNotOptimize(*chunkBuffer());
        }
    });
    suite
        .row("pkgcore createInputStream, read",
             [&] {
                 error_code error;
                 readAll(*ops.createInputStream(path, std::ios_base::binary, error));
             })
        .atMost(1 / 0.7);
    suite.row("std::istringstream, read", [&] {
        text.clear();
        text.seekg(0);
        readAll(text);
    });
    suite.run();
}

void measureWriting(Session& session) {
    opc::VirtualFileSystemOps storage = newStorage();
    opc::FileSystemOps& ops = storage;
    const std::u16string path = u"mem://store/large";
    const auto empty = [&] { writeFile(ops, path, 0); };
    Suite suite(session, "Storage: write 64 MiB to memory in chunks of 16384", Sampling::single, 31);
    suite.limit("memcpy to fresh memory", [&] {
        const std::unique_ptr<char[]> copy(new char[kLargeFile]);
        for (std::size_t at = 0; at < kLargeFile; at += kChunk) {
            std::memcpy(copy.get() + at, chunkBuffer(), kChunk);
        }
        return copy[kLargeFile - 1];
    });
    suite.row("pkgcore createOutputStream, write, flush", [&] { writeFile(ops, path, kLargeFile); })
        .preparedBy(empty);
    suite.row("std::ostringstream, write", [] {
        std::ostringstream stream;
        for (std::size_t at = 0; at < kLargeFile; at += kChunk) {
            stream.write(chunkBuffer(), kChunk);
        }
        return stream.tellp();
    });
    suite.run();
}

/// The same small files on the disk and in memory.
struct SmallFiles {
    explicit SmallFiles(std::size_t count) : contents(count, std::string(kSmallFile, 'x')) {
        for (std::size_t i = 0; i < count; ++i) {
            const fs::path path = work.fresh();
            writeFile(path, kSmallFile);
            names.push_back(path.string());
            local.push_back(path.u16string());
            memory.push_back(numbered(u"mem://store/small-file-", i));
            writeFile(storage(), memory.back(), kSmallFile);
        }
    }

    opc::FileSystemOps& storage() { return backEnd; }

    void readByCalls() const {
        for (const std::string& name : names) {
            const raw::Descriptor file(AT_FDCWD, name.c_str(), O_RDONLY);
            require(::read(file.get(), chunkBuffer(), kSmallFile) == kSmallFile, "short read");
        }
    }

    void copyToStreams() const {
        for (const std::string& content : contents) {
            std::istream stream(nullptr);
            benchmark::DoNotOptimize(stream.rdbuf());
            std::memcpy(chunkBuffer(), content.data(), kSmallFile);
            benchmark::DoNotOptimize(*chunkBuffer());
        }
    }

    WorkFolder work{diskFolder()};
    opc::VirtualFileSystemOps backEnd = newStorage();
    Paths local;
    Paths memory;
    std::vector<std::string> names;
    std::vector<std::string> contents;
};

Suite& addRows(Suite& suite, SmallFiles& files, double goal) {
    suite.limit("pkgcore createInputStream, on the disk", [&files] { readEach(localOps(), files.local); });
    Row& row = suite.row("pkgcore createInputStream, in memory",
                         [&files] { readEach(files.storage(), files.memory); });
    if (goal > 0) {
        row.atMost(goal);
    }
    suite.row("open, read, close, on the disk", [&files] { files.readByCalls(); });
    suite.row("construct a std::istream, memcpy", [&files] { files.copyToStreams(); });
    return suite;
}

/// Over and over, as programs use their files; and once after other work, when no cache holds anything of
/// them.
void measureSmallFiles(Session& session) {
    SmallFiles few(100);
    Suite again(session, "Storage: open, read 4 KiB, close, of 100 files over and over", Sampling::batched);
    addRows(again, few, 1.0 / 3).run();
    SmallFiles many(1000);
    Suite once(session, "Storage: open, read 4 KiB, close, of 1,000 files after other work",
               Sampling::single);
    addRows(once, many, 0).run();
}

}  // namespace

void measureStorageFiles(Session& session) {
    measureExistence(session);
    measureFileSchemeStatus(session);
    measureReading(session);
    measureWriting(session);
    measureSmallFiles(session);
}

}  // namespace bench
