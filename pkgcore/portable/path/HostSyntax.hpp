#pragma once

// The one place that says which syntax is the native one; both are compiled and tested on every host.

#if defined(_WIN32)

#include <pkgcore/portable/path/WindowsSyntax.hpp>

namespace fl::filesystem::detail {
namespace host = syntax::windows;
}

#else

#include <pkgcore/portable/path/PosixSyntax.hpp>

namespace fl::filesystem::detail {
namespace host = syntax::posix;
}

#endif
