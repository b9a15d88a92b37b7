// Streams whose other end is served by another thread, and many copies at once.

#include <pkgcore/streams/ByteArrayInAdaptor.hpp>
#include <pkgcore/streams/ByteArrayOutAdaptor.hpp>
#include <pkgcore/streams/COMIStreamInAdaptor.hpp>
#include <pkgcore/streams/COMIStreamOutAdaptor.hpp>
#include <pkgcore/streams/StreamHelper.hpp>

#include "tests/support/ManyThreads.hpp"
#include "tests/unit/streams/COMStreamKinds.hpp"

#include <gtest/gtest.h>

#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <sstream>
#include <thread>

namespace opc {
namespace {

using test::Bytes;

Bytes someBytes(std::size_t count) {
    const std::string bytes = test::someBytes(count);
    return Bytes(bytes.begin(), bytes.end());
}

/// A pipe of one byte between two threads: ready for one side, never for the other.
class OneByte : public InputStream {
public:
    explicit OneByte(int total) : left_(total) {}
    ~OneByte() override = default;

    void open() override {}
    std::size_t read(std::uint8_t* buffer, std::size_t /*count*/) override {
        if (!full_.load()) {
            return 0;
        }
        *buffer = 'x';
        --left_;
        full_ = false;
        return 1;
    }
    bool isDone() const override { return left_ == 0; }
    void close() override {}

    void fill() {
        while (full_.load()) {
            std::this_thread::yield();
        }
        full_ = true;
    }

private:
    std::atomic<bool> full_{false};
    int left_;
};

/// Has this thread, and those that it starts, run on one processor, so that only one of them runs at a time.
class OneProcessor {
public:
    OneProcessor() {
        ::sched_getaffinity(0, sizeof before_, &before_);
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(static_cast<std::size_t>(::sched_getcpu()), &one);
        EXPECT_EQ(0, ::sched_setaffinity(0, sizeof one, &one));
    }
    ~OneProcessor() { ::sched_setaffinity(0, sizeof before_, &before_); }
    OneProcessor(const OneProcessor&) = delete;
    OneProcessor& operator=(const OneProcessor&) = delete;

private:
    cpu_set_t before_;
};

TEST(StreamCopy, MakesProgressBesideItsProducerOnOneProcessor) {
    constexpr int kBytes = 2000;
    const OneProcessor oneProcessor;
    OneByte pipe(kBytes);
    std::thread producer([&pipe] {
        for (int i = 0; i < kBytes; ++i) {
            pipe.fill();
        }
    });
    Bytes target;
    ByteArrayOutAdaptor out(target);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(pipe, out));
    producer.join();
    EXPECT_EQ(target, Bytes(kBytes, 'x'));
}

/// Both sides of the pipe answer E_PENDING again and again: it holds less than is sent, and nothing at first.
TEST(StreamCopy, GoesThroughAPipeOfCOMStreams) {
    int ends[2];
    ASSERT_EQ(0, ::pipe2(ends, O_NONBLOCK | O_CLOEXEC));
    const test::StreamReference from = test::openDescriptorStream(ends[0]);
    test::StreamReference to = test::openDescriptorStream(ends[1]);
    const Bytes sent = someBytes(1'000'000);
    std::atomic<bool> sentAll{false};
    std::thread sender([&] {
        ByteArrayInAdaptor in(sent);
        COMIStreamOutAdaptor out(*to);
        sentAll = StreamHelper::copyStreamToStream(in, out);
        to.reset();
    });
    Bytes received;
    COMIStreamInAdaptor in(*from);
    ByteArrayOutAdaptor out(received);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(in, out));
    sender.join();
    EXPECT_TRUE(sentAll);
    EXPECT_TRUE(received == sent);
}

TEST(StreamCopy, RunsInManyThreadsAtOnceOverOneSource) {
    const Bytes source = someBytes(300'000);
    std::atomic<int> wrong{0};
    test::inManyThreads([&] {
        ByteArrayInAdaptor in(source);
        std::stringstream middle;
        Bytes target;
        ByteArrayOutAdaptor out(target);
        const bool copied =
            StreamHelper::copyStreamToStream(in, middle) && StreamHelper::copyStreamToStream(middle, out);
        wrong += !copied || target != source;
    });
    EXPECT_EQ(0, wrong);
}

}  // namespace
}  // namespace opc
