#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>

#include "tests/unit/portable/storage/iri/Shown.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

using foundation::storage::vfs::CanonicalAbsoluteIRI;
using test::shown;

namespace {

struct Canonical {
    std::u16string given;
    std::u16string canonical;
};

const Canonical kCanonical[] = {
    // letter case
    {u"MEM://STORE/A", u"mem://store/A"},
    {u"File:///A", u"file:///A"},
    {u"SQLite://Notes/Day", u"sqlite://notes/Day"},
    {u"mem://St%C3%96re/a", u"mem://st\u00D6re/a"},
    {u"mem://A%20B/c", u"mem://a%20b/c"},
    {u"mem://a%3AB/c", u"mem://a%3Ab/c"},
    {u"dav://[2001:DB8::A]/x", u"dav://[2001:db8::a]/x"},
    // roots
    {u"mem://store", u"mem://store/"},
    {u"mem://store/", u"mem://store/"},
    {u"mem://store//", u"mem://store/"},
    {u"mem://store/.", u"mem://store/"},
    {u"mem://store/..", u"mem://store/"},
    {u"mem://store/a/..", u"mem://store/"},
    {u"mem://", u"mem:///"},
    {u"mem:///", u"mem:///"},
    {u"file://", u"file:///"},
    {u"file:////", u"file:///"},
    // slashes
    {u"mem://s/a/", u"mem://s/a"},
    {u"mem://s/a//", u"mem://s/a"},
    {u"mem://s//a", u"mem://s/a"},
    {u"mem://s/a//b///c", u"mem://s/a/b/c"},
    {u"file:////a", u"file:///a"},
    // dot segments
    {u"mem://s/./a", u"mem://s/a"},
    {u"mem://s/a/.", u"mem://s/a"},
    {u"mem://s/a/./b", u"mem://s/a/b"},
    {u"mem://s/a/../b", u"mem://s/b"},
    {u"mem://s/a/b/../../c", u"mem://s/c"},
    {u"mem://s/a/b/../..", u"mem://s/"},
    {u"mem://s/../a", u"mem://s/a"},
    {u"mem://s/../../../a", u"mem://s/a"},
    {u"mem://s/a/../../../b", u"mem://s/b"},
    {u"mem://s/a//../b", u"mem://s/b"},
    {u"mem://s/a/.//.././/b/", u"mem://s/b"},
    {u"mem://s/%2E%2e/a", u"mem://s/a"},
    {u"mem://s/a/%2E/b", u"mem://s/a/b"},
    {u"mem://s/...", u"mem://s/..."},
    {u"mem://s/..a", u"mem://s/..a"},
    {u"mem://s/a..", u"mem://s/a.."},
    {u"mem://s/.a", u"mem://s/.a"},
    {u"mem://s/a/..%20", u"mem://s/a/..%20"},
    {u"mem://../a", u"mem://../a"},
    // the spelling of characters
    {u"mem://s/%41%20%c3%a9", u"mem://s/A%20\u00E9"},
    {u"mem://s/e%CC%81", u"mem://s/e\u0301"},
    {u"file:///caf%e9", u"file:///caf%E9"},
    // ports and the machine itself
    {u"dav://host:/a", u"dav://host/a"},
    {u"dav://host:80/a", u"dav://host:80/a"},
    {u"file://localhost/a", u"file:///a"},
    {u"file://LocalHost", u"file:///"},
    {u"file://localhost:/a", u"file:///a"},
    {u"file://other/a", u"file://other/a"},
    {u"mem://localhost/a", u"mem://localhost/a"},
};

TEST(CanonicalIRI, HasOneSpellingForEachPlace) {
    for (const Canonical& row : kCanonical) {
        EXPECT_EQ(CanonicalAbsoluteIRI(row.given).toString(), row.canonical) << shown(row.given);
    }
}

TEST(CanonicalIRI, IsTheCanonicalFormOfItself) {
    for (const Canonical& row : kCanonical) {
        EXPECT_EQ(CanonicalAbsoluteIRI(row.canonical).toString(), row.canonical);
    }
}

TEST(CanonicalIRI, IsKnownToBePlainOnlyWhereNothingIsEncoded) {
    for (const Canonical& row : kCanonical) {
        const bool isEncoded = row.canonical.find(u'%') != std::u16string::npos;
        EXPECT_FALSE(isEncoded && CanonicalAbsoluteIRI(row.canonical).isPlain()) << shown(row.canonical);
    }
    EXPECT_TRUE(CanonicalAbsoluteIRI(u"mem://store/folder/file.txt").isPlain());
    EXPECT_FALSE(CanonicalAbsoluteIRI(u"mem://store/100%25").isPlain());
}

TEST(CanonicalIRI, ComparesByPlace) {
    EXPECT_EQ(CanonicalAbsoluteIRI(u"MEM://S/a/../%62/"), CanonicalAbsoluteIRI(u"mem://s/b"));
    EXPECT_NE(CanonicalAbsoluteIRI(u"mem://s/b"), CanonicalAbsoluteIRI(u"mem://s/B"));
    EXPECT_NE(CanonicalAbsoluteIRI(u"mem://s/b"), CanonicalAbsoluteIRI(u"mem://t/b"));
    EXPECT_NE(CanonicalAbsoluteIRI(u"mem://s/\u00E9"), CanonicalAbsoluteIRI(u"mem://s/e\u0301"));
    EXPECT_NE(CanonicalAbsoluteIRI(u"file:///s/b"), CanonicalAbsoluteIRI(u"mem:///s/b"));
}

struct Family {
    std::u16string iri;
    std::u16string name;
    std::u16string parent;  ///< empty for a root
};

const Family kFamilies[] = {
    {u"mem://s/a", u"a", u"mem://s/"},
    {u"mem://s/a/b", u"b", u"mem://s/a"},
    {u"mem://s/a/b/", u"b", u"mem://s/a"},
    {u"mem://s/a%20b/c%3Fd", u"c?d", u"mem://s/a%20b"},
    {u"mem://s/100%25%20done%3F.txt", u"100% done?.txt", u"mem://s/"},
    {u"mem://s/\u00E9/\u65E5", u"\u65E5", u"mem://s/\u00E9"},
    {u"mem://s/C:%5Cx", u"C:\\x", u"mem://s/"},
    {u"mem://s/archive.tar.gz", u"archive.tar.gz", u"mem://s/"},
    {u"file:///a", u"a", u"file:///"},
    {u"file:///caf%E9", u"caf\xDCE9", u"file:///"},
    {u"dav://host:80/a", u"a", u"dav://host:80/"},
    {u"mem:///a", u"a", u"mem:///"},
    {u"mem://s/", u"", u""},
    {u"mem://s", u"", u""},
    {u"mem://s/a/..", u"", u""},
    {u"file:///", u"", u""},
    {u"file://", u"", u""},
};

TEST(CanonicalIRI, KnowsItsNameAndItsParent) {
    for (const Family& row : kFamilies) {
        const CanonicalAbsoluteIRI iri(row.iri);
        EXPECT_EQ(iri.getName(), row.name) << shown(row.iri);
        ASSERT_EQ(iri.hasParent(), !row.parent.empty()) << shown(row.iri);
        if (iri.hasParent()) {
            EXPECT_EQ(iri.getParent().toString(), row.parent) << shown(row.iri);
        }
    }
}

TEST(CanonicalIRI, OfARootHasNoParentToGive) {
    EXPECT_THROW(CanonicalAbsoluteIRI(u"mem://s/").getParent(), std::logic_error);
}

}  // namespace
