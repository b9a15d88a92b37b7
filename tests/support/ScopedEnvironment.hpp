#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace test {

/// Sets or unsets a variable of the environment for as long as it lives. For tests with a single thread.
class ScopedEnvironment {
public:
    /// `value` null: unset.
    ScopedEnvironment(std::string name, const char* value) : name_(std::move(name)) {
        if (const char* const before = std::getenv(name_.c_str())) before_ = before;
        assign(value);
    }
    ~ScopedEnvironment() { assign(before_ ? before_->c_str() : nullptr); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    void assign(const char* value) const {
        if (value != nullptr) {
            ::setenv(name_.c_str(), value, 1);
        } else {
            ::unsetenv(name_.c_str());
        }
    }

    std::string name_;
    std::optional<std::string> before_;
};

/// The locale that the environment names, all three variables of it.
class ScopedLocaleEnvironment {
public:
    explicit ScopedLocaleEnvironment(const char* lang, const char* lcCtype = nullptr,
                                     const char* lcAll = nullptr)
        : lang_("LANG", lang), lcCtype_("LC_CTYPE", lcCtype), lcAll_("LC_ALL", lcAll) {}

private:
    ScopedEnvironment lang_;
    ScopedEnvironment lcCtype_;
    ScopedEnvironment lcAll_;
};

}  // namespace test
