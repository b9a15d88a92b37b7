#include "bench/storage/Fixture.hpp"

#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "bench/support/WorkFolder.hpp"

#include <algorithm>

namespace bench {

namespace vfs = foundation::storage::vfs;

using boost::system::error_code;

opc::VirtualFileSystemOps newStorage() {
    return opc::VirtualFileSystemOps(vfs::StorageSystemBuilder()
                                         .mount(u"mem", foundation::storage::provider::makeMemoryProvider())
                                         .build());
}

opc::FileSystemOps& localOps() {
    static opc::LocalFileSystemOps local;
    return local;
}

std::u16string numbered(const std::u16string& stem, std::size_t number) {
    const std::string digits = std::to_string(number);
    return stem + std::u16string(digits.begin(), digits.end());
}

std::u16string iriOf(const std::filesystem::path& path) { return u"file://" + path.u16string(); }

void writeFile(opc::FileSystemOps& ops, const std::u16string& path, std::size_t size) {
    static const std::string chunk(kChunk, 'x');
    error_code error;
    const boost::shared_ptr<std::ostream> stream = ops.createOutputStream(path, std::ios_base::binary, error);
    require(stream != nullptr, "a file cannot be created");
    for (std::size_t left = size; left > 0;) {
        const std::size_t count = std::min(left, chunk.size());
        stream->write(chunk.data(), static_cast<std::streamsize>(count));
        left -= count;
    }
    require(!stream->flush().fail(), "short write");
}

}  // namespace bench
