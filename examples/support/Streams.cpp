#include "Streams.hpp"

#include "Interruption.hpp"
#include "Printable.hpp"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace {

constexpr std::size_t kChunk = std::size_t{64} * 1024;
using Chunk = std::array<char, kChunk>;

std::size_t readChunk(std::istream& stream, Chunk& chunk) {
    stream.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
    return static_cast<std::size_t>(stream.gcount());
}

}  // namespace

boost::shared_ptr<std::istream> openInput(opc::FileSystemOps& files, const opc::ustring& path) {
    boost::system::error_code ec;
    auto stream = files.createInputStream(path, std::ios_base::binary, ec);
    if (!stream) {
        throw std::runtime_error("cannot be opened for reading: " + printable(path));
    }
    return stream;
}

std::uintmax_t lengthOf(std::istream& stream) {
    const std::streamoff length = stream.seekg(0, std::ios_base::end).tellg();
    stream.clear();
    stream.seekg(0);
    return length > 0 ? static_cast<std::uintmax_t>(length) : 0;
}

Comparison compareStreams(std::istream& one, std::istream& other) {
    static Chunk left;
    static Chunk right;
    Comparison result;
    std::size_t count = 0;
    do {
        stopIfInterrupted();
        count = readChunk(one, left);
        const std::size_t otherCount = readChunk(other, right);
        const auto end = left.begin() + std::min(count, otherCount);
        const auto differing = std::mismatch(left.begin(), end, right.begin()).first;
        result.equalBytes += static_cast<std::uintmax_t>(differing - left.begin());
        result.equal = count == otherCount && differing == end;
    } while (result.equal && count == kChunk);
    return result;
}
