// The streams that the virtual back end opens.

#include <pkgcore/platform/storage/Streams.hpp>

#include "tests/contract/VirtualContract.hpp"

#include <boost/smart_ptr/make_shared_object.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>

using contract::VirtualContract;
using foundation::storage::vfs::UnsupportedIRISchemeException;
using std::ios_base;
namespace errc = boost::system::errc;
namespace vfs = foundation::storage::vfs;

namespace {

class VirtualStreams : public VirtualContract {
protected:
    void expectIOErrorWithoutWords() const { expectReported(errc::io_error, kOldMessage); }
};

/// Whether the stream lives in the memory of its reference count.
template <typename Made, typename Stream>
bool sharesItsAllocation(const boost::shared_ptr<Stream>& stream) {
    return boost::get_deleter<boost::detail::sp_ms_deleter<Made>>(stream) != nullptr;
}

TEST_F(VirtualStreams, InputIsOpenedOnTheCanonicalIRIWithoutALook) {
    ops.doCreateInputStream(u"a", ios_base::in, msg, ec);
    EXPECT_EQ(platform.calls(), (Calls{"CanonicalAbsoluteIRI('a')", "ifstream('canonical(a)'@S, in)",
                                       "~ifstream('canonical(a)'@S)"}));
    expectNothingReported();
}

TEST_F(VirtualStreams, OutputIsOpenedOnTheCanonicalIRIWithoutALook) {
    ops.doCreateOutputStream(u"a", ios_base::out, msg, ec);
    EXPECT_EQ(platform.calls(), (Calls{"CanonicalAbsoluteIRI('a')", "ofstream('canonical(a)'@S, out)",
                                       "~ofstream('canonical(a)'@S)"}));
    expectNothingReported();
}

TEST_F(VirtualStreams, TheModeIsPassedThroughUnchanged) {
    for (const ios_base::openmode mode :
         {ios_base::openmode(), ios_base::binary, ios_base::out | ios_base::trunc}) {
        ops.doCreateInputStream(u"a", mode, msg, ec);
        ops.doCreateOutputStream(u"b", mode, msg, ec);
    }
    EXPECT_EQ(platform.callsTo({"ifstream"}),
              (Calls{"ifstream('canonical(a)'@S, )", "ifstream('canonical(a)'@S, binary)",
                     "ifstream('canonical(a)'@S, out|trunc)"}));
    EXPECT_EQ(platform.callsTo({"ofstream"}),
              (Calls{"ofstream('canonical(b)'@S, )", "ofstream('canonical(b)'@S, binary)",
                     "ofstream('canonical(b)'@S, out|trunc)"}));
}

TEST_F(VirtualStreams, InputIsTheStreamOfTheStorage) {
    storage.content = "hello";
    const boost::shared_ptr<std::istream> stream = ops.doCreateInputStream(u"a", 0, msg, ec);
    ASSERT_TRUE(stream);
    EXPECT_NE(dynamic_cast<vfs::ifstream*>(stream.get()), nullptr);
    std::string word;
    *stream >> word;
    EXPECT_EQ(word, "hello");
    EXPECT_EQ(stream.use_count(), 1);
    EXPECT_TRUE(sharesItsAllocation<vfs::ifstream>(stream));
}

TEST_F(VirtualStreams, OutputIsTheStreamOfTheStorage) {
    const boost::shared_ptr<std::ostream> stream = ops.doCreateOutputStream(u"a", 0, msg, ec);
    ASSERT_TRUE(stream);
    EXPECT_NE(dynamic_cast<vfs::ofstream*>(stream.get()), nullptr);
    *stream << "hello";
    EXPECT_EQ(storage.written, "hello");
    EXPECT_EQ(stream.use_count(), 1);
    EXPECT_TRUE(sharesItsAllocation<vfs::ofstream>(stream));
}

TEST_F(VirtualStreams, AStreamLivesAsLongAsItsLastOwner) {
    boost::shared_ptr<std::istream> stream = ops.doCreateInputStream(u"a", 0, msg, ec);
    ops = contract::OpenVirtualOps(scripted::storageSystem("other"));
    boost::shared_ptr<std::istream> copy = stream;
    stream.reset();
    EXPECT_EQ(platform.callsTo({"~ifstream"}), Calls{});
    copy.reset();
    EXPECT_EQ(platform.callsTo({"~ifstream"}), Calls{"~ifstream('canonical(a)'@S)"});
}

TEST_F(VirtualStreams, InputThatDoesNotOpenIsReleasedAndAnErrorWithoutWords) {
    for (const ios_base::iostate state :
         {ios_base::failbit, ios_base::badbit, ios_base::failbit | ios_base::badbit}) {
        storage.openInput.forget();
        storage.openInput.returns(state);
        ec = kOldCode;
        EXPECT_FALSE(ops.doCreateInputStream(u"a", 0, msg, ec));
        expectIOErrorWithoutWords();
    }
    EXPECT_EQ(platform.callsTo({"~ifstream"}), Calls(3, "~ifstream('canonical(a)'@S)"));
}

TEST_F(VirtualStreams, OutputThatDoesNotOpenIsReleasedAndAnErrorWithoutWords) {
    for (const ios_base::iostate state :
         {ios_base::failbit, ios_base::badbit, ios_base::failbit | ios_base::badbit}) {
        storage.openOutput.forget();
        storage.openOutput.returns(state);
        ec = kOldCode;
        EXPECT_FALSE(ops.doCreateOutputStream(u"a", 0, msg, ec));
        expectIOErrorWithoutWords();
    }
    EXPECT_EQ(platform.callsTo({"~ofstream"}), Calls(3, "~ofstream('canonical(a)'@S)"));
}

TEST_F(VirtualStreams, AStreamAtItsEndIsOpenAllTheSame) {
    storage.openInput.returns(ios_base::eofbit);
    storage.openOutput.returns(ios_base::eofbit);
    EXPECT_TRUE(ops.doCreateInputStream(u"a", 0, msg, ec));
    EXPECT_TRUE(ops.doCreateOutputStream(u"a", 0, msg, ec));
    expectNothingReported();
}

TEST_F(VirtualStreams, AStreamThatThrowsWhenItIsOpenedIsTranslated) {
    storage.openInput.throws(contract::storageFailure());
    storage.openOutput.throws(UnsupportedIRISchemeException("words", u"x"));
    EXPECT_FALSE(ops.doCreateInputStream(u"a", 0, msg, ec));
    expectReported(errc::permission_denied, "words: user(p)");
    EXPECT_FALSE(ops.doCreateOutputStream(u"a", 0, msg, ec));
    expectReported(errc::address_family_not_supported, "words: user(x)");
}

}  // namespace
