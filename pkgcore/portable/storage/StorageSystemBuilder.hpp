#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/storage/StorageSystemReference.hpp>
#include <pkgcore/portable/storage/Provider.hpp>

#include <memory>
#include <string>

namespace foundation::storage::vfs {

/// Puts a storage system together out of stores. The scheme "file", the files of this machine, is always
/// there.
///
///     StorageSystemReference storage =
///         StorageSystemBuilder().mount(u"mem", provider::makeMemoryProvider()).build();
class PKGCORE_PLATFORM_API StorageSystemBuilder {
public:
    /// With the scheme "file" alone. A builder that was moved from can be destroyed and assigned to.
    /// @{
    StorageSystemBuilder();
    ~StorageSystemBuilder();
    StorageSystemBuilder(StorageSystemBuilder&&) noexcept;
    StorageSystemBuilder& operator=(StorageSystemBuilder&&) noexcept;
    /// @}

    /// Mounts a store under a scheme, in any letter case. It serves all authorities without a mount of their
    /// own if it has authorities, and the empty one otherwise ("scheme:///path"). From now on hasIRIPrefix()
    /// knows the scheme, in the whole process. std::invalid_argument for a text that is no scheme, for a
    /// place that has a store already ("file:///" has), and for no store; nothing is mounted then.
    StorageSystemBuilder& mount(const std::u16string& scheme, std::shared_ptr<provider::Provider> store);

    /// Mounts a store under one authority, given as plain text, of a scheme: "scheme://authority/path".
    StorageSystemBuilder& mount(const std::u16string& scheme, const std::u16string& authority,
                                std::shared_ptr<provider::Provider> store);

    /// A system of what was mounted so far, which does not change any more.
    StorageSystemReference build() const;

private:
    class Mounts;
    std::unique_ptr<Mounts> mounts_;
};

}  // namespace foundation::storage::vfs
