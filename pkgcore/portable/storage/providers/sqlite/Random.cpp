#include <pkgcore/portable/storage/providers/sqlite/Random.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>

#include <sys/random.h>

#include <cerrno>

namespace foundation::storage::sqlite {

// So few bytes come at once, or none of them.
void fillRandom(void* out, std::size_t size) {
    while (::getrandom(out, size, 0) < 0) {
        if (errno != EINTR) {
            failInUse(errno, "The system has no random numbers");
        }
    }
}

}  // namespace foundation::storage::sqlite
