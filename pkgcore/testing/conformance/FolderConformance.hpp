#pragma once

#include <pkgcore/testing/conformance/Needs.hpp>

#include <algorithm>

namespace foundation::storage::conformance {

TEST_P(ProviderConformance, TheGroundHoldsWhatItIsSaidToHold) {
    EXPECT_TRUE(isFolder(u""));
    Contents files;
    for (const auto& [path, content] : everything()) {
        if (path.back() != u'/') files[path] = content;
    }
    EXPECT_EQ(files, ground().content);
    EXPECT_EQ(everything().empty(), traits().writes)
        << "only what cannot be written has something to begin with";
    EXPECT_TRUE(isMissing(u"anything"));
    EXPECT_TRUE(isMissing(u"anything/at/all"));
}

TEST_P(ProviderConformance, AFolderIsMadeOnce) {
    PKGCORE_NEEDS(Need::Folders);
    folder(u"d").createFolder();
    EXPECT_TRUE(isFolder(u"d"));
    EXPECT_EQ(list(u"d"), Names{});
    PKGCORE_EXPECT_FAILURE(AlreadyExists, folder(u"d").createFolder());
    PKGCORE_EXPECT_FAILURE(AlreadyExists, folder(u"").createFolder());
}

TEST_P(ProviderConformance, AFolderNeedsTheOneAroundIt) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders);
    PKGCORE_EXPECT_FAILURE(NotFound, folder(u"a/b").createFolder());
    ASSERT_TRUE(write(u"f", "text"));
    PKGCORE_EXPECT_FAILURE(AlreadyExists, folder(u"f").createFolder());
    PKGCORE_EXPECT_FAILURE(AlreadyExists, folder(u"f/d").createFolder());
    PKGCORE_EXPECT_FAILURE(AlreadyExists, folder(u"f/d").createFolderRecursive());
    PKGCORE_EXPECT_FAILURE(AlreadyExists, folder(u"f").createFolderRecursive());
    EXPECT_EQ(listTree(u""), Names{u"f"});
}

TEST_P(ProviderConformance, AllMissingFoldersAreMadeAtOnce) {
    PKGCORE_NEEDS(Need::Folders);
    folder(u"a/b/c").createFolderRecursive();
    folder(u"a/b/c").createFolderRecursive();
    folder(u"a/b/d/e").createFolderRecursive();
    folder(u"").createFolderRecursive();
    EXPECT_EQ(listTree(u""), (Names{u"a/", u"a/b/", u"a/b/c/", u"a/b/d/", u"a/b/d/e/"}));
}

TEST_P(ProviderConformance, WhatIsRemovedIsGone) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::Removing);
    ASSERT_TRUE(write(u"f", "text"));
    folder(u"d").createFolder();
    file(u"f").removeFile();
    folder(u"d").removeFolder(FolderRemovalPolicy::OnlyIfEmpty);
    EXPECT_EQ(listTree(u""), Names{});
    PKGCORE_EXPECT_FAILURE(NotFound, file(u"f").removeFile());
    PKGCORE_EXPECT_FAILURE(NotFound, folder(u"d").removeFolder(FolderRemovalPolicy::OnlyIfEmpty));
    PKGCORE_EXPECT_FAILURE(NotFound, folder(u"d").removeFolder(FolderRemovalPolicy::WithContents));
}

TEST_P(ProviderConformance, AFullFolderIsRemovedOnlyWithItsContents) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::Removing);
    folder(u"d/e/f").createFolderRecursive();
    ASSERT_TRUE(write(u"d/e/g", "text"));
    ASSERT_TRUE(write(u"h", "text"));
    PKGCORE_EXPECT_FAILURE(FolderNotEmpty, folder(u"d").removeFolder(FolderRemovalPolicy::OnlyIfEmpty));
    EXPECT_EQ(listTree(u""), (Names{u"d/", u"d/e/", u"d/e/f/", u"d/e/g", u"h"}));
    folder(u"d").removeFolder(FolderRemovalPolicy::WithContents);
    EXPECT_EQ(listTree(u""), Names{u"h"});
}

TEST_P(ProviderConformance, RemovingMindsTheKind) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::Removing);
    ASSERT_TRUE(write(u"f", "text"));
    folder(u"d").createFolder();
    PKGCORE_EXPECT_FAILURE(NotFound, folder(u"f").removeFolder(FolderRemovalPolicy::WithContents));
    PKGCORE_EXPECT_FAILURE(NotFound, file(u"d").removeFile());
    PKGCORE_EXPECT_FAILURE(NotFound, file(u"f/g").removeFile());
    EXPECT_EQ(listTree(u""), (Names{u"d/", u"f"}));
}

TEST_P(ProviderConformance, AReadOnlyFileIsRemoved) {
    PKGCORE_NEEDS(Need::Writing, Need::Removing, Need::Marking);
    ASSERT_TRUE(write(u"f", "text"));
    file(u"f").setWritable(false);
    file(u"f").removeFile();
    EXPECT_TRUE(isMissing(u"f"));
}

inline Folder rootOf(const Ground& ground) {
    vfs::CanonicalAbsoluteIRI root(ground.root);
    while (root.hasParent()) {
        root = root.getParent();
    }
    return Folder(root, ground.storage);
}

TEST_P(ProviderConformance, TheRootStays) {
    const Folder whole = rootOf(ground());
    filesToRead();
    const Contents before = everything();
    PKGCORE_EXPECT_FAILURE(NotSupported, whole.removeFolder(FolderRemovalPolicy::OnlyIfEmpty));
    PKGCORE_EXPECT_FAILURE(NotSupported, whole.removeFolder(FolderRemovalPolicy::WithContents));
    EXPECT_TRUE(isFolder(u""));
    EXPECT_EQ(everything(), before);
}

TEST_P(ProviderConformance, TheRootIsNotMoved) {
    const Workplace other(GetParam().makeGround());
    const Folder whole = rootOf(ground());
    const Folder elsewhere(other.iri(u"moved"), other.ground().storage);
    PKGCORE_EXPECT_FAILURE(NotSupported, whole.moveFolder(folder(u"moved"), kFail));
    PKGCORE_EXPECT_FAILURE(NotSupported, whole.moveFolder(elsewhere, kFail));
    EXPECT_TRUE(isFolder(u""));
    EXPECT_TRUE(isMissing(u"moved"));
    EXPECT_TRUE(other.isMissing(u"moved"));
}

TEST_P(ProviderConformance, NamesComeBackAsTheyWere) {
    PKGCORE_NEEDS(Need::Writing);
    const Names names = {u" ",
                         u"#",
                         u"%2F",
                         u"...",
                         u"..a",
                         u".hidden",
                         u"100% done?.txt",
                         u"A",
                         u"C:",
                         u"[a]{b}*",
                         u"a",
                         u"a\\b",
                         u"new\nline",
                         u"trailing ",
                         u"trailing.",
                         u"\u00C9",
                         u"\u00E9",
                         u"\u65E5\u672C",
                         u"\xD83D\xDE00",
                         std::u16string(60, u'x')};
    for (const std::u16string& name : names) {
        ASSERT_TRUE(write(name, "text")) << testing::PrintToString(name);
        ASSERT_EQ(read(name), "text");
    }
    Names sorted = names;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(list(u""), sorted);
    for (const std::u16string& name : names) {
        if (traits().removes) file(name).removeFile();
    }
    EXPECT_EQ(list(u""), traits().removes ? Names{} : sorted);
}

TEST_P(ProviderConformance, FoldersNestDeeply) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::Removing);
    std::u16string path = u"d";
    for (int i = 0; i < 150; ++i) {
        path += u"/d";
    }
    folder(path).createFolderRecursive();
    ASSERT_TRUE(write(path + u"/f", "text"));
    EXPECT_EQ(listTree(u"").size(), 152u);
    EXPECT_EQ(read(path + u"/f"), "text");
    folder(u"d").removeFolder(FolderRemovalPolicy::WithContents);
    EXPECT_EQ(listTree(u""), Names{});
}

}  // namespace foundation::storage::conformance
