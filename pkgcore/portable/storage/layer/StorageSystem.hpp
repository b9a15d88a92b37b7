#pragma once

#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/StorageSystemReference.hpp>
#include <pkgcore/portable/storage/layer/Spot.hpp>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

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
    portable::Spot find(CanonicalAbsoluteIRI iri) const;

private:
    using Mounts = std::map<Authority, std::shared_ptr<const portable::Store>, std::less<>>;
    std::map<std::u16string, Mounts, std::less<>> schemes_;
};

}  // namespace foundation::storage::vfs

namespace foundation::storage::portable {

Spot findSpot(vfs::CanonicalAbsoluteIRI iri, const vfs::StorageSystemReference& storage);

}  // namespace foundation::storage::portable
