// The streams that the local back end opens.

#include <pkgcore/platform/filesystem/FileStreams.hpp>

#include "tests/contract/LocalContract.hpp"

#include <boost/smart_ptr/shared_ptr.hpp>

#include <new>

using contract::LocalContract;
using std::ios_base;
namespace errc = boost::system::errc;

namespace {

class LocalStreams : public LocalContract {
protected:
    void expectIOErrorWithoutWords() const { expectReported(errc::io_error, kOldMessage); }
};

TEST_F(LocalStreams, InputIsOpenedOnTheCleanAccessFormAndDeniesNothing) {
    ops.doCreateInputStream(u"a", 0, msg, ec);
    EXPECT_EQ(platform.calls(), (Calls{"make_native_access_form_with_cleanup('a')",
                                       "basic_ifstream::open('cleanAccess(a)', in, 0)"}));
    static_assert(static_cast<unsigned>(fl::filesystem::share_mode::deny_none) == 0);
    expectNothingReported();
}

TEST_F(LocalStreams, OutputIsOpenedOnTheCleanAccessFormAndDeniesNothing) {
    ops.doCreateOutputStream(u"a", 0, msg, ec);
    EXPECT_EQ(platform.calls(), (Calls{"make_native_access_form_with_cleanup('a')",
                                       "basic_ofstream::open('cleanAccess(a)', out, 0)"}));
    expectNothingReported();
}

TEST_F(LocalStreams, InputAddsItsDirectionToTheModeAndNothingElse) {
    ops.doCreateInputStream(u"a", ios_base::binary, msg, ec);
    ops.doCreateInputStream(u"a", ios_base::in | ios_base::ate, msg, ec);
    ops.doCreateInputStream(u"a", ios_base::out | ios_base::trunc, msg, ec);
    EXPECT_EQ(platform.callsTo({"basic_ifstream::open"}),
              (Calls{"basic_ifstream::open('cleanAccess(a)', in|binary, 0)",
                     "basic_ifstream::open('cleanAccess(a)', in|ate, 0)",
                     "basic_ifstream::open('cleanAccess(a)', in|out|trunc, 0)"}));
}

TEST_F(LocalStreams, OutputAddsItsDirectionToTheModeAndNothingElse) {
    ops.doCreateOutputStream(u"a", ios_base::binary, msg, ec);
    ops.doCreateOutputStream(u"a", ios_base::out | ios_base::app, msg, ec);
    ops.doCreateOutputStream(u"a", ios_base::in, msg, ec);
    EXPECT_EQ(platform.callsTo({"basic_ofstream::open"}),
              (Calls{"basic_ofstream::open('cleanAccess(a)', out|binary, 0)",
                     "basic_ofstream::open('cleanAccess(a)', out|app, 0)",
                     "basic_ofstream::open('cleanAccess(a)', in|out, 0)"}));
}

TEST_F(LocalStreams, InputIsTheStreamOfThePlatform) {
    platform.content = "hello";
    const boost::shared_ptr<std::istream> stream = ops.doCreateInputStream(u"a", 0, msg, ec);
    ASSERT_TRUE(stream);
    EXPECT_NE(dynamic_cast<fl::filesystem::basic_ifstream<char>*>(stream.get()), nullptr);
    std::string word;
    *stream >> word;
    EXPECT_EQ(word, "hello");
    EXPECT_EQ(stream.use_count(), 1);
}

TEST_F(LocalStreams, OutputIsTheStreamOfThePlatform) {
    const boost::shared_ptr<std::ostream> stream = ops.doCreateOutputStream(u"a", 0, msg, ec);
    ASSERT_TRUE(stream);
    EXPECT_NE(dynamic_cast<fl::filesystem::basic_ofstream<char>*>(stream.get()), nullptr);
    *stream << "hello";
    EXPECT_EQ(platform.written, "hello");
    EXPECT_EQ(stream.use_count(), 1);
}

TEST_F(LocalStreams, InputThatDoesNotOpenIsAnEmptyPointerAndAnErrorWithoutWords) {
    for (const ios_base::iostate state : {ios_base::failbit, ios_base::badbit}) {
        platform.openInput.forget();
        platform.openInput.returns(state);
        ec = kOldCode;
        EXPECT_FALSE(ops.doCreateInputStream(u"a", 0, msg, ec));
        expectIOErrorWithoutWords();
    }
}

TEST_F(LocalStreams, OutputThatDoesNotOpenIsAnEmptyPointerAndAnErrorWithoutWords) {
    for (const ios_base::iostate state : {ios_base::failbit, ios_base::badbit}) {
        platform.openOutput.forget();
        platform.openOutput.returns(state);
        ec = kOldCode;
        EXPECT_FALSE(ops.doCreateOutputStream(u"a", 0, msg, ec));
        expectIOErrorWithoutWords();
    }
}

TEST_F(LocalStreams, AStreamAtItsEndIsOpenAllTheSame) {
    platform.openInput.returns(ios_base::eofbit);
    EXPECT_TRUE(ops.doCreateInputStream(u"a", 0, msg, ec));
    expectNothingReported();
}

TEST_F(LocalStreams, AnEmptyPathIsLeftToThePlatform) {
    ops.doCreateInputStream(u"", 0, msg, ec);
    ops.doCreateOutputStream(u"", 0, msg, ec);
    EXPECT_EQ(platform.callsTo({"make_native_access_form_with_cleanup"}),
              Calls(2, "make_native_access_form_with_cleanup('')"));
}

}  // namespace
