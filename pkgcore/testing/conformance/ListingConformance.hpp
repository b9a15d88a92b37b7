#pragma once

#include <pkgcore/testing/conformance/Needs.hpp>

#include <algorithm>

namespace foundation::storage::conformance {

/// "e" with a number of four digits behind it.
inline std::u16string entryName(int number) {
    std::u16string name = u"e";
    for (const char digit : std::to_string(10'000 + number).substr(1)) {
        name += static_cast<char16_t>(digit);
    }
    return name;
}

TEST_P(ProviderConformance, AListingIsInOrderOfTheUnits) {
    Names names = list(u"");
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    PKGCORE_NEEDS(Need::Writing);
    // An upper plane comes before what is written as one unit from U+E000 on.
    names = {u"Z", u"a", u"a b", u"a.b", u"ab", u"\u00E4", u"\xD83D\xDE00", u"\uFF41"};
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        ASSERT_TRUE(write(*name, ""));
    }
    EXPECT_EQ(list(u""), names);
}

TEST_P(ProviderConformance, ATreeIsListedFolderByFolder) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders);
    folder(u"b/d").createFolderRecursive();
    folder(u"b.c").createFolder();
    for (const std::u16string path : {u"a", u"b/a", u"b/d/x", u"b/e", u"b.c/y", u"c"}) {
        ASSERT_TRUE(write(path, ""));
    }
    EXPECT_EQ(list(u""), (Names{u"a", u"b/", u"b.c/", u"c"}));
    EXPECT_EQ(listTree(u""),
              (Names{u"a", u"b/", u"b/a", u"b/d/", u"b/d/x", u"b/e", u"b.c/", u"b.c/y", u"c"}));
    EXPECT_EQ(listTree(u"b"), (Names{u"a", u"d/", u"d/x", u"e"}));
}

TEST_P(ProviderConformance, APatternSelectsNames) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders);
    folder(u"b.txt").createFolder();
    for (const std::u16string path : {u"a.txt", u"a.doc", u"b.txt/c.txt", u"b.txt/d.doc"}) {
        ASSERT_TRUE(write(path, ""));
    }
    EXPECT_EQ(list(u"", u"*.txt"), (Names{u"a.txt", u"b.txt/"}));
    EXPECT_EQ(listTree(u"", u"*.doc"), (Names{u"a.doc", u"b.txt/d.doc"}));
    EXPECT_EQ(listTree(u"", u"?.txt"), (Names{u"a.txt", u"b.txt/", u"b.txt/c.txt"}));
    EXPECT_EQ(list(u"", u"A*"), Names{});
}

TEST_P(ProviderConformance, OnlyFoldersAreListed) {
    PKGCORE_EXPECT_FAILURE(NotFound, list(u"missing"));
    PKGCORE_EXPECT_FAILURE(NotFound, listTree(u"missing"));
    for (const auto& file : filesToRead()) {
        PKGCORE_EXPECT_FAILURE(NotFound, list(file.first));
        PKGCORE_EXPECT_FAILURE(NotFound, list(file.first + u"/g"));
    }
}

TEST_P(ProviderConformance, ListingsAgreeWithEachOtherAndWithWhatIsThere) {
    const Contents files = filesToRead();
    for (const std::u16string& path : listTree(u"")) {
        EXPECT_EQ(path.back() == u'/' ? isFolder(path) : files.count(path) == 1, true);
    }
    for (const auto& [path, content] : files) {
        const std::u16string name = path.substr(path.rfind(u'/') + 1);
        const Names found = list(path.substr(0, path.size() - name.size()), name);
        EXPECT_EQ(found, Names{name});
    }
}

TEST_P(ProviderConformance, AFolderOfThousandsIsListedOnce) {
    PKGCORE_NEEDS(Need::Folders);
    constexpr int kCount = 3'000;
    Names expected;
    for (int i = 0; i < kCount; ++i) {
        folder(entryName(i * 7 % kCount)).createFolder();
        expected.push_back(entryName(i) + u"/");
    }
    EXPECT_EQ(list(u""), expected);
}

TEST_P(ProviderConformance, WhatIsListedMayBeRemoved) {
    PKGCORE_NEEDS(Need::Folders, Need::Removing);
    constexpr int kCount = 3'000;
    for (int i = 0; i < kCount; ++i) {
        folder(entryName(i)).createFolder();
    }
    int removed = 0;
    vfs::Listing listing = folder(u"").listAll(u"");
    for (const vfs::ListEntry& entry : listing) {
        Folder(entry.getLocation(), ground().storage).removeFolder(FolderRemovalPolicy::OnlyIfEmpty);
        ++removed;
    }
    EXPECT_EQ(removed, kCount);
    EXPECT_EQ(list(u""), Names{});
}

TEST_P(ProviderConformance, AFolderThatGoesWhileItsTreeIsListedIsPassedOver) {
    PKGCORE_NEEDS(Need::Folders, Need::Removing);
    for (const std::u16string path : {u"a/x", u"b/y", u"c/z"}) {
        folder(path).createFolderRecursive();
    }
    Names names;
    vfs::Listing listing = folder(u"").listAllRecursive(u"");
    for (const vfs::ListEntry& entry : listing) {
        names.push_back(entry.getLocation().getName());
        if (names.back() == u"b") folder(u"b").removeFolder(FolderRemovalPolicy::WithContents);
    }
    EXPECT_EQ(names, (Names{u"a", u"x", u"b", u"c", u"z"}));
}

}  // namespace foundation::storage::conformance
