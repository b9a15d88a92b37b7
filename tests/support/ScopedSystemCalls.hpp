#pragma once

#include <pkgcore/portable/filesystem/SystemCalls.hpp>

namespace test {

/// Puts a table of system calls in force until the end of the scope; it starts as the system's own. Replace
/// entries through `->`, with captureless lambdas whose state is static:
///
///     ScopedSystemCalls calls;
///     calls->close = [](int) { errno = EIO; return -1; };
///
/// Scopes nest. Make and end them while no operation of the library runs on another thread.
class ScopedSystemCalls {
public:
    ScopedSystemCalls() { fl::filesystem::posix::callsInForce.store(&calls_); }
    ~ScopedSystemCalls() { fl::filesystem::posix::callsInForce.store(before_); }
    ScopedSystemCalls(const ScopedSystemCalls&) = delete;
    ScopedSystemCalls& operator=(const ScopedSystemCalls&) = delete;

    fl::filesystem::posix::SystemCalls* operator->() noexcept { return &calls_; }

private:
    const fl::filesystem::posix::SystemCalls* before_ = fl::filesystem::posix::callsInForce.load();
    fl::filesystem::posix::SystemCalls calls_ = fl::filesystem::posix::kHostCalls;
};

}  // namespace test
