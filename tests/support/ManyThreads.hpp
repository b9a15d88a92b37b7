#pragma once

#include <atomic>
#include <thread>
#include <type_traits>
#include <vector>

namespace test {

/// Runs the body in eight threads that begin at the same moment, as far as that can be had, and waits for all
/// of them. A body that takes a number is given that of its thread, from 0 on. It must not throw.
template <typename Body>
void inManyThreads(const Body& body) {
    constexpr int kThreads = 8;
    std::atomic<int> waiting{kThreads};
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back([&waiting, &body, number] {
            --waiting;
            while (waiting != 0) {
                std::this_thread::yield();
            }
            if constexpr (std::is_invocable_v<const Body&, int>) {
                body(number);
            } else {
                body();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace test
