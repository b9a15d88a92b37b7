// How much the streams cost beside the calls of the system.

#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include "bench/support/Peers.hpp"
#include "bench/support/Raw.hpp"
#include "bench/support/Suite.hpp"

#include <boost/filesystem/fstream.hpp>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFiles = 10000;
constexpr std::size_t kSmallFile = 4096;
constexpr std::size_t kLargeFile = std::size_t{64} * 1024 * 1024;
constexpr std::size_t kLargestChunk = 256 * 1024;
constexpr std::size_t kChunks[] = {256, 4096, 16384};

char* chunkBuffer() {
    static const std::unique_ptr<char[]> buffer(new char[kLargestChunk]);
    return buffer.get();
}

opc::FileSystemOps& ops() {
    static opc::LocalFileSystemOps local;
    return local;
}

boost::shared_ptr<std::istream> pkgcoreInput(const std::u16string& path) {
    boost::system::error_code error;
    return ops().createInputStream(path, std::ios_base::binary, error);
}

boost::shared_ptr<std::ostream> pkgcoreOutput(const std::u16string& path) {
    boost::system::error_code error;
    return ops().createOutputStream(path, std::ios_base::binary, error);
}

void readSmall(std::istream& stream) {
    bench::require(stream.read(chunkBuffer(), kSmallFile).gcount() == kSmallFile, "short read");
}

/// Runs `operation` on each of the paths.
template <typename Path, typename Operation>
auto onEach(const std::vector<Path>& paths, Operation operation) {
    return [&paths, operation] {
        for (const Path& path : paths) {
            operation(path);
        }
    };
}

void measureSmallFiles(bench::Session& session) {
    bench::WorkFolder work(bench::diskFolder());
    std::vector<std::u16string> texts;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < kFiles; ++i) {
        const fs::path path = work.fresh();
        bench::writeFile(path, kSmallFile);
        texts.push_back(path.u16string());
        names.push_back(path.string());
    }
    bench::Suite suite(session, "Streams: open, read 4 KiB, close, of 10,000 files", bench::Sampling::single,
                       41);
    suite.limit("open, read, close", onEach(names, [](const std::string& name) {
                    const bench::raw::Descriptor file(AT_FDCWD, name.c_str(), O_RDONLY);
                    bench::require(::read(file.get(), chunkBuffer(), kSmallFile) == kSmallFile, "short read");
                }));
    suite
        .row("pkgcore createInputStream(path, mode, ec)",
             onEach(texts, [](const std::u16string& text) { readSmall(*pkgcoreInput(text)); }))
        .atMost(1.15);
    suite.row("std::ifstream, path prepared", onEach(names, [](const std::string& name) {
                  std::ifstream stream(name, std::ios_base::binary);
                  readSmall(stream);
              }));
    suite.row("std::ifstream from UTF-16", onEach(texts, [](const std::u16string& text) {
                  std::ifstream stream(bench::stdPath(text), std::ios_base::binary);
                  readSmall(stream);
              }));
    suite.row("boost::filesystem::ifstream from UTF-16", onEach(texts, [](const std::u16string& text) {
                  boost::filesystem::ifstream stream(bench::boostPath(text), std::ios_base::binary);
                  readSmall(stream);
              }));
    suite.run();
}

void readAll(std::istream& stream, std::size_t chunk) {
    std::size_t total = 0;
    while (stream.read(chunkBuffer(), static_cast<std::streamsize>(chunk)) || stream.gcount() > 0) {
        total += static_cast<std::size_t>(stream.gcount());
    }
    bench::require(total == kLargeFile, "short read");
}

void readAllRaw(const fs::path& path, std::size_t chunk) {
    const bench::raw::Descriptor file(AT_FDCWD, path.c_str(), O_RDONLY);
    while (::read(file.get(), chunkBuffer(), chunk) > 0) {
    }
}

void measureReading(bench::Session& session, std::size_t chunk) {
    bench::WorkFolder work(bench::diskFolder());
    const fs::path path = work.fresh();
    const std::u16string text = path.u16string();
    bench::writeFile(path, kLargeFile);
    bench::Suite suite(session, "Streams: read 64 MiB in chunks of " + std::to_string(chunk),
                       bench::Sampling::single);
    suite.limit("read in chunks of 256 KiB", [&] { readAllRaw(path, kLargestChunk); });
    suite.row("read in chunks of this size", [&] { readAllRaw(path, chunk); });
    suite.row("pkgcore createInputStream", [&] { readAll(*pkgcoreInput(text), chunk); });
    suite.row("std::ifstream", [&] {
        std::ifstream stream(path, std::ios_base::binary);
        readAll(stream, chunk);
    });
    suite.run();
}

void copyStreams(std::istream& in, std::ostream& out, std::size_t chunk) {
    while (in.read(chunkBuffer(), static_cast<std::streamsize>(chunk)) || in.gcount() > 0) {
        out.write(chunkBuffer(), in.gcount());
    }
    bench::require(!out.flush().fail(), "short write");
}

void copyRaw(const fs::path& from, const fs::path& to, std::size_t chunk) {
    const bench::raw::Descriptor source(AT_FDCWD, from.c_str(), O_RDONLY);
    const bench::raw::Descriptor destination(AT_FDCWD, to.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    bench::raw::copyContent(source.get(), destination.get(), chunkBuffer(), chunk);
}

void measureCopying(bench::Session& session, std::size_t chunk) {
    bench::WorkFolder work(bench::diskFolder());
    const fs::path from = work.fresh();
    bench::writeFile(from, kLargeFile);
    fs::path to = work.fresh();
    const auto prepare = [&] {
        fs::remove(to);
        to = work.fresh();
        readAllRaw(from, kLargestChunk);
    };
    bench::Suite suite(session, "Streams: file to file, 64 MiB in chunks of " + std::to_string(chunk),
                       bench::Sampling::single);
    suite.limit("read and write, 256 KiB", [&] { copyRaw(from, to, kLargestChunk); }).preparedBy(prepare);
    suite.row("read and write of this size", [&] { copyRaw(from, to, chunk); }).preparedBy(prepare);
    suite
        .row("pkgcore streams",
             [&] { copyStreams(*pkgcoreInput(from.u16string()), *pkgcoreOutput(to.u16string()), chunk); })
        .preparedBy(prepare);
    suite
        .row("std::ifstream, std::ofstream",
             [&] {
                 std::ifstream in(from, std::ios_base::binary);
                 std::ofstream out(to, std::ios_base::binary);
                 copyStreams(in, out, chunk);
             })
        .preparedBy(prepare);
    suite.run();
}

}  // namespace

int main(int argc, char** argv) {
    bench::Session session(argc, argv);
    measureSmallFiles(session);
    for (const std::size_t chunk : kChunks) {
        measureReading(session, chunk);
    }
    for (const std::size_t chunk : kChunks) {
        measureCopying(session, chunk);
    }
    return session.exitCode();
}
