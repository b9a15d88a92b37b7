#pragma once

#include <exception>

namespace foundation::storage::portable {

/// What an output stream asks of its buffer at its end.
class Publisher {
public:
    Publisher() = default;
    Publisher(const Publisher&) = delete;
    Publisher& operator=(const Publisher&) = delete;
    virtual ~Publisher() = default;

    /// Publishes what was written since the last time, if anything was: false where that fails, or something
    /// failed before.
    virtual bool publish() = 0;

    /// Whether an exception is on its way that was not when the file was opened.
    bool isUnwinding() const noexcept { return std::uncaught_exceptions() > exceptions_; }

private:
    int exceptions_ = std::uncaught_exceptions();
};

}  // namespace foundation::storage::portable
