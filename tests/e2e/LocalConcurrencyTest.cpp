#include "tests/e2e/LocalTest.hpp"
#include "tests/support/ManyThreads.hpp"

#include <atomic>

namespace test {

namespace {

class LocalConcurrency : public LocalTest {};

TEST_F(LocalConcurrency, OneFolderServesThreadsThatMakeListCopyAndRemove) {
    std::atomic<int> failures{0};
    inManyThreads([&](int number) {
        const std::string own = "own" + std::to_string(number);
        for (int round = 0; round < 40; ++round) {
            boost::system::error_code ec;
            ops.createFolders(tree.text(own + "/a/b"), ec);
            failures += ec.failed();
            *ops.createOutputStream(tree.text(own + "/a/file"), 0) << own;
            ops.copy(tree.text(own), tree.text(own + "copy"), opc::Replace, ec);
            failures += ec.failed();
            std::vector<opc::ustring> files;
            ops.getFiles(tree.text(own + "copy"), files, true, ec);
            failures += ec.failed() || files.size() != 1;
            std::vector<opc::ustring> everything;
            ops.getFiles(text(tree.path()), everything, true,
                         ec);  // others remove meanwhile: any answer will do
            ops.rename(tree.text(own + "/a/file"), tree.text("shared"), ec);
            failures += ec.failed();
            ops.removeAll(tree.text(own + "copy"), ec);
            failures += ec.failed();
            ops.removeAll(tree.text(own), ec);
            failures += ec.failed();
        }
    });
    EXPECT_EQ(0, failures);
    EXPECT_EQ(1U, snapshot(tree.path()).size());  // "shared", from whoever came last
}

TEST_F(LocalConcurrency, OneOfManyMakesTheFolder) {
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> made{0};
        inManyThreads([&] {
            boost::system::error_code ec;
            ops.createFolder(tree.text("folder"), ec);
            made += !ec.failed();
        });
        EXPECT_EQ(1, made);
        ops.remove(tree.text("folder"));
    }
}

TEST_F(LocalConcurrency, AllOfManyFindTheirFoldersMade) {
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> failures{0};
        inManyThreads([&] {
            boost::system::error_code ec;
            ops.createFolders(tree.text("a/b/c/d/e"), ec);
            failures += ec.failed();
        });
        EXPECT_EQ(0, failures);
        ops.removeAll(tree.text("a"));
    }
}

TEST_F(LocalConcurrency, OneOfManyCopiesToANewPlace) {
    makeFile(tree / "from", someBytes(100'000));
    for (int round = 0; round < 20; ++round) {
        std::atomic<int> copied{0};
        inManyThreads([&] {
            boost::system::error_code ec;
            ops.copy(tree.text("from"), tree.text("to"), opc::Fail, ec);
            copied += !ec.failed();
        });
        EXPECT_EQ(1, copied);
        EXPECT_TRUE(contentOf(tree / "from") == contentOf(tree / "to"));
        ops.remove(tree.text("to"));
    }
}

TEST_F(LocalConcurrency, AReaderSeesTheOldOrTheNewContentOfAFileThatIsReplaced) {
    const std::string contents[] = {std::string(200'000, 'a'), std::string(200'000, 'b')};
    makeFile(tree / "a", contents[0]);
    makeFile(tree / "b", contents[1]);
    makeFile(tree / "to", contents[0]);
    std::atomic<int> torn{0};
    inManyThreads([&](int number) {
        for (int round = 0; round < 30; ++round) {
            boost::system::error_code ec;
            if (number % 2 == 0) {
                ops.copy(tree.text(number % 4 == 0 ? "a" : "b"), tree.text("to"), opc::Replace, ec);
            } else {
                const std::string seen = contentOf(tree / "to");
                torn += seen != contents[0] && seen != contents[1];
            }
        }
    });
    EXPECT_EQ(0, torn);
    EXPECT_EQ(3U, snapshot(tree.path()).size());
}

TEST_F(LocalConcurrency, ManyRemovalsOfOneTreeEndWithNothingLeft) {
    for (int round = 0; round < 20; ++round) {
        for (const char* const folder : {"top", "top/a", "top/b", "top/a/c"}) {
            makeFolder(tree / folder);
            for (int number = 0; number < 20; ++number) {
                makeFile(tree / folder + "/" + std::to_string(number));
            }
        }
        inManyThreads([&] {
            boost::system::error_code ec;
            ops.removeAll(tree.text("top"), ec);
        });
        boost::system::error_code ec;
        ops.removeAll(tree.text("top"), ec);
        EXPECT_FALSE(isThere(tree / "top"));
    }
}

}  // namespace
}  // namespace test
