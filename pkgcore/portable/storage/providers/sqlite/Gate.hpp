#pragma once

#include <pkgcore/portable/storage/providers/sqlite/Patience.hpp>

#include <condition_variable>
#include <mutex>

namespace foundation::storage::sqlite {

/// Lets one thread of the process write at a time, so that they wait for each other instead of trying again
/// and again.
class Gate {
public:
    /// Waits as long as there is patience; throws "busy" then.
    void enter(Patience& patience);
    void leave() noexcept;

private:
    std::mutex mutex_;
    std::condition_variable left_;
    bool isTaken_ = false;
};

/// From entering a gate to leaving it.
class Passage {
public:
    Passage(Gate& gate, Patience& patience) : gate_(gate) { gate_.enter(patience); }
    ~Passage() { gate_.leave(); }
    Passage(const Passage&) = delete;
    Passage& operator=(const Passage&) = delete;

private:
    Gate& gate_;
};

}  // namespace foundation::storage::sqlite
