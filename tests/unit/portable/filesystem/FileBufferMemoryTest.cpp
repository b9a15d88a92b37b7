// What a file_buffer does while there is no memory for its buffer.

#include <pkgcore/platform/filesystem/FileStreams.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

#include <new>

namespace {

bool memoryIsShort = false;

class ShortMemory {
public:
    ShortMemory() { memoryIsShort = true; }
    ~ShortMemory() { memoryIsShort = false; }
    ShortMemory(const ShortMemory&) = delete;
    ShortMemory& operator=(const ShortMemory&) = delete;
};

}  // namespace

// Replaces that of the whole program, in which nothing else asks for memory in this way.
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return memoryIsShort ? nullptr : ::operator new[](size);
}

namespace {

using fl::filesystem::file_buffer;
using std::ios_base;

void open(file_buffer& buffer, const std::string& path, ios_base::openmode mode) {
    ASSERT_TRUE(
        buffer.open(std::wstring(path.begin(), path.end()), mode, fl::filesystem::share_mode::deny_none));
}

TEST(FileBufferMemory, WritesGoOnWithoutABuffer) {
    const test::TempTree tree;
    const std::string content = test::someBytes(20000);
    file_buffer buffer;
    open(buffer, tree / "file", ios_base::out);
    {
        const ShortMemory guard;
        for (const char byte : content) {
            ASSERT_NE(buffer.sputc(byte), std::char_traits<char>::eof());
        }
        ASSERT_EQ(buffer.sputn(content.data(), 3000), 3000);
    }

    EXPECT_TRUE(buffer.close());
    EXPECT_EQ(test::contentOf(tree / "file"), content + content.substr(0, 3000));
}

TEST(FileBufferMemory, ReadsGoOnWithoutABuffer) {
    const test::TempTree tree;
    const std::string content = test::someBytes(20000);
    test::makeFile(tree / "file", content);
    file_buffer buffer;
    open(buffer, tree / "file", ios_base::in);
    std::string first(1000, '\0');
    std::string second(30000, '\0');
    {
        const ShortMemory guard;
        ASSERT_EQ(buffer.sgetn(first.data(), 1000), 1000);
        ASSERT_NE(buffer.sungetc(), std::char_traits<char>::eof());
        ASSERT_EQ(buffer.sgetn(second.data(), 30000), 19001);
    }

    EXPECT_EQ(first, content.substr(0, 1000));
    EXPECT_EQ(second.substr(0, 19001), content.substr(999));
}

}  // namespace
