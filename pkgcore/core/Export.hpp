#pragma once

#include <pkgcore/platform/Export.hpp>

/// PKGCORE_API marks the public surface of namespace `opc`: exported while the library is built, imported by
/// its clients.

#if defined(PKGCORE_BUILDING)
#define PKGCORE_API PKGCORE_SYMBOL_EXPORT
#else
#define PKGCORE_API PKGCORE_SYMBOL_IMPORT
#endif
