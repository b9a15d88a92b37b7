// The file of locks beside a store, where the system does not lock as it should.

#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <deque>

namespace {

/// What locking a file, and asking for a lock, come to in this program if it is not 0, call for call.
std::deque<int> lockErrors;
std::deque<int> askErrors;

int takeFirst(std::deque<int>& errors) {
    if (errors.empty()) return 0;
    const int error = errors.front();
    errors.pop_front();
    return error;
}

int errorOfLocking(int command) {
    return command == F_OFD_SETLK ? takeFirst(lockErrors) : command == F_OFD_GETLK ? takeFirst(askErrors) : 0;
}

}  // namespace

// The library takes the program's function instead of the system's.
extern "C" __attribute__((visibility("default"))) int fcntl(int file, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (const int error = errorOfLocking(command); error != 0) {
        errno = error;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_fcntl, file, command, argument));
}

namespace {

using namespace foundation::storage;
using namespace foundation::storage::conformance;
using foundation::storage::provider::Path;
using test::StoreFile;

const std::string kLarge = test::someBytes(300'000);

/// With a file that is read in pieces, and so holds a lock meanwhile.
class SqliteLocks : public testing::Test {
protected:
    SqliteLocks() { test::writeFile(*file_.open(), u"large", kLarge); }
    ~SqliteLocks() override {
        EXPECT_TRUE(lockErrors.empty() && askErrors.empty()) << "the call was not made";
        lockErrors.clear();
        askErrors.clear();
    }

    void expectReadable(provider::Provider& store) {
        EXPECT_TRUE(test::readRest(*store.openReader(Path(u"large"))) == kLarge);
    }

    const StoreFile file_;
};

TEST_F(SqliteLocks, AFileSystemThatHasNoneIsAFailure) {
    const auto store = file_.open();
    lockErrors = {ENOLCK};
    PKGCORE_EXPECT_FAILURE(IOError, store->openReader(Path(u"large")));
    expectReadable(*store);
}

TEST_F(SqliteLocks, ALockThatIsNotToBeHadIsAFailureAndIsNotCounted) {
    const auto store = file_.open();
    lockErrors = {0, ENOLCK};
    PKGCORE_EXPECT_FAILURE(IOError, store->openReader(Path(u"large")));
    expectReadable(*store);
}

TEST_F(SqliteLocks, WithoutThemReadingAloneGoesOn) {
    StoreFile::Options options = StoreFile::fast();
    options.isReadOnly = true;
    const auto store = file_.open(options);
    lockErrors = {ENOLCK};
    expectReadable(*store);
}

TEST_F(SqliteLocks, WhatNobodyCanAskForIsNotErased) {
    const auto reading = file_.open();
    const auto reader = reading->openReader(Path(u"large"));
    test::writeFile(*file_.open(), u"large", "new");
    askErrors = {EIO};
    EXPECT_NO_THROW(file_.open());
    EXPECT_TRUE(test::readRest(*reader) == kLarge);
}

/// Holds all of a file as somebody does who is about to remove it.
class HeldWhole {
public:
    explicit HeldWhole(const std::string& path)
        : file_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        struct flock lock = {};
        lock.l_type = F_WRLCK;
        EXPECT_EQ(::fcntl(file_, F_OFD_SETLK, &lock), 0);
    }
    ~HeldWhole() { ::close(file_); }
    HeldWhole(const HeldWhole&) = delete;
    HeldWhole& operator=(const HeldWhole&) = delete;

private:
    int file_;
};

TEST_F(SqliteLocks, AFileThatIsBeingRemovedForTooLongIsBusy) {
    StoreFile::Options options = StoreFile::fast();
    options.busyTime = std::chrono::milliseconds(5);
    const auto store = file_.open(options);
    {
        const HeldWhole held(file_.native() + "-pins");
        PKGCORE_EXPECT_FAILURE(TemporarilyBusy, store->openReader(Path(u"large")));
    }
    expectReadable(*store);
}

}  // namespace
