#include "tests/fault/AllocationCounter.hpp"
#include "tests/fault/Operations.hpp"
#include "tests/support/DescriptorCount.hpp"

#include <gtest/gtest.h>

#include <exception>

namespace test {

namespace {

/// Nothing here may allocate while memory is scarce, so a run is remembered as little as this.
enum class Ending { succeeded, threw, reported };

Ending tryRun(const Operation& operation, const TempTree& tree, std::string& result) {
    try {
        result = operation.run(tree);
        return Ending::succeeded;
    } catch (const ReportedFailure&) {
        return Ending::reported;
    } catch (const std::exception&) {
        return Ending::threw;  // std::bad_alloc, or what a layer above has made of it
    }
}

class AllocationFaultTest : public ::testing::TestWithParam<Operation> {
protected:
    struct Reference {
        explicit Reference(const Operation& operation) {
            const TempTree tree{fastFolder()};
            operation.prepare(tree);
            result = operation.run(tree);
            done = snapshot(tree.path());
        }
        std::string result;
        TreeSnapshot done;
    };

    /// False once the operation is done before memory runs out.
    bool runWith(long at, bool persistent) const {
        const TempTree tree{fastFolder()};
        operation.prepare(tree);
        const TreeSnapshot before = snapshot(tree.path());
        const auto descriptors = openDescriptors();
        std::string result;
        Ending ending;
        {
            const ScarceMemory scarce(at, persistent);
            ending = tryRun(operation, tree, result);
        }
        EXPECT_EQ(descriptors, openDescriptors());
        const TreeSnapshot after = snapshot(tree.path());
        if (ending == Ending::succeeded) {
            EXPECT_EQ(reference.result, result);
            EXPECT_EQ(reference.done, after);
        } else {
            EXPECT_TRUE(ScarceMemory::wasReached());
            EXPECT_EQ("", operation.lost({before, after, reference.done, !persistent}));
            runAgain(tree);
        }
        return ScarceMemory::wasReached();
    }

    void runAgain(const TempTree& tree) const {
        operation.recover(tree);
        std::string result;
        EXPECT_EQ(Ending::succeeded, tryRun(operation, tree, result));
        EXPECT_EQ(reference.result, result);
    }

    void failEachAllocation(bool persistent) const {
        long at = 1;
        for (bool reached = true; reached; ++at) {
            reached = runWith(at, persistent);
            if (HasFailure()) {
                FAIL() << "after allocation " << at << " had failed";
            }
        }
        EXPECT_GT(at, 2) << "no allocation was counted";
        RecordProperty("points", static_cast<int>(at - 2));  // the last one was not reached any more
    }

    const Operation& operation = GetParam();
    const Reference reference{operation};
};

TEST_P(AllocationFaultTest, NothingIsLostWhenOneFails) { failEachAllocation(false); }

TEST_P(AllocationFaultTest, NothingIsLostWhenMemoryIsUsedUp) { failEachAllocation(true); }

INSTANTIATE_TEST_SUITE_P(Every, AllocationFaultTest, ::testing::ValuesIn(operations()),
                         [](const auto& one) { return one.param.name; });

INSTANTIATE_TEST_SUITE_P(Local, AllocationFaultTest, ::testing::ValuesIn(localOperations()),
                         [](const auto& one) { return one.param.name; });

}  // namespace
}  // namespace test
