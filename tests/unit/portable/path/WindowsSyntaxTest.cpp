#include <pkgcore/portable/path/WindowsSyntax.hpp>

#include "tests/unit/portable/path/PathTables.hpp"

#include <algorithm>

using namespace fl::filesystem::syntax;
using namespace std::string_literals;
using path_tests::JoinRow;
using path_tests::PathRow;

namespace {

// path, tidied, parent, filename, extension, absolute
const PathRow kPaths[] = {
    {u"", u"", u"", u"", u"", false},
    // without a root
    {u"a", u"a", u"", u"a", u"", false},
    {u"a\\b", u"a\\b", u"a", u"b", u"", false},
    {u"a/b", u"a\\b", u"a", u"b", u"", false},
    {u"a\\/b", u"a\\b", u"a", u"b", u"", false},
    {u"a//b\\\\c", u"a\\b\\c", u"a\\b", u"c", u"", false},
    {u"a\\", u"a", u"", u"a", u"", false},
    {u"a/", u"a", u"", u"a", u"", false},
    {u"a\\b\\\\\\", u"a\\b", u"a", u"b", u"", false},
    {u".", u".", u"", u".", u"", false},
    {u"..", u"..", u"", u"..", u"", false},
    {u"..\\a", u"..\\a", u"..", u"a", u"", false},
    {u"a\\..\\b", u"a\\..\\b", u"a\\..", u"b", u"", false},
    {u"a\\.", u"a\\.", u"a", u".", u"", false},
    // the root of the current drive
    {u"\\", u"\\", u"", u"", u"", false},
    {u"/", u"\\", u"", u"", u"", false},
    {u"\\a", u"\\a", u"\\", u"a", u"", false},
    {u"/a/b", u"\\a\\b", u"\\a", u"b", u"", false},
    // two separators with nothing after them, or three, open no share
    {u"\\\\", u"\\", u"", u"", u"", false},
    {u"//", u"\\", u"", u"", u"", false},
    {u"\\\\\\", u"\\", u"", u"", u"", false},
    {u"\\\\\\a\\b", u"\\a\\b", u"\\a", u"b", u"", false},
    {u"///a//b", u"\\a\\b", u"\\a", u"b", u"", false},
    // drives
    {u"C:", u"C:", u"", u"", u"", false},
    {u"c:", u"c:", u"", u"", u"", false},
    {u"C:\\", u"C:\\", u"", u"", u"", true},
    {u"C:/", u"C:\\", u"", u"", u"", true},
    {u"C:\\\\", u"C:\\", u"", u"", u"", true},
    {u"C:\\a", u"C:\\a", u"C:\\", u"a", u"", true},
    {u"z:/a", u"z:\\a", u"z:\\", u"a", u"", true},
    {u"C:\\\\a", u"C:\\a", u"C:\\", u"a", u"", true},
    {u"C:\\a\\", u"C:\\a", u"C:\\", u"a", u"", true},
    {u"C:\\a\\b", u"C:\\a\\b", u"C:\\a", u"b", u"", true},
    {u"C:\\a\\\\b\\\\", u"C:\\a\\b", u"C:\\a", u"b", u"", true},
    {u"C:\\..", u"C:\\..", u"C:\\", u"..", u"", true},
    {u"C:a", u"C:a", u"C:", u"a", u"", false},
    {u"C:a\\", u"C:a", u"C:", u"a", u"", false},
    {u"C:a\\b", u"C:a\\b", u"C:a", u"b", u"", false},
    {u"C:.", u"C:.", u"C:", u".", u"", false},
    {u"C:..\\a", u"C:..\\a", u"C:..", u"a", u"", false},
    {u"C:a.txt", u"C:a.txt", u"C:", u"a.txt", u"txt", false},
    {u"C:.profile", u"C:.profile", u"C:", u".profile", u"profile", false},
    // no drives
    {u"1:\\a", u"1:\\a", u"1:", u"a", u"", false},
    {u"\u00C4:\\a", u"\u00C4:\\a", u"\u00C4:", u"a", u"", false},
    {u"ab:\\c", u"ab:\\c", u"ab:", u"c", u"", false},
    {u":\\a", u":\\a", u":", u"a", u"", false},
    {u"a\\C:", u"a\\C:", u"a", u"C:", u"", false},
    {u"\\C:\\a", u"\\C:\\a", u"\\C:", u"a", u"", false},
    // letters are A to Z, and not what stands beside them
    {u"@:", u"@:", u"", u"@:", u"", false},
    {u"[:", u"[:", u"", u"[:", u"", false},
    {u"`:", u"`:", u"", u"`:", u"", false},
    {u"{:", u"{:", u"", u"{:", u"", false},
    {u"A:\\", u"A:\\", u"", u"", u"", true},
    {u"Z:\\", u"Z:\\", u"", u"", u"", true},
    // shares
    {u"\\\\server\\share", u"\\\\server\\share", u"", u"", u"", true},
    {u"//server/share", u"\\\\server\\share", u"", u"", u"", true},
    {u"\\/server/share", u"\\\\server\\share", u"", u"", u"", true},
    {u"\\\\server\\share\\", u"\\\\server\\share\\", u"", u"", u"", true},
    {u"\\\\server\\share\\\\", u"\\\\server\\share\\", u"", u"", u"", true},
    {u"\\\\server\\\\share", u"\\\\server\\share", u"", u"", u"", true},
    {u"\\\\server\\share\\a", u"\\\\server\\share\\a", u"\\\\server\\share\\", u"a", u"", true},
    {u"\\\\server\\share\\a\\", u"\\\\server\\share\\a", u"\\\\server\\share\\", u"a", u"", true},
    {u"\\\\server\\share\\\\a\\\\b", u"\\\\server\\share\\a\\b", u"\\\\server\\share\\a", u"b", u"", true},
    {u"\\\\server.x\\share.y", u"\\\\server.x\\share.y", u"", u"", u"", true},
    {u"\\\\server\\share\\a.b", u"\\\\server\\share\\a.b", u"\\\\server\\share\\", u"a.b", u"b", true},
    {u"\\\\server", u"\\\\server", u"", u"", u"", true},
    {u"\\\\server\\", u"\\\\server\\", u"", u"", u"", true},
    {u"\\\\s\\h\\..", u"\\\\s\\h\\..", u"\\\\s\\h\\", u"..", u"", true},
    // devices
    {u"\\\\?\\C:\\", u"\\\\?\\C:\\", u"", u"", u"", true},
    {u"\\\\?\\C:\\a", u"\\\\?\\C:\\a", u"\\\\?\\C:\\", u"a", u"", true},
    {u"\\\\?\\C:\\a\\b.c", u"\\\\?\\C:\\a\\b.c", u"\\\\?\\C:\\a", u"b.c", u"c", true},
    {u"//?/C:/a", u"\\\\?\\C:\\a", u"\\\\?\\C:\\", u"a", u"", true},
    {u"\\\\?\\C:\\\\a\\\\", u"\\\\?\\C:\\a", u"\\\\?\\C:\\", u"a", u"", true},
    {u"\\\\?\\\\C:\\a", u"\\\\?\\C:\\a", u"\\\\?\\C:\\", u"a", u"", true},
    {u"\\\\?\\UNC\\server\\share", u"\\\\?\\UNC\\server\\share", u"", u"", u"", true},
    {u"\\\\?\\unc\\server\\share\\a", u"\\\\?\\unc\\server\\share\\a", u"\\\\?\\unc\\server\\share\\", u"a",
     u"", true},
    {u"\\\\?\\UNC\\server\\\\share\\a\\b", u"\\\\?\\UNC\\server\\share\\a\\b",
     u"\\\\?\\UNC\\server\\share\\a", u"b", u"", true},
    {u"\\\\?\\UNC", u"\\\\?\\UNC", u"", u"", u"", true},
    {u"\\\\?\\UNC\\server", u"\\\\?\\UNC\\server", u"", u"", u"", true},
    {u"\\\\?\\UNCX\\a", u"\\\\?\\UNCX\\a", u"\\\\?\\UNCX\\", u"a", u"", true},
    {u"\\\\?\\XUNC\\a", u"\\\\?\\XUNC\\a", u"\\\\?\\XUNC\\", u"a", u"", true},
    {u"\\\\?\\NC\\a", u"\\\\?\\NC\\a", u"\\\\?\\NC\\", u"a", u"", true},
    {u"\\\\?\\Volume{1-2}\\a", u"\\\\?\\Volume{1-2}\\a", u"\\\\?\\Volume{1-2}\\", u"a", u"", true},
    {u"\\\\.\\pipe\\name", u"\\\\.\\pipe\\name", u"\\\\.\\pipe\\", u"name", u"", true},
    {u"\\\\.\\C:", u"\\\\.\\C:", u"", u"", u"", true},
    {u"\\\\?", u"\\\\?", u"", u"", u"", true},
    {u"\\\\?\\", u"\\\\?\\", u"", u"", u"", true},
    {u"\\\\??\\a\\b", u"\\\\??\\a\\b", u"\\\\??\\a\\", u"b", u"", true},
    // extensions
    {u"a.txt", u"a.txt", u"", u"a.txt", u"txt", false},
    {u"dir.d\\archive.tar.gz", u"dir.d\\archive.tar.gz", u"dir.d", u"archive.tar.gz", u"gz", false},
    {u"dir.d/name", u"dir.d\\name", u"dir.d", u"name", u"", false},
    {u"C:\\.profile", u"C:\\.profile", u"C:\\", u".profile", u"profile", true},
    {u"name.", u"name.", u"", u"name.", u"", false},
    // a NUL and what is no text pass through
    {u"a\0/b"s, u"a\0\\b"s, u"a\0"s, u"b", u"", false},
    {u"C:\\\xD800.\xDC80", u"C:\\\xD800.\xDC80", u"C:\\", u"\xD800.\xDC80", u"\xDC80", true},
};

TEST(WindowsPath, IsTidied) {
    for (const PathRow& row : kPaths) {
        SCOPED_TRACE(testing::PrintToString(row));
        EXPECT_EQ(windows::make_native_form(row.path, true), row.tidied);
    }
}

TEST(WindowsPath, HasItsPieces) {
    for (const PathRow& row : kPaths) {
        SCOPED_TRACE(testing::PrintToString(row));
        const std::u16string& path = row.tidied;
        EXPECT_EQ(windows::extract_parent_path(path), row.parent);
        EXPECT_EQ(windows::extract_filename(path), row.filename);
        EXPECT_EQ(windows::extract_extension(path), row.extension);
        EXPECT_EQ(windows::is_absolute(path), row.absolute);
    }
}

TEST(WindowsPath, HasTheSamePiecesBeforeItIsTidied) {
    for (const PathRow& row : kPaths) {
        SCOPED_TRACE(testing::PrintToString(row));
        const std::u16string& path = row.path;
        EXPECT_EQ(windows::make_native_form(windows::extract_parent_path(path), true), row.parent);
        EXPECT_EQ(windows::extract_filename(path), row.filename);
        EXPECT_EQ(windows::extract_extension(path), row.extension);
        EXPECT_EQ(windows::is_absolute(path), row.absolute);
    }
}

TEST(WindowsPath, ComesBackFromItsGenericForm) {
    for (const PathRow& row : kPaths) {
        SCOPED_TRACE(testing::PrintToString(row));
        const std::u16string generic = windows::make_generic_form(row.tidied);
        EXPECT_EQ(std::count(generic.begin(), generic.end(), u'\\'), 0);
        EXPECT_EQ(windows::make_native_form(generic, true), row.tidied);
    }
}

const JoinRow kJoins[] = {
    {u"a", u"b", u"a\\b"},
    {u"a\\", u"b", u"a\\b"},
    {u"a", u"\\b", u"a\\b"},
    {u"a/", u"/b", u"a\\b"},
    {u"a\\\\", u"//b", u"a\\b"},
    {u"\\", u"b", u"\\b"},
    {u"", u"b", u"b"},
    {u"", u"\\b", u"\\b"},
    {u"", u"C:\\b", u"C:\\b"},
    {u"a", u"", u"a"},
    {u"a", u"\\", u"a"},
    {u"C:", u"", u"C:"},
    {u"C:", u"b", u"C:b"},
    {u"C:", u"\\b", u"C:\\b"},
    {u"C:", u"/b", u"C:\\b"},
    {u"C:\\", u"b", u"C:\\b"},
    {u"C:\\", u"\\b", u"C:\\b"},
    {u"C:a", u"b", u"C:a\\b"},
    {u"C:\\a", u"b/c", u"C:\\a\\b/c"},
    {u"\\\\server\\share", u"b", u"\\\\server\\share\\b"},
    {u"\\\\server\\share\\", u"\\b", u"\\\\server\\share\\b"},
    {u"\\\\?\\C:\\", u"b", u"\\\\?\\C:\\b"},
    {u"\\\\?\\C:", u"b", u"\\\\?\\C:\\b"},
};

TEST(WindowsJoin, PutsOneSeparatorBetween) {
    for (const JoinRow& row : kJoins) {
        SCOPED_TRACE(testing::PrintToString(row));
        const auto& [base, rest, joined] = row;
        EXPECT_EQ(windows::concatenate_pathname(base, rest, true), joined);
    }
}

TEST(WindowsJoinGeneric, PutsASlashBetween) {
    EXPECT_EQ(windows::concatenate_pathname(u"a", u"b", false), u"a/b");
    EXPECT_EQ(windows::concatenate_pathname(u"C:/", u"b", false), u"C:/b");
    EXPECT_EQ(windows::concatenate_pathname(u"C:", u"b", false), u"C:b");
}

TEST(WindowsNativeForm, OnlyTurnsTheSlashesUnlessToldToTidy) {
    EXPECT_EQ(windows::make_native_form(u"C://a\\\\b/", false), u"C:\\\\a\\\\b\\");
}

struct AccessRow {
    std::wstring path;
    std::wstring access;
};

const AccessRow kAccessForms[] = {
    {L"C:\\a\\b", L"\\\\?\\C:\\a\\b"},
    {L"C:/a/b", L"\\\\?\\C:\\a\\b"},
    {L"C:\\", L"\\\\?\\C:\\"},
    {L"C:\\a\\.\\b", L"\\\\?\\C:\\a\\b"},
    {L"C:\\a\\..\\b", L"\\\\?\\C:\\b"},
    {L"C:\\a\\b\\..\\..\\c", L"\\\\?\\C:\\c"},
    {L"C:\\..\\..\\a", L"\\\\?\\C:\\a"},
    {L"C:\\a\\..", L"\\\\?\\C:\\"},
    {L"C:\\.", L"\\\\?\\C:\\"},
    {L"C:\\a...\\..b", L"\\\\?\\C:\\a...\\..b"},
    {L"C:\\a\\", L"\\\\?\\C:\\a"},
    {L"\\\\server\\share\\a", L"\\\\?\\UNC\\server\\share\\a"},
    {L"\\\\server\\share", L"\\\\?\\UNC\\server\\share\\"},
    {L"\\\\server\\share\\..\\..\\a", L"\\\\?\\UNC\\server\\share\\a"},
    {L"\\\\?\\C:\\a\\..\\b", L"\\\\?\\C:\\a\\..\\b"},
    {L"\\\\?\\UNC\\server\\share\\a", L"\\\\?\\UNC\\server\\share\\a"},
    {L"\\\\.\\pipe\\x", L"\\\\.\\pipe\\x"},
    {L"a\\b", L"a\\b"},
    {L"C:a", L"C:a"},
    {L"C:", L"C:"},
    {L"\\a", L"\\a"},
    {L"..", L".."},
    {L"", L""},
};

TEST(WindowsAccessForm, LiftsTheLimitOfLength) {
    for (const AccessRow& row : kAccessForms) {
        SCOPED_TRACE(testing::PrintToString(row.path));
        EXPECT_EQ(windows::make_access_form(row.path), row.access);
    }
}

TEST(WindowsAccessForm, IsItsOwnAccessForm) {
    for (const AccessRow& row : kAccessForms) {
        SCOPED_TRACE(testing::PrintToString(row.path));
        EXPECT_EQ(windows::make_access_form(row.access), row.access);
    }
}

TEST(WindowsAccessForm, TakesAPathOfAnyLength) {
    const std::wstring deep = L"C:\\" + std::wstring(40000, L'a');
    EXPECT_EQ(windows::make_access_form(deep), L"\\\\?\\" + deep);
}

}  // namespace
