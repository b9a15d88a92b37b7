#include <pkgcore/portable/storage/providers/sqlite/Gate.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>

namespace foundation::storage::sqlite {

void Gate::enter(std::chrono::milliseconds patience) {
    std::unique_lock<std::mutex> lock(mutex_);
    const auto end = std::chrono::steady_clock::now() + patience;
    if (!left_.wait_until(lock, end, [this] { return !isTaken_; })) {
        fail(vfs::ErrorCode::TemporarilyBusy);
    }
    isTaken_ = true;
}

void Gate::leave() noexcept {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isTaken_ = false;
    }
    left_.notify_one();
}

}  // namespace foundation::storage::sqlite
