#pragma once

namespace foundation::storage::portable {

/// What a file in the middle of a path means.
enum class Purpose : unsigned char {
    Reading,  ///< that nothing is there
    Creating  ///< that it is in the way
};

/// From within a handler: throws what a failure of the file system is in terms of a store; others pass.
[[noreturn]] void rethrowAsStorageFailure(Purpose purpose);

/// Makes a call of the file system.
template <typename Call>
auto asStorage(Purpose purpose, Call call) -> decltype(call()) {
    try {
        return call();
    } catch (...) {
        rethrowAsStorageFailure(purpose);
    }
}

}  // namespace foundation::storage::portable
