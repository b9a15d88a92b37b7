#include <pkgcore/portable/storage/iri/PlainPath.hpp>

#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/portable/storage/iri/IRICharacters.hpp>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using foundation::storage::portable::arePlainUnits;
using foundation::storage::portable::isPlainPath;
using foundation::storage::vfs::CanonicalAbsoluteIRI;

/// Longer than a few vectors.
constexpr std::size_t kLongest = 50;

// The library has its sets from the compiler.
TEST(LiteralSet, HasOfAsciiWhatItWasGiven) {
    const std::string given = "-az";
    const foundation::storage::portable::LiteralSet set(given);
    for (char16_t unit = 0; unit < 0x80; ++unit) {
        EXPECT_EQ(set.containsAscii(unit), given.find(static_cast<char>(unit)) != std::string::npos) << unit;
        EXPECT_EQ(set.contains(unit), set.containsAscii(unit));
    }
    EXPECT_FALSE(set.containsAscii(0x4E2D));
    EXPECT_TRUE(set.contains(0x4E2D));
    EXPECT_EQ(set.asciiRun(u"a-z.a"), 3U);
}

/// All of ASCII, and units that end like some of it.
std::vector<char16_t> interestingUnits() {
    std::vector<char16_t> units{0x012F, 0x2F2F, 0x2F61, 0x0161, 0x8061, 0xFF2F, 0xE9, 0xD800, 0xFFFF};
    for (char16_t unit = 0; unit < 0x80; ++unit) {
        units.push_back(unit);
    }
    return units;
}

/// Calls `check` with paths of all lengths that have the units somewhere, and are plain elsewhere.
template <typename Check>
void forEachPath(const std::u16string& units, Check check) {
    for (std::size_t length = units.size(); length <= kLongest; ++length) {
        for (std::size_t at = 0; at + units.size() <= length; ++at) {
            std::u16string path(length, u'a');
            path[0] = u'/';
            path.replace(at, units.size(), units);
            check(path);
        }
    }
}

bool isPlainOneByOne(const std::u16string& path) {
    return path[0] == u'/' && arePlainUnits(std::u16string_view(path).substr(1));
}

TEST(PlainPath, IsTheSameInVectorsAndOneByOne) {
    for (const char16_t unit : interestingUnits()) {
        forEachPath({unit}, [](const std::u16string& path) {
            EXPECT_EQ(isPlainPath(path), isPlainOneByOne(path)) << testing::PrintToString(path);
        });
    }
    for (const std::u16string pair : {u"//", u"/.", u"./", u"..", u"/-", u"/0", u"a/", u"/a"}) {
        forEachPath(pair, [](const std::u16string& path) {
            EXPECT_EQ(isPlainPath(path), isPlainOneByOne(path)) << testing::PrintToString(path);
        });
    }
}

// A capital letter in the scheme has the whole IRI parsed.
TEST(PlainPath, StaysAsItIsWhenItIsParsed) {
    for (const char16_t unit : interestingUnits()) {
        forEachPath({unit}, [](const std::u16string& path) {
            if (isPlainPath(path)) {
                EXPECT_EQ(CanonicalAbsoluteIRI(u"MEM://store" + path).toString(), u"mem://store" + path);
            }
        });
    }
}

TEST(PlainPath, IsWhatPathsUsuallyAre) {
    EXPECT_TRUE(isPlainPath(u"/a"));
    EXPECT_TRUE(isPlainPath(u"/notes/2026/report-1_final.v2.txt"));
    EXPECT_FALSE(isPlainPath(u""));
    EXPECT_FALSE(isPlainPath(u"/"));
    EXPECT_FALSE(isPlainPath(u"a"));
    EXPECT_FALSE(isPlainPath(u"/a/"));
    EXPECT_FALSE(isPlainPath(u"/a//b"));
    EXPECT_FALSE(isPlainPath(u"/a/../b"));
    EXPECT_FALSE(isPlainPath(u"/100%25%20done.txt"));
}

}  // namespace
