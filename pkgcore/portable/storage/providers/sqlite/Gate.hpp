#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace foundation::storage::sqlite {

/// Lets one thread of the process write at a time, so that they wait for each other instead of trying again
/// and again.
class Gate {
public:
    /// Waits so long at most; throws "busy" then.
    void enter(std::chrono::milliseconds patience);
    void leave() noexcept;

private:
    std::mutex mutex_;
    std::condition_variable left_;
    bool isTaken_ = false;
};

/// From entering a gate to leaving it.
class Passage {
public:
    Passage(Gate& gate, std::chrono::milliseconds patience) : gate_(gate) { gate_.enter(patience); }
    ~Passage() { gate_.leave(); }
    Passage(const Passage&) = delete;
    Passage& operator=(const Passage&) = delete;

private:
    Gate& gate_;
};

}  // namespace foundation::storage::sqlite
