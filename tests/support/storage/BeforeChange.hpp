#pragma once

#include <sqlite3.h>

#include <functional>
#include <string_view>
#include <utility>

namespace test {

/// Does something when a connection that is opened while this lives is about to begin its n-th transaction
/// that writes, counted from 1 over all of them: between two transactions of one call. What the act itself
/// does is not counted.
class BeforeChange {
public:
    BeforeChange(int number, std::function<void()> act) : left_(number), act_(std::move(act)) {
        current() = this;
        sqlite3_auto_extension(entryPoint());
    }
    ~BeforeChange() {
        sqlite3_cancel_auto_extension(entryPoint());
        current() = nullptr;
    }
    BeforeChange(const BeforeChange&) = delete;
    BeforeChange& operator=(const BeforeChange&) = delete;

    bool wasReached() const noexcept { return left_ <= 0; }

private:
    using EntryPoint = void (*)();

    static BeforeChange*& current() {
        static BeforeChange* hook = nullptr;
        return hook;
    }
    /// As SQLite wants it: the type that it has is not the one that it is called as.
    static EntryPoint entryPoint() {
        return reinterpret_cast<EntryPoint>(&watch);  // NOLINT(cppcoreguidelines-pro-type-reinterpret-cast)
    }

    static int watch(sqlite3* connection, const char** /*message*/, const void* /*api*/) {
        return sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, &onStatement, nullptr);
    }
    static int onStatement(unsigned /*event*/, void* /*context*/, void* /*statement*/, void* text) {
        if (current() != nullptr && std::string_view(static_cast<const char*>(text)) == "BEGIN IMMEDIATE") {
            current()->count();
        }
        return 0;
    }
    void count() {
        if (isActing_ || --left_ != 0) return;
        isActing_ = true;
        act_();
        isActing_ = false;
    }

    int left_;
    bool isActing_ = false;
    std::function<void()> act_;
};

}  // namespace test
