#include "tests/fault/AllocationCounter.hpp"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace test {

namespace {

struct Memory {
    std::ptrdiff_t used = 0;
    std::ptrdiff_t peak = 0;
    bool scarce = false;
    bool persistent = false;
    long left = 0;  // allocations until the one that fails
    bool reached = false;
    std::size_t refused = 0;
};

thread_local Memory memory;

bool runsOut(std::size_t size) noexcept {
    if (!memory.scarce) {
        return false;
    }
    --memory.left;
    const bool now = memory.left == 0 || (memory.persistent && memory.left < 0);
    memory.reached |= now;
    memory.refused = now ? size : memory.refused;
    return now;
}

void* take(std::size_t size) noexcept {
    void* const block = runsOut(size) ? nullptr : std::malloc(std::max<std::size_t>(size, 1));
    if (block != nullptr) {
        memory.used += static_cast<std::ptrdiff_t>(malloc_usable_size(block));
        memory.peak = std::max(memory.peak, memory.used);
    }
    return block;
}

void* takeOrThrow(std::size_t size) {
    void* const block = take(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void give(void* block) noexcept {
    if (block != nullptr) {
        memory.used -= static_cast<std::ptrdiff_t>(malloc_usable_size(block));
        std::free(block);
    }
}

}  // namespace

ScarceMemory::ScarceMemory(long at, bool persistent) noexcept {
    memory.left = at;
    memory.persistent = persistent;
    memory.reached = false;
    memory.scarce = true;
}

ScarceMemory::~ScarceMemory() { memory.scarce = false; }

bool ScarceMemory::wasReached() noexcept { return memory.reached; }

std::size_t ScarceMemory::refusedBytes() noexcept { return memory.refused; }

PeakMemory::PeakMemory() noexcept : start_(memory.used) { memory.peak = memory.used; }

std::ptrdiff_t PeakMemory::bytes() const noexcept { return memory.peak - start_; }

std::ptrdiff_t PeakMemory::kept() const noexcept { return memory.used - start_; }

}  // namespace test

void* operator new(std::size_t size) { return test::takeOrThrow(size); }
void* operator new[](std::size_t size) { return test::takeOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return test::take(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return test::take(size); }
void operator delete(void* block) noexcept { test::give(block); }
void operator delete[](void* block) noexcept { test::give(block); }
void operator delete(void* block, std::size_t) noexcept { test::give(block); }
void operator delete[](void* block, std::size_t) noexcept { test::give(block); }
