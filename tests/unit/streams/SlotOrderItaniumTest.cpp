// The order of the virtual functions is part of the binary interface. CMake compiles this file where the
// compiler follows the Itanium C++ ABI.

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

}  // namespace
}  // namespace opc
