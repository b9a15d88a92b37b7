// How the temporary folder is found and how names are drawn.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/util/TempNames.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

#include <gtest/gtest.h>

using opc::util::getTempDir;
using opc::util::getTempName;
using scripted::Calls;

namespace {

using Text = std::u16string;

class TempNamesContract : public testing::Test {
protected:
    scripted::Platform platform;

    static void expectExceptionFromTempDir(const std::string& text) {
        try {
            getTempDir();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const opc::Exception& failure) {
            EXPECT_EQ(failure.what(), text);
            EXPECT_EQ(failure.code(), boost::system::error_code());
            EXPECT_EQ(failure.code().category(), boost::system::system_category());
        }
    }
};

TEST_F(TempNamesContract, FolderIsThatOfTheSystemNormalized) {
    EXPECT_EQ(getTempDir(), u"generic(native(tmp))");
    EXPECT_EQ(platform.calls(), (Calls{"temp_directory_name()", "make_native_form('tmp', true)",
                                       "make_generic_form('native(tmp)')"}));
}

TEST_F(TempNamesContract, FolderIsTheWorkingDirectoryWhereTheSystemKnowsNone) {
    platform.temp_directory_name.returns(Text());
    EXPECT_EQ(getTempDir(), u"generic(native(cwd))");
    EXPECT_EQ(platform.callsTo({"temp_directory_name", "get_current_path"}),
              (Calls{"temp_directory_name()", "get_current_path()"}));
}

TEST_F(TempNamesContract, FolderTurnsEachFailureOfTheFileSystemIntoItsText) {
    platform.temp_directory_name.throws(fl::filesystem::AccessDenied("first", u"p", {}));
    expectExceptionFromTempDir("first");
    platform.temp_directory_name.forget();
    platform.temp_directory_name.returns(Text());
    platform.get_current_path.throws(fl::filesystem::SystemError("second", 5, u"p"));
    expectExceptionFromTempDir("second");
    platform.get_current_path.forget();
    platform.make_native_form.throws(fl::filesystem::FsysExceptionBase("third", u"p", {}));
    expectExceptionFromTempDir("third");
}

TEST_F(TempNamesContract, FolderLetsOtherExceptionsPass) {
    platform.temp_directory_name.throws(7);
    EXPECT_THROW(getTempDir(), int);
    platform.temp_directory_name.forget();
    platform.temp_directory_name.throws(std::length_error("text"));
    EXPECT_THROW(getTempDir(), std::length_error);
}

TEST_F(TempNamesContract, NameIsDrawnFromTheArgumentsAsTheyStandAndNormalized) {
    EXPECT_EQ(getTempName(u"dir", u"pre", u"ext"), u"generic(native(dir/prerandomext))");
    EXPECT_EQ(platform.calls(), (Calls{"tmpnam('dir', 'pre', 'ext')", "exists('dir/prerandomext')",
                                       "make_native_form('dir/prerandomext', true)",
                                       "make_generic_form('native(dir/prerandomext)')"}));
}

TEST_F(TempNamesContract, NameHasUsualPartsWhereArgumentsAreEmpty) {
    EXPECT_EQ(getTempName(u"", u"", u""), u"generic(native(generic(native(tmp))/.random.tmp))");
    EXPECT_EQ(platform.callsTo({"temp_directory_name", "tmpnam"}),
              (Calls{"temp_directory_name()", "tmpnam('generic(native(tmp))', '.', '.tmp')"}));
}

TEST_F(TempNamesContract, NameReplacesEmptyArgumentsOneByOne) {
    getTempName(u"dir", u"", u"ext");
    getTempName(u"dir", u"pre", u"");
    getTempName(u"", u"pre", u"ext");
    EXPECT_EQ(platform.callsTo({"tmpnam"}),
              (Calls{"tmpnam('dir', '.', 'ext')", "tmpnam('dir', 'pre', '.tmp')",
                     "tmpnam('generic(native(tmp))', 'pre', 'ext')"}));
}

TEST_F(TempNamesContract, NameIsDrawnAgainAsLongAsItExists) {
    platform.tmpnam.returns(Text(u"a")).returns(Text(u"b")).returns(Text(u"c"));
    platform.exists.at(u"a").returns(true);
    platform.exists.at(u"b").returns(true);
    EXPECT_EQ(getTempName(u"dir", u"p", u"e"), u"generic(native(c))");
    EXPECT_EQ(platform.callsTo({"tmpnam", "exists"}),
              (Calls{"tmpnam('dir', 'p', 'e')", "exists('a')", "tmpnam('dir', 'p', 'e')", "exists('b')",
                     "tmpnam('dir', 'p', 'e')", "exists('c')"}));
}

TEST_F(TempNamesContract, NameIsDrawnWithoutALimit) {
    for (int i = 0; i < 1000; ++i) {
        platform.exists.returns(true);
    }
    platform.exists.returns(false);
    getTempName(u"dir", u"p", u"e");
    EXPECT_EQ(platform.callsTo({"tmpnam"}).size(), 1001u);
}

TEST_F(TempNamesContract, NameAsksForTheFolderOnce) {
    platform.exists.returns(true).returns(true).returns(false);
    getTempName(u"", u"p", u"e");
    EXPECT_EQ(platform.callsTo({"temp_directory_name"}), Calls{"temp_directory_name()"});
}

TEST_F(TempNamesContract, NameLetsFailuresPassAsTheyAre) {
    platform.tmpnam.throws(fl::filesystem::AccessDenied(u"p"));
    EXPECT_THROW(getTempName(u"dir", u"", u""), fl::filesystem::AccessDenied);
    platform.tmpnam.forget();
    platform.exists.throws(fl::filesystem::SystemError("text", 5, u"p"));
    EXPECT_THROW(getTempName(u"dir", u"", u""), fl::filesystem::SystemError);
    platform.exists.forget();
    platform.make_generic_form.throws(fl::filesystem::InvalidArgument(u"p"));
    EXPECT_THROW(getTempName(u"dir", u"", u""), fl::filesystem::InvalidArgument);
}

TEST_F(TempNamesContract, NameLetsTheExceptionOfTheFolderPass) {
    platform.temp_directory_name.throws(fl::filesystem::AccessDenied("text", u"p", {}));
    EXPECT_THROW(getTempName(u"", u"", u""), opc::Exception);
}

}  // namespace
