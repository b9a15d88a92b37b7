#include "tests/fault/FaultyCalls.hpp"

#include <pkgcore/portable/filesystem/SystemCalls.hpp>

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <type_traits>

namespace test {

namespace {

using fl::filesystem::posix::callsInForce;
using fl::filesystem::posix::kHostCalls;
using fl::filesystem::posix::SystemCalls;

struct State {
    Fault fault;
    long count = 0;
    std::string failed;
    std::string failedName;
};

// The entries of the table are plain functions, so what they share is static.
State state;
long interruptionCount = 0;
std::size_t transferSize = 0;

/// The first name among the arguments of a call, for messages.
std::string nameAmong() { return {}; }
template <typename... Others>
std::string nameAmong(const char* name, Others...) {
    return name;
}
template <typename First, typename... Others>
std::string nameAmong(First, Others... others) {
    return nameAmong(others...);
}

template <typename... Arguments>
bool shallFail(const char* call, Arguments... arguments) {
    ++state.count;
    const Fault& fault = state.fault;
    const bool now = fault.kind == Fault::Kind::once         ? state.count == fault.at
                     : fault.kind == Fault::Kind::fromThenOn ? state.count >= fault.at
                                                             : false;
    if (now && state.failed.empty()) {
        state.failed = call;
        state.failedName = nameAmong(arguments...);
    }
    if (now) {
        errno = fault.error;
    }
    return now;
}

template <typename Result>
Result failure() {
    if constexpr (std::is_pointer_v<Result>) {
        return nullptr;
    } else {
        return -1;
    }
}

template <auto entry>
struct Faulty;

template <typename Result, typename... Arguments, Result (*SystemCalls::*entry)(Arguments...)>
struct Faulty<entry> {
    static inline const char* name = nullptr;

    static Result call(Arguments... arguments) {
        return shallFail(name, arguments...) ? failure<Result>() : (kHostCalls.*entry)(arguments...);
    }
    static Result interruptedTwice(Arguments... arguments) {
        static int times = 0;
        if (++times % 3 != 0) {
            ++interruptionCount;
            errno = EINTR;
            return failure<Result>();
        }
        return (kHostCalls.*entry)(arguments...);
    }
};

template <auto entry>
void makeFaulty(SystemCalls& table, const char* name) {
    Faulty<entry>::name = name;
    table.*entry = &Faulty<entry>::call;
}

int faultyClose(int descriptor) {
    const bool writing = (::fcntl(descriptor, F_GETFL) & O_ACCMODE) != O_RDONLY;
    const bool fails = shallFail(writing ? "close after writing" : "close");
    const int error = errno;
    const int result = kHostCalls.close(descriptor);
    errno = error;
    return fails ? -1 : result;
}

SystemCalls faultyTable() {
    SystemCalls table = kHostCalls;
    table.close = faultyClose;
    table.sync = [] { kHostCalls.sync(); };  // cannot fail
    makeFaulty<&SystemCalls::openat>(table, "openat");
    makeFaulty<&SystemCalls::openat2>(table, "openat2");
    makeFaulty<&SystemCalls::read>(table, "read");
    makeFaulty<&SystemCalls::write>(table, "write");
    makeFaulty<&SystemCalls::lseek>(table, "lseek");
    makeFaulty<&SystemCalls::ftruncate>(table, "ftruncate");
    makeFaulty<&SystemCalls::fallocate>(table, "fallocate");
    makeFaulty<&SystemCalls::ficlone>(table, "ficlone");
    makeFaulty<&SystemCalls::fstat>(table, "fstat");
    makeFaulty<&SystemCalls::fstatat>(table, "fstatat");
    makeFaulty<&SystemCalls::getdents64>(table, "getdents64");
    makeFaulty<&SystemCalls::mkdirat>(table, "mkdirat");
    makeFaulty<&SystemCalls::unlinkat>(table, "unlinkat");
    makeFaulty<&SystemCalls::renameat>(table, "renameat");
    makeFaulty<&SystemCalls::renameat2>(table, "renameat2");
    makeFaulty<&SystemCalls::symlinkat>(table, "symlinkat");
    makeFaulty<&SystemCalls::readlinkat>(table, "readlinkat");
    makeFaulty<&SystemCalls::fchmod>(table, "fchmod");
    makeFaulty<&SystemCalls::fchmodat>(table, "fchmodat");
    makeFaulty<&SystemCalls::utimensat>(table, "utimensat");
    makeFaulty<&SystemCalls::futimens>(table, "futimens");
    makeFaulty<&SystemCalls::syncfs>(table, "syncfs");
    makeFaulty<&SystemCalls::getrandom>(table, "getrandom");
    makeFaulty<&SystemCalls::getcwd>(table, "getcwd");
    makeFaulty<&SystemCalls::fdopen>(table, "fdopen");
    return table;
}

template <auto entry>
void makeInterrupted(SystemCalls& table) {
    table.*entry = &Faulty<entry>::interruptedTwice;
}

// Every call that may block on some file system. Sharing and reserving blocks are left out: they are
// attempts, and giving one up when a signal arrives is as good an answer.
SystemCalls interruptedTable() {
    SystemCalls table = kHostCalls;
    table.close = [](int descriptor) {
        kHostCalls.close(descriptor);
        ++interruptionCount;
        errno = EINTR;
        return -1;
    };
    table.getdents64 = [](int folder, void* records, std::size_t size) {
        // Asked for nothing, the system answers at once what the descriptor is.
        return size == 0 ? kHostCalls.getdents64(folder, records, size)
                         : Faulty<&SystemCalls::getdents64>::interruptedTwice(folder, records, size);
    };
    makeInterrupted<&SystemCalls::openat>(table);
    makeInterrupted<&SystemCalls::openat2>(table);
    makeInterrupted<&SystemCalls::read>(table);
    makeInterrupted<&SystemCalls::write>(table);
    makeInterrupted<&SystemCalls::ftruncate>(table);
    makeInterrupted<&SystemCalls::fchmod>(table);
    makeInterrupted<&SystemCalls::getrandom>(table);
    return table;
}

SystemCalls shortTable() {
    SystemCalls table = kHostCalls;
    table.read = [](int file, void* bytes, std::size_t count) {
        return kHostCalls.read(file, bytes, std::min(count, transferSize));
    };
    table.write = [](int file, const void* bytes, std::size_t count) {
        return kHostCalls.write(file, bytes, std::min(count, transferSize));
    };
    table.getrandom = [](void* bytes, std::size_t count, unsigned flags) {
        return kHostCalls.getrandom(bytes, std::min<std::size_t>(count, 1), flags);
    };
    table.getdents64 = [](int folder, void* records, std::size_t count) {
        constexpr std::size_t longestRecord = 280;
        return kHostCalls.getdents64(folder, records, std::min(count, longestRecord));
    };
    return table;
}

}  // namespace

FaultyCalls::FaultyCalls(const Fault& fault) {
    static const SystemCalls table = faultyTable();
    state = State();
    state.fault = fault;
    callsInForce.store(&table);
}

FaultyCalls::~FaultyCalls() { callsInForce.store(&kHostCalls); }

bool FaultyCalls::wasReached() { return !state.failed.empty(); }

std::string FaultyCalls::failedCall() { return state.failed; }

std::string FaultyCalls::failedCallOnName() {
    return state.failed + '(' + state.failedName.substr(state.failedName.rfind('/') + 1) + ')';
}

std::string FaultyCalls::failedCallInWords() {
    return state.failed + '(' + state.failedName + "), call " + std::to_string(state.fault.at) +
           (state.fault.kind == Fault::Kind::fromThenOn ? " and all later ones" : "") + ", " +
           std::strerror(state.fault.error);
}

InterruptedCalls::InterruptedCalls() {
    static const SystemCalls table = interruptedTable();
    interruptionCount = 0;
    callsInForce.store(&table);
}

InterruptedCalls::~InterruptedCalls() { callsInForce.store(&kHostCalls); }

long InterruptedCalls::interruptions() { return interruptionCount; }

ShortTransfers::ShortTransfers(std::size_t bytes) {
    static const SystemCalls table = shortTable();
    transferSize = bytes;
    callsInForce.store(&table);
}

ShortTransfers::~ShortTransfers() { callsInForce.store(&kHostCalls); }

int callsPastTheFaults() {
    using Entry = void (*)();
    constexpr std::size_t count = sizeof(SystemCalls) / sizeof(Entry);
    std::array<Entry, count> host;
    std::array<Entry, count> inForce;
    std::memcpy(host.data(), &kHostCalls, sizeof(SystemCalls));
    std::memcpy(inForce.data(), callsInForce.load(), sizeof(SystemCalls));
    int past = 0;
    for (std::size_t entry = 0; entry < count; ++entry) {
        past += host[entry] == inForce[entry];
    }
    return past;
}

}  // namespace test
