#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace test {

/// Runs the body in several threads that begin at the same moment, as far as that can be had.
inline void inManyThreads(const std::function<void()>& body) {
    constexpr int kThreads = 8;
    std::atomic<int> waiting{kThreads};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            --waiting;
            while (waiting != 0) std::this_thread::yield();
            body();
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace test
