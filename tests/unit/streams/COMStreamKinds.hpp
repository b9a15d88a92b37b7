#pragma once

#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/com/DescriptorStore.hpp"
#include "tests/support/com/MemoryStore.hpp"

#include <fcntl.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>

namespace test {

/// A stream with a way to look at what arrived in its store.
struct OpenStream {
    StreamReference stream;
    std::function<std::string()> stored;

    IStream* operator->() const { return stream.get(); }
    IStream& operator*() const { return *stream; }
};

/// A kind of real COM stream.
struct StreamKind {
    std::string name;
    /// Makes one that stands at the start of this content; a file lies in the folder.
    std::function<OpenStream(const TempTree& folder, const std::string& content)> open;
};

inline void PrintTo(const StreamKind& kind, std::ostream* out) { *out << kind.name; }

inline OpenStream openMemoryStream(const std::string& content, MemoryStore::Mode mode) {
    const auto block = std::make_shared<Bytes>(content.begin(), content.end());
    return {StoreStream::make(std::make_shared<MemoryStore>(block, mode)),
            [block] { return std::string(block->begin(), block->end()); }};
}

/// Takes the descriptor over.
inline StreamReference openDescriptorStream(int descriptor) {
    if (descriptor < 0) {
        throw std::system_error(errno, std::system_category(), "descriptor");
    }
    return StoreStream::make(std::make_shared<DescriptorStore>(descriptor));
}

inline OpenStream openFileStream(const std::string& path, int flags = O_RDWR) {
    return {openDescriptorStream(::open(path.c_str(), flags | O_CLOEXEC)),
            [path] { return contentOf(path); }};
}

inline const StreamKind kMemory{"Memory", [](const TempTree& /*folder*/, const std::string& content) {
                                    return openMemoryStream(content, MemoryStore::Mode::direct);
                                }};
inline const StreamKind kTransactedMemory{"TransactedMemory",
                                          [](const TempTree& /*folder*/, const std::string& content) {
                                              return openMemoryStream(content, MemoryStore::Mode::transacted);
                                          }};
inline const StreamKind kFile{"File", [](const TempTree& folder, const std::string& content) {
                                  const std::string path = folder / "stream";
                                  makeFile(path, content);
                                  return openFileStream(path);
                              }};

inline LARGE_INTEGER moveBy(std::int64_t value) {
    LARGE_INTEGER move;
    move.QuadPart = value;
    return move;
}

inline ULARGE_INTEGER sizeOf(std::uint64_t value) {
    ULARGE_INTEGER size;
    size.QuadPart = value;
    return size;
}

}  // namespace test
