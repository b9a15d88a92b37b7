// What can be done with the stream classes as types.

#include <pkgcore/streams/ByteArrayInAdaptor.hpp>
#include <pkgcore/streams/ByteArrayOutAdaptor.hpp>
#include <pkgcore/streams/COMIStreamInAdaptor.hpp>
#include <pkgcore/streams/COMIStreamOutAdaptor.hpp>
#include <pkgcore/streams/InputStreamSource.hpp>
#include <pkgcore/streams/OutputStreamSink.hpp>
#include <pkgcore/streams/StdIStreamAdaptor.hpp>
#include <pkgcore/streams/StdOStreamAdaptor.hpp>

#include <gtest/gtest.h>
#include <boost/iostreams/categories.hpp>

#include <type_traits>

namespace opc {
namespace {

using Bytes = std::vector<std::uint8_t>;

template <typename Stream>
void expectMadeAndEndedByAdaptorsAlone() {
    EXPECT_TRUE(std::is_abstract_v<Stream>);
    EXPECT_FALSE(std::is_default_constructible_v<Stream>);
    EXPECT_FALSE(std::is_destructible_v<Stream>);
}

TEST(StreamInterfaces, AreMadeAndEndedByTheirAdaptorsAlone) {
    expectMadeAndEndedByAdaptorsAlone<InputStream>();
    expectMadeAndEndedByAdaptorsAlone<OutputStream>();
}

template <typename Stream>
void expectEmptyAndNotCopied() {
    EXPECT_EQ(sizeof(void*), sizeof(Stream));
    EXPECT_FALSE(std::is_copy_constructible_v<Stream>);
    EXPECT_FALSE(std::is_copy_assignable_v<Stream>);
    EXPECT_TRUE((std::is_base_of_v<boost::noncopyable, Stream>));
    EXPECT_FALSE((std::is_convertible_v<Stream*, boost::noncopyable*>)) << "the base is private";
}

TEST(StreamInterfaces, HoldNothingAndCannotBeCopied) {
    expectEmptyAndNotCopied<InputStream>();
    expectEmptyAndNotCopied<OutputStream>();
}

template <typename Adaptor, typename Store, typename Interface>
void expectAdaptor() {
    EXPECT_TRUE((std::is_constructible_v<Adaptor, Store&>));
    EXPECT_FALSE(std::is_default_constructible_v<Adaptor>);
    EXPECT_TRUE(std::is_destructible_v<Adaptor>);
    EXPECT_TRUE(std::has_virtual_destructor_v<Adaptor>);
    EXPECT_TRUE((std::is_convertible_v<Adaptor*, Interface*>));
    EXPECT_FALSE(std::is_copy_constructible_v<Adaptor>);
}

TEST(StreamAdaptors, AreMadeOverTheirStoresAndEndedByAnybody) {
    expectAdaptor<ByteArrayInAdaptor, const Bytes, InputStream>();
    expectAdaptor<ByteArrayOutAdaptor, Bytes, OutputStream>();
    expectAdaptor<COMIStreamInAdaptor, IStream, InputStream>();
    expectAdaptor<COMIStreamOutAdaptor, IStream, OutputStream>();
    expectAdaptor<StdIStreamAdaptor, std::istream, InputStream>();
    expectAdaptor<StdOStreamAdaptor, std::ostream, OutputStream>();
}

TEST(StreamAdaptors, TakeTheirStoresAsTheyUseThem) {
    EXPECT_FALSE((std::is_constructible_v<ByteArrayOutAdaptor, const Bytes&>));
    EXPECT_FALSE((std::is_constructible_v<StdIStreamAdaptor, const std::istream&>));
}

TEST(StreamDevices, HoldAReferenceAndNothingElse) {
    EXPECT_EQ(sizeof(void*), sizeof(InputStreamSource));
    EXPECT_EQ(sizeof(void*), sizeof(OutputStreamSink));
    EXPECT_TRUE(std::is_trivially_copy_constructible_v<InputStreamSource>);
    EXPECT_TRUE(std::is_trivially_copy_constructible_v<OutputStreamSink>);
}

TEST(StreamDevices, AreThoseOfBoostIostreams) {
    namespace io = boost::iostreams;
    EXPECT_TRUE((std::is_convertible_v<InputStreamSource::category, io::source_tag>));
    EXPECT_TRUE((std::is_convertible_v<OutputStreamSink::category, io::sink_tag>));
    EXPECT_TRUE((std::is_convertible_v<OutputStreamSink::category, io::flushable_tag>));
    EXPECT_TRUE((std::is_same_v<InputStreamSource::char_type, char>));
    EXPECT_TRUE((std::is_same_v<OutputStreamSink::char_type, char>));
}

}  // namespace
}  // namespace opc
