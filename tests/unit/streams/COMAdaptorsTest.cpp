#include <pkgcore/streams/COMIStreamInAdaptor.hpp>
#include <pkgcore/streams/COMIStreamOutAdaptor.hpp>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace opc {
namespace {

constexpr HRESULT kFailure = static_cast<HRESULT>(0x80004005);

/// Answers each call with what the test sets and writes down what was asked.
class ScriptedStream final : public IStream {
public:
    HRESULT answer = S_OK;
    ULONG moved = 0;
    std::vector<std::string> calls;

    HRESULT QueryInterface(REFIID, void**) override { return note("QueryInterface"); }
    ULONG AddRef() override { return note("AddRef"), 1; }
    ULONG Release() override { return note("Release"), 1; }
    HRESULT Read(void*, ULONG count, ULONG* bytesRead) override {
        presetWasZero = *bytesRead == 0;
        *bytesRead = moved;
        return note("Read " + std::to_string(count));
    }
    HRESULT Write(const void*, ULONG count, ULONG* bytesWritten) override {
        presetWasZero = *bytesWritten == 0;
        *bytesWritten = moved;
        return note("Write " + std::to_string(count));
    }
    HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override {
        return note("Seek " + std::to_string(move.QuadPart) + " " + std::to_string(origin) +
                    (position == nullptr ? " null" : " out"));
    }
    HRESULT SetSize(ULARGE_INTEGER) override { return note("SetSize"); }
    HRESULT CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override {
        return note("CopyTo");
    }
    HRESULT Commit(DWORD flags) override { return note("Commit " + std::to_string(flags)); }
    HRESULT Revert() override { return note("Revert"); }
    HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return note("LockRegion"); }
    HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return note("UnlockRegion"); }
    HRESULT Stat(STATSTG*, DWORD) override { return note("Stat"); }
    HRESULT Clone(IStream**) override { return note("Clone"); }

    bool presetWasZero = false;

private:
    HRESULT note(const std::string& call) {
        calls.push_back(call);
        return answer;
    }
};

using Calls = std::vector<std::string>;

struct Answer {
    HRESULT result;
    bool done;
};

// E_PENDING alone, beside S_OK, asks to come back.
constexpr Answer kAnswers[] = {
    {S_OK, false}, {E_PENDING, false}, {S_FALSE, true}, {kFailure, true}, {2, true}};

std::size_t read(InputStream& in, std::size_t count) {
    std::uint8_t byte = 0;
    return in.read(&byte, count);
}

std::size_t write(OutputStream& out, std::size_t count) {
    const std::uint8_t byte = 0;
    return out.write(&byte, count);
}

TEST(COMIn, StartsOpenAndNotDoneWithoutTouchingTheStream) {
    ScriptedStream stream;
    {
        COMIStreamInAdaptor in(stream);
        EXPECT_FALSE(in.isDone());
    }
    EXPECT_EQ(stream.calls, Calls());
}

TEST(COMIn, ReportsTheBytesWhateverTheResultAndIsDoneByIt) {
    for (const Answer& row : kAnswers) {
        ScriptedStream stream;
        stream.answer = row.result;
        stream.moved = 5;
        COMIStreamInAdaptor in(stream);
        EXPECT_EQ(read(in, 7), 5U) << row.result;
        EXPECT_EQ(in.isDone(), row.done) << row.result;
        EXPECT_TRUE(stream.presetWasZero);
        EXPECT_EQ(stream.calls, Calls{"Read 7"});
    }
}

TEST(COMIn, ComesBackFromDoneWhenTheStreamGoesOn) {
    ScriptedStream stream;
    stream.answer = S_FALSE;
    COMIStreamInAdaptor in(stream);
    read(in, 1);
    EXPECT_TRUE(in.isDone());
    stream.answer = E_PENDING;
    read(in, 1);
    EXPECT_FALSE(in.isDone());
}

TEST(COMIn, AsksForTheLow32BitsOfACount) {
    ScriptedStream stream;
    COMIStreamInAdaptor in(stream);
    read(in, (std::size_t{1} << 32) + 3);
    EXPECT_EQ(stream.calls, Calls{"Read 3"});
}

TEST(COMIn, ClosingMakesItDoneAndReadNothing) {
    ScriptedStream stream;
    stream.moved = 5;
    COMIStreamInAdaptor in(stream);
    in.close();
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ(read(in, 5), 0U);
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ(stream.calls, Calls());
}

TEST(COMIn, ReopeningSeeksToTheBeginning) {
    ScriptedStream stream;
    COMIStreamInAdaptor in(stream);
    in.close();
    in.open();
    EXPECT_FALSE(in.isDone());
    EXPECT_EQ(stream.calls, Calls{"Seek 0 0 null"});
}

TEST(COMIn, StaysClosedWhereSeekingGivesAnythingButSuccess) {
    for (const HRESULT refusal : {S_FALSE, E_PENDING, kFailure}) {
        ScriptedStream stream;
        COMIStreamInAdaptor in(stream);
        in.close();
        stream.answer = refusal;
        in.open();
        EXPECT_TRUE(in.isDone());
        EXPECT_EQ(read(in, 1), 0U);
        EXPECT_EQ(stream.calls, Calls{"Seek 0 0 null"});
    }
}

TEST(COMIn, OpeningAnOpenOneDoesNothing) {
    ScriptedStream stream;
    COMIStreamInAdaptor in(stream);
    in.open();
    EXPECT_EQ(stream.calls, Calls());
}

TEST(COMOut, ReportsTheBytesWhateverTheResultAndIsDoneByIt) {
    for (const Answer& row : kAnswers) {
        ScriptedStream stream;
        stream.answer = row.result;
        stream.moved = 2;
        COMIStreamOutAdaptor out(stream);
        EXPECT_FALSE(out.isDone());
        EXPECT_EQ(write(out, 7), 2U) << row.result;
        EXPECT_EQ(out.isDone(), row.done) << row.result;
        EXPECT_TRUE(stream.presetWasZero);
        EXPECT_EQ(stream.calls, Calls{"Write 7"});
    }
}

TEST(COMOut, WritesTheLow32BitsOfACount) {
    ScriptedStream stream;
    COMIStreamOutAdaptor out(stream);
    write(out, (std::size_t{1} << 32) + 3);
    EXPECT_EQ(stream.calls, Calls{"Write 3"});
}

TEST(COMOut, FlushCommitsAndIgnoresTheResult) {
    ScriptedStream stream;
    stream.answer = kFailure;
    COMIStreamOutAdaptor out(stream);
    out.flush();
    EXPECT_FALSE(out.isDone());
    EXPECT_EQ(stream.calls, Calls{"Commit 0"});
}

TEST(COMOut, NeitherCloseNorTheEndTouchesTheStream) {
    ScriptedStream stream;
    {
        COMIStreamOutAdaptor out(stream);
        out.close();
        EXPECT_FALSE(out.isDone());
    }
    EXPECT_EQ(stream.calls, Calls());
}

}  // namespace
}  // namespace opc
