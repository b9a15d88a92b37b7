#pragma once

// One suite of tests for every store, with GoogleTest. Include this header in one source of a test program
// and say what to run it on:
//
//     using namespace foundation::storage::conformance;
//
//     INSTANTIATE_TEST_SUITE_P(MyStore, ProviderConformance,
//                              testing::Values(storeFrom("fresh", [] { return makeMyProvider(); })),
//                              backendName);
//
// A test of something that the store neither does itself nor lets be put together from the rest sees that it
// is refused with code 11 and changes nothing. A store that cannot be written is given with what it holds:
//
//     storeFrom("archive", [] { return openMyArchive("sample"); }, {{u"folder/name", "content"}})

#include <pkgcore/testing/conformance/Backend.hpp>
#include <pkgcore/testing/conformance/ConcurrencyConformance.hpp>
#include <pkgcore/testing/conformance/FolderConformance.hpp>
#include <pkgcore/testing/conformance/ListingConformance.hpp>
#include <pkgcore/testing/conformance/MarkConformance.hpp>
#include <pkgcore/testing/conformance/ReadingConformance.hpp>
#include <pkgcore/testing/conformance/TraitsConformance.hpp>
#include <pkgcore/testing/conformance/TransferConformance.hpp>
#include <pkgcore/testing/conformance/WritingConformance.hpp>
