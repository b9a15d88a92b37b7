// How the virtual back end finds a free temporary name.

#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include "tests/contract/VirtualContract.hpp"

#include <stdexcept>

using contract::kFile;
using contract::kFolder;
using contract::storageFailure;
using contract::VirtualContract;
namespace errc = boost::system::errc;

namespace {

class VirtualTempName : public VirtualContract {
protected:
    opc::ustring tempName(const opc::ustring& folder) { return ops.doGetTempName(folder, msg, ec); }

    void scriptFolder(const opc::ustring& scheme, const opc::ustring& path) {
        storage.getScheme.returns(scheme);
        storage.getPath.returns(path);
    }

    /// Makes the IRIs of the first three candidates.
    void scriptThreeCandidates() {
        storage.toAbsoluteIRI.returns(u"first").returns(u"second").returns(u"third");
    }
};

TEST_F(VirtualTempName, InAFolderOfAnotherSchemePutsTheMarkOfAnAuthorityInFront) {
    scriptFolder(u"mem", u"store/a");
    EXPECT_EQ(tempName(u"d"), u"fromPath(mem+native(\\\\generic(native(store/a/.random.tmp))))");
    EXPECT_EQ(platform.calls(),
              (Calls{"AbsoluteIRI('d')", "AbsoluteIRI('iri(d)')", "getScheme('iri(iri(d))')",
                     "getPath('iri(iri(d))')", "tmpnam('store/a', '.', '.tmp')",
                     "make_native_form('store/a/.random.tmp', true)",
                     "make_generic_form('native(store/a/.random.tmp)')",
                     "make_native_form('\\\\generic(native(store/a/.random.tmp))', true)",
                     "toAbsoluteIRI('mem', 'native(\\\\generic(native(store/a/.random.tmp)))')",
                     "CanonicalAbsoluteIRI('fromPath(mem+native(\\\\generic(native(store/a/.random.tmp))))')",
                     "vfs::exists('canonical(fromPath(mem+native(\\\\generic(native(store/a/.random.tmp)))))'"
                     "@S)"}));
    expectNothingReported();
}

TEST_F(VirtualTempName, InAFolderOfTheSchemeFileDropsTheSlashOfTheRoot) {
    scriptFolder(u"file", u"/tmp/a");
    EXPECT_EQ(tempName(u"d"), u"fromPath(file+native(generic(native(tmp/a/.random.tmp))))");
    EXPECT_EQ(platform.callsTo({"tmpnam", "make_native_form", "make_generic_form", "toAbsoluteIRI"}),
              (Calls{"tmpnam('tmp/a', '.', '.tmp')", "make_native_form('tmp/a/.random.tmp', true)",
                     "make_generic_form('native(tmp/a/.random.tmp)')",
                     "make_native_form('generic(native(tmp/a/.random.tmp))', true)",
                     "toAbsoluteIRI('file', 'native(generic(native(tmp/a/.random.tmp)))')"}));
    expectNothingReported();
}

TEST_F(VirtualTempName, WithoutAFolderIsInTheTemporaryFolder) {
    scriptFolder(u"file", u"/x");
    tempName(u"");
    const Calls expected{"temp_directory_name()",
                         "make_native_form('tmp', true)",
                         "make_generic_form('native(tmp)')",
                         "make_native_form('generic(native(tmp))', true)",
                         "toAbsoluteIRI('file', 'native(generic(native(tmp)))')",
                         "AbsoluteIRI('fromPath(file+native(generic(native(tmp))))')",
                         "getScheme('iri(fromPath(file+native(generic(native(tmp)))))')",
                         "getPath('iri(fromPath(file+native(generic(native(tmp)))))')",
                         "tmpnam('x', '.', '.tmp')"};
    ASSERT_GE(platform.calls().size(), expected.size());
    EXPECT_EQ(Calls(platform.calls().begin(), platform.calls().begin() + 9), expected);
    expectNothingReported();
}

TEST_F(VirtualTempName, TheSchemeFileIsTakenToTheLetter) {
    scriptFolder(u"FILE", u"/tmp/a");
    tempName(u"d");
    EXPECT_EQ(platform.callsTo({"tmpnam"}), Calls{"tmpnam('/tmp/a', '.', '.tmp')"});
    EXPECT_EQ(platform.callsTo({"make_native_form"}).back(),
              "make_native_form('\\\\generic(native(/tmp/a/.random.tmp))', true)");
}

TEST_F(VirtualTempName, OneCharacterOfThePathIsDroppedWhateverItIs) {
    scriptFolder(u"file", u"xy");
    tempName(u"d");
    EXPECT_EQ(platform.callsTo({"tmpnam"}), Calls{"tmpnam('y', '.', '.tmp')"});
}

TEST_F(VirtualTempName, TheRootIsAFolderLikeAnyOther) {
    scriptFolder(u"file", u"/");
    EXPECT_EQ(tempName(u"d"), u"fromPath(file+native(generic(native(/.random.tmp))))");
    EXPECT_EQ(platform.callsTo({"tmpnam"}), Calls{"tmpnam('', '.', '.tmp')"});
    expectNothingReported();
}

TEST_F(VirtualTempName, AFileIRIWithoutAPathIsAnUnknownError) {
    scriptFolder(u"file", u"");
    EXPECT_EQ(tempName(u"d"), u"");
    expectReported(errc::io_error, "Unknown error");
    EXPECT_EQ(platform.callsTo({"tmpnam", "vfs::exists"}), Calls{});
}

TEST_F(VirtualTempName, AnEmptyPathOfAnotherSchemeIsNoFailure) {
    scriptFolder(u"mem", u"");
    EXPECT_NE(tempName(u"d"), u"");
    EXPECT_EQ(platform.callsTo({"tmpnam"}), Calls{"tmpnam('', '.', '.tmp')"});
    expectNothingReported();
}

TEST_F(VirtualTempName, AnEmptyNameIsNotShownToThePathLibraryAsANativePath) {
    scriptFolder(u"file", u"/a");
    platform.tmpnam.returns(u"");
    platform.make_generic_form.returns(u"");
    EXPECT_EQ(tempName(u"d"), u"fromPath(file+)");
    EXPECT_EQ(platform.callsTo({"make_native_form", "make_generic_form", "toAbsoluteIRI"}),
              (Calls{"make_generic_form('')", "toAbsoluteIRI('file', '')"}));
}

TEST_F(VirtualTempName, DrawsUntilANameIsFree) {
    scriptFolder(u"mem", u"s");
    scriptThreeCandidates();
    platform.tmpnam.returns(u"x").returns(u"y").returns(u"z");
    place(u"first", kFile);
    place(u"second", kFolder);
    EXPECT_EQ(tempName(u"d"), u"third");
    EXPECT_EQ(platform.callsTo({"tmpnam", "vfs::exists"}),
              (Calls{"tmpnam('s', '.', '.tmp')", "vfs::exists('canonical(first)'@S)",
                     "tmpnam('s', '.', '.tmp')", "vfs::exists('canonical(second)'@S)",
                     "tmpnam('s', '.', '.tmp')", "vfs::exists('canonical(third)'@S)"}));
    EXPECT_EQ(platform.callsTo({"toAbsoluteIRI"}),
              (Calls{"toAbsoluteIRI('mem', 'native(\\\\generic(native(x)))')",
                     "toAbsoluteIRI('mem', 'native(\\\\generic(native(y)))')",
                     "toAbsoluteIRI('mem', 'native(\\\\generic(native(z)))')"}));
    expectNothingReported();
}

TEST_F(VirtualTempName, HasNoLimitOnDrawing) {
    scriptFolder(u"mem", u"s");
    for (int i = 0; i < 1000; ++i) {
        storage.exists.returns(kFile);
    }
    storage.exists.returns(contract::kNothing);
    EXPECT_NE(tempName(u"d"), u"");
    EXPECT_EQ(platform.callsTo({"tmpnam"}).size(), 1001u);
}

TEST_F(VirtualTempName, TheFolderIsLookedAtOnce) {
    scriptFolder(u"mem", u"s");
    storage.exists.returns(kFile).returns(kFile).returns(contract::kNothing);
    tempName(u"d");
    EXPECT_EQ(platform.callsTo({"AbsoluteIRI", "getScheme", "getPath"}),
              (Calls{"AbsoluteIRI('d')", "AbsoluteIRI('iri(d)')", "getScheme('iri(iri(d))')",
                     "getPath('iri(iri(d))')"}));
}

TEST_F(VirtualTempName, AFailingLookUpEndsTheSearchWithTheCandidateAndTheFailure) {
    scriptFolder(u"mem", u"s");
    scriptThreeCandidates();
    storage.exists.returns(kFile).throws(storageFailure());
    EXPECT_EQ(tempName(u"d"), u"second");
    expectReported(errc::permission_denied, "words: user(p)");
    EXPECT_EQ(platform.callsTo({"tmpnam"}).size(), 2u);
}

TEST_F(VirtualTempName, ALookUpFailureWithoutACodeOfItsOwnEndsTheSearchAsIfItWereNone) {
    scriptFolder(u"mem", u"s");
    scriptThreeCandidates();
    storage.exists.returns(kFile).throws(
        storageFailure(static_cast<foundation::storage::vfs::ErrorCode>(12)));
    const boost::system::error_code before = ec;
    EXPECT_EQ(tempName(u"d"), u"second");
    EXPECT_EQ(ec, before);
    EXPECT_EQ(msg, "words: user(p)");
}

TEST_F(VirtualTempName, AFailureOfTheTemporaryFolderIsReportedWithItsText) {
    platform.temp_directory_name.throws(fl::filesystem::AccessDenied("no folder", u"p", {}));
    EXPECT_EQ(tempName(u""), u"");
    expectReported(errc::io_error, "no folder");
}

/// Knows by itself what exists.
class OwnExists : public contract::OpenVirtualOps {
public:
    using OpenOps::OpenOps;

    std::vector<opc::ustring> asked;
    std::vector<std::string*> messages;
    std::vector<boost::system::error_code*> codes;
    bool throws = false;

protected:
    bool doExists(const opc::ustring& path, std::string& msg, boost::system::error_code& ec) override {
        if (throws) {
            throw std::runtime_error("words of the override");
        }
        asked.push_back(path);
        messages.push_back(&msg);
        codes.push_back(&ec);
        return asked.size() < 3;
    }
};

TEST_F(VirtualTempName, HonoursAnOverrideOfExistsAndGivesItTheOutParametersOfTheCaller) {
    scriptFolder(u"mem", u"s");
    scriptThreeCandidates();
    OwnExists own{scripted::storageSystem("S")};
    EXPECT_EQ(own.doGetTempName(u"d", msg, ec), u"third");
    EXPECT_EQ(own.asked, (std::vector<opc::ustring>{u"first", u"second", u"third"}));
    EXPECT_EQ(own.messages, std::vector<std::string*>(3, &msg));
    EXPECT_EQ(own.codes, std::vector<boost::system::error_code*>(3, &ec));
    EXPECT_EQ(platform.callsTo({"vfs::exists"}), Calls{});
    expectNothingReported();
}

TEST_F(VirtualTempName, TranslatesWhatAnOverrideOfExistsThrows) {
    scriptFolder(u"mem", u"s");
    OwnExists own{scripted::storageSystem("S")};
    own.throws = true;
    EXPECT_EQ(own.doGetTempName(u"d", msg, ec), u"");
    expectReported(errc::io_error, "words of the override");
}

}  // namespace
