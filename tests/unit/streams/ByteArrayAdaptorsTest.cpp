#include <pkgcore/streams/ByteArrayInAdaptor.hpp>
#include <pkgcore/streams/ByteArrayOutAdaptor.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace opc {
namespace {

using Bytes = std::vector<std::uint8_t>;

static_assert(!std::is_copy_constructible_v<ByteArrayInAdaptor> &&
              !std::is_copy_assignable_v<ByteArrayInAdaptor>);
static_assert(!std::is_copy_constructible_v<ByteArrayOutAdaptor> &&
              !std::is_copy_assignable_v<ByteArrayOutAdaptor>);

/// What one read of up to `count` bytes gives.
Bytes readUpTo(InputStream& stream, std::size_t count) {
    Bytes bytes(count, 0xEE);
    bytes.resize(stream.read(bytes.data(), count));
    return bytes;
}

TEST(ByteArrayIn, IsDoneAtOnceOverAnEmptyVector) {
    const Bytes empty;
    ByteArrayInAdaptor in(empty);
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ(readUpTo(in, 4), Bytes());
}

TEST(ByteArrayIn, GivesTheBytesInPiecesOfTheCountAskedFor) {
    const Bytes bytes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    ByteArrayInAdaptor in(bytes);
    EXPECT_EQ(readUpTo(in, 4), (Bytes{0, 1, 2, 3}));
    EXPECT_EQ(readUpTo(in, 4), (Bytes{4, 5, 6, 7}));
    EXPECT_FALSE(in.isDone());
    EXPECT_EQ(readUpTo(in, 4), (Bytes{8, 9}));
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ(readUpTo(in, 4), Bytes());
}

TEST(ByteArrayIn, ReadsNothingAndIsDoneWhileClosed) {
    const Bytes bytes{1, 2};
    ByteArrayInAdaptor in(bytes);
    in.close();
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ(readUpTo(in, 2), Bytes());
}

TEST(ByteArrayIn, RewindsByClosingAndOpening) {
    const Bytes bytes{1, 2, 3};
    ByteArrayInAdaptor in(bytes);
    readUpTo(in, 2);
    in.close();
    in.open();
    EXPECT_FALSE(in.isDone());
    EXPECT_EQ(readUpTo(in, 9), bytes);
}

TEST(ByteArrayIn, KeepsItsPlaceWhenOpenedWhileOpen) {
    const Bytes bytes{1, 2, 3};
    ByteArrayInAdaptor in(bytes);
    readUpTo(in, 2);
    in.open();
    EXPECT_EQ(readUpTo(in, 9), Bytes{3});
}

TEST(ByteArrayIn, SeesWhatTheVectorHoldsAtEachRead) {
    Bytes bytes{1, 2};
    ByteArrayInAdaptor in(bytes);
    readUpTo(in, 2);
    bytes.push_back(3);
    EXPECT_FALSE(in.isDone());
    EXPECT_EQ(readUpTo(in, 9), Bytes{3});
    bytes.resize(1);
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ(readUpTo(in, 9), Bytes());
}

TEST(ByteArrayIn, ReadsNothingForACountOfZero) {
    const Bytes bytes{1};
    ByteArrayInAdaptor in(bytes);
    EXPECT_EQ(in.read(nullptr, 0), 0U);
    EXPECT_FALSE(in.isDone());
}

TEST(ByteArrayOut, AppendsBehindWhatTheVectorHeld) {
    Bytes bytes{1, 2, 3};
    ByteArrayOutAdaptor out(bytes);
    const Bytes first{4, 5};
    const Bytes second{6, 7};
    EXPECT_EQ(out.write(first.data(), 2), 2U);
    EXPECT_EQ(out.write(second.data(), 2), 2U);
    EXPECT_EQ(bytes, (Bytes{1, 2, 3, 4, 5, 6, 7}));
}

TEST(ByteArrayOut, CutsWhatSomebodyElsePutBehindIt) {
    Bytes bytes{1};
    ByteArrayOutAdaptor out(bytes);
    bytes.insert(bytes.end(), 10, 0xFF);
    const std::uint8_t two = 2;
    EXPECT_EQ(out.write(&two, 1), 1U);
    EXPECT_EQ(bytes, (Bytes{1, 2}));
    bytes.push_back(0xFF);
    EXPECT_EQ(out.write(nullptr, 0), 0U);
    EXPECT_EQ(bytes, (Bytes{1, 2}));
}

TEST(ByteArrayOut, FillsAGapWithZeroesWhereTheVectorWasShortened) {
    Bytes bytes{1, 2};
    ByteArrayOutAdaptor out(bytes);
    bytes.clear();
    const std::uint8_t three = 3;
    out.write(&three, 1);
    EXPECT_EQ(bytes, (Bytes{0, 0, 3}));
}

TEST(ByteArrayOut, IsNeverDoneAndAcceptsWritesAfterClose) {
    Bytes bytes;
    ByteArrayOutAdaptor out(bytes);
    out.flush();
    out.close();
    EXPECT_FALSE(out.isDone());
    const std::uint8_t one = 1;
    EXPECT_EQ(out.write(&one, 1), 1U);
    EXPECT_EQ(bytes, Bytes{1});
}

}  // namespace
}  // namespace opc
