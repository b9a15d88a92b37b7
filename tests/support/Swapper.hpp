#pragma once

#include <fcntl.h>
#include <stdio.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>

namespace test {

/// Exchanges two names over and over on a thread of its own, until the end of the scope: somebody who puts a
/// link in the place of a folder while it is worked on.
class Swapper {
public:
    Swapper(std::string one, std::string other)
        : one_(std::move(one)), other_(std::move(other)), thread_([this] { run(); }) {}
    ~Swapper() {
        stop_ = true;
        thread_.join();
    }
    Swapper(const Swapper&) = delete;
    Swapper& operator=(const Swapper&) = delete;

    long swaps() const { return swaps_; }

    /// How many a test has to live through: PKGCORE_SWAPS, or some thousands.
    static long wanted() {
        constexpr long kUsual = 20'000;
        const char* const text = std::getenv("PKGCORE_SWAPS");
        return text != nullptr ? std::atol(text) : kUsual;
    }

private:
    void run() {
        while (!stop_) {
            swaps_ += ::renameat2(AT_FDCWD, one_.c_str(), AT_FDCWD, other_.c_str(), RENAME_EXCHANGE) == 0;
        }
    }

    std::string one_;
    std::string other_;
    std::atomic<bool> stop_{false};
    std::atomic<long> swaps_{0};
    std::thread thread_;
};

}  // namespace test
