#pragma once

#include <string>

namespace test {

/// What goes wrong, in calls of the table counted together from 1.
struct Fault {
    enum class Kind {
        none,       ///< only count
        once,       ///< call number `at` fails with `error`
        fromThenOn  ///< that one and all later ones do
    };
    Kind kind = Kind::none;
    long at = 0;
    int error = 0;
};

/// Puts a table in force that counts every call of the system and has some fail, until the end of the scope.
/// A close that fails has closed all the same, as on Linux. One thread, one at a time.
class FaultyCalls {
public:
    explicit FaultyCalls(const Fault& fault);
    ~FaultyCalls();
    FaultyCalls(const FaultyCalls&) = delete;
    FaultyCalls& operator=(const FaultyCalls&) = delete;

    /// Whether the call that had to fail was made.
    static bool wasReached();

    /// The call that failed first, by its name alone: "openat". The closing of a file that was open for
    /// writing, where the last failures show, is "close after writing".
    static std::string failedCall();
    /// The same with the last element of the path it was given: "openat(..)".
    static std::string failedCallOnName();
    static std::string failedCallInWords();
};

/// Has every call that a signal can interrupt be interrupted twice before it does its work.
class InterruptedCalls {
public:
    InterruptedCalls();
    ~InterruptedCalls();
    InterruptedCalls(const InterruptedCalls&) = delete;
    InterruptedCalls& operator=(const InterruptedCalls&) = delete;

    static long interruptions();
};

/// Has every transfer end early: `bytes` at a time, or little more than one record of a listing.
class ShortTransfers {
public:
    explicit ShortTransfers(std::size_t bytes);
    ~ShortTransfers();
    ShortTransfers(const ShortTransfers&) = delete;
    ShortTransfers& operator=(const ShortTransfers&) = delete;
};

/// How many entries of the table are still the system's own while a FaultyCalls is in force; 0 unless one was
/// forgotten.
int callsPastTheFaults();

}  // namespace test
