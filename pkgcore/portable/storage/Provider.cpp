#include <pkgcore/portable/storage/Provider.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>

namespace foundation::storage::provider {

namespace {

/// The answer of a verb that a store has not overridden.
[[noreturn]] void refuse() { throw vfs::Exception(vfs::ErrorCode::NotSupported, vfs::AbsoluteIRI()); }

}  // namespace

Reader::~Reader() = default;
Writer::~Writer() = default;
Lister::~Lister() = default;
Provider::~Provider() = default;

std::size_t Lister::fill(std::vector<ListItem>& page) {
    page = next();
    return page.size();
}

std::size_t Reader::readAt(std::uint64_t /*offset*/, char* /*out*/, std::size_t /*count*/) { refuse(); }

std::unique_ptr<Writer> Provider::openWriter(const Path& /*file*/, WriteMode /*mode*/) { refuse(); }

void Provider::createFolder(const Path& /*folder*/) { refuse(); }

void Provider::remove(const Path& /*path*/) { refuse(); }

void Provider::removeTree(const Path& /*folder*/) { refuse(); }

void Provider::copy(const Path& /*from*/, const Path& /*to*/, ReplacementPolicy /*policy*/) { refuse(); }

void Provider::move(const Path& /*from*/, const Path& /*to*/, ReplacementPolicy /*policy*/) { refuse(); }

void Provider::setWritable(const Path& /*path*/, bool /*isWritable*/) { refuse(); }

void Provider::setLastModified(const Path& /*path*/, const boost::posix_time::ptime& /*time*/) { refuse(); }

void Provider::sync(const Path& /*path*/) {}

}  // namespace foundation::storage::provider
