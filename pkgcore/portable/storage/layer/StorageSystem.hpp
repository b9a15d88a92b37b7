#pragma once

#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/StorageSystemReference.hpp>
#include <pkgcore/portable/storage/iri/IRIText.hpp>
#include <pkgcore/portable/storage/layer/Spot.hpp>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace foundation::storage::vfs {

/// Which store serves which scheme and authority, both as canonical IRIs write them.
class StorageSystem {
public:
    /// An authority, or none for all that have no store of their own.
    using Authority = std::optional<std::u16string>;

    /// False, with nothing changed, where there is a store already.
    bool mount(const std::u16string& scheme, const Authority& authority,
               std::shared_ptr<provider::Provider> store);

    /// UnsupportedIRISchemeException for a scheme without a mount, NoSuchStorage for an authority without
    /// one.
    portable::Spot find(CanonicalAbsoluteIRI&& iri) const;

private:
    using Mounted = std::shared_ptr<const portable::Store>;

    struct Mounts {
        std::map<std::u16string, Mounted, std::less<>> byAuthority;
        Mounted others;  ///< for all other authorities; null for none
    };

    struct Scheme {
        std::u16string name;
        Mounts mounts;
    };

    Mounts& mountsOf(const std::u16string& scheme);
    const Mounted& storeFor(const CanonicalAbsoluteIRI& iri, const portable::IRIParts& parts) const;

    std::vector<Scheme> schemes_;  ///< so few that none is found faster than the first ones
};

}  // namespace foundation::storage::vfs

namespace foundation::storage::portable {

inline Spot findSpot(vfs::CanonicalAbsoluteIRI iri, const vfs::StorageSystemReference& storage) {
    return storage.get()->find(std::move(iri));
}

}  // namespace foundation::storage::portable
