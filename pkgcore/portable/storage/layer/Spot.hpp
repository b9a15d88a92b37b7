#pragma once

#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/ErrorCode.hpp>
#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/portable/storage/Provider.hpp>

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace foundation::storage::portable {

/// A provider and what it says of itself.
struct Store {
    std::shared_ptr<provider::Provider> provider;
    provider::Traits traits;
};

/// A place in a store, with the IRI by which it was asked for. Its verbs are those of the provider; what they
/// throw has the IRI as its location, and a code that the storage system knows.
class Spot {
public:
    Spot(std::shared_ptr<const Store> store, provider::Path&& path, vfs::CanonicalAbsoluteIRI&& iri)
        : store_(std::move(store)), path_(std::move(path)), iri_(std::move(iri)) {}

    const provider::Path& path() const noexcept { return path_; }
    const provider::Traits& traits() const noexcept { return store_->traits; }
    const vfs::CanonicalAbsoluteIRI& iri() const noexcept { return iri_; }

    bool isInStoreOf(const Spot& other) const noexcept { return store_->provider == other.store_->provider; }
    bool isSameAs(const Spot& other) const noexcept { return isInStoreOf(other) && path_ == other.path_; }
    bool isAtOrBelow(const Spot& other) const noexcept {
        return isInStoreOf(other) && path_.isAtOrBelow(other.path_);
    }

    /// Not of a root.
    Spot parent() const;
    Spot child(const std::u16string& name) const;
    vfs::CanonicalAbsoluteIRI childIRI(const std::u16string& name) const;

    std::optional<provider::Item> find() const;

    /// What is there; NotFound for nothing and for the other kind.
    provider::Item require(provider::Kind kind) const;

    std::unique_ptr<provider::Lister> list() const;
    std::unique_ptr<provider::Reader> openReader() const;
    std::unique_ptr<provider::Writer> openWriter(provider::WriteMode mode) const;
    void createFolder() const;
    void remove() const;
    void removeTree() const;
    void copyTo(const Spot& to, provider::ReplacementPolicy policy) const;
    void moveTo(const Spot& to, provider::ReplacementPolicy policy) const;
    void setWritable(bool isWritable) const;
    void setLastModified(const boost::posix_time::ptime& time) const;
    void sync() const;

    /// Throws the code with this place.
    [[noreturn]] void fail(vfs::ErrorCode code) const;

    /// Makes a call of what was opened here, with the location added to what it throws.
    template <typename Call>
    auto located(Call call) const -> decltype(call()) {
        try {
            return call();
        } catch (...) {
            rethrowLocated();
        }
    }

private:
    /// From within a handler.
    [[noreturn]] void rethrowLocated() const;

    std::shared_ptr<const Store> store_;
    provider::Path path_;
    vfs::CanonicalAbsoluteIRI iri_;
};

}  // namespace foundation::storage::portable
