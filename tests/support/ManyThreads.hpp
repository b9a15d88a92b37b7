#pragma once

#include <atomic>
#include <thread>
#include <type_traits>
#include <vector>

namespace test {

/// Calls a body that may or may not want a number.
template <typename Body>
void callWithNumber(const Body& body, [[maybe_unused]] int number) {
    if constexpr (std::is_invocable_v<const Body&, int>) {
        body(number);
    } else {
        body();
    }
}

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
            callWithNumber(body, number);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace test
