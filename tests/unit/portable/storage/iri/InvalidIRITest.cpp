#include <pkgcore/platform/storage/AbsoluteIRI.hpp>
#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/platform/storage/NativePaths.hpp>

#include "tests/unit/portable/storage/iri/Shown.hpp"

#include <gtest/gtest.h>

using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::CanonicalAbsoluteIRI;
using foundation::storage::vfs::InvalidIRIException;
using foundation::storage::vfs::toAbsoluteIRI;
using foundation::storage::vfs::UnsupportedIRISchemeException;
using test::shown;
using namespace std::string_literals;

namespace {

struct Refusal {
    std::u16string text;
    std::string message;
};

const Refusal kRefusals[] = {
    // no scheme, or no mark behind it
    {u"", "The end at offset 0 is not allowed in the scheme of an IRI"},
    {u"/a", "Character U+002F at offset 0 is not allowed in the scheme of an IRI"},
    {u"://a", "Character U+003A at offset 0 is not allowed in the scheme of an IRI"},
    {u"1mem://a", "Character U+0031 at offset 0 is not allowed in the scheme of an IRI"},
    {u" mem://a", "Character U+0020 at offset 0 is not allowed in the scheme of an IRI"},
    {u"\uFEFFmem://a", "Character U+FEFF at offset 0 is not allowed in the scheme of an IRI"},
    {u"mem", "The end at offset 3 is not allowed in the scheme of an IRI"},
    {u"me m://a", "Character U+0020 at offset 2 is not allowed in the scheme of an IRI"},
    {u"m%65m://a", "Character U+0025 at offset 1 is not allowed in the scheme of an IRI"},
    {u"a\\b", "Character U+005C at offset 1 is not allowed in the scheme of an IRI"},
    {u"m\u00E9m://a", "Character U+00E9 at offset 1 is not allowed in the scheme of an IRI"},
    {u"mem:", "The end at offset 4 is not allowed where \"://\" has to stand in an IRI"},
    {u"mem:a", "Character U+0061 at offset 4 is not allowed where \"://\" has to stand in an IRI"},
    {u"mem:/", "The end at offset 5 is not allowed where \"://\" has to stand in an IRI"},
    {u"mem:/a", "Character U+0061 at offset 5 is not allowed where \"://\" has to stand in an IRI"},
    {u"C:\\a", "Character U+005C at offset 2 is not allowed where \"://\" has to stand in an IRI"},
    {u"mem:\\\\a", "Character U+005C at offset 4 is not allowed where \"://\" has to stand in an IRI"},
    // the host
    {u"mem://a b/c", "Character U+0020 at offset 7 is not allowed in the host of an IRI"},
    {u"mem://user@host/a", "Character U+0040 at offset 10 is not allowed in the host of an IRI"},
    {u"mem://u:p@host/a", "Character U+0070 at offset 8 is not allowed in the port of an IRI"},
    {u"mem://a?b", "Character U+003F at offset 7 is not allowed in the host of an IRI"},
    {u"mem://a#b", "Character U+0023 at offset 7 is not allowed in the host of an IRI"},
    {u"mem://\\a", "Character U+005C at offset 6 is not allowed in the host of an IRI"},
    {u"mem://a\"b/", "Character U+0022 at offset 7 is not allowed in the host of an IRI"},
    {u"mem://a]/", "Character U+005D at offset 7 is not allowed in the host of an IRI"},
    {u"mem://a[/", "Character U+005B at offset 7 is not allowed in the host of an IRI"},
    {u"mem://\xE000/", "Character U+E000 at offset 6 is not allowed in the host of an IRI"},
    {u"mem://\xD800/", "Character U+D800 at offset 6 is not allowed in the host of an IRI"},
    {u"mem://a%2Fb/c", "Character U+002F, encoded at offset 7, is not allowed in a name"},
    {u"mem://a%00/c", "Character U+0000, encoded at offset 7, is not allowed in a name"},
    {u"mem://a%FF/c", "The percent-encoding at offset 7 is not UTF-8"},
    {u"file://a%FF/c", "The percent-encoding at offset 8 is not UTF-8"},
    {u"mem://a%/c", "The percent-encoding at offset 7 lacks its two hexadecimal digits"},
    {u"mem://a:8x/", "Character U+0078 at offset 9 is not allowed in the port of an IRI"},
    {u"mem://a:80:90/", "Character U+003A at offset 10 is not allowed in the port of an IRI"},
    {u"mem://a:\u0665/", "Character U+0665 at offset 8 is not allowed in the port of an IRI"},
    {u"mem://[]/a", "Character U+005D at offset 7 is not allowed in the host of an IRI"},
    {u"mem://[", "The end at offset 7 is not allowed in the host of an IRI"},
    {u"mem://[::1", "The end at offset 10 is not allowed in the host of an IRI"},
    {u"mem://[::g]/", "Character U+0067 at offset 9 is not allowed in the host of an IRI"},
    {u"mem://[::1]x/", "Character U+0078 at offset 11 is not allowed in the host of an IRI"},
    {u"mem://[fe80::1%25e]/", "Character U+0025 at offset 14 is not allowed in the host of an IRI"},
    // the path
    {u"mem://s/a b", "Character U+0020 at offset 9 is not allowed in the path of an IRI"},
    {u"mem://s/a?b", "Character U+003F at offset 9 is not allowed in the path of an IRI"},
    {u"mem://s/?", "Character U+003F at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/a#b", "Character U+0023 at offset 9 is not allowed in the path of an IRI"},
    {u"mem://s/a\\b", "Character U+005C at offset 9 is not allowed in the path of an IRI"},
    {u"mem://s/\"", "Character U+0022 at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/<", "Character U+003C at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/>", "Character U+003E at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/[", "Character U+005B at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/]", "Character U+005D at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/^", "Character U+005E at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/`", "Character U+0060 at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/{", "Character U+007B at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/|", "Character U+007C at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/}", "Character U+007D at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\x7F", "Character U+007F at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\n", "Character U+000A at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/a\0b"s, "Character U+0000 at offset 9 is not allowed in the path of an IRI"},
    {u"mem://s/\x80", "Character U+0080 at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\x9F", "Character U+009F at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\u200E", "Character U+200E at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\u202E", "Character U+202E at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\xE000", "Character U+E000 at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\xFDD0", "Character U+FDD0 at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\xFFFD", "Character U+FFFD at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\xD83F\xDFFE", "Character U+1FFFE at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\xDB40\xDC01", "Character U+E0001 at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\xDB80\xDC00", "Character U+F0000 at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\xD83D\xDE00 ", "Character U+0020 at offset 10 is not allowed in the path of an IRI"},
    {u"mem://s/\xD800", "Character U+D800 at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/\xDC80", "Character U+DC80 at offset 8 is not allowed in the path of an IRI"},
    {u"file:///\xDC80", "Character U+DC80 at offset 8 is not allowed in the path of an IRI"},
    {u"mem://s/%", "The percent-encoding at offset 8 lacks its two hexadecimal digits"},
    {u"mem://s/%4", "The percent-encoding at offset 8 lacks its two hexadecimal digits"},
    {u"mem://s/%4g", "The percent-encoding at offset 8 lacks its two hexadecimal digits"},
    {u"mem://s/%zz", "The percent-encoding at offset 8 lacks its two hexadecimal digits"},
    {u"mem://s/a%20%", "The percent-encoding at offset 12 lacks its two hexadecimal digits"},
    {u"mem://s/%%20", "The percent-encoding at offset 8 lacks its two hexadecimal digits"},
    {u"mem://s/%2F", "Character U+002F, encoded at offset 8, is not allowed in a name"},
    {u"mem://s/a%2fb", "Character U+002F, encoded at offset 9, is not allowed in a name"},
    {u"mem://s/%C3%A9%20%2F", "Character U+002F, encoded at offset 17, is not allowed in a name"},
    {u"file:///%2F", "Character U+002F, encoded at offset 8, is not allowed in a name"},
    {u"mem://s/%00", "Character U+0000, encoded at offset 8, is not allowed in a name"},
    {u"file:///a%00", "Character U+0000, encoded at offset 9, is not allowed in a name"},
    {u"mem://s/%FF", "The percent-encoding at offset 8 is not UTF-8"},
    {u"mem://s/%80", "The percent-encoding at offset 8 is not UTF-8"},
    {u"mem://s/a%C3", "The percent-encoding at offset 9 is not UTF-8"},
    {u"mem://s/%C3a", "The percent-encoding at offset 8 is not UTF-8"},
    {u"mem://s/%C3%A9%C3", "The percent-encoding at offset 14 is not UTF-8"},
    {u"mem://s/%C0%AF", "The percent-encoding at offset 8 is not UTF-8"},
    {u"mem://s/%C0%80", "The percent-encoding at offset 8 is not UTF-8"},
    {u"mem://s/%ED%A0%80", "The percent-encoding at offset 8 is not UTF-8"},
    {u"mem://s/%F4%90%80%80", "The percent-encoding at offset 8 is not UTF-8"},
    // the first of two faults
    {u"mem://s/%F0%8", "The percent-encoding at offset 8 is not UTF-8"},
    {u"mem://s/%2F%", "Character U+002F, encoded at offset 8, is not allowed in a name"},
    {u"file:///%FF%2F%FF%", "Character U+002F, encoded at offset 11, is not allowed in a name"},
};

template <typename IRI>
void expectRefusal(const Refusal& row) {
    try {
        const IRI iri(row.text);
        ADD_FAILURE() << shown(row.text) << " was taken as " << shown(iri.toString());
    } catch (const InvalidIRIException& refused) {
        EXPECT_EQ(refused.what(), row.message) << shown(row.text);
        EXPECT_EQ(refused.getInvalidIRIString(), row.text);
    }
}

TEST(InvalidIRI, IsRefusedWithTheCharacterAndItsOffset) {
    for (const Refusal& row : kRefusals) {
        expectRefusal<AbsoluteIRI>(row);
        expectRefusal<CanonicalAbsoluteIRI>(row);
    }
}

TEST(InvalidIRI, IsNotWhatAnUnknownSchemeIs) {
    for (const std::u16string scheme : {u"http", u"x", u"files", u"memory"}) {
        try {
            AbsoluteIRI(scheme + u"://host/a?b");
            ADD_FAILURE() << shown(scheme);
        } catch (const UnsupportedIRISchemeException& refused) {
            EXPECT_EQ(refused.getScheme(), scheme);
        }
    }
}

const Refusal kPlainRefusals[] = {
    {u"a\0"s, "Character U+0000 at offset 1 is not allowed in a name"},
    {u"a\xD800", "Character U+D800 at offset 1 is not allowed in a name"},
    {u"\xDC00", "Character U+DC00 at offset 0 is not allowed in a name"},
    {u"\xDC80", "Character U+DC80 at offset 0 is not allowed in a name"},
    {u"\xDE00\xD83D", "Character U+DE00 at offset 0 is not allowed in a name"},
};

TEST(InvalidIRI, ComesOfPlainTextThatNoNameCanHold) {
    const AbsoluteIRI base(u"mem://s/a");
    for (const Refusal& row : kPlainRefusals) {
        try {
            AbsoluteIRI(base, row.text);
            ADD_FAILURE() << shown(row.text);
        } catch (const InvalidIRIException& refused) {
            EXPECT_EQ(refused.what(), row.message);
            EXPECT_EQ(refused.getInvalidIRIString(), row.text);
        }
    }
}

TEST(InvalidIRI, ComesOfASchemeThatIsNone) {
    EXPECT_THROW(toAbsoluteIRI(u"", u"/a"), InvalidIRIException);
    EXPECT_THROW(toAbsoluteIRI(u"a b", u"/a"), InvalidIRIException);
    EXPECT_THROW(toAbsoluteIRI(u"http", u"/a"), UnsupportedIRISchemeException);
}

TEST(InvalidIRI, ComesOfJoiningToNoPlace) {
    EXPECT_THROW(AbsoluteIRI(AbsoluteIRI(), u"a"), InvalidIRIException);
    EXPECT_EQ(AbsoluteIRI(AbsoluteIRI(), u"").toString(), u"");
}

}  // namespace
