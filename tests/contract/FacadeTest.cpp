// How the public operations of FileSystemOps call the back end and report its failures, in both styles.

#include <pkgcore/core/Exception.hpp>

#include "tests/contract/FacadeOperations.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

using boost::system::error_code;
using contract::FacadeOperation;
using contract::RecordingOps;
namespace errc = boost::system::errc;

namespace {

// Boost's base class has no virtual destructor, and needs none: categories are never deleted through it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Counts nothing as a failure, whatever the value.
class LenientCategory final : public boost::system::error_category {
public:
    const char* name() const noexcept override { return "lenient"; }
    std::string message(int) const override { return "all is well"; }
    bool failed(int) const noexcept override { return false; }
};

/// Counts every value as a failure, 0 too.
class StrictCategory final : public boost::system::error_category {
public:
    const char* name() const noexcept override { return "strict"; }
    std::string message(int) const override { return "nothing is well"; }
    bool failed(int) const noexcept override { return true; }
};

#pragma GCC diagnostic pop

const LenientCategory kLenient;
const StrictCategory kStrict;

const error_code kFailure = errc::make_error_code(errc::io_error);

void expectCleared(const error_code& ec) {
    EXPECT_EQ(ec.value(), 0);
    EXPECT_FALSE(ec.failed());
    EXPECT_EQ(ec.category(), boost::system::system_category());
}

struct Thrown {
    std::string text;
    error_code code;
};

Thrown thrownBy(const FacadeOperation& operation, RecordingOps& ops) {
    try {
        operation.throwing(ops);
    } catch (const opc::Exception& failure) {
        return {failure.what(), failure.code()};
    }
    ADD_FAILURE() << operation.name << " threw nothing";
    return {};
}

/// Each operation with a back end of its own.
template <typename Check>
void forEach(const std::vector<FacadeOperation>& operations, Check check) {
    for (const FacadeOperation& operation : operations) {
        SCOPED_TRACE(operation.name);
        RecordingOps ops;
        check(operation, ops);
    }
}

template <typename Check>
void inTheThrowingStyle(Check check) {
    forEach(contract::facadeOperations(), check);
}

template <typename Check>
void inTheStyleWithACode(Check check) {
    forEach(contract::facadeOperationsWithBothStyles(), check);
}

TEST(FacadeTable, HoldsEveryOperation) {
    EXPECT_EQ(contract::facadeOperations().size(), 25u);
    EXPECT_EQ(contract::facadeOperationsWithBothStyles().size(), 19u);
}

TEST(Facade, PassesItsArgumentsToOneCallOfTheBackEnd) {
    inTheThrowingStyle([](const FacadeOperation& operation, RecordingOps& ops) {
        EXPECT_EQ(operation.throwing(ops), operation.result);
        EXPECT_EQ(ops.calls, std::vector<std::string>{operation.backEndCall});
    });
}

TEST(Facade, GivesTheBackEndAnEmptyMessageAndAClearedCode) {
    inTheThrowingStyle([](const FacadeOperation& operation, RecordingOps& ops) {
        operation.throwing(ops);
        EXPECT_EQ(ops.messagesGiven, std::vector<std::string>{""});
        expectCleared(ops.codesGiven.at(0));
    });
}

TEST(Facade, ThrowsItsPrefixAndTheMessage) {
    inTheThrowingStyle([](const FacadeOperation& operation, RecordingOps& ops) {
        ops.failWith("the disk is tired: a/b", kFailure);
        EXPECT_EQ(thrownBy(operation, ops).text, operation.name + " failed: the disk is tired: a/b");
    });
}

TEST(Facade, ThrowsThePrefixAloneWhereTheBackEndGivesNoMessage) {
    inTheThrowingStyle([](const FacadeOperation& operation, RecordingOps& ops) {
        ops.failWith("", kFailure);
        EXPECT_EQ(thrownBy(operation, ops).text, operation.name + " failed: ");
    });
}

TEST(Facade, ThrowsTheCodeOfTheBackEnd) {
    inTheThrowingStyle([](const FacadeOperation& operation, RecordingOps& ops) {
        ops.failWith("text", error_code(4711, boost::system::system_category()));
        const error_code code = thrownBy(operation, ops).code;
        EXPECT_EQ(code.value(), 4711);
        EXPECT_EQ(code.category(), boost::system::system_category());
        EXPECT_TRUE(code.failed());
    });
}

TEST(Facade, AsksTheFlagOfTheCodeAndNotItsValue) {
    inTheThrowingStyle([](const FacadeOperation& operation, RecordingOps& ops) {
        ops.failWith("text", error_code(5, kLenient));
        EXPECT_EQ(operation.throwing(ops), operation.result);
        ops.failWith("text", error_code(0, kStrict));
        EXPECT_EQ(thrownBy(operation, ops).code.category(), kStrict);
    });
}

TEST(Facade, DropsAMessageWithoutAFailingCode) {
    inTheThrowingStyle([](const FacadeOperation& operation, RecordingOps& ops) {
        ops.message = "only a remark";
        EXPECT_EQ(operation.throwing(ops), operation.result);
    });
}

TEST(Facade, LetsAnExceptionOfTheBackEndPassAsItIs) {
    inTheThrowingStyle([](const FacadeOperation& operation, RecordingOps& ops) {
        ops.failWith("text", kFailure);
        ops.escaping = std::make_exception_ptr(std::out_of_range("escaped"));
        EXPECT_THROW(operation.throwing(ops), std::out_of_range);
        ops.escaping = std::make_exception_ptr(42);
        EXPECT_THROW(operation.throwing(ops), int);
    });
}

TEST(Facade, ThrowsWhatAHandlerForStandardExceptionsCatches) {
    inTheThrowingStyle([](const FacadeOperation& operation, RecordingOps& ops) {
        ops.failWith("text", kFailure);
        try {
            operation.throwing(ops);
            FAIL() << "nothing was thrown";
        } catch (const std::exception& failure) {
            EXPECT_EQ(failure.what(), operation.name + " failed: text");
        }
    });
}

TEST(FacadeWithCode, PassesItsArgumentsToOneCallOfTheBackEnd) {
    inTheStyleWithACode([](const FacadeOperation& operation, RecordingOps& ops) {
        error_code ec;
        EXPECT_EQ(operation.reporting(ops, ec), operation.result);
        EXPECT_EQ(ops.calls, std::vector<std::string>{operation.backEndCall});
    });
}

TEST(FacadeWithCode, GivesTheBackEndAnEmptyMessageAndAClearedCode) {
    inTheStyleWithACode([](const FacadeOperation& operation, RecordingOps& ops) {
        error_code ec(99, kStrict);
        operation.reporting(ops, ec);
        EXPECT_EQ(ops.messagesGiven, std::vector<std::string>{""});
        expectCleared(ops.codesGiven.at(0));
    });
}

TEST(FacadeWithCode, ClearsAFailedCodeAlsoWhenItSucceeds) {
    inTheStyleWithACode([](const FacadeOperation& operation, RecordingOps& ops) {
        error_code ec = kFailure;
        operation.reporting(ops, ec);
        expectCleared(ec);
    });
}

TEST(FacadeWithCode, ReportsTheCodeOfTheBackEndAndItsResultAsItStands) {
    inTheStyleWithACode([](const FacadeOperation& operation, RecordingOps& ops) {
        ops.failWith("text", error_code(4711, kStrict));
        error_code ec;
        EXPECT_EQ(operation.reporting(ops, ec), operation.result);
        EXPECT_EQ(ec, error_code(4711, kStrict));
    });
}

TEST(FacadeWithCode, LeavesAValueThatIsNoFailureInTheCode) {
    inTheStyleWithACode([](const FacadeOperation& operation, RecordingOps& ops) {
        ops.failWith("text", error_code(5, kLenient));
        error_code ec;
        EXPECT_EQ(operation.reporting(ops, ec), operation.result);
        EXPECT_EQ(ec, error_code(5, kLenient));
    });
}

TEST(FacadeWithCode, DropsTheMessage) {
    inTheStyleWithACode([](const FacadeOperation& operation, RecordingOps& ops) {
        ops.message = "only a remark";
        error_code ec;
        EXPECT_EQ(operation.reporting(ops, ec), operation.result);
        expectCleared(ec);
    });
}

constexpr int kTerminated = 42;

[[noreturn]] void reportTermination() { std::_Exit(kTerminated); }

TEST(FacadeWithCode, EndsTheProcessWhereTheBackEndLetsAnExceptionEscape) {
    inTheStyleWithACode([](const FacadeOperation& operation, RecordingOps& ops) {
        ops.escaping = std::make_exception_ptr(std::runtime_error("escaped"));
        error_code ec;
        EXPECT_EXIT(
            {
                std::set_terminate(reportTermination);
                operation.reporting(ops, ec);
            },
            testing::ExitedWithCode(kTerminated), "");
    });
}

TEST(FacadeIsAbsolutePath, GivesTheAnswerOfTheBackEnd) {
    RecordingOps ops;
    EXPECT_TRUE(ops.isAbsolutePath(u"p"));
    ops.flag = false;
    EXPECT_FALSE(ops.isAbsolutePath(u"q"));
    EXPECT_EQ(ops.calls, (std::vector<std::string>{"doIsAbsolutePath('p')", "doIsAbsolutePath('q')"}));
}

TEST(FacadeGetLocalPath, GivesTheAnswerOfTheBackEnd) {
    RecordingOps ops;
    opc::ustring localPath = u"old";
    EXPECT_TRUE(ops.getLocalPath(u"p", localPath));
    EXPECT_EQ(localPath, u"local");
    EXPECT_EQ(ops.calls, std::vector<std::string>{"doGetLocalPath('p')"});
}

TEST(FacadeGetLocalPath, EmptiesThePathWhereThereIsNone) {
    RecordingOps ops;
    ops.flag = false;
    opc::ustring localPath = u"old";
    EXPECT_FALSE(ops.getLocalPath(u"p", localPath));
    EXPECT_EQ(localPath, u"");
}

/// A back end that neither maps paths nor knows which are absolute, and says so by throwing.
class ThrowingOps : public RecordingOps {
protected:
    bool doGetLocalPath(const Text& /*path*/, Text& /*localPath*/) override {
        throw std::out_of_range("local");
    }
    bool doIsAbsolutePath(const Text& /*path*/) override { throw std::out_of_range("absolute"); }
};

TEST(FacadeOfTwoOperationsWithoutErrors, LetsExceptionsPass) {
    ThrowingOps ops;
    opc::ustring localPath;
    EXPECT_THROW(ops.isAbsolutePath(u"p"), std::out_of_range);
    EXPECT_THROW(ops.getLocalPath(u"p", localPath), std::out_of_range);
}

}  // namespace
