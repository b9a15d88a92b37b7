#pragma once

#include "tests/support/ScopedSystemCalls.hpp"

#include <dirent.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

/// Replacements for any entry of the table of system calls, the entry being a template argument:
///
///     ScopedSystemCalls calls;
///     failCall<&SystemCalls::write>(calls, 3, ENOSPC);  // the third one and all after it
namespace test {

using fl::filesystem::posix::SystemCalls;

template <auto Entry>
struct ReplacedCall;

template <typename Result, typename... Arguments, Result (*SystemCalls::*Entry)(Arguments...)>
struct ReplacedCall<Entry> {
    inline static int made = 0;
    inline static int failing = 0;
    inline static int error = 0;

    static Result host(Arguments... arguments) {
        return (fl::filesystem::posix::kHostCalls.*Entry)(arguments...);
    }

    static Result fail(int number) {
        errno = number;
        return static_cast<Result>(-1);
    }

    static Result failFromOneOn(Arguments... arguments) {
        return ++made >= failing ? fail(error) : host(arguments...);
    }
    static Result failOne(Arguments... arguments) {
        return ++made == failing ? fail(error) : host(arguments...);
    }
    static Result interruptEverySecond(Arguments... arguments) {
        return ++made % 2 == 1 ? fail(EINTR) : host(arguments...);
    }
    static Result count(Arguments... arguments) {
        ++made;
        return host(arguments...);
    }
};

template <auto Entry, typename Function>
void replaceCall(ScopedSystemCalls& calls, Function function) {
    ReplacedCall<Entry>::made = 0;
    calls.operator->()->*Entry = function;
}

/// Fails the call of this number, counted from 1, and all after it.
template <auto Entry>
void failCall(ScopedSystemCalls& calls, int number, int error) {
    ReplacedCall<Entry>::failing = number;
    ReplacedCall<Entry>::error = error;
    replaceCall<Entry>(calls, &ReplacedCall<Entry>::failFromOneOn);
}

/// Fails this one alone.
template <auto Entry>
void failOneCall(ScopedSystemCalls& calls, int number, int error) {
    ReplacedCall<Entry>::failing = number;
    ReplacedCall<Entry>::error = error;
    replaceCall<Entry>(calls, &ReplacedCall<Entry>::failOne);
}

template <auto Entry>
void countCall(ScopedSystemCalls& calls) {
    replaceCall<Entry>(calls, &ReplacedCall<Entry>::count);
}

template <auto Entry>
int callsMade() {
    return ReplacedCall<Entry>::made;
}

/// Has a signal interrupt each first, third, fifth ... call of each of these entries.
template <auto... Entries>
void interruptCalls(ScopedSystemCalls& calls) {
    (replaceCall<Entries>(calls, &ReplacedCall<Entries>::interruptEverySecond), ...);
}

/// Has listings tell no kinds, as some file systems do.
inline void hideKinds(ScopedSystemCalls& calls) {
    calls->getdents64 = [](int folder, void* records, size_t size) {
        const ssize_t filled = fl::filesystem::posix::kHostCalls.getdents64(folder, records, size);
        char* const begin = static_cast<char*>(records);
        for (ssize_t at = 0; at < filled;) {
            begin[at + static_cast<ssize_t>(offsetof(dirent64, d_type))] = DT_UNKNOWN;
            unsigned short length = 0;
            std::memcpy(&length, begin + at + offsetof(dirent64, d_reclen), sizeof length);
            at += length;
        }
        return filled;
    };
}

}  // namespace test
