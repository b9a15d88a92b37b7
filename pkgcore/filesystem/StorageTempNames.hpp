#pragma once

#include <pkgcore/core/Ustring.hpp>

namespace opc::detail {

/// Draws names in one folder of a storage system.
class StorageTempNames {
public:
    /// `folder` is an IRI; an empty one stands for the system's folder for temporary items. Failures leave as
    /// the libraries below throw them.
    explicit StorageTempNames(const ustring& folder);

    /// An IRI in the folder that nobody else is likely to draw. Storage is not asked.
    ustring draw() const;

private:
    ustring scheme_;
    ustring path_;
};

}  // namespace opc::detail
