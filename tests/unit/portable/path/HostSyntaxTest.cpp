#include <pkgcore/platform/path/PathSyntax.hpp>

#include <gtest/gtest.h>

using namespace fl::filesystem::detail;
using namespace std::string_literals;

namespace {

TEST(HostSyntax, GivesEmptyResultsForAnEmptyPath) {
    EXPECT_EQ(make_native_form(u"", true), u"");
    EXPECT_EQ(make_generic_form(u""), u"");
    EXPECT_EQ(extract_extension(u""), u"");
    EXPECT_EQ(extract_filename(u""), u"");
    EXPECT_EQ(extract_parent_path(u""), u"");
    EXPECT_EQ(concatenate_pathname(u"", u"", true), u"");
    EXPECT_FALSE(is_absolute(u""));
    EXPECT_EQ(to_filesystem(u""), L"");
    EXPECT_EQ(make_access_form(L""), L"");
    EXPECT_EQ(make_native_access_form_with_cleanup(u""), L"");
}

TEST(HostSyntax, ReadsGenericPathsOnEveryHost) {
    EXPECT_EQ(make_generic_form(make_native_form(u"a//b.c/", true)), u"a/b.c");
    EXPECT_EQ(extract_filename(make_native_form(u"a/b.c", true)), u"b.c");
    EXPECT_EQ(extract_extension(make_native_form(u"a/b.c", true)), u"c");
    EXPECT_EQ(extract_parent_path(make_native_form(u"a/b.c", true)), u"a");
    EXPECT_EQ(make_generic_form(concatenate_pathname(u"a", u"b", true)), u"a/b");
}

TEST(HostSyntax, WidensWithoutLosingAnything) {
    EXPECT_EQ(to_filesystem(u"a\u00E4\u4E2D"), L"a\u00E4\u4E2D");
    EXPECT_EQ(to_filesystem(u"\U0001F600"), L"\U0001F600");
    EXPECT_EQ(to_filesystem(u"a\0b"s), L"a\0b"s);
    const std::wstring unpaired = to_filesystem(u"\xDC80");
    ASSERT_EQ(unpaired.size(), 1u);
    EXPECT_EQ(unpaired[0], static_cast<wchar_t>(0xDC80));
}

TEST(HostSyntax, CleansAPathForAccessInOneCall) {
    EXPECT_EQ(make_native_access_form_with_cleanup(u"a//b/"),
              make_access_form(to_filesystem(make_native_form(u"a//b/", true))));
    EXPECT_EQ(to_filesystem(make_native_form(u"a//b/", true)).size(), 3u);
}

}  // namespace
