#include <pkgcore/portable/storage/layer/StorageSystem.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/iri/PercentEncoding.hpp>

#include <algorithm>
#include <utility>

namespace foundation::storage::vfs {

namespace {

/// A part of an IRI. Where it is known to be plain it is not searched, which costs more than its length: wide
/// loads of a text that was copied just before wait for the stores of the copy.
std::u16string plain(const CanonicalAbsoluteIRI& iri, std::u16string_view part) {
    return iri.isPlain() ? std::u16string(part) : portable::decoded(part);
}

provider::Path pathIn(const portable::Store& store, const CanonicalAbsoluteIRI& iri,
                      const portable::IRIParts& parts) {
    const std::u16string_view authority = store.traits.hasAuthorities ? parts.authority : u"";
    return provider::Path(plain(iri, parts.path.substr(1)), plain(iri, authority));
}

}  // namespace

StorageSystem::Mounts& StorageSystem::mountsOf(const std::u16string& scheme) {
    const auto known = std::find_if(schemes_.begin(), schemes_.end(),
                                    [&scheme](const Scheme& place) { return place.name == scheme; });
    if (known != schemes_.end()) {
        return known->mounts;
    }
    schemes_.push_back(Scheme{scheme, {}});
    return schemes_.back().mounts;
}

bool StorageSystem::mount(const std::u16string& scheme, const Authority& authority,
                          std::shared_ptr<provider::Provider> store) {
    const provider::Traits traits = store->traits();
    const bool servesAll = !authority && traits.hasAuthorities;
    Mounted mounted = std::make_shared<const portable::Store>(portable::Store{std::move(store), traits});
    Mounts& mounts = mountsOf(scheme);
    Mounted& place = servesAll ? mounts.others : mounts.byAuthority[authority.value_or(std::u16string())];
    if (place) {
        return false;
    }
    place = std::move(mounted);
    return true;
}

const StorageSystem::Mounted& StorageSystem::storeFor(const CanonicalAbsoluteIRI& iri,
                                                      const portable::IRIParts& parts) const {
    const auto scheme = std::find_if(schemes_.begin(), schemes_.end(),
                                     [&parts](const Scheme& place) { return place.name == parts.scheme; });
    if (scheme == schemes_.end()) {
        throw UnsupportedIRISchemeException("The scheme is not mounted", std::u16string(parts.scheme));
    }
    const Mounts& mounts = scheme->mounts;
    const auto mount = mounts.byAuthority.find(parts.authority);
    const Mounted& store = mount == mounts.byAuthority.end() ? mounts.others : mount->second;
    if (!store) {
        throw Exception(ErrorCode::NoSuchStorage, iri);
    }
    return store;
}

portable::Spot StorageSystem::find(CanonicalAbsoluteIRI&& iri) const {
    const portable::IRIParts parts = portable::partsOf(iri.toString());
    const Mounted& store = storeFor(iri, parts);
    return portable::Spot(store, pathIn(*store, iri, parts), std::move(iri));
}

}  // namespace foundation::storage::vfs
