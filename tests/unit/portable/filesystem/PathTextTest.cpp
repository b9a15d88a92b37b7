#include <pkgcore/portable/filesystem/PathText.hpp>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using fl::filesystem::posix::appendDecoded;
using fl::filesystem::posix::decodeText;
using fl::filesystem::posix::encodeText;
using fl::filesystem::posix::kInvalidText;
using fl::filesystem::posix::kMaxBytesPerUnit;

const std::string kInvalid = "(invalid)";

// Into a block of exactly the promised size, so that a sanitizer sees every byte too many.
std::string encoded(const std::u16string& text) {
    std::vector<char> bytes(text.size() * kMaxBytesPerUnit);
    const std::size_t size = encodeText(text, bytes.data());
    return size == kInvalidText ? kInvalid : std::string(bytes.data(), size);
}

std::string encodedWide(const std::wstring& text) {
    std::vector<char> bytes(text.size() * 4);
    const std::size_t size = encodeText(text, bytes.data());
    return size == kInvalidText ? kInvalid : std::string(bytes.data(), size);
}

std::u16string decoded(const std::string& bytes) {
    std::vector<char16_t> units(bytes.size());
    return std::u16string(units.data(), decodeText(bytes, units.data()));
}

struct Name {
    std::u16string text;
    std::string bytes;
};

const Name kNames[] = {
    {u"", ""},
    {u"a", "a"},
    {u"a file with blanks.txt", "a file with blanks.txt"},
    {u"\u007F\u0080", "\x7F\xC2\x80"},
    {u"K\u00E4se", "K\xC3\xA4se"},
    {u"\u07FF\u0800", "\xDF\xBF\xE0\xA0\x80"},
    {u"\u65E5\u672C\u8A9E", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E"},
    {u"\uD7FF\uE000\uFFFF", "\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"},
    {u"\U00010000", "\xF0\x90\x80\x80"},
    {u"a\U0010FFFFb",
     "a\xF4\x8F\xBF\xBF"
     "b"},
    {u"\xDCFF", "\xFF"},
    {u"latin1-\xDCE4\xDCF6-name", "latin1-\xE4\xF6-name"},
    {u"\xDCC3", "\xC3"},                                // a sequence that is cut off
    {u"\xDCC0\xDCAF", "\xC0\xAF"},                      // overlong
    {u"\xDCED\xDCB2\xDC80", "\xED\xB2\x80"},            // an escape, encoded as if it were a character
    {u"\xDCF4\xDC90\xDC80\xDC80", "\xF4\x90\x80\x80"},  // beyond the last character
    {u"\xDCE2\xDC82x\u20AC", "\xE2\x82x\xE2\x82\xAC"},  // cut off before a letter
};

TEST(PathText, NamesAreUtf8) {
    for (const Name& name : kNames) {
        EXPECT_EQ(name.bytes, encoded(name.text));
        EXPECT_EQ(name.text, decoded(name.bytes));
    }
}

TEST(PathText, EachByteOutsideUtf8HasItsOwnUnit) {
    for (unsigned byte = 0x80; byte <= 0xFF; ++byte) {
        const std::string bytes(1, static_cast<char>(byte));
        const std::u16string text(1, static_cast<char16_t>(0xDC00 + byte));
        EXPECT_EQ(text, decoded(bytes));
        EXPECT_EQ(bytes, encoded(text));
    }
}

TEST(PathText, EveryPairOfBytesComesBack) {
    for (unsigned first = 1; first <= 0xFF; ++first) {
        for (unsigned second = 1; second <= 0xFF; ++second) {
            const std::string bytes{static_cast<char>(first), static_cast<char>(second)};
            ASSERT_EQ(bytes, encoded(decoded(bytes)));
        }
    }
}

TEST(PathText, AnyBytesComeBack) {
    std::mt19937 random(20240229);
    // Mostly bytes that lead or continue a sequence, since those are where it can go wrong.
    const std::string alphabet = "az/\x80\x8F\x90\x9F\xA0\xBF\xC2\xC3\xE0\xE2\xED\xEF\xF0\xF1\xF4\xF5\xFF";
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(random() % 40, '\0');
        for (char& byte : bytes) byte = alphabet[random() % alphabet.size()];
        ASSERT_EQ(bytes, encoded(decoded(bytes)));
    }
}

TEST(PathText, LongTextIsAppended) {
    for (const std::size_t length : {255U, 256U, 257U, 5000U}) {
        std::u16string text = u"kept";
        appendDecoded(std::string(length, 'x') + "\xC3\xA4", text);
        EXPECT_EQ(u"kept" + std::u16string(length, u'x') + u"\u00E4", text);
    }
}

TEST(PathText, NulIsRefusedWhereverItStands) {
    for (std::size_t length = 1; length <= 40; ++length) {
        for (std::size_t at = 0; at < length; ++at) {
            std::u16string text(length, u'x');
            text[at] = u'\0';
            EXPECT_EQ(kInvalid, encoded(text)) << at << " of " << length;
        }
    }
}

TEST(PathText, NothingButNulLooksLikeOne) {
    std::string bytes;
    for (int byte = 1; byte <= 0xFF; ++byte) bytes += static_cast<char>(byte);
    EXPECT_EQ(bytes, encoded(decoded(bytes)));
    EXPECT_EQ(std::string(40, '\x01'), encoded(std::u16string(40, u'\x01')));
    EXPECT_EQ(std::string(40, '\x80'), encoded(std::u16string(40, u'\xDC80')));
}

TEST(PathText, UnpairedSurrogatesAreRefused) {
    const std::u16string texts[] = {u"\xD800", u"\xDBFFz", u"a\xD800", u"\xD800\xD800\xDC00",
                                    u"\xDC00", u"a\xDC7F", u"\xDD00",  u"\xDFFF",
                                    u"\xDC41"};
    for (const std::u16string& text : texts)
        EXPECT_EQ(kInvalid, encoded(text)) << testing::PrintToString(text);
}

TEST(PathText, LeadSurrogateAndEscapeAreOneCharacter) {
    EXPECT_EQ("\xF0\x90\x82\x80", encoded(u"\xD800\xDC80"));
}

TEST(PathText, WideTextGivesTheSameBytes) {
    for (const Name& name : kNames) {
        std::wstring wide;
        for (std::size_t at = 0; at < name.text.size(); ++at) {
            const char16_t unit = name.text[at];
            const bool pair = unit >= 0xD800 && unit < 0xDC00;
            wide += static_cast<wchar_t>(pair ? 0x10000 + ((unit - 0xD800) << 10) + (name.text[++at] - 0xDC00)
                                              : unit);
        }
        EXPECT_EQ(name.bytes, encodedWide(wide));
    }
}

TEST(PathText, WideTextWithoutBytesIsRefused) {
    const std::wstring texts[] = {std::wstring(1, L'\0'),
                                  std::wstring(1, wchar_t{0xD800}),
                                  std::wstring(1, wchar_t{0xDC7F}),
                                  std::wstring(1, wchar_t{0x110000}),
                                  std::wstring(1, static_cast<wchar_t>(-1)),
                                  L"a" + std::wstring(1, L'\0') + L"b"};
    for (const std::wstring& text : texts) EXPECT_EQ(kInvalid, encodedWide(text));
}

}  // namespace
