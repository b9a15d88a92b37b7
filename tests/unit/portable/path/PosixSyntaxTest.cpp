#include <pkgcore/portable/path/PosixSyntax.hpp>

#include "tests/unit/portable/path/PathTables.hpp"

using namespace fl::filesystem::syntax;
using namespace std::string_literals;
using path_tests::JoinRow;
using path_tests::PathRow;

namespace {

// path, tidied, parent, filename, extension, absolute
const PathRow kPaths[] = {
    {u"", u"", u"", u"", u"", false},
    // roots
    {u"/", u"/", u"", u"", u"", true},
    {u"//", u"/", u"", u"", u"", true},
    {u"///", u"/", u"", u"", u"", true},
    {u"////////////////////////////////////", u"/", u"", u"", u"", true},
    // one element
    {u"a", u"a", u"", u"a", u"", false},
    {u"/a", u"/a", u"/", u"a", u"", true},
    {u"//a", u"/a", u"/", u"a", u"", true},
    {u"///a", u"/a", u"/", u"a", u"", true},
    {u"a/", u"a", u"", u"a", u"", false},
    {u"a///", u"a", u"", u"a", u"", false},
    {u"/a/", u"/a", u"/", u"a", u"", true},
    {u"//a//", u"/a", u"/", u"a", u"", true},
    // several elements
    {u"a/b", u"a/b", u"a", u"b", u"", false},
    {u"a//b", u"a/b", u"a", u"b", u"", false},
    {u"a/////b", u"a/b", u"a", u"b", u"", false},
    {u"a/b/", u"a/b", u"a", u"b", u"", false},
    {u"a//b//", u"a/b", u"a", u"b", u"", false},
    {u"/a/b", u"/a/b", u"/a", u"b", u"", true},
    {u"//a//b//c", u"/a/b/c", u"/a/b", u"c", u"", true},
    {u"a/b/c/d/e", u"a/b/c/d/e", u"a/b/c/d", u"e", u"", false},
    {u"/usr/share/doc/readme.txt", u"/usr/share/doc/readme.txt", u"/usr/share/doc", u"readme.txt", u"txt",
     true},
    // runs at each place of a block of the scan
    {u"//bcdefghijk", u"/bcdefghijk", u"/", u"bcdefghijk", u"", true},
    {u"a//defghijk", u"a/defghijk", u"a", u"defghijk", u"", false},
    {u"ab//efghijk", u"ab/efghijk", u"ab", u"efghijk", u"", false},
    {u"abc//fghijk", u"abc/fghijk", u"abc", u"fghijk", u"", false},
    {u"abcd//ghijk", u"abcd/ghijk", u"abcd", u"ghijk", u"", false},
    {u"abcde//hijk", u"abcde/hijk", u"abcde", u"hijk", u"", false},
    {u"abcdef//ijk", u"abcdef/ijk", u"abcdef", u"ijk", u"", false},
    {u"abcdefg//jk", u"abcdefg/jk", u"abcdefg", u"jk", u"", false},
    {u"abcdefgh//k", u"abcdefgh/k", u"abcdefgh", u"k", u"", false},
    {u"abcdefghi//", u"abcdefghi", u"", u"abcdefghi", u"", false},
    // characters that look like a separator in parts of a word only
    {u"\u2F2F\u2F2F\u2F2Fx", u"\u2F2F\u2F2F\u2F2Fx", u"", u"\u2F2F\u2F2F\u2F2Fx", u"", false},
    {u"\u2F00\u002F\u2F00\u002Fx", u"\u2F00/\u2F00/x", u"\u2F00/\u2F00", u"x", u"", false},
    {u"\u012F\u012F\u012F\u012F\u012Fx", u"\u012F\u012F\u012F\u012F\u012Fx", u"",
     u"\u012F\u012F\u012F\u012F\u012Fx", u"", false},
    // "." and ".." stay where they are
    {u".", u".", u"", u".", u"", false},
    {u"..", u"..", u"", u"..", u"", false},
    {u"./", u".", u"", u".", u"", false},
    {u"../", u"..", u"", u"..", u"", false},
    {u"/.", u"/.", u"/", u".", u"", true},
    {u"/..", u"/..", u"/", u"..", u"", true},
    {u"./a", u"./a", u".", u"a", u"", false},
    {u"../a", u"../a", u"..", u"a", u"", false},
    {u"a/.", u"a/.", u"a", u".", u"", false},
    {u"a/..", u"a/..", u"a", u"..", u"", false},
    {u"a/../b", u"a/../b", u"a/..", u"b", u"", false},
    {u"a//..//b", u"a/../b", u"a/..", u"b", u"", false},
    {u"/../a", u"/../a", u"/..", u"a", u"", true},
    // extensions
    {u"a.txt", u"a.txt", u"", u"a.txt", u"txt", false},
    {u"a.txt/", u"a.txt", u"", u"a.txt", u"txt", false},
    {u"archive.tar.gz", u"archive.tar.gz", u"", u"archive.tar.gz", u"gz", false},
    {u".profile", u".profile", u"", u".profile", u"profile", false},
    {u"/home/.profile", u"/home/.profile", u"/home", u".profile", u"profile", true},
    {u".a.b", u".a.b", u"", u".a.b", u"b", false},
    {u"name.", u"name.", u"", u"name.", u"", false},
    {u"name..", u"name..", u"", u"name..", u"", false},
    {u"name..txt", u"name..txt", u"", u"name..txt", u"txt", false},
    {u"...", u"...", u"", u"...", u"", false},
    {u"..a", u"..a", u"", u"..a", u"a", false},
    {u"dir.d/name", u"dir.d/name", u"dir.d", u"name", u"", false},
    {u"dir.d/name.e", u"dir.d/name.e", u"dir.d", u"name.e", u"e", false},
    {u"a.TXT", u"a.TXT", u"", u"a.TXT", u"TXT", false},
    {u"a. b", u"a. b", u"", u"a. b", u" b", false},
    {u"a.\u00E4\u4E2D", u"a.\u00E4\u4E2D", u"", u"a.\u00E4\u4E2D", u"\u00E4\u4E2D", false},
    // what separates elsewhere is part of a name here
    {u"a\\b", u"a\\b", u"", u"a\\b", u"", false},
    {u"\\", u"\\", u"", u"\\", u"", false},
    {u"\\\\a\\\\b", u"\\\\a\\\\b", u"", u"\\\\a\\\\b", u"", false},
    {u"a\\b.c/d\\", u"a\\b.c/d\\", u"a\\b.c", u"d\\", u"", false},
    {u"C:", u"C:", u"", u"C:", u"", false},
    {u"C:/a", u"C:/a", u"C:", u"a", u"", false},
    {u"//server/share", u"/server/share", u"/server", u"share", u"", true},
    {u"//?/C:/a", u"/?/C:/a", u"/?/C:", u"a", u"", true},
    {u"mem://store/a", u"mem:/store/a", u"mem:/store", u"a", u"", false},
    // odd names
    {u" ", u" ", u"", u" ", u"", false},
    {u" / ", u" / ", u" ", u" ", u"", false},
    {u"a\nb/c\td", u"a\nb/c\td", u"a\nb", u"c\td", u"", false},
    {u"*?<>|\"/:", u"*?<>|\"/:", u"*?<>|\"", u":", u"", false},
    {u"~/a", u"~/a", u"~", u"a", u"", false},
    {u"\U0001F600/\U0001F4C1.\U0001F4A9", u"\U0001F600/\U0001F4C1.\U0001F4A9", u"\U0001F600",
     u"\U0001F4C1.\U0001F4A9", u"\U0001F4A9", false},
    // a NUL is a character like any other here: whoever talks to the host refuses it
    {u"a\0b"s, u"a\0b"s, u"", u"a\0b"s, u"", false},
    {u"/\0//x.\0"s, u"/\0/x.\0"s, u"/\0"s, u"x.\0"s, u"\0"s, true},
    {u"\0"s, u"\0"s, u"", u"\0"s, u"", false},
    // names that are no text
    {u"\xDC80/\xD800.\xDFFF", u"\xDC80/\xD800.\xDFFF", u"\xDC80", u"\xD800.\xDFFF", u"\xDFFF", false},
};

TEST(PosixPath, IsTidied) {
    for (const PathRow& row : kPaths) {
        SCOPED_TRACE(testing::PrintToString(row));
        EXPECT_EQ(posix::make_native_form(row.path, true), row.tidied);
    }
}

TEST(PosixPath, HasItsPieces) {
    for (const PathRow& row : kPaths) {
        SCOPED_TRACE(testing::PrintToString(row));
        const std::u16string& path = row.tidied;
        EXPECT_EQ(posix::extract_parent_path(path), row.parent);
        EXPECT_EQ(posix::extract_filename(path), row.filename);
        EXPECT_EQ(posix::extract_extension(path), row.extension);
        EXPECT_EQ(posix::is_absolute(path), row.absolute);
    }
}

TEST(PosixPath, HasTheSamePiecesBeforeItIsTidied) {
    for (const PathRow& row : kPaths) {
        SCOPED_TRACE(testing::PrintToString(row));
        const std::u16string& path = row.path;
        EXPECT_EQ(posix::make_native_form(posix::extract_parent_path(path), true), row.parent);
        EXPECT_EQ(posix::extract_filename(path), row.filename);
        EXPECT_EQ(posix::extract_extension(path), row.extension);
        EXPECT_EQ(posix::is_absolute(path), row.absolute);
    }
}

TEST(PosixPath, IsItsOwnUntidiedAndGenericForm) {
    for (const PathRow& row : kPaths) {
        SCOPED_TRACE(testing::PrintToString(row));
        const std::u16string& path = row.path;
        EXPECT_EQ(posix::make_native_form(path, false), path);
        EXPECT_EQ(posix::make_generic_form(path), path);
    }
}

const JoinRow kJoins[] = {
    {u"a", u"b", u"a/b"},
    {u"a/", u"b", u"a/b"},
    {u"a", u"/b", u"a/b"},
    {u"a/", u"/b", u"a/b"},
    {u"a//", u"//b", u"a/b"},
    {u"/", u"b", u"/b"},
    {u"/", u"/b", u"/b"},
    {u"//", u"b", u"/b"},
    {u"/a", u"/b/c", u"/a/b/c"},
    {u"", u"b", u"b"},
    {u"", u"/b", u"/b"},
    {u"", u"//b", u"//b"},
    {u"", u"", u""},
    {u"a", u"", u"a"},
    {u"a/", u"", u"a/"},
    {u"/", u"", u"/"},
    {u"a", u"/", u"a"},
    {u"/", u"/", u"/"},
    {u"a", u"b/", u"a/b/"},
    {u"a", u"b//c", u"a/b//c"},
    {u"a", u"..", u"a/.."},
    {u"a", u".", u"a/."},
    {u"a", u"\\b", u"a/\\b"},
    {u"a\\", u"b", u"a\\/b"},
    {u"C:", u"b", u"C:/b"},
    {u"a\0"s, u"\0b"s, u"a\0/\0b"s},
};

TEST(PosixJoin, PutsOneSeparatorBetween) {
    for (const JoinRow& row : kJoins) {
        SCOPED_TRACE(testing::PrintToString(row));
        const auto& [base, rest, joined] = row;
        EXPECT_EQ(posix::concatenate_pathname(base, rest, true), joined);
        EXPECT_EQ(posix::concatenate_pathname(base, rest, false), joined);
    }
}

TEST(PosixAccessForm, IsThePathItself) {
    EXPECT_EQ(posix::make_access_form(L"/a/../b\\c"), L"/a/../b\\c");
    EXPECT_EQ(posix::make_access_form(std::wstring(5000, L'a')), std::wstring(5000, L'a'));
    EXPECT_EQ(posix::make_access_form(L""), L"");
}

TEST(PosixNativeForm, FindsOneRunInALongPathWhereverItIs) {
    for (std::size_t position = 1; position < 200; ++position) {
        std::u16string path(200, u'x');
        path.insert(position, u"//");
        std::u16string tidied(200, u'x');
        tidied.insert(position, u"/");
        EXPECT_EQ(posix::make_native_form(path, true), tidied) << position;
    }
}

TEST(PosixNativeForm, KeepsTheBufferOfATidyPath) {
    std::u16string path(300, u'x');
    path[100] = u'/';
    const char16_t* const buffer = path.data();
    const std::u16string native = posix::make_native_form(std::move(path), true);
    EXPECT_EQ(native.data(), buffer);
    EXPECT_EQ(posix::make_generic_form(native), native);
}

}  // namespace
