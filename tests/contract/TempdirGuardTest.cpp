// What a guard of a temporary folder asks of the platform, and in which order.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/util/TempdirGuard.hpp>

#include "tests/contract/GuardContract.hpp"

#include <optional>

using contract::GuardContract;
using opc::util::TempdirGuard;
using scripted::Calls;

namespace {

using Text = std::u16string;
namespace fsys = fl::filesystem;

const std::string kNotCreated = "Temporary directory could not be created. ";

class TempdirGuardContract : public GuardContract {
protected:
    static void make() { TempdirGuard(u"/d", u"p", u"e"); }
};

TEST_F(TempdirGuardContract, DrawsAFreeNameAndCreatesTheFolder) {
    const TempdirGuard guard(u"/d", u"p", u"e");
    EXPECT_EQ(guard.getDirectoryName(), u"generic(native(/d/prandome))");
    EXPECT_EQ(platform.calls(),
              (Calls{"make_native_form('/d', true)", "is_absolute('native(/d)')", "tmpnam('/d', 'p', 'e')",
                     "exists('/d/prandome')", "make_native_form('/d/prandome', true)",
                     "make_generic_form('native(/d/prandome)')",
                     "create_directory('generic(native(/d/prandome))')"}));
}

TEST_F(TempdirGuardContract, TakesTheDefaultsWithoutArguments) {
    const TempdirGuard guard;
    EXPECT_EQ(platform.callsTo({"temp_directory_name", "tmpnam", "get_current_path"}),
              (Calls{"temp_directory_name()", "tmpnam('generic(native(tmp))', '.', '.tmp')"}));
}

TEST_F(TempdirGuardContract, ReplacesEmptyArgumentsOneByOne) {
    const TempdirGuard directory(u"/d");
    const TempdirGuard directoryAndPrefix(u"/d", u"p");
    const TempdirGuard extension(u"/d", u"", u"e");
    const TempdirGuard prefix(u"", u"p", u"");
    EXPECT_EQ(platform.callsTo({"tmpnam"}),
              (Calls{"tmpnam('/d', '.', '.tmp')", "tmpnam('/d', 'p', '.tmp')", "tmpnam('/d', '.', 'e')",
                     "tmpnam('generic(native(tmp))', 'p', '.tmp')"}));
}

TEST_F(TempdirGuardContract, ReadsARelativeDirectoryFromTheWorkingDirectory) {
    platform.is_absolute.at(u"native(d)").returns(false);
    const TempdirGuard guard(u"d", u"p", u"e");
    EXPECT_EQ(platform.callsTo({"concatenate_pathname", "tmpnam"}),
              (Calls{"concatenate_pathname('cwd', 'd', true)", "tmpnam('join(cwd+d)', 'p', 'e')"}));
}

TEST_F(TempdirGuardContract, TakesARelativeDirectoryAsItIsWithoutAWorkingDirectory) {
    platform.is_absolute.at(u"native(d)").returns(false);
    platform.get_current_path.throws(fl::filesystem::PathNotFound(u""));
    const TempdirGuard guard(u"d", u"p", u"e");
    EXPECT_EQ(platform.callsTo({"tmpnam"}), (Calls{"tmpnam('d', 'p', 'e')"}));
}

TEST_F(TempdirGuardContract, DrawsAgainAsLongAsANameIsTaken) {
    platform.tmpnam.returns(Text(u"a")).returns(Text(u"b"));
    platform.exists.at(u"a").returns(true);
    const TempdirGuard guard(u"/d");
    EXPECT_EQ(platform.callsTo({"create_directory"}), Calls{"create_directory('generic(native(b))')"});
}

TEST_F(TempdirGuardContract, DoesNotLookAtWhatTheCreationAnswers) {
    platform.create_directory.returns(false);
    EXPECT_NO_THROW({ const TempdirGuard guard(u"/d"); });
    EXPECT_EQ(platform.callsTo({"remove_all"}).size(), 1U);
}

TEST_F(TempdirGuardContract, FailsWithTheTextOfTheCreationAndThePathBehindIt) {
    platform.create_directory.throws(fsys::FileExistsError("a text", u"a path", {}));
    expectException(make, kNotCreated + "a text: user(a path)");
    platform.create_directory.forget();
    platform.create_directory.throws(fsys::FsysExceptionBase("", u"a path", {}));
    expectException(make, kNotCreated + ": user(a path)");
}

TEST_F(TempdirGuardContract, FailsWithTheTextAloneWhereThereIsNoPath) {
    platform.create_directory.throws(fsys::SystemError("a text", 5, u""));
    expectException(make, kNotCreated + "a text");
    platform.create_directory.forget();
    platform.create_directory.throws(fsys::FsysExceptionBase("", u"", {u"another"}));
    expectException(make, kNotCreated);
}

TEST_F(TempdirGuardContract, TranslatesEveryFailureOfTheFileSystemFromTheCreation) {
    for (const contract::Thrown& thrown : contract::fileSystemFailures()) {
        platform.create_directory.forget();
        platform.create_directory.rethrows(thrown.exception);
        expectException(make, kNotCreated + thrown.text + ": user(path)");
    }
    EXPECT_EQ(platform.callsTo({"remove", "remove_all"}), Calls());
}

TEST_F(TempdirGuardContract, LetsOtherExceptionsOfTheCreationPassUnchanged) {
    for (const contract::Thrown& thrown : contract::otherExceptions()) {
        platform.create_directory.forget();
        platform.create_directory.rethrows(thrown.exception);
        EXPECT_TRUE(thrown.leaves(make));
    }
    EXPECT_EQ(platform.callsTo({"remove", "remove_all"}), Calls());
}

TEST_F(TempdirGuardContract, LetsEachExceptionOfTheNamePassUnchanged) {
    forEachException([&](const contract::Thrown& thrown) {
        platform.tmpnam.forget();
        platform.tmpnam.rethrows(thrown.exception);
        EXPECT_TRUE(thrown.leaves(make));
        platform.tmpnam.forget();
        platform.exists.forget();
        platform.exists.rethrows(thrown.exception);
        EXPECT_TRUE(thrown.leaves(make));
        platform.exists.forget();
    });
    EXPECT_EQ(platform.callsTo({"create_directory", "remove_all"}), Calls());
}

TEST_F(TempdirGuardContract, LetsTheExceptionOfTheTemporaryFolderPass) {
    platform.temp_directory_name.throws(fsys::AccessDenied("a text", u"path", {}));
    expectException([] { TempdirGuard(); }, "a text");
}

TEST_F(TempdirGuardContract, RemovesTheTreeAtItsEndAndNothingBefore) {
    std::optional<TempdirGuard> guard(std::in_place, u"/d", u"p", u"e");
    EXPECT_EQ(platform.callsTo({"remove", "remove_all"}), Calls());
    const std::size_t before = platform.calls().size();
    guard.reset();
    EXPECT_EQ(platform.callsTo({"remove", "remove_all"}),
              Calls{"remove_all('generic(native(/d/prandome))')"});
    EXPECT_EQ(platform.calls().size(), before + 1);
}

TEST_F(TempdirGuardContract, DropsEveryExceptionOfTheRemoval) {
    std::size_t attempts = 0;
    forEachException([&](const contract::Thrown& thrown) {
        platform.remove_all.forget();
        platform.remove_all.rethrows(thrown.exception);
        EXPECT_NO_THROW({ const TempdirGuard guard(u"/d"); });
        EXPECT_EQ(platform.callsTo({"remove_all"}).size(), ++attempts);
    });
}

TEST_F(TempdirGuardContract, RemovesNothingOnceReleased) {
    {
        TempdirGuard guard(u"/d", u"p", u"e");
        guard.release();
        guard.release();
        EXPECT_EQ(guard.getDirectoryName(), u"generic(native(/d/prandome))");
    }
    EXPECT_EQ(platform.callsTo({"remove", "remove_all"}), Calls());
}

}  // namespace
