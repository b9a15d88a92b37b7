#pragma once

#include <algorithm>
#include <chrono>
#include <thread>

namespace foundation::storage::sqlite {

/// For how long others are still waited for. Nothing but waiting counts: a disk may be slow.
class Patience {
public:
    using Duration = std::chrono::nanoseconds;

    /// A year is for ever, and less than nothing is nothing.
    explicit Patience(std::chrono::milliseconds all)
        : left_(std::clamp<std::chrono::milliseconds>(all, std::chrono::milliseconds(0), kForever)) {}

    Duration left() const noexcept { return left_; }
    void spend(Duration time) noexcept { left_ -= time; }

    /// Waits so long, or as long as is left; false if nothing is.
    bool rest(Duration pause) noexcept {
        if (left_ <= Duration::zero()) {
            return false;
        }
        const auto begin = std::chrono::steady_clock::now();
        std::this_thread::sleep_for(std::min(pause, left_));
        spend(std::chrono::steady_clock::now() - begin);
        return true;
    }

private:
    static constexpr std::chrono::hours kForever{24 * 365};

    Duration left_;
};

}  // namespace foundation::storage::sqlite
