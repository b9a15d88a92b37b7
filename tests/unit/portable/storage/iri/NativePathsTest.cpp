#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/platform/storage/NativePaths.hpp>

#include "tests/unit/portable/storage/iri/Shown.hpp"

#include <gtest/gtest.h>

using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::fromAbsoluteIRI;
using foundation::storage::vfs::InvalidIRIException;
using foundation::storage::vfs::toAbsoluteIRI;
using foundation::storage::vfs::UnsupportedIRISchemeException;
using test::shown;

namespace {

struct ToIRI {
    std::u16string scheme;
    std::u16string path;
    std::u16string iri;
};

const ToIRI kToIRI[] = {
    {u"file", u"/", u"file:///"},
    {u"file", u"", u"file:///"},
    {u"file", u"/a", u"file:///a"},
    {u"file", u"a", u"file:///a"},
    {u"file", u"a/b", u"file:///a/b"},
    {u"file", u"/tmp/100% done?.txt", u"file:///tmp/100%25%20done%3F.txt"},
    {u"file", u"/a\\b", u"file:///a%5Cb"},
    {u"file", u"/caf\xDCE9", u"file:///caf%E9"},
    {u"file", u"/\u00E9", u"file:///\u00E9"},
    {u"file", u"//server/share", u"file://server/share"},
    {u"file", u"\\\\server/share", u"file://server/share"},
    {u"FILE", u"/a", u"FILE:///a"},
    {u"mem", u"\\\\store/a/b c", u"mem://store/a/b%20c"},
    {u"mem", u"//store/a", u"mem://store/a"},
    {u"mem", u"\\\\store", u"mem://store/"},
    {u"mem", u"//", u"mem:///"},
    {u"mem", u"///a", u"mem:///a"},
    {u"mem", u"a", u"mem:///a"},
    {u"mem", u"/a", u"mem:///a"},
    {u"mem", u"\\a", u"mem:///%5Ca"},
    {u"mem", u"\\\\a b/c", u"mem://a%20b/c"},
    {u"mem", u"\\\\a@b/c", u"mem://a%40b/c"},
    {u"dav", u"\\\\host:80/c", u"dav://host:80/c"},
    {u"dav", u"\\\\host:x/c", u"dav://host%3Ax/c"},
    {u"dav", u"\\\\[::1]:80/c", u"dav://[::1]:80/c"},
};

TEST(NativePaths, BecomeIRIs) {
    for (const ToIRI& row : kToIRI) {
        EXPECT_EQ(toAbsoluteIRI(row.scheme, row.path).toString(), row.iri) << shown(row.path);
    }
}

struct FromIRI {
    std::u16string iri;
    std::u16string path;
};

const FromIRI kFromIRI[] = {
    {u"file:///", u"/"},
    {u"file://", u"/"},
    {u"file:///a/b", u"/a/b"},
    {u"file:///a/", u"/a/"},
    {u"file:///a%20b%3F", u"/a b?"},
    {u"file:///caf%E9", u"/caf\xDCE9"},
    {u"FILE://LOCALHOST/a", u"/a"},
};

TEST(NativePaths, ComeBackOfIRIs) {
    for (const FromIRI& row : kFromIRI) {
        EXPECT_EQ(fromAbsoluteIRI(AbsoluteIRI(row.iri)), row.path) << shown(row.iri);
    }
}

TEST(NativePaths, AreThoseOfThisMachineAlone) {
    EXPECT_THROW(fromAbsoluteIRI(AbsoluteIRI(u"mem:///a")), UnsupportedIRISchemeException);
    EXPECT_THROW(fromAbsoluteIRI(AbsoluteIRI(u"file://server/a")), InvalidIRIException);
}

}  // namespace
