#pragma once

#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/portable/storage/layer/Spot.hpp>

namespace foundation::storage::portable {

/// What a copy has of its source beside the content, as far as its store keeps it.
enum class Carry : unsigned char {
    Writability,
    Everything  ///< the time too; and the copy is read again and compared, since the source is going to go
};

/// Copies a file by reading and writing; a device is NotSupported. IOError where a copy that is compared
/// differs: the source was changed meanwhile, or the destination does not keep what it is given. A new file
/// is removed again where it cannot be marked.
void copyOneFile(const Spot& from, const Spot& to, provider::ReplacementPolicy policy, Carry carry);

/// Copies a folder to a place where nothing is. Links count as what they lead to, but those to folders are
/// not gone into and are left out, as a listing does it.
void copyTree(const Spot& from, const Spot& to, Carry carry);

}  // namespace foundation::storage::portable
