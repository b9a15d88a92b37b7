#include <pkgcore/core/Exception.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include "tests/fault/FaultyCalls.hpp"
#include "tests/fault/Operations.hpp"
#include "tests/support/DescriptorCount.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace test {

namespace {

/// How a run ended.
struct Ending {
    enum class Kind { succeeded, threw, reported } kind = Kind::succeeded;
    std::string result;
    int error = 0;          ///< the number that the exception stands for
    std::string exception;  ///< its text
    std::string path;       ///< what it names; of an exception of the public surface, its text
};

Ending endingOf(int error, const fl::filesystem::FsysExceptionBase& failure) {
    const std::u16string path = failure.get_path_name();
    return {Ending::Kind::threw, {}, error, failure.what(), std::string(path.begin(), path.end())};
}

Ending tryRun(const Operation& operation, const TempTree& tree) {
    try {
        return {Ending::Kind::succeeded, operation.run(tree), 0, {}, {}};
    } catch (const ReportedFailure&) {
        return {Ending::Kind::reported, {}, 0, {}, {}};
    } catch (const fl::filesystem::AccessDenied& failure) {
        return endingOf(EACCES, failure);
    } catch (const fl::filesystem::SystemError& failure) {
        return endingOf(failure.get_error_code(), failure);
    } catch (const fl::filesystem::FsysExceptionBase& failure) {
        return endingOf(-1, failure);
    } catch (const opc::Exception& failure) {
        return {Ending::Kind::threw, {}, failure.code().value(), failure.what(), failure.what()};
    }
}

class FaultTest : public ::testing::TestWithParam<Operation> {
protected:
    /// The operation on a tree of its own, as it goes when nothing fails.
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

    void expectDone(const Ending& ending, const TempTree& tree) const {
        EXPECT_EQ(Ending::Kind::succeeded, ending.kind) << ending.exception;
        EXPECT_EQ(reference.result, ending.result);
        EXPECT_EQ(reference.done, snapshot(tree.path()));
    }

    void expectFailedWell(const Ending& ending, const Fault& fault, const TreeSnapshot& before,
                          const TempTree& tree) const {
        const TreeSnapshot after = snapshot(tree.path());
        EXPECT_EQ("", operation.lost({before, after, reference.done, fault.kind == Fault::Kind::once}));
        if (ending.kind == Ending::Kind::threw) {
            EXPECT_EQ(fault.error, ending.error) << ending.exception;
            const bool isAboutNoItem = FaultyCalls::failedCall() == "getrandom";
            EXPECT_NE(isAboutNoItem, ending.path.find(tree.path()) != std::string::npos) << ending.path;
        }
    }

    /// Where descriptors are wanting, walks close some and try again, whatever call was told so.
    bool isHarmless(const Fault& fault) const {
        return fault.error == EMFILE || operation.harmless.count(FaultyCalls::failedCall()) == 1 ||
               operation.harmless.count(FaultyCalls::failedCallOnName()) == 1;
    }

    /// False once the operation is done before the fault is reached.
    bool runWith(const Fault& fault) const {
        const TempTree tree{fastFolder()};
        operation.prepare(tree);
        const TreeSnapshot before = snapshot(tree.path());
        const auto descriptors = openDescriptors();
        Ending ending;
        {
            const FaultyCalls faulty(fault);
            ending = tryRun(operation, tree);
        }
        EXPECT_EQ(descriptors, openDescriptors());
        if (ending.kind == Ending::Kind::succeeded) {
            expectDone(ending, tree);
            EXPECT_TRUE(!FaultyCalls::wasReached() || isHarmless(fault)) << "nobody was told of the failure";
            return FaultyCalls::wasReached();
        }
        EXPECT_TRUE(FaultyCalls::wasReached()) << ending.exception;
        expectFailedWell(ending, fault, before, tree);
        runAgain(tree);
        return true;
    }

    /// What failed once works afterwards.
    void runAgain(const TempTree& tree) const {
        operation.recover(tree);
        const Ending ending = tryRun(operation, tree);
        EXPECT_EQ(Ending::Kind::succeeded, ending.kind) << ending.exception;
        EXPECT_EQ(reference.result, ending.result);
    }

    void failEachCall(Fault::Kind kind) const {
        long points = 0;
        for (const int error : operation.errors) {
            Fault fault{kind, 1, error};
            for (bool reached = true; reached; ++fault.at) {
                reached = runWith(fault);
                if (HasFailure()) {
                    FAIL() << "after " << FaultyCalls::failedCallInWords();
                }
            }
            EXPECT_GT(fault.at, 2) << "no call of the system was counted";
            points += fault.at - 2;  // the last one was not reached any more
        }
        RecordProperty("points", static_cast<int>(points));
    }

    const Operation& operation = GetParam();
    const Reference reference{operation};
};

TEST_P(FaultTest, NothingIsLostWhenOneCallFails) { failEachCall(Fault::Kind::once); }

TEST_P(FaultTest, NothingIsLostWhenAllCallsFailFromOneOn) { failEachCall(Fault::Kind::fromThenOn); }

TEST_P(FaultTest, SignalsAreNoFailure) {
    const TempTree tree{fastFolder()};
    operation.prepare(tree);
    const auto descriptors = openDescriptors();
    Ending ending;
    {
        const InterruptedCalls interrupted;
        ending = tryRun(operation, tree);
    }
    expectDone(ending, tree);
    EXPECT_EQ(descriptors, openDescriptors());
}

TEST_P(FaultTest, ShortTransfersAreNoFailure) {
    for (const std::size_t bytes : {std::size_t{997}, std::size_t{65'000}}) {
        const TempTree tree{fastFolder()};
        operation.prepare(tree);
        Ending ending;
        {
            const ShortTransfers shortened(bytes);
            ending = tryRun(operation, tree);
        }
        expectDone(ending, tree);
    }
}

INSTANTIATE_TEST_SUITE_P(Every, FaultTest, ::testing::ValuesIn(operations()),
                         [](const auto& one) { return one.param.name; });

INSTANTIATE_TEST_SUITE_P(Local, FaultTest, ::testing::ValuesIn(localOperations()),
                         [](const auto& one) { return one.param.name; });

INSTANTIATE_TEST_SUITE_P(Storage, FaultTest, ::testing::ValuesIn(storageOperations()),
                         [](const auto& one) { return one.param.name; });

TEST(FaultyCallsTest, LeaveOutNoEntryOfTheTable) {
    const FaultyCalls faulty(Fault{});
    EXPECT_EQ(0, callsPastTheFaults());
}

}  // namespace
}  // namespace test
