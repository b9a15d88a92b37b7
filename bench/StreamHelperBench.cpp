// Copying between byte streams: the loop of this library beside the bare calls and what else moves streams.

#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/streams/ByteArrayInAdaptor.hpp>
#include <pkgcore/streams/ByteArrayOutAdaptor.hpp>
#include <pkgcore/streams/StdIStreamAdaptor.hpp>
#include <pkgcore/streams/StdOStreamAdaptor.hpp>
#include <pkgcore/streams/StreamHelper.hpp>

#include "bench/support/Raw.hpp"
#include "bench/support/Suite.hpp"

#include <boost/iostreams/copy.hpp>
#include <boost/iostreams/device/file_descriptor.hpp>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kChunk = 16384;
constexpr std::size_t kLargeChunk = 256 * 1024;
constexpr std::size_t kContent = std::size_t{64} * 1024 * 1024;

/// Two files: one with content, and a name for its copy that is new in each sample.
class FilePair {
public:
    FilePair() { bench::writeFile(from, kContent); }

    /// Warm data, and no block of an earlier copy to give back.
    void prepare() {
        fs::remove(to);
        to = work_.fresh();
        std::ifstream in(from, std::ios_base::binary);
        std::vector<char> buffer(kLargeChunk);
        while (in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()))) {
        }
    }

private:
    bench::WorkFolder work_{bench::diskFolder()};

public:
    const fs::path from = work_.fresh();
    fs::path to = work_.fresh();
};

void copyRaw(const FilePair& files, std::size_t chunk) {
    std::vector<char> buffer(chunk);
    const bench::raw::Descriptor source(AT_FDCWD, files.from.c_str(), O_RDONLY);
    const bench::raw::Descriptor destination(AT_FDCWD, files.to.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    bench::raw::copyContent(source.get(), destination.get(), buffer.data(), chunk);
}

void copyWithStreamsOfTheLibrary(const FilePair& files) {
    opc::LocalFileSystemOps ops;
    const auto in = ops.createInputStream(files.from.u16string(), std::ios_base::binary);
    const auto out = ops.createOutputStream(files.to.u16string(), std::ios_base::binary);
    bench::require(opc::StreamHelper::copyStreamToStream(*in, *out) && out->flush().good(), "copy");
}

/// Standard file streams, with buffers of their own size unless another one is given.
template <typename Copy>
auto withStandardStreams(const FilePair& files, std::size_t buffer, Copy copy) {
    return [&files, buffer, copy] {
        std::vector<char> inBuffer(buffer);
        std::vector<char> outBuffer(buffer);
        std::ifstream in;
        std::ofstream out;
        if (buffer != 0) {
            in.rdbuf()->pubsetbuf(inBuffer.data(), static_cast<std::streamsize>(buffer));
            out.rdbuf()->pubsetbuf(outBuffer.data(), static_cast<std::streamsize>(buffer));
        }
        in.open(files.from, std::ios_base::binary);
        out.open(files.to, std::ios_base::binary);
        copy(in, out);
        bench::require(out.flush().good(), "copy");
    };
}

void measureFiles(bench::Session& session) {
    FilePair files;
    const auto prepare = [&files] { files.prepare(); };
    bench::Suite suite(session, "copyStreamToStream: file to file, 64 MiB", bench::Sampling::single, 31);
    const auto add = [&](const std::string& name, std::function<void()> copy) -> bench::Row& {
        return suite.row(name, std::move(copy)).preparedBy(prepare);
    };
    suite.limit("read and write of 16384 bytes", [&] { copyRaw(files, kChunk); }).preparedBy(prepare);
    add("read and write of 256 KiB", [&] { copyRaw(files, kLargeChunk); });
    add("pkgcore, streams of the library", [&] { copyWithStreamsOfTheLibrary(files); }).atMost(1.10);
    add("pkgcore, standard streams", withStandardStreams(files, 0, [](std::istream& in, std::ostream& out) {
            bench::require(opc::StreamHelper::copyStreamToStream(in, out), "copy");
        }));
    const auto whole = [](std::istream& in, std::ostream& out) { out << in.rdbuf(); };
    add("out << in.rdbuf(), default buffers", withStandardStreams(files, 0, whole));
    add("out << in.rdbuf(), 256 KiB buffers", withStandardStreams(files, kLargeChunk, whole));
    add("istreambuf_iterator, std::copy",
        withStandardStreams(files, 0, [](std::istream& in, std::ostream& out) {
            std::copy(std::istreambuf_iterator<char>(in), {}, std::ostreambuf_iterator<char>(out));
        }));
    add("boost::iostreams::copy, 16384", [&] {
        boost::iostreams::copy(boost::iostreams::file_descriptor_source(files.from.string()),
                               boost::iostreams::file_descriptor_sink(files.to.string()),
                               static_cast<std::streamsize>(kChunk));
    });
    suite.run();
}

void measureMemory(bench::Session& session) {
    const std::vector<unsigned char> content(kContent, 'x');
    const std::string text(content.begin(), content.end());
    bench::Suite suite(session, "copyStreamToStream: memory to memory, 64 MiB", bench::Sampling::single, 21);
    suite.limit("memcpy to fresh memory", [&] {
        const std::unique_ptr<unsigned char[]> copy(new unsigned char[kContent]);
        std::memcpy(copy.get(), content.data(), kContent);
        return copy[kContent - 1];
    });
    suite.row("std::vector, copied in pieces of 16384", [&] {
        std::vector<unsigned char> copy;
        for (std::size_t at = 0; at < kContent; at += kChunk) {
            copy.insert(copy.end(), content.begin() + static_cast<std::ptrdiff_t>(at),
                        content.begin() + static_cast<std::ptrdiff_t>(at + kChunk));
        }
        return copy.size();
    });
    suite.row("pkgcore, byte arrays", [&] {
        std::vector<unsigned char> copy;
        opc::ByteArrayInAdaptor in(content);
        opc::ByteArrayOutAdaptor out(copy);
        bench::require(opc::StreamHelper::copyStreamToStream(in, out), "copy");
        return copy.size();
    });
    suite.row("out << in.rdbuf(), string streams", [&] {
        std::istringstream in(text);
        std::ostringstream out;
        out << in.rdbuf();
        return out.tellp();
    });
    suite.run();
}

}  // namespace

int main(int argc, char** argv) {
    bench::Session session(argc, argv);
    measureFiles(session);
    measureMemory(session);
    return session.exitCode();
}
