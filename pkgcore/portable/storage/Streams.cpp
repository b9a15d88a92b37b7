#include <pkgcore/platform/storage/Streams.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/layer/Publisher.hpp>
#include <pkgcore/portable/storage/layer/StorageSystem.hpp>
#include <pkgcore/portable/storage/layer/StreamOpening.hpp>

#include <utility>

namespace foundation::storage::vfs {

namespace {

portable::Spot spotOf(File&& file) {
    const StorageSystem* const system = file.getStorageSystem().get();
    return system->find(std::move(file).getLocation());
}

/// The buffer that `open` gives, or failbit; a scheme that is not mounted passes.
template <typename Open>
std::unique_ptr<std::streambuf> openOrFail(std::ios& stream, Open open) {
    try {
        std::unique_ptr<std::streambuf> buffer = open();
        stream.rdbuf(buffer.get());
        return buffer;
    } catch (const Exception&) {
        stream.clear(std::ios_base::failbit);
        return nullptr;
    }
}

}  // namespace

ifstream::ifstream(File file, std::ios_base::openmode mode) : std::istream(nullptr) {
    buffer_ = openOrFail(*this, [&file] { return portable::openForReading(spotOf(std::move(file))); });
    if (buffer_ && (mode & std::ios_base::ate) != 0) {
        seekg(0, std::ios_base::end);
    }
}

ifstream::~ifstream() = default;

ofstream::ofstream(File file, std::ios_base::openmode mode) : std::ostream(nullptr) {
    buffer_ = openOrFail(
        *this, [&] { return portable::openForWriting(spotOf(std::move(file)), mode | std::ios_base::out); });
}

ofstream::~ofstream() {
    auto* const publisher = dynamic_cast<portable::Publisher*>(buffer_.get());
    if (publisher != nullptr && good() && !publisher->isUnwinding()) {
        publisher->publish();
    }
}

}  // namespace foundation::storage::vfs
