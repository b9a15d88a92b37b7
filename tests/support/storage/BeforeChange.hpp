#pragma once

#include <sqlite3.h>

#include <functional>
#include <string_view>
#include <utility>

namespace test {

/// Does something when a connection that is opened while this lives is about to begin its n-th transaction of
/// a kind, counted from 1 over all of them: between two transactions of one call. What the act itself does is
/// not counted.
class BeforeTransaction {
public:
    BeforeTransaction(std::string_view beginning, int number, std::function<void()> act)
        : beginning_(beginning), left_(number), act_(std::move(act)) {
        current() = this;
        sqlite3_auto_extension(entryPoint());
    }
    ~BeforeTransaction() {
        sqlite3_cancel_auto_extension(entryPoint());
        current() = nullptr;
    }
    BeforeTransaction(const BeforeTransaction&) = delete;
    BeforeTransaction& operator=(const BeforeTransaction&) = delete;

    bool wasReached() const noexcept { return left_ <= 0; }

private:
    using EntryPoint = void (*)();

    static BeforeTransaction*& current() {
        static BeforeTransaction* hook = nullptr;
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
        if (current() != nullptr && current()->beginning_ == static_cast<const char*>(text)) {
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

    std::string_view beginning_;
    int left_;
    bool isActing_ = false;
    std::function<void()> act_;
};

/// Of a transaction that writes.
class BeforeChange : public BeforeTransaction {
public:
    BeforeChange(int number, std::function<void()> act)
        : BeforeTransaction("BEGIN IMMEDIATE", number, std::move(act)) {}
};

/// Of a transaction that only reads.
class BeforeLook : public BeforeTransaction {
public:
    BeforeLook(int number, std::function<void()> act) : BeforeTransaction("BEGIN", number, std::move(act)) {}
};

}  // namespace test
