// One request from end to end: from a path, through the selector and the back end, to bytes in memory.

#include <pkgcore/streams/ByteArrayInAdaptor.hpp>
#include <pkgcore/streams/ByteArrayOutAdaptor.hpp>
#include <pkgcore/streams/StdIStreamAdaptor.hpp>
#include <pkgcore/streams/StdOStreamAdaptor.hpp>
#include <pkgcore/streams/StreamHelper.hpp>

#include "tests/e2e/VirtualTest.hpp"

namespace test {

namespace {

using Bytes = std::vector<std::uint8_t>;

class VirtualRequest : public VirtualTest {
protected:
    static Bytes someBytes(std::size_t count) {
        Bytes bytes(count);
        std::uint32_t state = 12345;
        for (std::uint8_t& byte : bytes) {
            state = state * 1664525 + 1013904223;
            byte = static_cast<std::uint8_t>(state >> 24);
        }
        return bytes;
    }

    void store(const opc::ustring& path, Bytes bytes) const {
        const auto stream = selector.getForPath(path).createOutputStream(path, std::ios::binary);
        opc::ByteArrayInAdaptor in(bytes);
        opc::StdOStreamAdaptor out(*stream);
        ASSERT_TRUE(opc::StreamHelper::copyStreamToStream(in, out));
        out.flush();
        ASSERT_TRUE(stream->good());
    }
};

TEST_F(VirtualRequest, MovesTheBytesOfAnIRIIntoMemory) {
    const opc::ustring path = u"mem://store/notes/tea.bin";
    ops.createFolder(u"mem://store/notes");
    for (const std::size_t size : {0U, 1U, 16383U, 16384U, 16385U, 1'000'000U}) {
        const Bytes content = someBytes(size);
        store(path, content);
        boost::system::error_code ec = make_error_code(errc::owner_dead);
        const auto stream = selector.getForPath(path).createInputStream(path, std::ios::binary, ec);
        ASSERT_TRUE(stream);
        EXPECT_FALSE(ec.failed());
        Bytes bytes;
        opc::StdIStreamAdaptor in(*stream);
        opc::ByteArrayOutAdaptor out(bytes);
        EXPECT_TRUE(opc::StreamHelper::copyStreamToStream(in, out));
        EXPECT_EQ(bytes, content) << size;
    }
}

TEST_F(VirtualRequest, OfAMissingFileGivesNoStreamAndAnErrorWithoutWords) {
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.createInputStream(u"mem://store/missing", 0, ec...); },
                      errc::io_error, "createInputStream failed: "));
    EXPECT_FALSE(ops.exists(u"mem://store/missing"));
}

TEST_F(VirtualRequest, OfAnInvalidIRIIsABadAddressWithTheWordsOfTheStorageAndTheIRI) {
    const opc::ustring invalid = u"mem://store/a b";
    EXPECT_TRUE(
        fails([&](auto&... ec) { return selector.getForPath(invalid).createInputStream(invalid, 0, ec...); },
              errc::bad_address,
              "createInputStream failed: Character U+0020 at offset 13 is not allowed in the path of an "
              "IRI: mem://store/a b"));
}

TEST_F(VirtualRequest, OfASchemeThatIsNotMountedIsAnUnsupportedAddressFamily) {
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.createInputStream(u"sqlite://notes/a", 0, ec...); },
                      errc::address_family_not_supported,
                      "createInputStream failed: The scheme is not mounted: sqlite"));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.exists(u"sqlite://notes/a", ec...); },
                      errc::address_family_not_supported,
                      "exists failed: The scheme is not mounted: sqlite"));
}

TEST_F(VirtualRequest, GoesToTheBackEndOfItsPath) {
    EXPECT_EQ(&selector.getForPath(u"mem://store/a"), &selector.getVirtual());
    EXPECT_EQ(&selector.getForPath(u"MEM://store/a"), &selector.getVirtual());
    EXPECT_EQ(&selector.getForPath(u"file:///a"), &selector.getVirtual());
    EXPECT_EQ(&selector.getForPath(u"/tmp"), &selector.getLocal());
    EXPECT_EQ(&selector.getForPath(u"mem:/store/a"), &selector.getLocal());
    EXPECT_TRUE(selector.getForPath(u"/tmp").isFolder(u"/tmp"));
}

TEST_F(VirtualRequest, WorksAsLongAsAnyCopyOfTheSelectorLives) {
    auto first = std::make_unique<opc::FileSystemOpsSelector>(memoryStorage());
    opc::FileSystemOps& back = first->getVirtual();
    const opc::FileSystemOpsSelector copy(*first);
    first.reset();
    EXPECT_EQ(&copy.getVirtual(), &back);
    back.createFolder(u"mem://store/kept");
    EXPECT_TRUE(copy.getVirtual().isFolder(u"mem://store/kept"));
}

TEST_F(VirtualRequest, AStreamOutlivesTheSelectorItCameFrom) {
    auto own = std::make_unique<opc::FileSystemOpsSelector>(memoryStorage());
    *own->getVirtual().createOutputStream(u"mem://store/a", 0) << "text" << std::flush;
    const auto stream = own->getVirtual().createInputStream(u"mem://store/a", 0);
    own.reset();
    std::string word;
    *stream >> word;
    EXPECT_EQ(word, "text");
}

TEST_F(VirtualRequest, TwoSelectorsOfOneStorageSeeTheSameFiles) {
    const auto storage = memoryStorage();
    const opc::FileSystemOpsSelector one(storage);
    const opc::FileSystemOpsSelector other(storage);
    one.getVirtual().createFolder(u"mem://store/a");
    EXPECT_TRUE(other.getVirtual().isFolder(u"mem://store/a"));
    EXPECT_FALSE(ops.exists(u"mem://store/a"));
}

}  // namespace

}  // namespace test
