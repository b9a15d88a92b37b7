#pragma once

#include <pkgcore/platform/com/IStream.hpp>

namespace opc::detail {

/// Whether a COM stream may be asked again after this result: S_OK, or E_PENDING from one that is not ready
/// yet.
inline bool mayGoOn(HRESULT result) { return result == S_OK || result == E_PENDING; }

}  // namespace opc::detail
