// Byte streams between files and memory.

#include "Tour.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace tour {

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes readIntoMemory(opc::FileSystemOps& files, const opc::ustring& path, Step& step) {
    Bytes memory;
    opc::ByteArrayOutAdaptor intoMemory(memory);
    const auto file = files.createInputStream(path, std::ios_base::binary);
    step.check(opc::StreamHelper::copyStreamToStream(*file, intoMemory), "not all bytes fitted into memory");
    return memory;
}

void writeFromMemory(opc::FileSystemOps& files, const opc::ustring& path, const Bytes& memory, Step& step) {
    opc::ByteArrayInAdaptor fromMemory(memory);
    const auto file = files.createOutputStream(path, std::ios_base::binary);
    step.check(opc::StreamHelper::copyStreamToStream(fromMemory, *file),
               "not all bytes fitted into the file");
    file->flush();  // the loop does not; from here on the stream's state tells whether all was written
    step.check(file->good(), "writing failed: " + printable(path));
}

}  // namespace

std::string numbers(std::size_t length) {
    std::string text;
    for (std::size_t i = 0; text.size() < length; ++i) {
        text += std::to_string(i) + ' ';
    }
    text.resize(length);
    return text;
}

void passBytesOn(Tour& tour, Step& step) {
    constexpr std::size_t kLength = 200'000;
    const std::string text = numbers(kLength);
    const opc::ustring original = tour.files.appendPath(tour.scratch, u"bytes");
    const opc::ustring copy = tour.files.appendPath(tour.scratch, u"bytes again");
    writeText(tour.files, original, text);
    writeFromMemory(tour.files, copy, readIntoMemory(tour.files, original, step), step);
    step.check(readText(tour.files, copy) == text, printable(copy) + " differs from " + printable(original));
    step.count(1, kLength);
}

}  // namespace tour
