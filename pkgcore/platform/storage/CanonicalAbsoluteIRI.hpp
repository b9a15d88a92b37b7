#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/storage/AbsoluteIRI.hpp>

#include <string>
#include <utility>

namespace foundation::storage::vfs {

/// An IRI in the one spelling of its place, so that two of them are equal exactly when they name the same
/// place: scheme and authority in small letters, no "." and "..", no repeated and no trailing slash. A root
/// is written with its slash, "mem://store/"; a ".." does not lead above it.
class PKGCORE_PLATFORM_API CanonicalAbsoluteIRI : public AbsoluteIRI {
public:
    /// From encoded text; throws as AbsoluteIRI does.
    explicit CanonicalAbsoluteIRI(const std::u16string& text);
    /// The place of `iri`.
    explicit CanonicalAbsoluteIRI(const AbsoluteIRI& iri);

    /// From text that a parser has found good and written in this spelling: nothing is checked.
    explicit CanonicalAbsoluteIRI(CheckedIRI checked) noexcept : AbsoluteIRI(std::move(checked)) {}

    /// The last name, plain; empty for a root.
    std::u16string getName() const;

    /// False for a root alone.
    bool hasParent() const;

    /// The place that holds this one. std::logic_error where there is none.
    CanonicalAbsoluteIRI getParent() const;
};

/// Whether both name the same place.
/// @{
inline bool operator==(const CanonicalAbsoluteIRI& a, const CanonicalAbsoluteIRI& b) noexcept {
    return a.toString() == b.toString();
}

inline bool operator!=(const CanonicalAbsoluteIRI& a, const CanonicalAbsoluteIRI& b) noexcept {
    return !(a == b);
}
/// @}

}  // namespace foundation::storage::vfs
