#include <pkgcore/streams/StreamHelper.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <vector>

// This program's own operator new: what is allocated while it watches is counted.
namespace {
bool watching = false;
std::vector<std::size_t>* sizes = nullptr;
}  // namespace

void* operator new(std::size_t size) {
    if (watching) {
        watching = false;  // the list may allocate itself
        sizes->push_back(size);
        watching = true;
    }
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
// A sanitizer brings array forms that would not come here.
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace opc {
namespace {

class Zeroes : public InputStream {
public:
    explicit Zeroes(std::size_t left) : left_(left) {}
    ~Zeroes() override = default;
    void open() override {}
    std::size_t read(std::uint8_t* /*buffer*/, std::size_t count) override {
        const std::size_t given = std::min(count, left_);
        left_ -= given;
        return given;
    }
    bool isDone() const override { return left_ == 0; }
    void close() override {}

private:
    std::size_t left_;
};

class Nowhere : public OutputStream {
public:
    ~Nowhere() override = default;
    std::size_t write(const std::uint8_t* /*buffer*/, std::size_t count) override { return count; }
    bool isDone() const override { return false; }
    void flush() override {}
    void close() override {}
};

TEST(StreamCopyAllocation, IsOneBufferForTheWholeCopy) {
    std::vector<std::size_t> seen;
    sizes = &seen;
    Zeroes in(std::size_t{10} << 20);
    Nowhere out;
    watching = true;
    const bool copied = StreamHelper::copyStreamToStream(in, out);
    watching = false;
    EXPECT_TRUE(copied);
    EXPECT_EQ(seen, std::vector<std::size_t>{16384});
}

}  // namespace
}  // namespace opc
