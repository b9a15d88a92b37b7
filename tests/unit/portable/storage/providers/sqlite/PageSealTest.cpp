#include <pkgcore/portable/storage/providers/sqlite/PageSeal.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/storage/PageSeals.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace foundation::storage::sqlite;

std::string sealed(std::string page, std::uint64_t number) {
    sealPage(page.data(), number);
    return page;
}

const std::string kPage = sealed(test::someBytes(kPageSize), 7);

TEST(PageSeal, FitsThePageThatWasSealed) {
    EXPECT_TRUE(fitsSeal(kPage.data(), 7));
    EXPECT_EQ(kPage.substr(0, kPageSize - kPageSealSize), test::someBytes(kPageSize - kPageSealSize));
}

TEST(PageSeal, IsTheOneThatIsDescribed) {
    for (const std::uint64_t number : {std::uint64_t{1}, std::uint64_t{2}, std::uint64_t{4'294'967'294}}) {
        EXPECT_TRUE(test::PageSeals::fits(sealed(kPage, number).data(), number)) << number;
    }
}

TEST(PageSeal, FitsNoPageOfWhichABitIsAnother) {
    for (std::size_t bit = 0; bit < 8 * kPageSize; ++bit) {
        std::string page = kPage;
        page[bit / 8] = static_cast<char>(page[bit / 8] ^ (1 << bit % 8));
        ASSERT_FALSE(fitsSeal(page.data(), 7)) << bit;
    }
}

TEST(PageSeal, OfTheLinkIsThatOfFourBytes) {
    EXPECT_TRUE(fitsLinkSeal(kPage.data(), 7));
    EXPECT_FALSE(fitsLinkSeal(kPage.data(), 8));
    for (std::size_t bit = 0; bit < 8 * kPageSize; ++bit) {
        std::string page = kPage;
        page[bit / 8] = static_cast<char>(page[bit / 8] ^ (1 << bit % 8));
        const bool isInLink = bit / 8 < 4 || (bit / 8 >= kPageSize - 12 && bit / 8 < kPageSize - 8);
        ASSERT_EQ(fitsLinkSeal(page.data(), 7), !isInLink) << bit;
    }
}

TEST(PageSeal, APageOfATreeSaysSoInItsFirstByteOrIsTheFirst) {
    const std::string kinds = "\x02\x05\x0A\x0D";
    for (int first = 0; first < 256; ++first) {
        const std::string page(kPageSize, static_cast<char>(first));
        EXPECT_EQ(isTreePage(page.data(), 2), kinds.find(static_cast<char>(first)) != std::string::npos);
        EXPECT_TRUE(isTreePage(page.data(), 1));
    }
}

TEST(PageSeal, FitsNoPageInThePlaceOfAnotherOne) {
    for (std::uint64_t number = 0; number < 1000; ++number) {
        EXPECT_EQ(fitsSeal(kPage.data(), number), number == 7) << number;
    }
    EXPECT_FALSE(fitsSeal(kPage.data(), 7 + (std::uint64_t{1} << 32U)));
}

TEST(PageSeal, IsNotThatOfAHole) {
    const std::string zeros(kPageSize, '\0');
    EXPECT_TRUE(isHole(zeros.data()));
    EXPECT_FALSE(fitsSeal(zeros.data(), 1));
    EXPECT_FALSE(isHole(sealed(zeros, 1).data()));
    for (const std::size_t at : {std::size_t{0}, std::size_t{2000}, kPageSize - 1}) {
        std::string page = zeros;
        page[at] = 1;
        EXPECT_FALSE(isHole(page.data())) << at;
    }
}

}  // namespace
