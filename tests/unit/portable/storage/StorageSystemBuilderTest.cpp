#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/platform/storage/Existence.hpp>
#include <pkgcore/platform/storage/Folder.hpp>
#include <pkgcore/platform/storage/IRIPrefix.hpp>
#include <pkgcore/platform/storage/Listing.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/storage/BareProvider.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

using namespace foundation::storage;
using provider::makeMemoryProvider;
using vfs::CanonicalAbsoluteIRI;
using vfs::ExistenceType;
using vfs::StorageSystemBuilder;
using vfs::StorageSystemReference;

namespace {

ExistenceType existence(const std::u16string& iri, const StorageSystemReference& storage) {
    return vfs::exists(CanonicalAbsoluteIRI(iri), storage);
}

void makeFolder(const std::u16string& iri, const StorageSystemReference& storage) {
    vfs::Folder(CanonicalAbsoluteIRI(iri), storage).createFolder();
}

std::shared_ptr<provider::Provider> makeSingleTree() {
    return std::make_shared<test::BareProvider>(
        makeMemoryProvider(), [](provider::Traits& traits) { traits.hasAuthorities = false; });
}

TEST(StorageSystem, HasTheFilesOfTheMachine) {
    const StorageSystemReference storage = StorageSystemBuilder().build();
    EXPECT_EQ(existence(u"file:///", storage), ExistenceType::Folder);
    EXPECT_EQ(existence(u"file://localhost/", storage), ExistenceType::Folder);
    EXPECT_EQ(existence(u"file:///there/is/no/such/file", storage), ExistenceType::Nothing);
    PKGCORE_EXPECT_FAILURE(NoSuchStorage, existence(u"file://server/share", storage));
}

TEST(StorageSystem, HasNothingElseUnlessItIsMounted) {
    const StorageSystemReference storage = StorageSystemBuilder().build();
    try {
        existence(u"MEM://store/a", storage);
        ADD_FAILURE();
    } catch (const vfs::UnsupportedIRISchemeException& failure) {
        EXPECT_EQ(failure.getScheme(), u"mem");
    }
}

TEST(StorageSystem, HasWhatWasMountedBeforeItsBuilderWasMoved) {
    StorageSystemBuilder first;
    first.mount(u"mem", makeMemoryProvider());
    StorageSystemBuilder second(std::move(first));
    StorageSystemBuilder third;
    third = std::move(second);
    makeFolder(u"mem://store/a", third.build());
}

TEST(StorageSystem, ListsWithAnIteratorAsTheLibraryOfCppHasThem) {
    const StorageSystemReference storage = StorageSystemBuilder().mount(u"mem", makeMemoryProvider()).build();
    makeFolder(u"mem://store/a", storage);
    makeFolder(u"mem://store/b", storage);
    vfs::Listing listing = vfs::Folder(CanonicalAbsoluteIRI(u"mem://store/"), storage).listAll(u"");
    vfs::Listing::Iterator entry = listing.begin();
    EXPECT_EQ(entry->getLocation(), CanonicalAbsoluteIRI(u"mem://store/a"));
    entry++;
    EXPECT_NE(entry, listing.end());
    entry++;
    EXPECT_EQ(entry, listing.end());
}

TEST(StorageSystem, KeepsTheAuthoritiesOfAStoreApart) {
    const StorageSystemReference storage = StorageSystemBuilder().mount(u"mem", makeMemoryProvider()).build();
    makeFolder(u"mem://one/a", storage);
    EXPECT_EQ(existence(u"mem://ONE/a", storage), ExistenceType::Folder);
    EXPECT_EQ(existence(u"mem://two/a", storage), ExistenceType::Nothing);
    EXPECT_EQ(existence(u"mem:///a", storage), ExistenceType::Nothing);
    EXPECT_EQ(existence(u"mem://two/", storage), ExistenceType::Folder);
}

TEST(StorageSystem, FindsTheStoreOfAnAuthorityFirst) {
    const StorageSystemReference storage = StorageSystemBuilder()
                                               .mount(u"MeM", makeMemoryProvider())
                                               .mount(u"mem", u"Own", makeSingleTree())
                                               .build();
    makeFolder(u"mem://own/a", storage);
    makeFolder(u"mem://other/b", storage);
    EXPECT_EQ(existence(u"mem://own/a", storage), ExistenceType::Folder);
    EXPECT_EQ(existence(u"mem://own/b", storage), ExistenceType::Nothing);
    EXPECT_EQ(existence(u"mem://other/a", storage), ExistenceType::Nothing);
}

TEST(StorageSystem, GivesAStoreOfOneTreeOneAuthority) {
    const StorageSystemReference storage = StorageSystemBuilder()
                                               .mount(u"tree", makeSingleTree())
                                               .mount(u"named", u"a b", makeSingleTree())
                                               .build();
    EXPECT_EQ(existence(u"tree:///", storage), ExistenceType::Folder);
    PKGCORE_EXPECT_FAILURE(NoSuchStorage, existence(u"tree://other/", storage));
    EXPECT_EQ(existence(u"named://a%20b/", storage), ExistenceType::Folder);
    PKGCORE_EXPECT_FAILURE(NoSuchStorage, existence(u"named:///", storage));
}

TEST(StorageSystem, DoesNotChangeWithItsBuilder) {
    StorageSystemBuilder builder;
    const StorageSystemReference before = builder.build();
    builder.mount(u"mem", makeMemoryProvider());
    EXPECT_THROW(existence(u"mem://s/", before), vfs::UnsupportedIRISchemeException);
    EXPECT_EQ(existence(u"mem://s/", builder.build()), ExistenceType::Folder);
}

TEST(StorageSystem, MakesItsSchemesKnown) {
    EXPECT_FALSE(vfs::hasIRIPrefix(u"builder-test://a"));
    StorageSystemBuilder().mount(u"Builder-Test", makeMemoryProvider());
    EXPECT_TRUE(vfs::hasIRIPrefix(u"builder-test://a"));
}

TEST(StorageSystem, RefusesWhatCannotBeMounted) {
    StorageSystemBuilder builder;
    builder.mount(u"mem", u"taken", makeMemoryProvider());
    EXPECT_THROW(builder.mount(u"mem", u"TAKEN", makeMemoryProvider()), std::invalid_argument);
    EXPECT_THROW(builder.mount(u"file", makeSingleTree()), std::invalid_argument);
    EXPECT_THROW(builder.mount(u"file", u"localhost", makeSingleTree()), std::invalid_argument);
    for (const std::u16string scheme : {u"", u"1a", u"a b", u"a:", u"\u00E9"}) {
        EXPECT_THROW(builder.mount(scheme, makeMemoryProvider()), std::invalid_argument);
    }
    for (const std::u16string authority : {u"a/b", u"/", u"\xD800"}) {
        EXPECT_THROW(builder.mount(u"mem", authority, makeMemoryProvider()), std::invalid_argument);
    }
    EXPECT_THROW(builder.mount(u"refused-test", u"a/b", makeMemoryProvider()), std::invalid_argument);
    EXPECT_FALSE(vfs::hasIRIPrefix(u"refused-test://a"));
    EXPECT_THROW(builder.mount(u"mem", nullptr), std::invalid_argument);
    EXPECT_EQ(existence(u"mem://taken/", builder.build()), ExistenceType::Folder);
}

}  // namespace
