#pragma once

#include <pkgcore/testing/conformance/Needs.hpp>

#include <boost/date_time/posix_time/posix_time.hpp>

namespace foundation::storage::conformance {

TEST_P(ProviderConformance, ACopyHasTheContentOfItsSource) {
    PKGCORE_NEEDS(Need::Writing);
    const std::string content = someBytes(300'000);
    ASSERT_TRUE(write(u"f", content));
    file(u"f").copyFile(file(u"g"), kFail);
    EXPECT_EQ(read(u"g"), content);
    ASSERT_TRUE(write(u"f", "changed"));
    EXPECT_EQ(read(u"g"), content);
    EXPECT_EQ(list(u""), (Names{u"f", u"g"}));
}

TEST_P(ProviderConformance, ACopyReplacesOnlyWhenTold) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"f", "new"));
    ASSERT_TRUE(write(u"g", "old"));
    PKGCORE_EXPECT_FAILURE(AlreadyExists, file(u"f").copyFile(file(u"g"), kFail));
    EXPECT_EQ(read(u"g"), "old");
    vfs::ifstream reader(file(u"g"), std::ios_base::in);
    file(u"f").copyFile(file(u"g"), kReplace);
    EXPECT_EQ(read(u"g"), "new");
    EXPECT_EQ(read(u"f"), "new");
    EXPECT_EQ(readAll(reader), "old");
}

TEST_P(ProviderConformance, AReadOnlyFileIsReplaced) {
    PKGCORE_NEEDS(Need::Writing, Need::MovingFiles, Need::Marking);
    ASSERT_TRUE(write(u"f", "new"));
    ASSERT_TRUE(write(u"g", "old"));
    file(u"g").setWritable(false);
    file(u"f").copyFile(file(u"g"), kReplace);
    EXPECT_EQ(read(u"g"), "new");
    EXPECT_TRUE(vfs::isWritable(file(u"g")));
    file(u"g").setWritable(false);
    file(u"f").moveFile(file(u"g"), kReplace);
    EXPECT_TRUE(vfs::isWritable(file(u"g")));
}

TEST_P(ProviderConformance, ACopyIsReadOnlyAsItsSourceIs) {
    PKGCORE_NEEDS(Need::Writing, Need::MovingFiles, Need::Marking);
    ASSERT_TRUE(write(u"f", "text"));
    file(u"f").setWritable(false);
    file(u"f").copyFile(file(u"g"), kFail);
    EXPECT_FALSE(vfs::isWritable(file(u"g")));
    file(u"f").moveFile(file(u"h"), kFail);
    EXPECT_FALSE(vfs::isWritable(file(u"h")));
}

TEST_P(ProviderConformance, OneKindNeverTakesThePlaceOfTheOther) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::MovingFiles, Need::MovingFolders);
    ASSERT_TRUE(write(u"f", "text"));
    folder(u"d").createFolder();
    for (const ReplacementPolicy policy : {kFail, kReplace}) {
        PKGCORE_EXPECT_FAILURE(AlreadyExists, file(u"f").copyFile(file(u"d"), policy));
        PKGCORE_EXPECT_FAILURE(AlreadyExists, file(u"f").moveFile(file(u"d"), policy));
        PKGCORE_EXPECT_FAILURE(AlreadyExists, folder(u"d").copyFolder(folder(u"f"), policy));
        PKGCORE_EXPECT_FAILURE(AlreadyExists, folder(u"d").moveFolder(folder(u"f"), policy));
    }
    EXPECT_EQ(list(u""), (Names{u"d/", u"f"}));
    EXPECT_EQ(read(u"f"), "text");
}

TEST_P(ProviderConformance, TheSourceIsThereAndOfItsKind) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::MovingFiles, Need::MovingFolders);
    ASSERT_TRUE(write(u"f", "text"));
    folder(u"d").createFolder();
    PKGCORE_EXPECT_FAILURE(NotFound, file(u"missing").copyFile(file(u"g"), kReplace));
    PKGCORE_EXPECT_FAILURE(NotFound, file(u"missing").moveFile(file(u"g"), kReplace));
    PKGCORE_EXPECT_FAILURE(NotFound, file(u"d").copyFile(file(u"g"), kFail));
    PKGCORE_EXPECT_FAILURE(NotFound, folder(u"f").moveFolder(folder(u"g"), kFail));
    PKGCORE_EXPECT_FAILURE(NotFound, folder(u"missing").copyFolder(folder(u"g"), kFail));
    EXPECT_EQ(list(u""), (Names{u"d/", u"f"}));
}

TEST_P(ProviderConformance, TheDestinationNeedsAFolder) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::MovingFiles, Need::MovingFolders);
    ASSERT_TRUE(write(u"f", "text"));
    folder(u"d").createFolder();
    PKGCORE_EXPECT_FAILURE(NotFound, file(u"f").copyFile(file(u"missing/g"), kFail));
    PKGCORE_EXPECT_FAILURE(NotFound, file(u"f").moveFile(file(u"missing/g"), kFail));
    PKGCORE_EXPECT_FAILURE(NotFound, folder(u"d").copyFolder(folder(u"missing/g"), kFail));
    PKGCORE_EXPECT_FAILURE(NotFound, folder(u"d").moveFolder(folder(u"missing/g"), kReplace));
    PKGCORE_EXPECT_FAILURE(AlreadyExists, folder(u"d").copyFolder(folder(u"f/g"), kFail));
    EXPECT_EQ(listTree(u""), (Names{u"d/", u"f"}));
    EXPECT_EQ(read(u"f"), "text");
}

TEST_P(ProviderConformance, NothingGoesIntoItself) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::MovingFiles, Need::MovingFolders);
    folder(u"d/e").createFolderRecursive();
    ASSERT_TRUE(write(u"d/e/f", "text"));
    for (const ReplacementPolicy policy : {kFail, kReplace}) {
        PKGCORE_EXPECT_FAILURE(NotSupported, folder(u"d").copyFolder(folder(u"d"), policy));
        PKGCORE_EXPECT_FAILURE(NotSupported, folder(u"d").copyFolder(folder(u"d/g"), policy));
        PKGCORE_EXPECT_FAILURE(NotSupported, folder(u"d").copyFolder(folder(u"d/e/g"), policy));
        PKGCORE_EXPECT_FAILURE(NotSupported, folder(u"d").moveFolder(folder(u"d/e/g"), policy));
        PKGCORE_EXPECT_FAILURE(NotSupported, folder(u"d/e").moveFolder(folder(u"d"), policy));
        PKGCORE_EXPECT_FAILURE(NotSupported, folder(u"d/e").copyFolder(folder(u"d"), policy));
        PKGCORE_EXPECT_FAILURE(NotSupported, file(u"d/e/f").copyFile(file(u"d/e/f"), policy));
    }
    EXPECT_EQ(listTree(u""), (Names{u"d/", u"d/e/", u"d/e/f"}));
    folder(u"d").copyFolder(folder(u"d2"), kFail);
    EXPECT_EQ(listTree(u"d2"), (Names{u"e/", u"e/f"}));
}

TEST_P(ProviderConformance, MovingOntoTheOwnNameChangesNothing) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::MovingFiles, Need::MovingFolders);
    folder(u"d").createFolder();
    ASSERT_TRUE(write(u"d/f", "text"));
    for (const ReplacementPolicy policy : {kFail, kReplace}) {
        file(u"d/f").moveFile(file(u"d/f"), policy);
        folder(u"d").moveFolder(folder(u"d"), policy);
    }
    EXPECT_EQ(read(u"d/f"), "text");
}

TEST_P(ProviderConformance, ATreeIsCopiedWhole) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders);
    folder(u"d/e/empty").createFolderRecursive();
    ASSERT_TRUE(write(u"d/f", "one"));
    ASSERT_TRUE(write(u"d/e/g", someBytes(100'000)));
    folder(u"d").copyFolder(folder(u"copy"), kFail);
    EXPECT_EQ(listTree(u"copy"), (Names{u"e/", u"e/empty/", u"e/g", u"f"}));
    EXPECT_EQ(listTree(u"d"), listTree(u"copy"));
    EXPECT_EQ(read(u"copy/f"), "one");
    EXPECT_EQ(read(u"copy/e/g"), someBytes(100'000));
    ASSERT_TRUE(write(u"copy/f", "two"));
    EXPECT_EQ(read(u"d/f"), "one");
    EXPECT_EQ(list(u""), (Names{u"copy/", u"d/"}));
}

TEST_P(ProviderConformance, AFolderIsReplacedWhole) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::MovingFolders);
    for (const bool isMove : {false, true}) {
        folder(u"d").createFolderRecursive();
        folder(u"old/sub").createFolderRecursive();
        ASSERT_TRUE(write(u"d/new", "text"));
        ASSERT_TRUE(write(u"old/sub/gone", "text"));
        const auto transfer = [&](ReplacementPolicy policy) {
            return isMove ? folder(u"d").moveFolder(folder(u"old"), policy)
                          : folder(u"d").copyFolder(folder(u"old"), policy);
        };
        const Names before = listTree(u"old");
        PKGCORE_EXPECT_FAILURE(AlreadyExists, transfer(kFail));
        EXPECT_EQ(listTree(u"old"), before);
        transfer(kReplace);
        EXPECT_EQ(listTree(u"old"), Names{u"new"});
    }
    EXPECT_EQ(list(u""), Names{u"old/"});
}

TEST_P(ProviderConformance, AFileIsMoved) {
    PKGCORE_NEEDS(Need::Writing, Need::MovingFiles);
    const std::string content = someBytes(100'000);
    ASSERT_TRUE(write(u"f", content));
    file(u"f").moveFile(file(u"g"), kFail);
    EXPECT_EQ(read(u"g"), content);
    EXPECT_EQ(list(u""), Names{u"g"});
    ASSERT_TRUE(write(u"h", "old"));
    PKGCORE_EXPECT_FAILURE(AlreadyExists, file(u"g").moveFile(file(u"h"), kFail));
    EXPECT_EQ(read(u"g"), content);
    EXPECT_EQ(read(u"h"), "old");
    file(u"g").moveFile(file(u"h"), kReplace);
    EXPECT_EQ(read(u"h"), content);
    EXPECT_EQ(list(u""), Names{u"h"});
}

TEST_P(ProviderConformance, AFolderIsMovedWithAllThatItHolds) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::MovingFolders);
    folder(u"d/e").createFolderRecursive();
    folder(u"x").createFolder();
    ASSERT_TRUE(write(u"d/e/f", "text"));
    folder(u"d").moveFolder(folder(u"x/y"), kFail);
    EXPECT_EQ(listTree(u""), (Names{u"x/", u"x/y/", u"x/y/e/", u"x/y/e/f"}));
    EXPECT_EQ(read(u"x/y/e/f"), "text");
}

TEST_P(ProviderConformance, WhatIsMovedKeepsItsTime) {
    PKGCORE_NEEDS(Need::Writing, Need::MovingFiles, Need::Times);
    using boost::posix_time::time_from_string;
    const boost::posix_time::ptime time = time_from_string("2001-02-03 04:05:06");
    ASSERT_TRUE(write(u"f", "text"));
    file(u"f").setLastModified(time);
    file(u"f").moveFile(file(u"g"), kFail);
    EXPECT_EQ(vfs::getLastModified(file(u"g")), time);
}

TEST_P(ProviderConformance, FilesGoFromStoreToStore) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::Removing);
    const Workplace other(GetParam().makeGround());
    folder(u"d/e").createFolderRecursive();
    ASSERT_TRUE(write(u"d/e/f", someBytes(300'000)));
    ASSERT_TRUE(write(u"d/g", "text"));
    const auto there = [&](const std::u16string& path) {
        return Folder(other.iri(path), other.ground().storage);
    };
    folder(u"d").copyFolder(there(u"copy"), kFail);
    folder(u"d").moveFolder(there(u"moved"), kFail);
    EXPECT_EQ(listTree(u""), Names{});
    for (const std::u16string name : {u"copy", u"moved"}) {
        EXPECT_EQ(other.listTree(name), (Names{u"e/", u"e/f", u"g"}));
        EXPECT_EQ(other.read(name + u"/e/f"), someBytes(300'000));
        EXPECT_EQ(other.read(name + u"/g"), "text");
    }
    EXPECT_EQ(other.list(u""), (Names{u"copy/", u"moved/"}));
}

}  // namespace foundation::storage::conformance
