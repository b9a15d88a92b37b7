// Temporary folder and names on the real disk.

#include <pkgcore/util/TempNames.hpp>

#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/filesystem/PathHelpers.hpp>

#include <gtest/gtest.h>

#include <set>

using opc::ustring;
using opc::detail::getFilename;
using opc::detail::getParentPath;
using opc::detail::normalizePath;
using opc::util::getTempDir;
using opc::util::getTempName;

namespace {

bool beginsWith(const ustring& text, const ustring& beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

bool endsWith(const ustring& text, const ustring& ending) {
    return text.size() >= ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

TEST(TempNames, FolderIsAFolderInNormalForm) {
    const ustring folder = getTempDir();
    EXPECT_FALSE(folder.empty());
    EXPECT_EQ(normalizePath(folder), folder);
    EXPECT_TRUE(opc::FileSystemOpsSelector().getLocal().exists(folder));
}

TEST(TempNames, NameWithoutWishesIsAHiddenOneInTheTemporaryFolder) {
    const ustring name = getTempName(u"", u"", u"");
    EXPECT_EQ(getParentPath(name), getTempDir());
    EXPECT_TRUE(beginsWith(getFilename(name), u"."));
    EXPECT_TRUE(endsWith(name, u".tmp"));
    EXPECT_GT(getFilename(name).size(), ustring(u"..tmp").size());
    EXPECT_EQ(normalizePath(name), name);
}

TEST(TempNames, NameHasThePartsThatWereAskedFor) {
    const ustring name = getTempName(u"some//folder/", u"pre-", u"ext");
    EXPECT_EQ(getParentPath(name), u"some/folder");
    EXPECT_TRUE(beginsWith(getFilename(name), u"pre-"));
    EXPECT_TRUE(endsWith(name, u"ext"));
    EXPECT_FALSE(endsWith(name, u".ext"));
}

TEST(TempNames, NamesDifferAndNothingIsThere) {
    const opc::FileSystemOpsSelector selector;
    std::set<ustring> names;
    for (int i = 0; i < 100; ++i) {
        const ustring name = getTempName(u"", u"", u"");
        EXPECT_FALSE(selector.getLocal().exists(name));
        names.insert(name);
    }
    EXPECT_EQ(names.size(), 100u);
}

}  // namespace
