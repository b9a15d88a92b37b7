#include <pkgcore/platform/storage/AbsoluteIRI.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>

#include "tests/unit/portable/storage/iri/Shown.hpp"

#include <gtest/gtest.h>

using foundation::storage::vfs::AbsoluteIRI;
using test::shown;

namespace {

struct Spelling {
    std::u16string given;
    std::u16string written;
};

/// What stays as it is.
const std::u16string kUnchanged[] = {
    u"file:///",
    u"file:///a",
    u"file:///a/b/c.txt",
    u"file://",
    u"mem://store",
    u"mem://store/",
    u"mem://store/a",
    u"mem:///a",
    u"mem:////",
    u"mem://store//a///b//",
    u"mem://store/./a/../b/.",
    u"mem://store/...",
    u"mem://store/a.tar.gz",
    u"mem://store/.profile",
    u"MEM://Store/A",
    u"Sqlite://NOTES/x",
    u"s3://bucket/key",
    u"dav://host:8080/a",
    u"dav://host:/a",
    u"dav://host:80",
    u"dav://[::1]/a",
    u"dav://[2001:DB8::7]:80/a",
    u"dav://127.0.0.1/a",
    u"mem://a-b.c_d~e/x",
    u"mem://a!$&'()*+,;=b/x",
    u"mem://s/-._~!$&'()*+,;=:@",
    u"mem://s/a:b@c",
    u"mem://s/://",
    u"mem://s/0123456789",
    u"mem://s/\u00E4\u00F6\u00FC",
    u"mem://s/e\u0301",
    u"mem://s/\u65E5\u672C\u8A9E",
    u"mem://s/\xD83D\xDE00",
    u"mem://\u65E5\u672C/a",
    u"mem://s/\u00A0",
    u"mem://s/\uD7FF",
    u"mem://s/\uF900",
    u"mem://s/\uFDCF\uFDF0\uFFEF",
    u"mem://s/\xD800\xDC00",
    u"mem://s/%20",
    u"mem://s/100%25%20done%3F.txt",
    u"mem://s/%0A%1B%7F",
    u"mem://s/%C2%80",
    u"mem://s/%E2%80%AE",
    u"mem://s/%EE%80%80",
    u"mem://s/%EF%BF%BD",
    u"mem://s/%EF%B7%90",
    u"mem://s/%F3%B0%80%80",
    u"mem://s/%5C%22%3C%3E%5E%60%7B%7C%7D%23%5B%5D",
    u"mem://a%20b/x",
    u"mem://a%40b%3A/x",
    u"file:///caf%E9",
    u"file:///%FF%FE",
    u"file:///%ED%A0%80",
    u"file:///%C0%AF",
    u"file:///%C3x",
};

const Spelling kRespelled[] = {
    {u"mem://s/%41%5a%7A%30", u"mem://s/AZz0"},
    {u"mem://s/%2d%2E%5F%7e", u"mem://s/-._~"},
    {u"mem://s/%2e%2E/a", u"mem://s/../a"},
    {u"mem://s/%21%24%26%27%28%29%2a%2b%2c%3b%3d", u"mem://s/!$&'()*+,;="},
    {u"mem://s/%3A%40", u"mem://s/:@"},
    {u"mem://s/%c3%a9", u"mem://s/\u00E9"},
    {u"mem://s/%E6%97%A5", u"mem://s/\u65E5"},
    {u"mem://s/%f0%9f%98%80", u"mem://s/\xD83D\xDE00"},
    {u"mem://s/%c2%a0", u"mem://s/\u00A0"},
    {u"mem://s/%c2%9f", u"mem://s/%C2%9F"},
    {u"mem://s/%ef%bf%af", u"mem://s/\uFFEF"},
    {u"mem://s/%ef%bf%b0", u"mem://s/%EF%BF%B0"},
    {u"mem://s/a%20%62%3f", u"mem://s/a%20b%3F"},
    {u"mem://s/%5c%7b", u"mem://s/%5C%7B"},
    {u"mem://%53tore/a", u"mem://Store/a"},
    {u"mem://st%c3%b6re/a", u"mem://st\u00F6re/a"},
    {u"mem://s%3a/a", u"mem://s%3A/a"},
    {u"file:///%ff%41%c3", u"file:///%FFA%C3"},
    {u"file:///%e2%82%41", u"file:///%E2%82A"},
    {u"file:///%C3%A9%e9", u"file:///\u00E9%E9"},
    {u"mem://s/%E2%80%8E%e2%80%ad", u"mem://s/%E2%80%8E%E2%80%AD"},
};

TEST(AbsoluteIRI, KeepsWhatIsSpelledRightAlready) {
    for (const std::u16string& text : kUnchanged) {
        EXPECT_EQ(AbsoluteIRI(text).toString(), text) << shown(text);
    }
}

TEST(AbsoluteIRI, EncodesOnlyWhatCannotStandForItself) {
    for (const Spelling& row : kRespelled) {
        EXPECT_EQ(AbsoluteIRI(row.given).toString(), row.written) << shown(row.given);
    }
}

struct Parts {
    std::u16string iri;
    std::u16string scheme;
    std::u16string path;
};

const Parts kParts[] = {
    {u"file:///", u"file", u"/"},
    {u"file:///a", u"file", u"/a"},
    {u"file://", u"file", u"/"},
    {u"file://localhost/a", u"file", u"/a"},
    {u"file://LOCALHOST:", u"file", u"/"},
    {u"FILE:///a", u"FILE", u"/a"},
    {u"FILE://localhost/a", u"FILE", u"/a"},
    {u"mem://", u"mem", u"/"},
    {u"mem://localhost/a", u"mem", u"localhost/a"},
    {u"mem://store/a", u"mem", u"store/a"},
    {u"mem://store", u"mem", u"store"},
    {u"mem://store/", u"mem", u"store/"},
    {u"mem://store//a/../b", u"mem", u"store//a/../b"},
    {u"mem://s/100%25%20done%3F.txt", u"mem", u"s/100% done?.txt"},
    {u"mem://a%20b/c%5Cd", u"mem", u"a b/c\\d"},
    {u"mem://s/\u00E9%C2%80", u"mem", u"s/\u00E9\u0080"},
    {u"file:///caf%E9", u"file", u"/caf\xDCE9"},
    {u"dav://host:80/a", u"dav", u"host:80/a"},
};

TEST(AbsoluteIRI, GivesItsPartsInPlainText) {
    for (const Parts& row : kParts) {
        const AbsoluteIRI iri(row.iri);
        EXPECT_EQ(iri.getScheme(), row.scheme) << shown(row.iri);
        EXPECT_EQ(iri.getPath(), row.path) << shown(row.iri);
    }
}

TEST(AbsoluteIRI, OfAFileOnAnotherHostHasNoPath) {
    const AbsoluteIRI iri(u"file://server/share");
    EXPECT_EQ(iri.getScheme(), u"file");
    EXPECT_THROW(iri.getPath(), foundation::storage::vfs::InvalidIRIException);
}

TEST(AbsoluteIRI, OfNoPlaceIsEmpty) {
    const AbsoluteIRI iri;
    EXPECT_EQ(iri.toString(), u"");
    EXPECT_EQ(iri.getScheme(), u"");
    EXPECT_EQ(iri.getPath(), u"");
}

struct Join {
    std::u16string base;
    std::u16string relative;
    std::u16string joined;
};

const Join kJoins[] = {
    {u"mem://s/a", u"b", u"mem://s/a/b"},
    {u"mem://s/a/", u"b", u"mem://s/a/b"},
    {u"mem://s/", u"b", u"mem://s/b"},
    {u"mem://s", u"b", u"mem://s/b"},
    {u"file://", u"b", u"file:///b"},
    {u"file:///", u"b", u"file:///b"},
    {u"mem://s/a", u"", u"mem://s/a"},
    {u"mem://s/a/", u"", u"mem://s/a/"},
    {u"mem://s", u"", u"mem://s"},
    {u"mem://s/a", u"/b", u"mem://s/a//b"},
    {u"mem://s/a", u"b/", u"mem://s/a/b/"},
    {u"mem://s/a", u"b/c d/e", u"mem://s/a/b/c%20d/e"},
    {u"mem://s/a", u"../b", u"mem://s/a/../b"},
    {u"mem://s/a", u"100% done?.txt", u"mem://s/a/100%25%20done%3F.txt"},
    {u"mem://s/a", u"%41", u"mem://s/a/%2541"},
    {u"mem://s/a", u"%2F", u"mem://s/a/%252F"},
    {u"mem://s/a", u"x#y", u"mem://s/a/x%23y"},
    {u"mem://s/a", u"C:\\x", u"mem://s/a/C:%5Cx"},
    {u"mem://s/a", u"mem://t/b", u"mem://s/a/mem://t/b"},
    {u"mem://s/a", u"\u00E9\xD83D\xDE00", u"mem://s/a/\u00E9\xD83D\xDE00"},
    {u"mem://s/a", u"\u202E\uE000", u"mem://s/a/%E2%80%AE%EE%80%80"},
    {u"file:///a", u"caf\xDCE9", u"file:///a/caf%E9"},
    {u"file:///a", u"\xDCC3\xDCA9", u"file:///a/\u00E9"},
};

TEST(AbsoluteIRI, JoinsPlainTextToItself) {
    for (const Join& row : kJoins) {
        EXPECT_EQ(AbsoluteIRI(AbsoluteIRI(row.base), row.relative).toString(), row.joined)
            << shown(row.base) << ' ' << shown(row.relative);
    }
}

}  // namespace
