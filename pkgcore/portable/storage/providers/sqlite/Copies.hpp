#pragma once

#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/portable/storage/ProviderTypes.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Store.hpp>

namespace foundation::storage::sqlite {

/// Copies a file or a folder within the store; see Provider.hpp. Everything is read with its checksum and
/// made apart, as an orphan, in short transactions; the last one puts it into its place. A folder
/// that has gone from its place by then, removed or moved, is "not found", and nothing is replaced; one
/// within it is copied whole or not at all.
void copyEntry(const SharedStore& store, const provider::Path& from, const provider::Path& to,
               provider::ReplacementPolicy policy);

}  // namespace foundation::storage::sqlite
