// The real COM streams of the other tests, held against the documentation of IStream.

#include "tests/support/DescriptorCount.hpp"
#include "tests/unit/streams/COMStreamKinds.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

namespace test {
namespace {

/// The result of a transfer and what it moved.
struct Transfer {
    HRESULT result;
    std::string bytes;

    bool operator==(const Transfer& other) const { return result == other.result && bytes == other.bytes; }
};

void PrintTo(const Transfer& transfer, std::ostream* out) {
    *out << std::hex << transfer.result << " '" << transfer.bytes << "'";
}

Transfer read(IStream& stream, ULONG count) {
    std::string bytes(count, '#');
    ULONG moved = 77;
    const HRESULT result = stream.Read(bytes.data(), count, &moved);
    bytes.resize(moved);
    return {result, bytes};
}

Transfer write(IStream& stream, const std::string& bytes) {
    ULONG moved = 77;
    const HRESULT result = stream.Write(bytes.data(), static_cast<ULONG>(bytes.size()), &moved);
    return {result, bytes.substr(0, moved)};
}

HRESULT seek(IStream& stream, std::int64_t move, DWORD origin) {
    return stream.Seek(moveBy(move), origin, nullptr);
}

std::uint64_t tell(IStream& stream) {
    ULARGE_INTEGER position = sizeOf(77);
    EXPECT_EQ(S_OK, stream.Seek(moveBy(0), STREAM_SEEK_CUR, &position));
    return position.QuadPart;
}

STATSTG statusOf(IStream& stream) {
    STATSTG status{};
    EXPECT_EQ(S_OK, stream.Stat(&status, STATFLAG_NONAME));
    return status;
}

std::string whole(IStream& stream) {
    EXPECT_EQ(S_OK, seek(stream, 0, STREAM_SEEK_SET));
    return read(stream, 1000).bytes;
}

class COMStream : public ::testing::TestWithParam<StreamKind> {
protected:
    OpenStream open(const std::string& content) const { return GetParam().open(folder, content); }

    NoDescriptorLeft noneLeft;
    TempTree folder;
};

TEST_P(COMStream, KnowsItsInterfacesAndNoOthers) {
    const OpenStream stream = open("");
    for (const IID& known : {IID_IUnknown, IID_ISequentialStream, IID_IStream}) {
        void* object = nullptr;
        ASSERT_EQ(S_OK, stream->QueryInterface(known, &object));
        EXPECT_EQ(&*stream, object);
        EXPECT_EQ(1U, stream->Release());
    }
    void* object = &object;
    EXPECT_EQ(E_NOINTERFACE, stream->QueryInterface(IID{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}}, &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(E_POINTER, stream->QueryInterface(IID_IStream, nullptr));
}

TEST_P(COMStream, LivesAsLongAsItIsReferredTo) {
    const OpenStream stream = open("abc");
    EXPECT_EQ(2U, stream->AddRef());
    EXPECT_EQ(3U, stream->AddRef());
    EXPECT_EQ(2U, stream->Release());
    EXPECT_EQ(1U, stream->Release());
    EXPECT_EQ((Transfer{S_OK, "abc"}), read(*stream, 3));
}

TEST_P(COMStream, ReadsUpToItsEnd) {
    const OpenStream stream = open("abcde");
    EXPECT_EQ((Transfer{S_OK, "ab"}), read(*stream, 2));
    EXPECT_EQ((Transfer{S_OK, ""}), read(*stream, 0));
    EXPECT_EQ((Transfer{S_FALSE, "cde"}), read(*stream, 4));
    EXPECT_EQ((Transfer{S_FALSE, ""}), read(*stream, 1));
    EXPECT_EQ(5U, tell(*stream));
    EXPECT_EQ(STG_E_INVALIDPOINTER, stream->Read(nullptr, 1, nullptr));
}

TEST_P(COMStream, IsNotAtItsEndAfterReadingExactlyAll) {
    const OpenStream stream = open("abc");
    EXPECT_EQ((Transfer{S_OK, "abc"}), read(*stream, 3));
    EXPECT_EQ((Transfer{S_FALSE, ""}), read(*stream, 3));
}

TEST_P(COMStream, WritesOverAndBeyondItsEnd) {
    const OpenStream stream = open("abcde");
    EXPECT_EQ(S_OK, seek(*stream, 3, STREAM_SEEK_SET));
    EXPECT_EQ((Transfer{S_OK, "XYZ"}), write(*stream, "XYZ"));
    EXPECT_EQ((Transfer{S_OK, ""}), write(*stream, ""));
    EXPECT_EQ(6U, tell(*stream));
    EXPECT_EQ("abcXYZ", whole(*stream));
    EXPECT_EQ(STG_E_INVALIDPOINTER, stream->Write(nullptr, 1, nullptr));
}

TEST_P(COMStream, ReadsAndWritesForCallersThatAskForNoCounts) {
    const OpenStream stream = open("abc");
    char byte = '#';
    EXPECT_EQ(S_OK, stream->Read(&byte, 1, nullptr));
    EXPECT_EQ('a', byte);
    EXPECT_EQ(S_OK, stream->Write("X", 1, nullptr));
    EXPECT_EQ("aXc", whole(*stream));
}

TEST_P(COMStream, MovesItsPositionFromEachOrigin) {
    const OpenStream stream = open("abcde");
    struct {
        std::int64_t move;
        DWORD origin;
        std::uint64_t position;
    } const moves[] = {{3, STREAM_SEEK_SET, 3}, {1, STREAM_SEEK_CUR, 4},  {-4, STREAM_SEEK_CUR, 0},
                       {0, STREAM_SEEK_END, 5}, {-2, STREAM_SEEK_END, 3}, {7, STREAM_SEEK_END, 12}};
    for (const auto& [move, origin, position] : moves) {
        ULARGE_INTEGER told = sizeOf(77);
        EXPECT_EQ(S_OK, stream->Seek(moveBy(move), origin, &told));
        EXPECT_EQ(position, told.QuadPart);
    }
}

TEST_P(COMStream, RefusesPositionsBeforeItsStartAndStaysWhereItWas) {
    const OpenStream stream = open("abcde");
    EXPECT_EQ(S_OK, seek(*stream, 2, STREAM_SEEK_SET));
    EXPECT_EQ(STG_E_INVALIDFUNCTION, seek(*stream, -3, STREAM_SEEK_CUR));
    EXPECT_EQ(STG_E_INVALIDFUNCTION, seek(*stream, -6, STREAM_SEEK_END));
    EXPECT_EQ(STG_E_INVALIDFUNCTION, seek(*stream, -1, STREAM_SEEK_SET));
    EXPECT_EQ(STG_E_INVALIDFUNCTION, seek(*stream, INT64_MIN, STREAM_SEEK_CUR));
    EXPECT_EQ(STG_E_INVALIDFUNCTION, seek(*stream, INT64_MAX, STREAM_SEEK_CUR));
    EXPECT_EQ(STG_E_INVALIDFUNCTION, seek(*stream, 0, 3));
    EXPECT_EQ(2U, tell(*stream));
}

TEST_P(COMStream, FillsTheGapBehindItsEnd) {
    const OpenStream stream = open("abc");
    EXPECT_EQ(S_OK, seek(*stream, 5, STREAM_SEEK_SET));
    EXPECT_EQ((Transfer{S_FALSE, ""}), read(*stream, 1));
    EXPECT_EQ((Transfer{S_OK, "f"}), write(*stream, "f"));
    EXPECT_EQ(std::string("abc\0\0f", 6), whole(*stream));
}

TEST_P(COMStream, IsCutAndGrownWithoutMovingItsPosition) {
    const OpenStream stream = open("abcde");
    EXPECT_EQ(S_OK, seek(*stream, 4, STREAM_SEEK_SET));
    EXPECT_EQ(S_OK, stream->SetSize(sizeOf(2)));
    EXPECT_EQ(4U, tell(*stream));
    EXPECT_EQ((Transfer{S_FALSE, ""}), read(*stream, 1));
    EXPECT_EQ(S_OK, stream->SetSize(sizeOf(3)));
    EXPECT_EQ(3U, statusOf(*stream).cbSize.QuadPart);
    EXPECT_EQ(std::string("ab\0", 3), whole(*stream));
    EXPECT_EQ(STG_E_INVALIDFUNCTION, stream->SetSize(sizeOf(UINT64_MAX)));
}

TEST_P(COMStream, CopiesFromItsPositionToThatOfAnother) {
    const std::string content = someBytes(200'000);
    const OpenStream from = open(content);
    const OpenStream to = openMemoryStream("123", MemoryStore::Mode::direct);
    EXPECT_EQ(S_OK, seek(*from, 10, STREAM_SEEK_SET));
    EXPECT_EQ(S_OK, seek(*to, 1, STREAM_SEEK_SET));
    ULARGE_INTEGER bytesRead = sizeOf(77);
    ULARGE_INTEGER bytesWritten = sizeOf(77);
    EXPECT_EQ(S_OK, from->CopyTo(&*to, sizeOf(150'000), &bytesRead, &bytesWritten));
    EXPECT_EQ(150'000U, bytesRead.QuadPart);
    EXPECT_EQ(150'000U, bytesWritten.QuadPart);
    EXPECT_EQ(150'010U, tell(*from));
    EXPECT_EQ(150'001U, tell(*to));
    EXPECT_TRUE(to.stored() == '1' + content.substr(10, 150'000));
}

TEST_P(COMStream, CopiesNoMoreThanThereIsOrThanFits) {
    const OpenStream from = open("abcde");
    const OpenStream to = openMemoryStream("", MemoryStore::Mode::direct);
    ULARGE_INTEGER bytesRead{};
    EXPECT_EQ(S_OK, from->CopyTo(&*to, sizeOf(UINT64_MAX), &bytesRead, nullptr));
    EXPECT_EQ(5U, bytesRead.QuadPart);
    EXPECT_EQ("abcde", to.stored());
    EXPECT_EQ(S_OK, seek(*from, 0, STREAM_SEEK_SET));
    const auto block = std::make_shared<Bytes>();
    const StreamReference small =
        StoreStream::make(std::make_shared<MemoryStore>(block, MemoryStore::Mode::direct, 3));
    ULARGE_INTEGER bytesWritten{};
    EXPECT_EQ(STG_E_MEDIUMFULL, from->CopyTo(small.get(), sizeOf(5), nullptr, &bytesWritten));
    EXPECT_EQ(3U, bytesWritten.QuadPart);
    EXPECT_EQ(STG_E_INVALIDPOINTER, from->CopyTo(nullptr, sizeOf(1), nullptr, nullptr));
}

TEST_P(COMStream, CommitsWithTheFlagsThatThereAreAndNoOthers) {
    const OpenStream stream = open("abc");
    EXPECT_EQ((Transfer{S_OK, "X"}), write(*stream, "X"));
    EXPECT_EQ(S_OK, stream->Commit(STGC_DEFAULT));
    EXPECT_EQ("Xbc", stream.stored());
    EXPECT_EQ(S_OK, stream->Commit(STGC_OVERWRITE | STGC_CONSOLIDATE));
    EXPECT_EQ(STG_E_INVALIDFLAG, stream->Commit(16));
}

TEST_P(COMStream, DoesNotLock) {
    const OpenStream stream = open("abc");
    EXPECT_EQ(STG_E_INVALIDFUNCTION, stream->LockRegion(sizeOf(0), sizeOf(1), LOCK_EXCLUSIVE));
    EXPECT_EQ(STG_E_INVALIDFUNCTION, stream->UnlockRegion(sizeOf(0), sizeOf(1), LOCK_EXCLUSIVE));
    EXPECT_EQ(0U, statusOf(*stream).grfLocksSupported);
}

TEST_P(COMStream, TellsItsKindSizeAndAccess) {
    const OpenStream stream = open("abcde");
    const STATSTG status = statusOf(*stream);
    EXPECT_EQ(STGTY_STREAM, status.type);
    EXPECT_EQ(5U, status.cbSize.QuadPart);
    EXPECT_EQ(STGM_READWRITE, status.grfMode);
    EXPECT_EQ(nullptr, status.pwcsName);
    STATSTG any{};
    EXPECT_EQ(S_OK, stream->Stat(&any, STATFLAG_DEFAULT));
    EXPECT_EQ(STG_E_INVALIDFLAG, stream->Stat(&any, 3));
    EXPECT_EQ(STG_E_INVALIDPOINTER, stream->Stat(nullptr, STATFLAG_NONAME));
}

TEST_P(COMStream, IsClonedWithAPositionOfItsOwnOnTheSameBytes) {
    const OpenStream stream = open("abcde");
    EXPECT_EQ(S_OK, seek(*stream, 2, STREAM_SEEK_SET));
    IStream* cloned = nullptr;
    ASSERT_EQ(S_OK, stream->Clone(&cloned));
    const StreamReference clone(cloned, false);
    EXPECT_EQ((Transfer{S_OK, "c"}), read(*clone, 1));
    EXPECT_EQ(2U, tell(*stream));
    EXPECT_EQ((Transfer{S_OK, "CD"}), write(*stream, "CD"));
    EXPECT_EQ((Transfer{S_OK, "De"}), read(*clone, 2));
    EXPECT_EQ(STG_E_INVALIDPOINTER, stream->Clone(nullptr));
}

TEST_P(COMStream, LivesOnInItsClone) {
    OpenStream stream = open("abc");
    IStream* cloned = nullptr;
    ASSERT_EQ(S_OK, stream->Clone(&cloned));
    const StreamReference clone(cloned, false);
    stream.stream.reset();
    EXPECT_EQ((Transfer{S_FALSE, "abc"}), read(*clone, 9));
}

INSTANTIATE_TEST_SUITE_P(Every, COMStream, ::testing::Values(kMemory, kTransactedMemory, kFile),
                         [](const auto& one) { return one.param.name; });

TEST(COMTransactedStream, HoldsChangesBackUntilTheyAreCommitted) {
    const OpenStream stream = openMemoryStream("abc", MemoryStore::Mode::transacted);
    write(*stream, "X");
    EXPECT_EQ("abc", stream.stored());
    EXPECT_EQ("Xbc", whole(*stream));
    EXPECT_EQ(S_OK, stream->Revert());
    EXPECT_EQ("abc", whole(*stream));
    EXPECT_EQ(S_OK, stream->SetSize(sizeOf(1)));
    EXPECT_EQ(S_OK, stream->Commit(STGC_DEFAULT));
    EXPECT_EQ("a", stream.stored());
}

TEST(COMDirectStream, HasNothingToGoBackTo) {
    const OpenStream stream = openMemoryStream("abc", MemoryStore::Mode::direct);
    write(*stream, "X");
    EXPECT_EQ(S_OK, stream->Revert());
    EXPECT_EQ("Xbc", stream.stored());
}

TEST(COMMemoryStream, TakesWhatItHasRoomFor) {
    const auto block = std::make_shared<Bytes>();
    const StreamReference stream =
        StoreStream::make(std::make_shared<MemoryStore>(block, MemoryStore::Mode::direct, 3));
    EXPECT_EQ((Transfer{STG_E_MEDIUMFULL, "abc"}), write(*stream, "abcde"));
    EXPECT_EQ((Transfer{STG_E_MEDIUMFULL, ""}), write(*stream, "d"));
    EXPECT_EQ(STG_E_MEDIUMFULL, stream->SetSize(sizeOf(4)));
    EXPECT_EQ((Bytes{'a', 'b', 'c'}), *block);
}

TEST(COMFileStream, RefusesWhatTheFileWasNotOpenedFor) {
    const TempTree folder;
    makeFile(folder / "file", "abc");
    const OpenStream reader = openFileStream(folder / "file", O_RDONLY);
    EXPECT_EQ((Transfer{STG_E_ACCESSDENIED, ""}), write(*reader, "X"));
    EXPECT_EQ(STGM_READ, statusOf(*reader).grfMode);
    const OpenStream writer = openFileStream(folder / "file", O_WRONLY);
    EXPECT_EQ((Transfer{STG_E_ACCESSDENIED, ""}), read(*writer, 1));
    EXPECT_EQ(STGM_WRITE, statusOf(*writer).grfMode);
    EXPECT_EQ((Transfer{STG_E_MEDIUMFULL, ""}), write(*openFileStream("/dev/full"), "X"));
}

TEST(COMFileStream, TellsItsTimes) {
    const TempTree folder;
    makeFile(folder / "file");
    setModifiedTime(folder / "file", {951'782'400, 123'456'700});  // 2000-02-29T00:00:00Z
    const FILETIME time = statusOf(*openFileStream(folder / "file")).mtime;
    EXPECT_EQ(125'962'560'001'234'567U,
              std::uint64_t{time.dwHighDateTime} << 32 | std::uint64_t{time.dwLowDateTime});
}

TEST(COMPipeStream, IsPendingWhileNothingIsThere) {
    int ends[2];
    ASSERT_EQ(0, ::pipe2(ends, O_NONBLOCK | O_CLOEXEC));
    const StreamReference from = openDescriptorStream(ends[0]);
    StreamReference to = openDescriptorStream(ends[1]);
    EXPECT_EQ((Transfer{E_PENDING, ""}), read(*from, 4));
    EXPECT_EQ((Transfer{S_OK, "ab"}), write(*to, "ab"));
    EXPECT_EQ((Transfer{E_PENDING, "ab"}), read(*from, 4));
    EXPECT_EQ(E_PENDING, write(*to, std::string(1 << 20, 'x')).result);
    EXPECT_EQ(STG_E_INVALIDFUNCTION, seek(*from, 0, STREAM_SEEK_SET));
    EXPECT_EQ(S_OK, to->Commit(STGC_DEFAULT));
    to.reset();
    EXPECT_EQ(S_FALSE, read(*from, 1 << 20).result);
}

}  // namespace
}  // namespace test
