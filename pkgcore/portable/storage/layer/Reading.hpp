#pragma once

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/Provider.hpp>

#include <cstddef>
#include <cstdint>

/// Reading from a store, which is not believed when it says to have given more than it was asked for: what is
/// behind that is other memory of the process, or the -1 of a failed call.
namespace foundation::storage::portable {

inline std::size_t checkedCount(std::size_t taken, std::size_t count) {
    if (taken > count) {
        throw vfs::Exception(vfs::ErrorCode::IOError, "The store gives more than it was asked for");
    }
    return taken;
}

/// As Reader::read.
inline std::size_t readNext(provider::Reader& reader, char* out, std::size_t count) {
    return checkedCount(reader.read(out, count), count);
}

/// As Reader::readAt.
inline std::size_t readFrom(provider::Reader& reader, std::uint64_t offset, char* out, std::size_t count) {
    return checkedCount(reader.readAt(offset, out, count), count);
}

}  // namespace foundation::storage::portable
