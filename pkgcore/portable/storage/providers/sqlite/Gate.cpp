#include <pkgcore/portable/storage/providers/sqlite/Gate.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>

namespace foundation::storage::sqlite {

void Gate::enter(Patience& patience) {
    std::unique_lock<std::mutex> lock(mutex_);
    const auto begin = std::chrono::steady_clock::now();
    if (!left_.wait_until(lock, begin + patience.left(), [this] { return !isTaken_; })) {
        fail(vfs::ErrorCode::TemporarilyBusy);
    }
    patience.spend(std::chrono::steady_clock::now() - begin);
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
