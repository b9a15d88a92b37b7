// The order of the virtual functions is part of the binary interface. CMake compiles this file where the
// compiler follows the Itanium C++ ABI.

#include <pkgcore/platform/com/IStream.hpp>
#include <pkgcore/streams/InputStream.hpp>
#include <pkgcore/streams/OutputStream.hpp>

#include "tests/support/SlotItanium.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace opc {
namespace {

using Slots = std::vector<std::size_t>;

/// The place of a function that comes behind all of `Stream`.
template <typename Stream>
class Longer : public Stream {
public:
    virtual void behind() = 0;
};

TEST(StreamSlotOrder, OfTheInputIsFixed) {
    EXPECT_EQ((Slots{test::slotOf(&InputStream::open), test::slotOf(&InputStream::read),
                     test::slotOf(&InputStream::isDone), test::slotOf(&InputStream::close)}),
              (Slots{0, 1, 2, 3}));
}

TEST(StreamSlotOrder, OfTheOutputIsFixedAndHasIsDoneBeforeFlush) {
    EXPECT_EQ((Slots{test::slotOf(&OutputStream::write), test::slotOf(&OutputStream::isDone),
                     test::slotOf(&OutputStream::flush), test::slotOf(&OutputStream::close)}),
              (Slots{0, 1, 2, 3}));
}

// Under this ABI the destructor takes two places.
TEST(StreamSlotOrder, EndsWithTheDestructor) {
    EXPECT_EQ(test::slotOf(&Longer<InputStream>::behind), 6U);
    EXPECT_EQ(test::slotOf(&Longer<OutputStream>::behind), 6U);
}

// The order of objidl.h, in which every implementation made for COM has its table.
TEST(COMSlotOrder, IsThatOfWindows) {
    EXPECT_EQ((Slots{test::slotOf(&IUnknown::QueryInterface), test::slotOf(&IUnknown::AddRef),
                     test::slotOf(&IUnknown::Release)}),
              (Slots{0, 1, 2}));
    EXPECT_EQ((Slots{test::slotOf(&ISequentialStream::Read), test::slotOf(&ISequentialStream::Write)}),
              (Slots{3, 4}));
    EXPECT_EQ(
        (Slots{test::slotOf(&IStream::Seek), test::slotOf(&IStream::SetSize), test::slotOf(&IStream::CopyTo),
               test::slotOf(&IStream::Commit), test::slotOf(&IStream::Revert),
               test::slotOf(&IStream::LockRegion), test::slotOf(&IStream::UnlockRegion),
               test::slotOf(&IStream::Stat), test::slotOf(&IStream::Clone)}),
        (Slots{5, 6, 7, 8, 9, 10, 11, 12, 13}));
}

// The numbers of winerror.h and objidl.h, and the sizes of a host with pointers of 64 bits.
TEST(COMValues, AreThoseOfWindows) {
    EXPECT_EQ(static_cast<std::uint32_t>(E_PENDING), 0x8000000AU);
    EXPECT_EQ(S_OK, 0);
    EXPECT_EQ(S_FALSE, 1);
    EXPECT_EQ(static_cast<DWORD>(STREAM_SEEK_SET), 0U);
    EXPECT_EQ(static_cast<DWORD>(STGC_DEFAULT), 0U);
    EXPECT_EQ(sizeof(ULONG), 4U);
    EXPECT_EQ(sizeof(HRESULT), 4U);
    EXPECT_EQ(sizeof(LARGE_INTEGER), 8U);
    EXPECT_EQ(sizeof(ULARGE_INTEGER), 8U);
    EXPECT_EQ(sizeof(STATSTG), 80U);
}

}  // namespace
}  // namespace opc
