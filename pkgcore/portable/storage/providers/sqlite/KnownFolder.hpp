#pragma once

#include <pkgcore/portable/storage/ProviderTypes.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace foundation::storage::sqlite {

/// The folder in which a connection has found something last. Whoever looks for what lies in it need not go
/// through all folders above it once more, and needs no transaction around that: one statement is enough.
class KnownFolder {
public:
    struct Known {
        std::int64_t number;                 ///< of the folder
        std::optional<std::uint32_t> state;  ///< of the store, in which that is true; in any if there is none
    };

    /// The folder around something that was found, other than the root.
    void remember(const provider::Path& path, std::int64_t folder, std::uint32_t state);

    /// The folder around something.
    std::optional<Known> around(const provider::Path& path) const;

private:
    std::u16string path_;
    std::int64_t number_ = 0;
    std::uint32_t state_ = 0;
};

}  // namespace foundation::storage::sqlite
