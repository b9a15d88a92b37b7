// What the local back end asks about items, and the two settings that are asked and set in pairs.

#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include "tests/contract/LocalContract.hpp"

using contract::LocalContract;
using fl::filesystem::file_status;
using opc::Perms;
using scripted::ofKind;
namespace errc = boost::system::errc;

namespace {

const boost::posix_time::ptime kTime(boost::gregorian::date(2024, 2, 29),
                                     boost::posix_time::time_duration(0, 0, 0, 1));
const boost::posix_time::ptime kNoTime(boost::posix_time::not_a_date_time);

constexpr unsigned kAllKinds[] = {
    file_status::file_not_found, file_status::regular_file, file_status::directory_file,
    file_status::symlink_file,   file_status::block_file,   file_status::character_file,
    file_status::fifo_file,      file_status::socket_file,  file_status::unknown_file,
};

class LocalQueries : public LocalContract {
protected:
    /// Nothing but one query of the item itself: a link is never followed.
    void expectOneStatusQuery() const { EXPECT_EQ(platform.calls(), Calls{"symlink_status('a')"}); }
};

TEST_F(LocalQueries, ExistsIsTrueForEveryKindThatIsThere) {
    for (const unsigned kind : kAllKinds) {
        platform.symlink_status.forget();
        platform.symlink_status.returns(ofKind(kind));
        EXPECT_EQ(ops.doExists(u"a", msg, ec), kind != file_status::file_not_found) << kind;
    }
    expectNothingReported();
}

TEST_F(LocalQueries, IsFileIsTrueForARegularFileAlone) {
    for (const unsigned kind : kAllKinds) {
        platform.symlink_status.forget();
        platform.symlink_status.returns(ofKind(kind));
        EXPECT_EQ(ops.doIsFile(u"a", msg, ec), kind == file_status::regular_file) << kind;
    }
    expectNothingReported();
}

TEST_F(LocalQueries, IsFolderIsTrueForAFolderAlone) {
    for (const unsigned kind : kAllKinds) {
        platform.symlink_status.forget();
        platform.symlink_status.returns(ofKind(kind));
        EXPECT_EQ(ops.doIsFolder(u"a", msg, ec), kind == file_status::directory_file) << kind;
    }
    expectNothingReported();
}

TEST_F(LocalQueries, IsSymlinkIsTrueForALinkAlone) {
    for (const unsigned kind : kAllKinds) {
        platform.symlink_status.forget();
        platform.symlink_status.returns(ofKind(kind));
        EXPECT_EQ(ops.doIsSymlink(u"a", msg, ec), kind == file_status::symlink_file) << kind;
    }
    expectNothingReported();
}

TEST_F(LocalQueries, ExistsAsksForTheStatusOfTheItemItself) {
    ops.doExists(u"a", msg, ec);
    expectOneStatusQuery();
}

TEST_F(LocalQueries, IsFileAsksForTheStatusOfTheItemItself) {
    ops.doIsFile(u"a", msg, ec);
    expectOneStatusQuery();
}

TEST_F(LocalQueries, IsFolderAsksForTheStatusOfTheItemItself) {
    ops.doIsFolder(u"a", msg, ec);
    expectOneStatusQuery();
}

TEST_F(LocalQueries, IsSymlinkAsksForTheStatusOfTheItemItself) {
    ops.doIsSymlink(u"a", msg, ec);
    expectOneStatusQuery();
}

TEST_F(LocalQueries, PermissionsKeepTheBitsOfTheFileAndItsAttributes) {
    constexpr unsigned kKept = file_status::perms_all | file_status::archive_file |
                               file_status::non_indexed_file | file_status::hidden_file |
                               file_status::system_file;
    for (unsigned bit = 1; bit != 0; bit <<= 1) {
        file_status status = scripted::aFile();
        status.permissions = bit;
        platform.symlink_status.forget();
        platform.symlink_status.returns(status);
        EXPECT_EQ(ops.doGetPermissions(u"a", msg, ec), bit & kKept) << std::hex << bit;
    }
    expectNothingReported();
}

TEST_F(LocalQueries, PermissionsOfALinkAreItsOwn) {
    file_status status = scripted::aLink();
    status.permissions = 0777 | file_status::perms_symlink | file_status::hidden_file;
    platform.symlink_status.returns(status);
    EXPECT_EQ(ops.doGetPermissions(u"a", msg, ec), 0777 | file_status::hidden_file);
    expectOneStatusQuery();
}

TEST_F(LocalQueries, PermissionsOfNothingAreAFailureWithoutAPath) {
    EXPECT_EQ(ops.doGetPermissions(u"a", msg, ec), Perms::NotKnown);
    expectReported(errc::no_such_file_or_directory, fl::filesystem::PathNotFound(u"").what());
    expectOneStatusQuery();
}

TEST_F(LocalQueries, SettingPermissionsActsOnALinkItself) {
    ops.doSetPermissions(u"a", static_cast<Perms::Perms_tag>(0640), msg, ec);
    EXPECT_EQ(platform.calls(),
              Calls{"permissions('a', " + std::to_string(0640 | file_status::perms_symlink) + ")"});
    expectNothingReported();
}

TEST_F(LocalQueries, SettingPermissionsPassesEveryBit) {
    ops.doSetPermissions(u"a", static_cast<Perms::Perms_tag>(0xFFFE'0000), msg, ec);
    ops.doSetPermissions(u"a", static_cast<Perms::Perms_tag>(0), msg, ec);
    EXPECT_EQ(platform.calls(),
              (Calls{"permissions('a', " + std::to_string(0xFFFF'0000) + ")",
                     "permissions('a', " + std::to_string(file_status::perms_symlink) + ")"}));
}

TEST_F(LocalQueries, SettingUnknownPermissionsDoesNothing) {
    ops.doSetPermissions(u"a", Perms::NotKnown, msg, ec);
    ops.doSetPermissions(u"", Perms::NotKnown, msg, ec);
    EXPECT_EQ(platform.calls(), Calls{});
    expectNothingReported();
}

TEST_F(LocalQueries, SettingPermissionsOfAnEmptyPathIsInvalid) {
    ops.doSetPermissions(u"", Perms::ReadWrite, msg, ec);
    EXPECT_EQ(platform.calls(), Calls{});
    expectReported(errc::invalid_argument, "Empty path not permitted");
}

TEST_F(LocalQueries, TimeIsThatOfTheStatusAsItStands) {
    file_status status = scripted::aFolder();
    status.lastWriteTime = kTime;
    platform.symlink_status.returns(status);
    EXPECT_EQ(ops.doGetLastModifiedTime(u"a", msg, ec), kTime);
    expectOneStatusQuery();
    expectNothingReported();
}

TEST_F(LocalQueries, TimeOfAnItemWithoutOneIsNoFailure) {
    platform.symlink_status.returns(scripted::aFile());
    EXPECT_TRUE(ops.doGetLastModifiedTime(u"a", msg, ec).is_not_a_date_time());
    expectNothingReported();
}

TEST_F(LocalQueries, TimeOfNothingIsAFailureWithoutAPath) {
    EXPECT_TRUE(ops.doGetLastModifiedTime(u"a", msg, ec).is_not_a_date_time());
    expectReported(errc::no_such_file_or_directory, fl::filesystem::PathNotFound(u"").what());
    expectOneStatusQuery();
}

TEST_F(LocalQueries, SettingATimePassesItUnchanged) {
    ops.doSetLastModifiedTime(u"a", kTime, msg, ec);
    EXPECT_EQ(platform.calls(), Calls{"last_write_time('a', 20240229T000000.000001)"});
    expectNothingReported();
}

TEST_F(LocalQueries, SettingNoTimeDoesNothing) {
    ops.doSetLastModifiedTime(u"a", kNoTime, msg, ec);
    ops.doSetLastModifiedTime(u"", kNoTime, msg, ec);
    EXPECT_EQ(platform.calls(), Calls{});
    expectNothingReported();
}

TEST_F(LocalQueries, SettingOtherSpecialTimesIsLeftToThePlatform) {
    ops.doSetLastModifiedTime(u"a", boost::posix_time::ptime(boost::posix_time::pos_infin), msg, ec);
    EXPECT_EQ(platform.calls(), Calls{"last_write_time('a', +infinity)"});
}

TEST_F(LocalQueries, SettingATimeDoesNotLookWhetherThePathIsEmpty) {
    ops.doSetLastModifiedTime(u"", kTime, msg, ec);
    EXPECT_EQ(platform.calls(), Calls{"last_write_time('', 20240229T000000.000001)"});
}

TEST_F(LocalQueries, LinkTargetIsNormalized) {
    EXPECT_EQ(ops.doGetLinkTarget(u"a", msg, ec), u"generic(native(target(a)))");
    EXPECT_EQ(platform.calls(), (Calls{"read_symlink('a')", "make_native_form('target(a)', true)",
                                       "make_generic_form('native(target(a))')"}));
    expectNothingReported();
}

/// Normalizes in its own way.
class OwnNormalizing : public contract::OpenLocalOps {
protected:
    opc::ustring doNormalizePath(const opc::ustring& path, std::string&,
                                 boost::system::error_code&) override {
        return u"own(" + path + u")";
    }
};

TEST_F(LocalQueries, LinkTargetIsNormalizedThroughTheVirtualOperation) {
    EXPECT_EQ(OwnNormalizing().doGetLinkTarget(u"a", msg, ec), u"own(target(a))");
}

}  // namespace
