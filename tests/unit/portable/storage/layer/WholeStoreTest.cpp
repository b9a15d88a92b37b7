// The root of a store is its own: nothing takes its place and it goes nowhere, by whatever operation.

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/platform/storage/Existence.hpp>
#include <pkgcore/platform/storage/Folder.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/storage/BareProvider.hpp"

#include <gtest/gtest.h>

namespace foundation::storage {

namespace {

using vfs::CanonicalAbsoluteIRI;
using vfs::Folder;

class WholeStore : public testing::Test {
protected:
    void SetUp() override {
        at(u"one://s/d").createFolderRecursive();
        at(u"two://s/kept").createFolderRecursive();
    }

    Folder at(const std::u16string& iri) const { return Folder(CanonicalAbsoluteIRI(iri), storage_); }

    bool isFolder(const std::u16string& iri) const {
        return vfs::exists(CanonicalAbsoluteIRI(iri), storage_) == vfs::ExistenceType::Folder;
    }

    void TearDown() override {
        EXPECT_TRUE(isFolder(u"one://s/d"));
        EXPECT_TRUE(isFolder(u"two://s/kept"));
    }

    vfs::StorageSystemReference storage_ = vfs::StorageSystemBuilder()
                                               .mount(u"one", provider::makeMemoryProvider())
                                               .mount(u"two", provider::makeMemoryProvider())
                                               .build();
};

TEST_F(WholeStore, IsNotReplacedByACopy) {
    PKGCORE_EXPECT_FAILURE(
        NotSupported,
        at(u"one://s/d").copyFolder(at(u"two://s/"), provider::ReplacementPolicy::ReplaceExisting));
}

TEST_F(WholeStore, IsNotReplacedByAMove) {
    PKGCORE_EXPECT_FAILURE(
        NotSupported,
        at(u"one://s/d").moveFolder(at(u"two://s/"), provider::ReplacementPolicy::ReplaceExisting));
}

TEST_F(WholeStore, IsInTheWayOfWhatMayNotReplace) {
    PKGCORE_EXPECT_FAILURE(
        AlreadyExists,
        at(u"one://s/d").copyFolder(at(u"two://s/"), provider::ReplacementPolicy::FailIfExists));
}

TEST_F(WholeStore, IsNotMoved) {
    PKGCORE_EXPECT_FAILURE(
        NotSupported,
        at(u"one://s/").moveFolder(at(u"two://s/new"), provider::ReplacementPolicy::FailIfExists));
}

/// A store that has nothing, not even its root, until somebody makes that.
class HasNoRootYet : public test::BareProvider {
public:
    HasNoRootYet() : BareProvider(provider::makeMemoryProvider(), [](Traits& /*traits*/) {}) {}
    std::optional<provider::Item> find(const Path& path) override {
        return isMade_ ? BareProvider::find(path) : std::nullopt;
    }
    void createFolder(const Path& folder) override {
        isMade_ = isMade_ || folder.isRoot();
        if (!folder.isRoot()) BareProvider::createFolder(folder);
    }

private:
    bool isMade_ = false;
};

TEST_F(WholeStore, IsMadeWithTheFoldersInIt) {
    const auto storage = vfs::StorageSystemBuilder().mount(u"new", std::make_shared<HasNoRootYet>()).build();
    Folder(CanonicalAbsoluteIRI(u"new://s/d/e"), storage).createFolderRecursive();
    EXPECT_EQ(vfs::exists(CanonicalAbsoluteIRI(u"new://s/"), storage), vfs::ExistenceType::Folder);
    EXPECT_EQ(vfs::exists(CanonicalAbsoluteIRI(u"new://s/d/e"), storage), vfs::ExistenceType::Folder);
}

TEST_F(WholeStore, IsCopiedToAFolder) {
    at(u"one://s/").copyFolder(at(u"two://s/new"), provider::ReplacementPolicy::FailIfExists);
    EXPECT_TRUE(isFolder(u"two://s/new/d"));
}

}  // namespace

}  // namespace foundation::storage
