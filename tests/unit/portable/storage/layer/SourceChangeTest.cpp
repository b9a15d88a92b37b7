// Somebody changes what is being moved to another store.

#include <pkgcore/portable/storage/providers/folder/FolderProvider.hpp>
#include <pkgcore/testing/FaultProvider.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <functional>

using namespace foundation::storage;
using namespace foundation::storage::conformance;

namespace {

constexpr timespec kLongAgo{1'000'000'000, 0};

/// From from://s/ over a folder of the machine to to://s/.
class SourceChange : public testing::Test {
protected:
    /// Changes something when the copy was read again and compared, and before the source is removed.
    void changeBeforeRemoval(const std::function<void()>& change) {
        source_->onCall([this, change](Verb verb) {
            const bool isCompared = source_->calls(Verb::OpenReader) == 2;
            if (isCompared && verb == Verb::Find && !std::exchange(isChanged_, true)) change();
        });
    }

    Workplace at(const std::u16string& root) const {
        return Workplace(Ground{storage_, root, source_, provider::Path(), nullptr});
    }
    Workplace from() const { return at(u"from://s/"); }
    Workplace to() const { return at(u"to://s/"); }

    test::TempTree tree_;
    test::TempTree otherTree_;
    bool isChanged_ = false;
    std::shared_ptr<FaultProvider> source_ =
        std::make_shared<FaultProvider>(provider::makeFolderProvider(tree_.text("")));
    std::shared_ptr<FaultProvider> target_ =
        std::make_shared<FaultProvider>(provider::makeFolderProvider(otherTree_.text("")));
    vfs::StorageSystemReference storage_ =
        vfs::StorageSystemBuilder().mount(u"from", u"s", source_).mount(u"to", u"s", target_).build();
};

TEST_F(SourceChange, KeepsAFileThatWasWrittenTo) {
    test::makeFile(tree_ / "f", "text");
    test::setModifiedTime(tree_ / "f", kLongAgo);
    changeBeforeRemoval([this] { test::writeInPlace(tree_ / "f", "news"); });
    PKGCORE_EXPECT_FAILURE(TemporarilyBusy, from().file(u"f").moveFile(to().file(u"f"), kFail));
    EXPECT_TRUE(isChanged_);
    EXPECT_EQ(test::contentOf(tree_ / "f"), "news");
}

TEST_F(SourceChange, KeepsAFileWhoseCopyBecameLongerMeanwhile) {
    test::makeFile(tree_ / "f", "text");
    std::size_t reads = 0;
    target_->onCall([&](Verb verb) {
        if (verb != Verb::OpenReader) return;
        test::writeInPlace(std::filesystem::directory_iterator(otherTree_.path())->path(), "text and more");
        reads = source_->calls(Verb::Read);
    });
    PKGCORE_EXPECT_FAILURE(IOError, from().file(u"f").moveFile(to().file(u"f"), kFail));
    EXPECT_EQ(test::contentOf(tree_ / "f"), "text");
    EXPECT_EQ(source_->calls(Verb::Read), reads) << "the sizes tell";
}

TEST_F(SourceChange, KeepsAFileThatTookItsPlace) {
    test::makeFile(tree_ / "f", "text");
    test::makeFile(tree_ / "g", "other");
    for (const char* const name : {"f", "g"}) test::setModifiedTime(tree_ / name, kLongAgo);
    changeBeforeRemoval([this] { std::rename((tree_ / "g").c_str(), (tree_ / "f").c_str()); });
    PKGCORE_EXPECT_FAILURE(TemporarilyBusy, from().file(u"f").moveFile(to().file(u"f"), kFail));
    EXPECT_EQ(test::contentOf(tree_ / "f"), "other");
}

TEST_F(SourceChange, KeepsAFolderThatTookItsPlace) {
    test::makeFolder(tree_ / "d");
    test::makeFile(tree_ / "d/f", "text");
    changeBeforeRemoval([this] {
        std::rename((tree_ / "d").c_str(), (tree_ / "old").c_str());
        test::makeFolder(tree_ / "d");
        test::makeFile(tree_ / "d/g", "other");
    });
    PKGCORE_EXPECT_FAILURE(TemporarilyBusy, from().folder(u"d").moveFolder(to().folder(u"d"), kFail));
    EXPECT_EQ(from().everything(),
              (Contents{{u"d/", "(folder)"}, {u"d/g", "other"}, {u"old/", "(folder)"}, {u"old/f", "text"}}));
}

/// Changes something in the folder d while it is moved, behind the comparison of its files.
class FolderChange : public SourceChange {
protected:
    FolderChange() {
        test::makeFolder(tree_ / "d");
        test::makeFolder(tree_ / "d/sub");
        for (const char* const file : {"d/f", "d/sub/g"}) {
            test::makeFile(tree_ / file, "text");
            test::setModifiedTime(tree_ / file, kLongAgo);
        }
    }

    void expectKept(const std::function<void()>& change) {
        target_->onCall([this, change](Verb verb) {
            if (verb == Verb::Sync && !std::exchange(isChanged_, true)) change();
        });
        PKGCORE_EXPECT_FAILURE(TemporarilyBusy, from().folder(u"d").moveFolder(to().folder(u"d"), kFail));
        EXPECT_TRUE(isChanged_);
        EXPECT_EQ(from().list(u""), Names{u"d/"}) << "under its own name";
        EXPECT_EQ(to().read(u"d/sub/g"), "text");
    }
};

TEST_F(FolderChange, KeepsWhatWasAdded) {
    expectKept([this] { test::makeFile(tree_ / "d/sub/late", "new"); });
    EXPECT_EQ(from().read(u"d/sub/late"), "new");
}

TEST_F(FolderChange, KeepsWhatWasWrittenTo) {
    expectKept([this] { test::writeInPlace(tree_ / "d/sub/g", "news"); });
    EXPECT_EQ(from().read(u"d/sub/g"), "news");
}

TEST_F(FolderChange, KeepsAFolderThatTookThePlaceOfAFile) {
    expectKept([this] {
        std::remove((tree_ / "d/f").c_str());
        test::makeFolder(tree_ / "d/f");
    });
    EXPECT_TRUE(from().isFolder(u"d/f"));
}

TEST_F(FolderChange, RemovesAFolderFromWhichSomethingWasTaken) {
    target_->onCall([this](Verb verb) {
        if (verb == Verb::Sync) std::remove((tree_ / "d/f").c_str());
    });
    from().folder(u"d").moveFolder(to().folder(u"d"), kFail);
    EXPECT_TRUE(from().isMissing(u"d"));
    EXPECT_EQ(to().read(u"d/f"), "text");
}

TEST_F(SourceChange, RemovesAFileThatWasOnlyRead) {
    test::makeFile(tree_ / "f", "text");
    changeBeforeRemoval([this] { EXPECT_EQ(test::contentOf(tree_ / "f"), "text"); });
    from().file(u"f").moveFile(to().file(u"f"), kFail);
    EXPECT_TRUE(isChanged_);
    EXPECT_TRUE(from().isMissing(u"f"));
}

}  // namespace
