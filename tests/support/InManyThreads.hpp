#pragma once

#include <atomic>
#include <thread>
#include <vector>

namespace test {

/// Runs the body in eight threads, each with its number from 0 on, that begin at the same moment as far as
/// that can be had, and waits for all of them. The body must not throw.
template <typename Body>
void inManyThreads(const Body& body) {
    constexpr int count = 8;
    std::atomic<int> waiting{count};
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&waiting, &body, number] {
            --waiting;
            while (waiting != 0) {
                std::this_thread::yield();
            }
            body(number);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace test
