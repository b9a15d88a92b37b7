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

std::u16string authorityFor(const portable::Store& store, const portable::IRIParts& parts) {
    return store.traits.hasAuthorities ? portable::decoded(parts.authority) : std::u16string();
}

}  // namespace

bool StorageSystem::mount(const std::u16string& scheme, const Authority& authority,
                          std::shared_ptr<provider::Provider> store) {
    const provider::Traits traits = store->traits();
    const bool servesAll = !authority && traits.hasAuthorities;
    Mounted mounted = std::make_shared<const portable::Store>(portable::Store{std::move(store), traits});
    Mounts& mounts = schemes_[scheme];
    Mounted& place = servesAll ? mounts.others : mounts.byAuthority[authority.value_or(std::u16string())];
    if (place) {
        return false;
    }
    place = std::move(mounted);
    return true;
}

portable::Spot StorageSystem::find(CanonicalAbsoluteIRI iri) const {
    const portable::IRIParts parts = portable::partsOf(iri.toString());
    const auto scheme = schemes_.find(parts.scheme);
    if (scheme == schemes_.end()) {
        throw UnsupportedIRISchemeException("The scheme is not mounted", std::u16string(parts.scheme));
    }
    const Mounts& mounts = scheme->second;
    const auto mount = mounts.byAuthority.find(parts.authority);
    const Mounted& store = mount == mounts.byAuthority.end() ? mounts.others : mount->second;
    if (!store) {
        throw Exception(ErrorCode::NoSuchStorage, iri);
    }
    provider::Path path(plainPath(parts.path), authorityFor(*store, parts));
    return portable::Spot(store, std::move(path), std::move(iri));
}

}  // namespace foundation::storage::vfs
