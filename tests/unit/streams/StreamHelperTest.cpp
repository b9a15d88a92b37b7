#include <pkgcore/streams/StreamHelper.hpp>

#include <pkgcore/streams/ByteArrayInAdaptor.hpp>
#include <pkgcore/streams/ByteArrayOutAdaptor.hpp>

#include <gtest/gtest.h>

#include "tests/reference/ReferenceCopyLoop.hpp"
#include "tests/unit/streams/ScriptedStreams.hpp"

#include <random>
#include <sstream>

namespace opc {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Log = std::vector<std::string>;

constexpr std::size_t kChunk = 16384;
constexpr std::size_t kAll = kChunk;

Bytes someBytes(std::size_t size) {
    Bytes bytes(size);
    std::uint32_t value = 1;
    for (std::uint8_t& byte : bytes) {
        value = value * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(value >> 24);
    }
    return bytes;
}

/// Everything that can be seen of one copy.
struct CopyRun {
    Log log;
    Bytes taken;
    std::string outcome;

    bool operator==(const CopyRun& other) const {
        return log == other.log && taken == other.taken && outcome == other.outcome;
    }
};

template <typename Copy>
CopyRun runScripts(const std::vector<StreamStep>& reads, const std::vector<StreamStep>& writes, Copy copy) {
    CopyRun run;
    ScriptedInput in(reads, run.log);
    ScriptedOutput out(writes, run.log);
    try {
        run.outcome = copy(in, out) ? "true" : "false";
    } catch (const ScriptEnd& failure) {
        run.outcome = failure.what();
    }
    run.taken = out.taken;
    return run;
}

CopyRun runOurs(const std::vector<StreamStep>& reads, const std::vector<StreamStep>& writes) {
    return runScripts(reads, writes,
                      [](auto& in, auto& out) { return StreamHelper::copyStreamToStream(in, out); });
}

CopyRun runReference(const std::vector<StreamStep>& reads, const std::vector<StreamStep>& writes) {
    return runScripts(reads, writes,
                      [](auto& in, auto& out) { return reference::copyStreamToStream(in, out, [] {}); });
}

TEST(StreamCopy, OfAnEmptyInputWritesNothing) {
    const Bytes empty;
    Bytes target;
    ByteArrayInAdaptor in(empty);
    ByteArrayOutAdaptor out(target);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(in, out));
    EXPECT_EQ(target, Bytes());
}

TEST(StreamCopy, OfAClosedInputIsTrueAndWritesNothing) {
    const Bytes bytes = someBytes(10);
    Bytes target;
    ByteArrayInAdaptor in(bytes);
    in.close();
    ByteArrayOutAdaptor out(target);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(in, out));
    EXPECT_EQ(target, Bytes());
}

TEST(StreamCopy, ReadsFullChunksAndOpensFlushesAndClosesNothing) {
    const CopyRun run = runOurs({{kAll, false, false}, {kAll, false, false}, {7232, true, false}}, {});
    EXPECT_EQ(run.outcome, "true");
    EXPECT_EQ(run.taken.size(), 40000U);
    EXPECT_EQ(run.log, (Log{"in.read 16384", "in.isDone", "out.write 16384", "out.isDone", "in.read 16384",
                            "in.isDone", "out.write 16384", "out.isDone", "in.read 16384", "in.isDone",
                            "out.write 7232", "out.isDone"}));
}

TEST(StreamCopy, WritesAChunkInAsManyPiecesAsTheOutputWants) {
    const Bytes bytes = someBytes(40000);
    Log log;
    ByteArrayInAdaptor in(bytes);
    ScriptedOutput out(std::vector<StreamStep>(1000, StreamStep{1000, false, false}), log);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(in, out));
    EXPECT_EQ(out.taken, bytes);
}

TEST(StreamCopy, IsFalseWhenTheOutputIsDoneInTheMiddleOfAChunk) {
    EXPECT_EQ(runOurs({{200, false, false}}, {{100, true, false}}).outcome, "false");
}

TEST(StreamCopy, IsTrueWhenTheOutputIsDoneBehindAWholeChunkWhateverIsLeft) {
    const CopyRun run = runOurs({{200, false, false}, {200, false, false}}, {{200, true, false}});
    EXPECT_EQ(run.outcome, "true");
    EXPECT_EQ(run.taken.size(), 200U);
}

TEST(StreamCopy, WritesWhatTheLastReadGave) {
    const CopyRun run = runOurs({{5, true, false}}, {});
    EXPECT_EQ(run.taken, (Bytes{0, 1, 2, 3, 4}));
}

TEST(StreamCopy, AsksAnInputThatIsNotReadyAgain) {
    const CopyRun run = runOurs({{0, false, false}, {0, false, false}, {3, true, false}}, {});
    EXPECT_EQ(run.taken.size(), 3U);
}

TEST(StreamCopy, LetsExceptionsOfEitherSidePass) {
    EXPECT_EQ(runOurs({{0, false, true}}, {}).outcome, "a scripted failure");
    EXPECT_EQ(runOurs({{9, false, false}}, {{0, false, true}}).outcome, "a scripted failure");
}

TEST(StreamCopy, BehavesAsTheLiteralLoopOnRandomScripts) {
    std::mt19937 random(20240229);
    const auto pick = [&random](unsigned below) { return random() % below; };
    const auto step = [&] {
        const std::size_t amounts[] = {0, 0, 1, 7, 100, kAll};
        return StreamStep{amounts[pick(6)], pick(12) == 0, pick(40) == 0};
    };
    const auto script = [&] {
        std::vector<StreamStep> steps(pick(8));
        std::generate(steps.begin(), steps.end(), step);
        return steps;
    };
    for (int round = 0; round < 100'000; ++round) {
        const std::vector<StreamStep> reads = script();
        const std::vector<StreamStep> writes = script();
        ASSERT_TRUE(runOurs(reads, writes) == runReference(reads, writes)) << "round " << round;
    }
}

TEST(StreamCopy, OfStandardStreamsBeginsWhereTheyStand) {
    std::istringstream in("skipped, kept");
    in.ignore(9);
    std::ostringstream out;
    out << "before ";
    EXPECT_TRUE(StreamHelper::copyStreamToStream(in, out));
    EXPECT_EQ(out.str(), "before kept");
}

TEST(StreamCopy, OfAnEndedStandardStreamNeitherRewindsNorClears) {
    std::istringstream in("text");
    in.ignore(100);
    std::ostringstream out;
    EXPECT_TRUE(StreamHelper::copyStreamToStream(in, out));
    EXPECT_EQ(out.str(), "");
    EXPECT_TRUE(in.eof());
}

TEST(StreamCopy, GoesBetweenStandardStreamsAndOurs) {
    const Bytes bytes{'a', 'b', 'c'};
    ByteArrayInAdaptor in(bytes);
    std::stringstream middle;
    EXPECT_TRUE(StreamHelper::copyStreamToStream(in, middle));
    Bytes target;
    ByteArrayOutAdaptor out(target);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(middle, out));
    EXPECT_EQ(target, bytes);
}

/// Counts what would be a flush.
struct SyncCounter : std::stringbuf {
    using std::stringbuf::stringbuf;
    int syncs = 0;
    int sync() override { return ++syncs, 0; }
};

TEST(StreamCopy, OfStandardStreamsFlushesNeither) {
    SyncCounter from("abc");
    SyncCounter to;
    std::istream in(&from);
    std::ostream out(&to);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(in, out));
    EXPECT_EQ(to.str(), "abc");
    EXPECT_EQ(from.syncs + to.syncs, 0);
}

TEST(StreamCopy, OfAFailedStandardStreamIsTrueAndWritesNothing) {
    std::istringstream in("text");
    in.setstate(std::ios::failbit);
    Bytes target;
    ByteArrayOutAdaptor out(target);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(in, out));
    EXPECT_EQ(target, Bytes());
    EXPECT_EQ(in.rdstate(), std::ios::failbit);
}

TEST(StreamCopy, IsFalseForAStandardStreamThatFailsInTheMiddle) {
    struct FullBuffer : std::stringbuf {
        std::streamsize xsputn(const char* in, std::streamsize count) override {
            return std::stringbuf::xsputn(in, std::min<std::streamsize>(count, 10));
        }
    } buffer;
    std::ostream out(&buffer);
    std::istringstream in(std::string(100, 'x'));
    EXPECT_FALSE(StreamHelper::copyStreamToStream(in, out));
}

}  // namespace
}  // namespace opc
