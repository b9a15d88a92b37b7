#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>

#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/iri/IRICharacters.hpp>
#include <pkgcore/portable/storage/iri/IRIText.hpp>
#include <pkgcore/portable/storage/iri/SchemeRegistry.hpp>
#include <pkgcore/portable/storage/layer/StorageSystem.hpp>
#include <pkgcore/portable/storage/providers/local/LocalProvider.hpp>

#include <algorithm>
#include <stdexcept>

namespace foundation::storage::vfs {

namespace {

bool isScheme(const std::u16string& text) noexcept {
    return !text.empty() && portable::isAsciiLetter(text[0]) &&
           std::all_of(text.begin(), text.end(), portable::isSchemeCharacter);
}

/// The root of an authority in canonical form.
CanonicalAbsoluteIRI rootOf(const std::u16string& scheme, const std::u16string& authority) {
    std::u16string iri = scheme + u"://";
    try {
        portable::appendAuthority(authority, iri);
        if (authority.find(u'/') == std::u16string::npos) {
            return CanonicalAbsoluteIRI(iri);
        }
    } catch (const InvalidIRIException&) {
        // said below
    }
    throw std::invalid_argument("The text is no authority of an IRI");
}

}  // namespace

class StorageSystemBuilder::Mounts {
public:
    Mounts() { system_.mount(u"file", std::u16string(), provider::makeLocalProvider()); }

    void add(const std::u16string& scheme, const std::u16string* authority,
             std::shared_ptr<provider::Provider> store) {
        if (store == nullptr) {
            throw std::invalid_argument("There is no store to mount");
        }
        if (!isScheme(scheme)) {
            throw std::invalid_argument("The text is no scheme of an IRI");
        }
        const std::u16string authorityText = authority == nullptr ? std::u16string() : *authority;
        rootOf(u"file", authorityText);  // a refused authority must not make the scheme known
        portable::registerScheme(scheme, store->traits().hasByteNames);
        const CanonicalAbsoluteIRI root = rootOf(scheme, authorityText);
        const portable::IRIParts parts = portable::partsOf(root.toString());
        const auto served =
            authority == nullptr ? StorageSystem::Authority() : StorageSystem::Authority(parts.authority);
        if (!system_.mount(std::u16string(parts.scheme), served, std::move(store))) {
            throw std::invalid_argument("There is a store already where this one is mounted");
        }
    }

    const StorageSystem& system() const noexcept { return system_; }

private:
    StorageSystem system_;
};

StorageSystemBuilder::StorageSystemBuilder() : mounts_(std::make_unique<Mounts>()) {}
StorageSystemBuilder::~StorageSystemBuilder() = default;
StorageSystemBuilder::StorageSystemBuilder(StorageSystemBuilder&&) noexcept = default;
StorageSystemBuilder& StorageSystemBuilder::operator=(StorageSystemBuilder&&) noexcept = default;

StorageSystemBuilder& StorageSystemBuilder::mount(const std::u16string& scheme,
                                                  std::shared_ptr<provider::Provider> store) {
    mounts_->add(scheme, nullptr, std::move(store));
    return *this;
}

StorageSystemBuilder& StorageSystemBuilder::mount(const std::u16string& scheme,
                                                  const std::u16string& authority,
                                                  std::shared_ptr<provider::Provider> store) {
    mounts_->add(scheme, &authority, std::move(store));
    return *this;
}

StorageSystemReference StorageSystemBuilder::build() const {
    return StorageSystemReference(std::make_shared<const StorageSystem>(mounts_->system()));
}

}  // namespace foundation::storage::vfs
