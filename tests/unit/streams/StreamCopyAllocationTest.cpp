#include <pkgcore/streams/StreamHelper.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <new>
#include <vector>

// This program's own operator new: what is allocated and freed while it watches is counted.
namespace {

constexpr std::size_t kMostCounted = 64;

bool watching = false;
std::size_t allocated = 0;
std::size_t freed = 0;
std::size_t sizes[kMostCounted];

void release(void* memory) noexcept {
    freed += watching && memory != nullptr ? 1 : 0;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
    if (watching && allocated < kMostCounted) {
        sizes[allocated++] = size;
    }
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
// A sanitizer brings array forms that would not come here.
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }

namespace opc {
namespace {

constexpr std::size_t kTenMiB = std::size_t{10} << 20;

/// Gives as many bytes as it is made for; throws at the end if it is told so.
class Zeroes : public InputStream {
public:
    explicit Zeroes(std::size_t left, bool throwsAtEnd = false) : left_(left), throwsAtEnd_(throwsAtEnd) {}
    ~Zeroes() override = default;
    void open() override {}
    std::size_t read(std::uint8_t* /*buffer*/, std::size_t count) override {
        if (left_ == 0 && throwsAtEnd_) {
            throw 7;
        }
        const std::size_t given = std::min(count, left_);
        left_ -= given;
        return given;
    }
    bool isDone() const override { return left_ == 0 && !throwsAtEnd_; }
    void close() override {}

private:
    std::size_t left_;
    bool throwsAtEnd_;
};

/// Takes everything, or throws, or is done at once.
class Nowhere : public OutputStream {
public:
    enum class Manner { takesAll, throws, isDone };

    explicit Nowhere(Manner manner = Manner::takesAll) : manner_(manner) {}
    ~Nowhere() override = default;
    std::size_t write(const std::uint8_t* /*buffer*/, std::size_t count) override {
        if (manner_ == Manner::throws) {
            throw 7;
        }
        return manner_ == Manner::takesAll ? count : 0;
    }
    bool isDone() const override { return manner_ == Manner::isDone; }
    void flush() override {}
    void close() override {}

private:
    Manner manner_;
};

/// Both of these as the buffer of a standard stream, without any memory of its own.
class EndlessBuffer : public std::streambuf {
public:
    explicit EndlessBuffer(std::size_t left = 0) : left_(static_cast<std::streamsize>(left)) {}

protected:
    std::streamsize xsgetn(char* /*out*/, std::streamsize count) override {
        const std::streamsize given = std::min(count, left_);
        left_ -= given;
        return given;
    }
    std::streamsize xsputn(const char* /*in*/, std::streamsize count) override {
        written_ += count;
        return count;
    }
    pos_type seekoff(off_type /*offset*/, std::ios::seekdir /*from*/, std::ios::openmode /*which*/) override {
        return written_;
    }

private:
    std::streamsize left_;
    std::streamoff written_ = 0;
};

/// What `copy` allocates.
std::vector<std::size_t> sizesOf(const std::function<void()>& copy) {
    allocated = 0;
    freed = 0;
    watching = true;
    try {
        copy();
    } catch (int) {
        // Expected by those who count what is left behind.
    }
    watching = false;
    return std::vector<std::size_t>(sizes, sizes + allocated);
}

const std::vector<std::size_t> kOneBuffer{16384};

TEST(StreamCopyAllocation, IsOneBufferForTheWholeCopy) {
    Zeroes in(kTenMiB);
    Nowhere out;
    EXPECT_EQ(sizesOf([&] { EXPECT_TRUE(StreamHelper::copyStreamToStream(in, out)); }), kOneBuffer);
    EXPECT_TRUE(in.isDone());
}

TEST(StreamCopyAllocation, IsOneBufferForStandardStreamsToo) {
    EndlessBuffer from(kTenMiB);
    EndlessBuffer to;
    std::istream in(&from);
    std::ostream out(&to);
    EXPECT_EQ(sizesOf([&] { EXPECT_TRUE(StreamHelper::copyStreamToStream(in, out)); }), kOneBuffer);
    EXPECT_EQ(out.tellp(), static_cast<std::streamoff>(kTenMiB));
    EndlessBuffer again(kTenMiB);
    std::istream secondIn(&again);
    Nowhere nowhere;
    EXPECT_EQ(sizesOf([&] { EXPECT_TRUE(StreamHelper::copyStreamToStream(secondIn, nowhere)); }), kOneBuffer);
    Zeroes zeroes(kTenMiB);
    EXPECT_EQ(sizesOf([&] { EXPECT_TRUE(StreamHelper::copyStreamToStream(zeroes, out)); }), kOneBuffer);
}

TEST(StreamCopyAllocation, IsFreedOnEveryWayOut) {
    struct {
        Zeroes in;
        Nowhere out;
    } ways[] = {{Zeroes(0), Nowhere()},
                {Zeroes(40000), Nowhere()},
                {Zeroes(40000), Nowhere(Nowhere::Manner::isDone)},
                {Zeroes(40000, true), Nowhere()},
                {Zeroes(40000), Nowhere(Nowhere::Manner::throws)}};
    for (auto& [in, out] : ways) {
        EXPECT_EQ(sizesOf([&, &from = in, &to = out] { StreamHelper::copyStreamToStream(from, to); }),
                  kOneBuffer);
        EXPECT_EQ(freed, 1U);
    }
}

}  // namespace
}  // namespace opc
