#include <pkgcore/portable/storage/layer/StorageSystem.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/iri/IRIText.hpp>
#include <pkgcore/portable/storage/iri/PercentEncoding.hpp>

#include <utility>

namespace foundation::storage::vfs {

namespace {

/// Without the slash that it begins with.
std::u16string plainPath(std::u16string_view canonicalPath) {
    return portable::decoded(canonicalPath.substr(1));
}

}  // namespace

bool StorageSystem::mount(const std::u16string& scheme, const Authority& authority,
                          std::shared_ptr<provider::Provider> store) {
    const provider::Traits traits = store->traits();
    const Authority served = !authority && !traits.hasAuthorities ? std::u16string() : authority;
    auto mounted = std::make_shared<const portable::Store>(portable::Store{std::move(store), traits});
    return schemes_[scheme].emplace(served, std::move(mounted)).second;
}

portable::Spot StorageSystem::find(CanonicalAbsoluteIRI iri) const {
    const portable::IRIParts parts = portable::partsOf(iri.toString());
    const auto scheme = schemes_.find(parts.scheme);
    if (scheme == schemes_.end()) {
        throw UnsupportedIRISchemeException("The scheme is not mounted", std::u16string(parts.scheme));
    }
    const Mounts& mounts = scheme->second;
    auto mount = mounts.find(parts.authority);
    if (mount == mounts.end()) {
        mount = mounts.find(Authority());
    }
    if (mount == mounts.end()) {
        throw Exception(ErrorCode::NoSuchStorage, iri);
    }
    std::u16string authority;
    if (mount->second->traits.hasAuthorities) {
        authority = portable::decoded(parts.authority);
    }
    provider::Path path(plainPath(parts.path), std::move(authority));
    return portable::Spot(mount->second, std::move(path), std::move(iri));
}

}  // namespace foundation::storage::vfs

namespace foundation::storage::portable {

Spot findSpot(vfs::CanonicalAbsoluteIRI iri, const vfs::StorageSystemReference& storage) {
    return storage.get()->find(std::move(iri));
}

}  // namespace foundation::storage::portable
