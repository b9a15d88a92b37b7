#pragma once

#include <pkgcore/platform/com/IStream.hpp>

#include <cstdint>

namespace test {

/// How many bytes moved, and what a stream answers for that.
struct Moved {
    HRESULT result;
    ULONG count;
};

/// Where a COM stream keeps its bytes. Positions are those of the stream: the store has none of its own.
class Store {
public:
    Store() = default;
    virtual ~Store() = default;
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    /// False for bytes that come once, as from a pipe: they are moved in their order, whatever the position.
    virtual bool canSeek() const { return true; }
    virtual std::uint64_t size() const = 0;
    virtual Moved read(std::uint64_t position, void* bytes, ULONG count) = 0;
    virtual Moved write(std::uint64_t position, const void* bytes, ULONG count) = 0;
    virtual HRESULT setSize(std::uint64_t size) = 0;
    virtual HRESULT commit() = 0;
    virtual HRESULT revert() = 0;
    /// Fills in what is known beside the size.
    virtual void describe(STATSTG& status) const = 0;
};

}  // namespace test
