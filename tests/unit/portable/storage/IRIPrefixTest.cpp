#include <pkgcore/platform/storage/IRIPrefix.hpp>

#include <gtest/gtest.h>

using foundation::storage::vfs::hasIRIPrefix;
using namespace std::string_literals;

namespace {

const std::u16string kWithPrefix[] = {
    u"file:///a",     u"file://",      u"mem://store/a", u"sqlite://notes/a", u"zip://archive/a",
    u"s3://bucket/a", u"dav://host/a", u"FILE:///a",     u"File:///a",        u"fIlE:///a",
    u"MEM://a",       u"SQLite://a",   u"Zip://a",       u"S3://a",           u"DAV://a",
    u"mem://",        u"mem:////",     u"mem://a b",     u"mem://?#%zz",      u"mem://\\",
    u"mem://\0"s,     u"mem://\xD800", u"mem://mem://",  u"s3://\n",          u"file://C:\\a",
};

const std::u16string kWithoutPrefix[] = {
    // native paths
    u"",
    u"a",
    u"/",
    u"/a/b",
    u"C:\\a",
    u"C:/a",
    u"C://a",
    u"\\\\server\\share",
    u"./mem://a",
    u"/mem://a",
    u"~",
    // no scheme of a storage system
    u"http://a",
    u"https://a",
    u"ftp://a",
    u"x://a",
    u"files://a",
    u"memory://a",
    u"mems://a",
    u"s33://a",
    u"s4://a",
    u"ile://a",
    u"em://a",
    u"zi://a",
    u"://a",
    u":///a",
    u"file.x://a",
    u"file+x://a",
    u"my-file://a",
    // something before the scheme, or within
    u" file://a",
    u"\tmem://a",
    u"\0mem://a"s,
    u"m\0em://a"s,
    u"\uFEFFmem://a",
    u"m em://a",
    u"mem ://a",
    u"mem: //a",
    u"mem:/ /a",
    u"(mem://a)",
    // the mark is not whole, or another one
    u"mem",
    u"mem:",
    u"mem:/",
    u"mem:a",
    u"mem:/a",
    u"mem:/a/b",
    u"mem//a",
    u"mem;//a",
    u"mem:\\\\a",
    u"mem:/\\a",
    u"mem:\\/a",
    u"file:a",
    u"file:/a",
    u"file:",
    u"s3:",
    u"s3:/",
    u"zip:/",
    u"sqlite:",
    u"sqlite:/",
    u"dav",
    u"s",
    // letters that only look or fold alike
    u"f\u0131le://a",
    u"F\u0130LE://a",
    u"\uFF4Dem://a",
    u"\u017F3://a",
    u"mem\uFF1A//a",
    u"mem:\u2044\u2044a",
    u"\u046Eem://a",
    u"\u046D\u0465\u046D://a",
    u"s\u0333://a",
    // characters beside the letters in ASCII
    u"-em://a",
    u"M%M://a",
    u"S\x13://a",
    u"S\x73://a",
    u"\x46\x49\x4C\x25://a",
};

TEST(IRIPrefix, IsARegisteredSchemeInAnyCaseAndTheMark) {
    for (const std::u16string& path : kWithPrefix) {
        EXPECT_TRUE(hasIRIPrefix(path)) << testing::PrintToString(path);
    }
}

TEST(IRIPrefix, IsNothingElse) {
    for (const std::u16string& path : kWithoutPrefix) {
        EXPECT_FALSE(hasIRIPrefix(path)) << testing::PrintToString(path);
    }
}

TEST(IRIPrefix, IsLostWhenAnyOneOfItsUnitsChanges) {
    const std::u16string prefixes[] = {u"file://", u"mem://", u"sqlite://", u"zip://", u"s3://", u"dav://"};
    for (const std::u16string& prefix : prefixes) {
        for (std::size_t i = 0; i < prefix.size(); ++i) {
            for (const char16_t other : {u'\0', u'@', u'[', u'`', u'{', u'x', u'8', u'\u0100'}) {
                std::u16string changed = prefix;
                changed[i] = other;
                EXPECT_FALSE(hasIRIPrefix(changed)) << testing::PrintToString(changed);
            }
        }
    }
}

TEST(IRIPrefix, NeedsAllOfItsUnits) {
    const std::u16string whole = u"sqlite://";
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(hasIRIPrefix(whole.substr(0, length))) << length;
    }
    EXPECT_TRUE(hasIRIPrefix(whole));
}

TEST(IRIPrefix, NeverThrows) {
    static_assert(noexcept(hasIRIPrefix(std::u16string())));
    EXPECT_FALSE(hasIRIPrefix(std::u16string(1'000'000, u'm')));
}

}  // namespace
