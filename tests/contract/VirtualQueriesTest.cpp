// What the virtual back end says about an item: whether it is there, its permissions, its time.

#include "tests/contract/VirtualContract.hpp"

#include <boost/date_time/posix_time/posix_time_types.hpp>

using contract::kFile;
using contract::kFolder;
using contract::kNothing;
using contract::VirtualContract;
using opc::Perms;
namespace errc = boost::system::errc;

namespace {

const boost::posix_time::ptime kTime(boost::gregorian::date(2024, 2, 29),
                                     boost::posix_time::microseconds(123456));

class VirtualQueries : public VirtualContract {
protected:
    /// What a look-up of u"a" asks of the platform.
    const Calls lookUp{"CanonicalAbsoluteIRI('a')", "vfs::exists('canonical(a)'@S)"};

    void expectCalls(const Calls& further) const {
        Calls all = lookUp;
        all.insert(all.end(), further.begin(), further.end());
        EXPECT_EQ(platform.calls(), all);
    }

    static Perms::Perms_tag bits(unsigned value) { return static_cast<Perms::Perms_tag>(value); }
};

TEST_F(VirtualQueries, ExistsLooksUpTheCanonicalIRI) {
    EXPECT_FALSE(ops.doExists(u"a", msg, ec));
    expectCalls({});
    expectNothingReported();
}

TEST_F(VirtualQueries, EachKindAnswersItsQueries) {
    struct Row {
        foundation::storage::vfs::ExistenceType there;
        bool exists;
        bool isFile;
        bool isFolder;
    };
    const Row rows[] = {
        {kFile, true, true, false}, {kFolder, true, false, true}, {kNothing, false, false, false}};
    for (const Row& row : rows) {
        SCOPED_TRACE(scripted::show(row.there));
        storage.exists.forget();
        storage.exists.returns(row.there);
        EXPECT_EQ(ops.doExists(u"a", msg, ec), row.exists);
        EXPECT_EQ(ops.doIsFile(u"a", msg, ec), row.isFile);
        EXPECT_EQ(ops.doIsFolder(u"a", msg, ec), row.isFolder);
    }
    expectNothingReported();
}

TEST_F(VirtualQueries, TheKindsHaveTheValuesOfTheStorageLibrary) {
    EXPECT_EQ(static_cast<unsigned>(kFile), 0u);
    EXPECT_EQ(static_cast<unsigned>(kFolder), 1u);
    EXPECT_EQ(static_cast<unsigned>(kNothing), 2u);
}

TEST_F(VirtualQueries, AFileOrFolderIsLookedUpOnce) {
    ops.doIsFile(u"a", msg, ec);
    expectCalls({});
    ops.doIsFolder(u"b", msg, ec);
    EXPECT_EQ(platform.callsTo({"vfs::exists"}),
              (Calls{"vfs::exists('canonical(a)'@S)", "vfs::exists('canonical(b)'@S)"}));
}

TEST_F(VirtualQueries, NothingIsASymlink) {
    EXPECT_FALSE(ops.doIsSymlink(u"a", msg, ec));
    EXPECT_FALSE(ops.doIsSymlink(u"", msg, ec));
    EXPECT_EQ(platform.calls(), Calls{});
    expectNothingReported();
}

TEST_F(VirtualQueries, LinkTargetIsRefusedWithoutALook) {
    EXPECT_EQ(ops.doGetLinkTarget(u"a", msg, ec), u"");
    expectReported(errc::operation_not_supported, "Symlinks are not supported");
    EXPECT_EQ(platform.calls(), Calls{});
}

TEST_F(VirtualQueries, PermissionsOfAWritableFileAreReadAndWrite) {
    place(u"a", kFile);
    EXPECT_EQ(ops.doGetPermissions(u"a", msg, ec), 0666u);
    expectCalls({"isWritable(File 'canonical(a)'@S)"});
    expectNothingReported();
}

TEST_F(VirtualQueries, PermissionsOfAReadOnlyFolderAreRead) {
    place(u"a", kFolder);
    storage.isWritable.returns(false);
    EXPECT_EQ(ops.doGetPermissions(u"a", msg, ec), 0444u);
    expectCalls({"isWritable(Folder 'canonical(a)'@S)"});
    expectNothingReported();
}

TEST_F(VirtualQueries, PermissionsOfNothingAreNotKnown) {
    EXPECT_EQ(ops.doGetPermissions(u"a", msg, ec), 65535u);
    expectNotFound("a");
    EXPECT_EQ(platform.callsTo({"isWritable"}), Calls{});
}

TEST_F(VirtualQueries, AnyWriteBitMakesAnItemWritable) {
    place(u"a", kFile);
    for (const unsigned value : {0666u, 0222u, 0200u, 020u, 02u, 0777u, 0202u, 0xFFFEu}) {
        ops.doSetPermissions(u"a", bits(value), msg, ec);
    }
    EXPECT_EQ(platform.callsTo({"File::setWritable"}), Calls(8, "File::setWritable('canonical(a)'@S, true)"));
    expectNothingReported();
}

TEST_F(VirtualQueries, NoWriteBitMakesAnItemReadOnly) {
    place(u"a", kFolder);
    for (const unsigned value : {0444u, 0555u, 0u, 0111u, 07000u, 0x10000u}) {
        ops.doSetPermissions(u"a", bits(value), msg, ec);
    }
    EXPECT_EQ(platform.callsTo({"Folder::setWritable"}),
              Calls(6, "Folder::setWritable('canonical(a)'@S, false)"));
    expectNothingReported();
}

TEST_F(VirtualQueries, PermissionsAreSetOnWhatWasLookedUp) {
    place(u"a", kFile);
    ops.doSetPermissions(u"a", opc::Perms::ReadOnly, msg, ec);
    expectCalls({"File::setWritable('canonical(a)'@S, false)"});
}

TEST_F(VirtualQueries, SettingUnknownPermissionsDoesNothingAtAll) {
    ops.doSetPermissions(u"missing", bits(0xFFFF), msg, ec);
    EXPECT_EQ(platform.calls(), Calls{});
    expectNothingReported();
}

TEST_F(VirtualQueries, SettingPermissionsOfNothingIsReported) {
    ops.doSetPermissions(u"a", bits(0666), msg, ec);
    expectNotFound("a");
    EXPECT_EQ(platform.callsTo({"File::setWritable", "Folder::setWritable"}), Calls{});
}

TEST_F(VirtualQueries, TimeIsThatOfTheEntry) {
    place(u"a", kFile);
    storage.getLastModified.returns(kTime);
    EXPECT_EQ(ops.doGetLastModifiedTime(u"a", msg, ec), kTime);
    expectCalls({"getLastModified(File 'canonical(a)'@S)"});
    place(u"b", kFolder);
    EXPECT_EQ(ops.doGetLastModifiedTime(u"b", msg, ec), kTime);
    EXPECT_EQ(platform.calls().back(), "getLastModified(Folder 'canonical(b)'@S)");
    expectNothingReported();
}

TEST_F(VirtualQueries, TimeOfNothingIsNoTime) {
    storage.getLastModified.returns(kTime);
    EXPECT_TRUE(ops.doGetLastModifiedTime(u"a", msg, ec).is_not_a_date_time());
    expectNotFound("a");
}

TEST_F(VirtualQueries, SettingTheTimePassesItOn) {
    place(u"a", kFile);
    ops.doSetLastModifiedTime(u"a", kTime, msg, ec);
    expectCalls({"File::setLastModified('canonical(a)'@S, 20240229T000000.123456)"});
    place(u"b", kFolder);
    ops.doSetLastModifiedTime(u"b", kTime, msg, ec);
    EXPECT_EQ(platform.calls().back(), "Folder::setLastModified('canonical(b)'@S, 20240229T000000.123456)");
    expectNothingReported();
}

TEST_F(VirtualQueries, SettingNoTimeIsLeftToTheStorageAsWell) {
    place(u"a", kFile);
    const boost::posix_time::ptime none(boost::posix_time::not_a_date_time);
    ops.doSetLastModifiedTime(u"a", none, msg, ec);
    expectCalls({"File::setLastModified('canonical(a)'@S, not-a-date-time)"});
    expectNothingReported();
    ops.doSetLastModifiedTime(u"missing", none, msg, ec);
    expectNotFound("missing");
}

TEST_F(VirtualQueries, SettingTheTimeOfNothingIsReported) {
    ops.doSetLastModifiedTime(u"a", kTime, msg, ec);
    expectNotFound("a");
    EXPECT_EQ(platform.callsTo({"File::setLastModified", "Folder::setLastModified"}), Calls{});
}

}  // namespace
