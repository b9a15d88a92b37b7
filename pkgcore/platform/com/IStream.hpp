#pragma once

// The stream interfaces of COM. On Windows they are the host's own; elsewhere a header of the same shape
// takes their place, so that code written against one builds against the other.

#if defined(_WIN32)
#include <objidl.h>
#else
#include <pkgcore/platform/com/HostlessIStream.hpp>
#endif
