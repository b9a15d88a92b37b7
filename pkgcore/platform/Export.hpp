#pragma once

/// PKGCORE_PLATFORM_API marks what the library exports of, or takes from, its platform. Every other symbol is
/// hidden: the whole library is compiled with hidden visibility and the list of exported names is checked.
///
/// PKGCORE_SYMBOL_EXPORT and PKGCORE_SYMBOL_IMPORT are the two spellings underneath, for this and for other
/// export macros.

#if defined(_WIN32)
#define PKGCORE_SYMBOL_EXPORT __declspec(dllexport)
#define PKGCORE_SYMBOL_IMPORT __declspec(dllimport)
#else
#define PKGCORE_SYMBOL_EXPORT __attribute__((visibility("default")))
#define PKGCORE_SYMBOL_IMPORT __attribute__((visibility("default")))
#endif

// With a platform from outside, its functions are imported even while the library itself is built.
#if defined(PKGCORE_BUILDING) && !defined(PKGCORE_PLATFORM_EXTERNAL)
#define PKGCORE_PLATFORM_API PKGCORE_SYMBOL_EXPORT
#else
#define PKGCORE_PLATFORM_API PKGCORE_SYMBOL_IMPORT
#endif
