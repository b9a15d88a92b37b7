#pragma once

#include <pkgcore/platform/storage/StorageSystemReference.hpp>
#include <pkgcore/portable/storage/Provider.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <utility>

namespace foundation::storage::conformance {

/// Files by their paths, plain text with "/" between the names.
using Contents = std::map<std::u16string, std::string>;

/// Where one test works: a folder of a store, and how to get at it.
struct Ground {
    vfs::StorageSystemReference storage;        ///< has the store mounted
    std::u16string root;                        ///< the IRI of the folder
    std::shared_ptr<provider::Provider> store;  ///< itself, past the storage system
    provider::Path path;                        ///< of the folder in the store
    std::shared_ptr<void> keeper;               ///< goes when the test has ended
    /// What the folder holds from the start: something for a store that cannot be written, so that there is
    /// something to read; nothing for all others.
    Contents content = {};
};

/// What the suite runs on: a name, of letters and digits, and a way to a new ground for each test.
struct Backend {
    std::string name;                    ///< becomes a part of the names of the tests
    std::function<Ground()> makeGround;  ///< called once for each test

    /// For the messages of GoogleTest.
    friend void PrintTo(const Backend& backend, std::ostream* out) { *out << backend.name; }
};

/// A backend of stores that are made for each test: empty, or with `content` where they cannot be written.
inline Backend storeFrom(std::string name, std::function<std::shared_ptr<provider::Provider>()> make,
                         Contents content = {}) {
    return Backend{std::move(name), [make = std::move(make), content = std::move(content)] {
                       const std::shared_ptr<provider::Provider> store = make();
                       vfs::StorageSystemReference storage =
                           vfs::StorageSystemBuilder().mount(u"conformance", u"store", store).build();
                       const bool hasAuthorities = store->traits().hasAuthorities;
                       return Ground{std::move(storage),
                                     u"conformance://store/",
                                     store,
                                     provider::Path(u"", hasAuthorities ? u"store" : u""),
                                     nullptr,
                                     content};
                   }};
}

/// Names the tests after their backend: the last argument of INSTANTIATE_TEST_SUITE_P.
inline std::string backendName(const testing::TestParamInfo<Backend>& info) { return info.param.name; }

}  // namespace foundation::storage::conformance
