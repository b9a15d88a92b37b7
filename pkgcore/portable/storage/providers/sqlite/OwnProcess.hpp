#pragma once

#include <unistd.h>

namespace foundation::storage::sqlite {

/// The process in which it was made. A child of fork() has a copy of every object, but shares with its parent
/// the files and their locks, and has none of its threads: mutexes may stay locked for ever.
class OwnProcess {
public:
    bool isLeft() const noexcept { return ::getpid() != id_; }

private:
    pid_t id_ = ::getpid();
};

}  // namespace foundation::storage::sqlite
