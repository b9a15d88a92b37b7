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

template <typename Stream>
class StreamInterface : public ::testing::Test {};

using Interfaces = ::testing::Types<InputStream, OutputStream>;
TYPED_TEST_SUITE(StreamInterface, Interfaces);

TYPED_TEST(StreamInterface, IsMadeAndEndedByItsAdaptorsAlone) {
    EXPECT_FALSE(std::is_destructible_v<TypeParam>);
    EXPECT_FALSE(std::is_default_constructible_v<TypeParam>);
    EXPECT_TRUE(std::is_abstract_v<TypeParam>);
}

TYPED_TEST(StreamInterface, HoldsNothingAndCannotBeCopied) {
    EXPECT_EQ(sizeof(void*), sizeof(TypeParam));
    EXPECT_FALSE(std::is_copy_constructible_v<TypeParam>);
    EXPECT_FALSE(std::is_copy_assignable_v<TypeParam>);
    EXPECT_TRUE((std::is_base_of_v<boost::noncopyable, TypeParam>));
    EXPECT_FALSE((std::is_convertible_v<TypeParam*, boost::noncopyable*>)) << "the base is private";
}

/// An adaptor and what it is made over.
template <typename AdaptorType, typename StoreType>
struct Over {
    using Adaptor = AdaptorType;
    using Store = StoreType;
    using Interface = std::conditional_t<std::is_base_of_v<InputStream, Adaptor>, InputStream, OutputStream>;
};

template <typename AdaptorOverStore>
class StreamAdaptor : public ::testing::Test {};

using Bytes = std::vector<std::uint8_t>;
using Adaptors =
    ::testing::Types<Over<ByteArrayInAdaptor, const Bytes>, Over<ByteArrayOutAdaptor, Bytes>,
                     Over<COMIStreamInAdaptor, IStream>, Over<COMIStreamOutAdaptor, IStream>,
                     Over<StdIStreamAdaptor, std::istream>, Over<StdOStreamAdaptor, std::ostream>>;
TYPED_TEST_SUITE(StreamAdaptor, Adaptors);

TYPED_TEST(StreamAdaptor, IsMadeOverItsStoreAndEndedByAnybody) {
    using Adaptor = typename TypeParam::Adaptor;
    EXPECT_TRUE((std::is_constructible_v<Adaptor, typename TypeParam::Store&>));
    EXPECT_FALSE(std::is_default_constructible_v<Adaptor>);
    EXPECT_TRUE(std::is_destructible_v<Adaptor>);
    EXPECT_TRUE(std::has_virtual_destructor_v<Adaptor>);
    EXPECT_TRUE((std::is_convertible_v<Adaptor*, typename TypeParam::Interface*>));
    EXPECT_FALSE(std::is_copy_constructible_v<Adaptor>);
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
