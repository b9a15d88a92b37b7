#pragma once

#include <cstddef>

/// The memory that this thread takes by way of operator new, which this program replaces: it can be counted,
/// and it can run out. What the C library and others take from malloc is left alone.
namespace test {

/// Has allocations of this thread fail with std::bad_alloc until the end of the scope: number `at` (from 1),
/// and with `persistent` all later ones.
class ScarceMemory {
public:
    ScarceMemory(long at, bool persistent) noexcept;
    ~ScarceMemory();
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;

    /// Whether the allocation that had to fail was asked for.
    static bool wasReached() noexcept;

    /// How many bytes the last allocation that failed asked for.
    static std::size_t refusedBytes() noexcept;
};

/// Bytes in use more than at the beginning of the scope, at the moment when they were most.
class PeakMemory {
public:
    PeakMemory() noexcept;
    PeakMemory(const PeakMemory&) = delete;
    PeakMemory& operator=(const PeakMemory&) = delete;

    std::ptrdiff_t bytes() const noexcept;
    /// In use now more than at the beginning.
    std::ptrdiff_t kept() const noexcept;

private:
    std::ptrdiff_t start_;
};

}  // namespace test
