// One selector that serves several threads.

#include "tests/e2e/VirtualTest.hpp"

#include <atomic>
#include <thread>

namespace test {

namespace {

constexpr int kThreads = 6;

class VirtualConcurrency : public VirtualTest {
protected:
    /// Runs the body on several threads at once, each with its number and a selector of its own.
    template <typename Body>
    void onAllThreads(Body body) const {
        std::vector<std::thread> threads;
        for (int number = 0; number < kThreads; ++number) {
            threads.emplace_back([&body, number, copy = selector] { body(copy.getVirtual(), number); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    static opc::ustring numbered(const opc::ustring& path, int number) {
        const std::string digits = std::to_string(number);
        return path + opc::ustring(digits.begin(), digits.end());
    }
};

TEST_F(VirtualConcurrency, OneStoreServesThreadsThatMakeListCopyAndRemove) {
    std::atomic<int> failures{0};
    onAllThreads([&](opc::FileSystemOps& files, int number) {
        const opc::ustring own = numbered(u"mem://store/own", number);
        const opc::ustring copy = numbered(u"mem://store/copy", number);
        for (int round = 0; round < 30; ++round) {
            boost::system::error_code ec;
            files.createFolders(own + u"/a/b", ec);
            failures += ec.failed();
            *files.createOutputStream(own + u"/a/file", 0) << "text" << std::flush;
            files.copy(own, copy, opc::Replace, ec);
            failures += ec.failed();
            std::vector<opc::ustring> found;
            files.getFiles(copy, found, true, ec);
            failures += ec.failed() || found.size() != 1;
            std::vector<opc::ustring> everything;
            files.getFiles(u"mem://store", everything, true, ec);  // of others, any answer will do
            files.rename(own + u"/a/file", u"mem://store/shared", ec);
            failures += ec.failed();
            files.removeAll(copy, ec);
            failures += ec.failed();
            files.removeAll(own, ec);
            failures += ec.failed();
        }
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(files(u"mem://store", true), std::vector<opc::ustring>{u"mem://store/shared"});
}

TEST_F(VirtualConcurrency, ReadersSeeOneContentOrTheOther) {
    write(u"mem://store/file", std::string(100'000, '0'));
    std::atomic<int> mixed{0};
    onAllThreads([&](opc::FileSystemOps& files, int number) {
        const std::string content(100'000, static_cast<char>('0' + number));
        for (int round = 0; round < 20; ++round) {
            if (number % 2 == 0) {
                *files.createOutputStream(u"mem://store/file", 0) << content << std::flush;
                continue;
            }
            const auto stream = files.createInputStream(u"mem://store/file", 0);
            const std::string found{std::istreambuf_iterator<char>(*stream), {}};
            mixed += found != std::string(100'000, found.empty() ? '?' : found.front());
        }
    });
    EXPECT_EQ(mixed, 0);
}

TEST_F(VirtualConcurrency, OneOfManyMakesTheFolder) {
    for (int round = 0; round < 30; ++round) {
        std::atomic<int> made{0};
        onAllThreads([&](opc::FileSystemOps& files, int) {
            boost::system::error_code ec;
            files.createFolder(u"mem://store/folder", ec);
            made += !ec.failed();
        });
        EXPECT_EQ(made, 1);
        ops.remove(u"mem://store/folder");
    }
}

}  // namespace

}  // namespace test
