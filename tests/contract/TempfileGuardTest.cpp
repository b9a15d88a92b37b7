// What a guard of a temporary file asks of the platform, and in which order.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/util/TempfileGuard.hpp>

#include "tests/contract/GuardContract.hpp"

#include <optional>

using contract::GuardContract;
using opc::util::TempfileGuard;
using scripted::Calls;

namespace {

using Text = std::u16string;
namespace fsys = fl::filesystem;

class TempfileGuardContract : public GuardContract {
protected:
    /// The calls that a construction makes up to its first failure.
    Calls callsUntilFailure() {
        EXPECT_ANY_THROW(TempfileGuard(u"/d", u"p", u"e"));
        return platform.callsTo({"tmpfile", "fclose", "make_native_form", "make_generic_form", "remove"});
    }
};

TEST_F(TempfileGuardContract, CreatesClosesAtOnceAndNormalizesTheName) {
    platform.tmpfileName = u"made";
    const TempfileGuard guard(u"/d", u"p", u"e");
    EXPECT_EQ(guard.getFileName(), u"generic(native(made))");
    EXPECT_EQ(platform.calls(),
              (Calls{"make_native_form('/d', true)", "is_absolute('native(/d)')", "tmpfile('/d', 'p', 'e')",
                     "fclose()", "make_native_form('made', true)", "make_generic_form('native(made)')"}));
}

TEST_F(TempfileGuardContract, TakesTheDefaultsWithoutArguments) {
    const TempfileGuard guard;
    EXPECT_EQ(platform.callsTo({"temp_directory_name", "tmpfile", "get_current_path"}),
              (Calls{"temp_directory_name()", "tmpfile('generic(native(tmp))', '.', '.tmp')"}));
}

TEST_F(TempfileGuardContract, ReplacesEmptyArgumentsOneByOne) {
    const TempfileGuard directory(u"/d");
    const TempfileGuard directoryAndPrefix(u"/d", u"p");
    const TempfileGuard extension(u"/d", u"", u"e");
    const TempfileGuard prefix(u"", u"p", u"");
    EXPECT_EQ(platform.callsTo({"tmpfile"}),
              (Calls{"tmpfile('/d', '.', '.tmp')", "tmpfile('/d', 'p', '.tmp')", "tmpfile('/d', '.', 'e')",
                     "tmpfile('generic(native(tmp))', 'p', '.tmp')"}));
}

TEST_F(TempfileGuardContract, StandsInTheWorkingDirectoryWhereNoTemporaryOneIsKnown) {
    platform.temp_directory_name.returns(Text());
    const TempfileGuard guard;
    EXPECT_EQ(platform.callsTo({"tmpfile"}), Calls{"tmpfile('generic(native(cwd))', '.', '.tmp')"});
}

TEST_F(TempfileGuardContract, ReadsARelativeDirectoryFromTheWorkingDirectory) {
    platform.is_absolute.at(u"native(d)").returns(false);
    const TempfileGuard guard(u"d", u"p", u"e");
    EXPECT_EQ(platform.callsTo({"concatenate_pathname", "tmpfile"}),
              (Calls{"concatenate_pathname('cwd', 'd', true)", "tmpfile('join(cwd+d)', 'p', 'e')"}));
}

TEST_F(TempfileGuardContract, FailsWithOneTextWhereThePlatformGivesNoFile) {
    platform.tmpfile.returns(static_cast<std::FILE*>(nullptr));
    expectException([] { TempfileGuard(u"/d", u"p", u"e"); }, "Temp file could not be created");
    EXPECT_EQ(platform.callsTo({"fclose", "remove"}), Calls());
}

TEST_F(TempfileGuardContract, LetsEachExceptionOfTheCreationPassUnchanged) {
    forEachException([&](const contract::Thrown& thrown) {
        platform.tmpfile.forget();
        platform.tmpfile.rethrows(thrown.exception);
        EXPECT_TRUE(thrown.leaves([] { TempfileGuard(u"/d", u"p", u"e"); }));
    });
    EXPECT_EQ(platform.callsTo({"fclose", "remove"}), Calls());
}

TEST_F(TempfileGuardContract, LetsTheExceptionsOfTheTemporaryFolderPass) {
    platform.temp_directory_name.throws(fsys::AccessDenied("a text", u"path", {}));
    expectException([] { TempfileGuard(); }, "a text");
    platform.temp_directory_name.forget();
    platform.temp_directory_name.throws(7);
    EXPECT_THROW(TempfileGuard(), int);
    EXPECT_EQ(platform.callsTo({"tmpfile"}), Calls());
}

TEST_F(TempfileGuardContract, RemovesAFileWhoseNameCannotBeNormalized) {
    platform.tmpfileName = u"made";
    platform.make_native_form.at(u"made").throws(fsys::InvalidArgument(u"made"));
    EXPECT_EQ(callsUntilFailure(), (Calls{"make_native_form('/d', true)", "tmpfile('/d', 'p', 'e')",
                                          "fclose()", "make_native_form('made', true)", "remove('made')"}));
}

TEST_F(TempfileGuardContract, LetsEachExceptionOfTheNamePassUnchanged) {
    forEachException([&](const contract::Thrown& thrown) {
        platform.make_generic_form.forget();
        platform.make_generic_form.rethrows(thrown.exception);
        EXPECT_TRUE(thrown.leaves([] { TempfileGuard(u"/d", u"p", u"e"); }));
    });
}

TEST_F(TempfileGuardContract, TheExceptionOfTheNameIsTheOneThatIsSeen) {
    platform.make_generic_form.throws(fsys::InvalidArgument(u"name"));
    platform.remove.throws(fsys::AccessDenied(u"name"));
    EXPECT_THROW(TempfileGuard(u"/d"), fsys::InvalidArgument);
}

TEST_F(TempfileGuardContract, RemovesTheNormalizedNameAtItsEndAndNothingBefore) {
    platform.tmpfileName = u"made";
    std::optional<TempfileGuard> guard(std::in_place, u"/d", u"p", u"e");
    EXPECT_EQ(platform.callsTo({"remove", "remove_all"}), Calls());
    const std::size_t before = platform.calls().size();
    guard.reset();
    EXPECT_EQ(platform.callsTo({"remove", "remove_all"}), Calls{"remove('generic(native(made))')"});
    EXPECT_EQ(platform.calls().size(), before + 1);
}

TEST_F(TempfileGuardContract, DropsEveryExceptionOfTheRemoval) {
    std::size_t attempts = 0;
    forEachException([&](const contract::Thrown& thrown) {
        platform.remove.forget();
        platform.remove.rethrows(thrown.exception);
        EXPECT_NO_THROW({ const TempfileGuard guard(u"/d"); });
        EXPECT_EQ(platform.callsTo({"remove"}).size(), ++attempts);
    });
}

TEST_F(TempfileGuardContract, RemovesNothingOnceReleased) {
    platform.tmpfileName = u"made";
    {
        TempfileGuard guard(u"/d");
        guard.release();
        guard.release();
        EXPECT_EQ(guard.getFileName(), u"generic(native(made))");
    }
    EXPECT_EQ(platform.callsTo({"remove", "remove_all"}), Calls());
}

}  // namespace
