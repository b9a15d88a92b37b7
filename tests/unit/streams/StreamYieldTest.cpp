// The thread is yielded between the attempts on a side that is not ready, and at no other time.

#include <pkgcore/streams/StreamHelper.hpp>

#include "tests/unit/streams/ScriptedStreams.hpp"

#include <gtest/gtest.h>

#include <algorithm>

// The tests' log, while one of them runs.
namespace {
std::vector<std::string>* yieldLog = nullptr;
}  // namespace

// This program's own, which takes the place of that of the C library.
extern "C" int sched_yield() {
    if (yieldLog != nullptr) {
        yieldLog->emplace_back("yield");
    }
    return 0;
}

namespace opc {
namespace {

using Log = std::vector<std::string>;

Log runScripts(const std::vector<StreamStep>& reads, const std::vector<StreamStep>& writes) {
    Log log;
    ScriptedInput in(reads, log);
    ScriptedOutput out(writes, log);
    yieldLog = &log;
    StreamHelper::copyStreamToStream(in, out);
    yieldLog = nullptr;
    return log;
}

TEST(StreamCopyYield, ComesBetweenTheReadsOfAnInputThatIsNotReady) {
    EXPECT_EQ(runScripts({{0, false, false}, {0, false, false}, {3, true, false}}, {}),
              (Log{"in.read 16384", "in.isDone", "yield", "in.read 16384", "in.isDone", "yield",
                   "in.read 16384", "in.isDone", "out.write 3", "out.isDone"}));
}

TEST(StreamCopyYield, ComesBetweenTheWritesOfAnOutputThatTakesLess) {
    EXPECT_EQ(runScripts({{9, true, false}}, {{4, false, false}, {0, false, false}, {5, false, false}}),
              (Log{"in.read 16384", "in.isDone", "out.write 9", "out.isDone", "yield", "out.write 5",
                   "out.isDone", "yield", "out.write 5", "out.isDone"}));
}

TEST(StreamCopyYield, IsNotNeededByStreamsThatAreReadyOrDone) {
    const std::vector<StreamStep> reads[] = {
        {{9, false, false}, {9, true, false}}, {{0, true, false}}, {{9, false, false}, {0, true, false}}};
    for (const std::vector<StreamStep>& script : reads) {
        const Log log = runScripts(script, {});
        EXPECT_EQ(std::count(log.begin(), log.end(), "yield"), 0);
    }
    const Log failed = runScripts({{9, false, false}}, {{4, true, false}});
    EXPECT_EQ(std::count(failed.begin(), failed.end(), "yield"), 0);
}

}  // namespace
}  // namespace opc
