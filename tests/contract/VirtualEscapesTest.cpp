// Which operations of the virtual back end turn an exception into a message, a code and a neutral result, and
// which let it pass: each of the 27, for each call of the platform that it makes.

#include <pkgcore/core/Exception.hpp>

#include "tests/contract/VirtualContract.hpp"

#include <functional>

using contract::kFile;
using contract::kFolder;
using contract::OpenVirtualOps;
using contract::VirtualContract;
using contract::VirtualFixture;
using foundation::storage::vfs::InvalidIRIException;
using scripted::Platform;
using scripted::show;
using scripted::StorageScript;
namespace errc = boost::system::errc;

namespace {

using Code = boost::system::error_code;
using Failure = std::exception_ptr;

const boost::posix_time::ptime kTime(boost::gregorian::date(2024, 2, 29));

/// One operation and one call of the platform in it that fails.
struct Case {
    std::string name;
    std::function<void(Platform&, StorageScript&, const Failure&)> script;
    /// Gives the result as text, "-" for none.
    std::function<std::string(OpenVirtualOps&, std::string&, Code&)> call;
    std::string neutral;
};

const std::string kEmpty = "''";
const std::string kNoStream = "false";

// The ways in which calls of the platform fail.

void failToParse(Platform&, StorageScript& s, const Failure& f) { s.makeCanonicalIRI.rethrows(f); }
void failToParseDestination(Platform&, StorageScript& s, const Failure& f) {
    s.makeCanonicalIRI.at(u"b").rethrows(f);
}
void failToLookUp(Platform&, StorageScript& s, const Failure& f) { s.exists.rethrows(f); }

// The operations, as text.

std::string tempName(OpenVirtualOps& o, std::string& m, Code& e) { return show(o.doGetTempName(u"a", m, e)); }
std::string tempNameInNoFolder(OpenVirtualOps& o, std::string& m, Code& e) {
    return show(o.doGetTempName(u"", m, e));
}
std::string parent(OpenVirtualOps& o, std::string& m, Code& e) { return show(o.doGetParentPath(u"a", m, e)); }
std::string append(OpenVirtualOps& o, std::string& m, Code& e) {
    return show(o.doAppendPath(u"a", u"b", m, e));
}
std::string normalize(OpenVirtualOps& o, std::string& m, Code& e) {
    return show(o.doNormalizePath(u"a", m, e));
}
std::string exists(OpenVirtualOps& o, std::string& m, Code& e) { return show(o.doExists(u"a", m, e)); }
std::string isFile(OpenVirtualOps& o, std::string& m, Code& e) { return show(o.doIsFile(u"a", m, e)); }
std::string isFolder(OpenVirtualOps& o, std::string& m, Code& e) { return show(o.doIsFolder(u"a", m, e)); }
std::string permissions(OpenVirtualOps& o, std::string& m, Code& e) {
    return show(o.doGetPermissions(u"a", m, e));
}
std::string setPermissions(OpenVirtualOps& o, std::string& m, Code& e) {
    return o.doSetPermissions(u"a", opc::Perms::ReadOnly, m, e), "-";
}
std::string time(OpenVirtualOps& o, std::string& m, Code& e) {
    return show(o.doGetLastModifiedTime(u"a", m, e));
}
std::string setTime(OpenVirtualOps& o, std::string& m, Code& e) {
    return o.doSetLastModifiedTime(u"a", kTime, m, e), "-";
}
std::string files(OpenVirtualOps& o, std::string& m, Code& e) {
    std::vector<opc::ustring> found;
    o.doGetFiles(u"a", found, false, m, e);
    return std::to_string(found.size()) + " files";
}
std::string filesBelow(OpenVirtualOps& o, std::string& m, Code& e) {
    std::vector<opc::ustring> found;
    o.doGetFiles(u"a", found, true, m, e);
    return std::to_string(found.size()) + " files";
}
std::string input(OpenVirtualOps& o, std::string& m, Code& e) {
    return show(o.doCreateInputStream(u"a", 0, m, e) != nullptr);
}
std::string output(OpenVirtualOps& o, std::string& m, Code& e) {
    return show(o.doCreateOutputStream(u"a", 0, m, e) != nullptr);
}
std::string makeFolder(OpenVirtualOps& o, std::string& m, Code& e) {
    return o.doCreateFolder(u"a", m, e), "-";
}
std::string makeFolders(OpenVirtualOps& o, std::string& m, Code& e) {
    return o.doCreateFolders(u"a", m, e), "-";
}
std::string copy(OpenVirtualOps& o, std::string& m, Code& e) {
    return o.doCopy(u"a", u"b", opc::Replace, m, e), "-";
}
std::string rename(OpenVirtualOps& o, std::string& m, Code& e) { return o.doRename(u"a", u"b", m, e), "-"; }
std::string removeOne(OpenVirtualOps& o, std::string& m, Code& e) { return o.doRemove(u"a", m, e), "-"; }
std::string removeAll(OpenVirtualOps& o, std::string& m, Code& e) { return o.doRemoveAll(u"a", m, e), "-"; }
std::string filename(OpenVirtualOps& o, std::string& m, Code& e) { return show(o.doGetFilename(u"a", m, e)); }
std::string extension(OpenVirtualOps& o, std::string& m, Code& e) {
    return show(o.doGetExtension(u"a", m, e));
}
std::string localPath(OpenVirtualOps& o, std::string&, Code&) {
    opc::ustring path;
    return show(o.doGetLocalPath(u"a", path));
}

const std::vector<Case> kTranslating = {
    {"getTempName_parse", [](auto&, auto& s, auto f) { s.makeIRI.rethrows(f); }, tempName, kEmpty},
    {"getTempName_getScheme", [](auto&, auto& s, auto f) { s.getScheme.rethrows(f); }, tempName, kEmpty},
    {"getTempName_getPath", [](auto&, auto& s, auto f) { s.getPath.rethrows(f); }, tempName, kEmpty},
    {"getTempName_tmpnam", [](auto& p, auto&, auto f) { p.tmpnam.rethrows(f); }, tempName, kEmpty},
    {"getTempName_native", [](auto& p, auto&, auto f) { p.make_native_form.rethrows(f); }, tempName, kEmpty},
    {"getTempName_generic", [](auto& p, auto&, auto f) { p.make_generic_form.rethrows(f); }, tempName,
     kEmpty},
    {"getTempName_toIRI", [](auto&, auto& s, auto f) { s.toAbsoluteIRI.rethrows(f); }, tempName, kEmpty},
    {"getTempName_inNoFolder", [](auto&, auto& s, auto f) { s.toAbsoluteIRI.rethrows(f); },
     tempNameInNoFolder, kEmpty},
    {"getParentPath_parse", failToParse, parent, kEmpty},
    {"getParentPath_hasParent", [](auto&, auto& s, auto f) { s.hasParent.rethrows(f); }, parent, kEmpty},
    {"getParentPath_getParent", [](auto&, auto& s, auto f) { s.getParent.rethrows(f); }, parent, kEmpty},
    {"appendPath_parse", [](auto&, auto& s, auto f) { s.makeIRI.rethrows(f); }, append, kEmpty},
    {"appendPath_join", [](auto&, auto& s, auto f) { s.joinIRI.rethrows(f); }, append, kEmpty},
    {"normalizePath_native", [](auto& p, auto&, auto f) { p.make_native_form.rethrows(f); }, normalize,
     kEmpty},
    {"normalizePath_toIRI", [](auto&, auto& s, auto f) { s.toAbsoluteIRI.rethrows(f); }, normalize, kEmpty},
    {"normalizePath_parse", [](auto&, auto& s, auto f) { s.makeIRI.rethrows(f); }, normalize, kEmpty},
    {"normalizePath_iri", [](auto&, auto& s, auto f) { s.hasIRIPrefix.returns(true), s.makeIRI.rethrows(f); },
     normalize, kEmpty},
    {"exists_parse", failToParse, exists, "false"},
    {"exists_lookUp", failToLookUp, exists, "false"},
    {"isFile_parse", failToParse, isFile, "false"},
    {"isFile_lookUp", failToLookUp, isFile, "false"},
    {"isFolder_parse", failToParse, isFolder, "false"},
    {"isFolder_lookUp", failToLookUp, isFolder, "false"},
    {"getPermissions_parse", failToParse, permissions, "65535"},
    {"getPermissions_lookUp", failToLookUp, permissions, "65535"},
    {"getPermissions_isWritable",
     [](auto&, auto& s, auto f) { s.exists.returns(kFile), s.isWritable.rethrows(f); }, permissions, "65535"},
    {"setPermissions_parse", failToParse, setPermissions, "-"},
    {"setPermissions_lookUp", failToLookUp, setPermissions, "-"},
    {"setPermissions_file",
     [](auto&, auto& s, auto f) { s.exists.returns(kFile), s.setWritable.rethrows(f); }, setPermissions, "-"},
    {"setPermissions_folder",
     [](auto&, auto& s, auto f) { s.exists.returns(kFolder), s.setWritable.rethrows(f); }, setPermissions,
     "-"},
    {"getLastModifiedTime_parse", failToParse, time, "not-a-date-time"},
    {"getLastModifiedTime_lookUp", failToLookUp, time, "not-a-date-time"},
    {"getLastModifiedTime_entry",
     [](auto&, auto& s, auto f) { s.exists.returns(kFile), s.getLastModified.rethrows(f); }, time,
     "not-a-date-time"},
    {"setLastModifiedTime_parse", failToParse, setTime, "-"},
    {"setLastModifiedTime_lookUp", failToLookUp, setTime, "-"},
    {"setLastModifiedTime_file",
     [](auto&, auto& s, auto f) { s.exists.returns(kFile), s.setLastModified.rethrows(f); }, setTime, "-"},
    {"setLastModifiedTime_folder",
     [](auto&, auto& s, auto f) { s.exists.returns(kFolder), s.setLastModified.rethrows(f); }, setTime, "-"},
    {"getFiles_parse", failToParse, files, "0 files"},
    {"getFiles_lookUp", failToLookUp, files, "0 files"},
    {"getFiles_list", [](auto&, auto& s, auto f) { s.exists.returns(kFolder), s.listAll.rethrows(f); }, files,
     "0 files"},
    {"getFiles_listBelow",
     [](auto&, auto& s, auto f) { s.exists.returns(kFolder), s.listAllRecursive.rethrows(f); }, filesBelow,
     "0 files"},
    {"getFiles_entry",
     [](auto&, auto& s, auto f) {
         s.exists.returns(kFolder);
         s.entries[u"canonical(a)"] = {scripted::storedFile(u"a/x")};
         s.next.rethrows(f);
     },
     files, "0 files"},
    {"createInputStream_parse", failToParse, input, kNoStream},
    {"createInputStream_open", [](auto&, auto& s, auto f) { s.openInput.rethrows(f); }, input, kNoStream},
    {"createOutputStream_parse", failToParse, output, kNoStream},
    {"createOutputStream_open", [](auto&, auto& s, auto f) { s.openOutput.rethrows(f); }, output, kNoStream},
    {"createFolder_parse", failToParse, makeFolder, "-"},
    {"createFolder", [](auto&, auto& s, auto f) { s.createFolder.rethrows(f); }, makeFolder, "-"},
    {"createFolders_parse", failToParse, makeFolders, "-"},
    {"createFolders", [](auto&, auto& s, auto f) { s.createFolderRecursive.rethrows(f); }, makeFolders, "-"},
    {"copy_parse", failToParse, copy, "-"},
    {"copy_parseDestination", failToParseDestination, copy, "-"},
    {"copy_lookUp", failToLookUp, copy, "-"},
    {"copy_file", [](auto&, auto& s, auto f) { s.exists.returns(kFile), s.copy.rethrows(f); }, copy, "-"},
    {"copy_folder", [](auto&, auto& s, auto f) { s.exists.returns(kFolder), s.copy.rethrows(f); }, copy, "-"},
    {"rename_parse", failToParse, rename, "-"},
    {"rename_parseDestination", failToParseDestination, rename, "-"},
    {"rename_lookUp", failToLookUp, rename, "-"},
    {"rename_file", [](auto&, auto& s, auto f) { s.exists.returns(kFile), s.move.rethrows(f); }, rename, "-"},
    {"rename_folder", [](auto&, auto& s, auto f) { s.exists.returns(kFolder), s.move.rethrows(f); }, rename,
     "-"},
    {"remove_parse", failToParse, removeOne, "-"},
    {"remove_lookUp", failToLookUp, removeOne, "-"},
    {"remove_file", [](auto&, auto& s, auto f) { s.exists.returns(kFile), s.remove.rethrows(f); }, removeOne,
     "-"},
    {"remove_folder", [](auto&, auto& s, auto f) { s.exists.returns(kFolder), s.remove.rethrows(f); },
     removeOne, "-"},
    {"removeAll_parse", failToParse, removeAll, "-"},
    {"removeAll_lookUp", failToLookUp, removeAll, "-"},
    {"removeAll_file", [](auto&, auto& s, auto f) { s.exists.returns(kFile), s.remove.rethrows(f); },
     removeAll, "-"},
    {"removeAll_folder", [](auto&, auto& s, auto f) { s.exists.returns(kFolder), s.remove.rethrows(f); },
     removeAll, "-"},
};

const std::vector<Case> kExempt = {
    {"getFilename_parse", failToParse, filename, ""},
    {"getFilename_getName", [](auto&, auto& s, auto f) { s.getName.rethrows(f); }, filename, ""},
    {"getExtension_parse", failToParse, extension, ""},
    {"getExtension_getName", [](auto&, auto& s, auto f) { s.getName.rethrows(f); }, extension, ""},
    {"getLocalPath_parse", failToParse, localPath, ""},
    {"getLocalPath_getScheme", [](auto&, auto& s, auto f) { s.getScheme.rethrows(f); }, localPath, ""},
    {"getLocalPath_toPath",
     [](auto&, auto& s, auto f) { s.getScheme.returns(u"file"), s.fromAbsoluteIRI.rethrows(f); }, localPath,
     ""},
};

/// Each case on a platform of its own whose call fails with `failure`.
template <typename Check>
void forEach(const std::vector<Case>& cases, const Failure& failure, Check check) {
    for (const Case& operation : cases) {
        SCOPED_TRACE(operation.name);
        VirtualFixture fixture;
        operation.script(fixture.platform, fixture.storage, failure);
        check(operation, fixture);
    }
}

TEST(VirtualTranslatingOperations, TranslateAFailureOfTheStorageAndAreNeutral) {
    const auto failure = std::make_exception_ptr(contract::storageFailure());
    forEach(kTranslating, failure, [](const Case& operation, VirtualFixture& fixture) {
        EXPECT_EQ(operation.call(fixture.ops, fixture.msg, fixture.ec), operation.neutral);
        fixture.expectReported(errc::permission_denied, "words: user(p)");
    });
}

TEST(VirtualTranslatingOperations, TranslateWhateverElseIsThrownAndAreNeutral) {
    forEach(kTranslating, std::make_exception_ptr(7), [](const Case& operation, VirtualFixture& fixture) {
        EXPECT_EQ(operation.call(fixture.ops, fixture.msg, fixture.ec), operation.neutral);
        fixture.expectReported(errc::io_error, "Unknown error");
    });
}

TEST(VirtualExemptOperations, LetEveryExceptionPassAndReportNothing) {
    const auto failure = std::make_exception_ptr(InvalidIRIException("words", u"p"));
    forEach(kExempt, failure, [](const Case& operation, VirtualFixture& fixture) {
        EXPECT_THROW(operation.call(fixture.ops, fixture.msg, fixture.ec), InvalidIRIException);
        fixture.expectNothingReported();
    });
    forEach(kExempt, std::make_exception_ptr(7), [](const Case& operation, VirtualFixture& fixture) {
        EXPECT_THROW(operation.call(fixture.ops, fixture.msg, fixture.ec), int);
        fixture.expectNothingReported();
    });
}

class VirtualEscapes : public VirtualContract {
protected:
    VirtualEscapes() { storage.makeCanonicalIRI.throws(InvalidIRIException("words", u"p")); }

    opc::FileSystemOps& client = ops;
};

TEST_F(VirtualEscapes, ReachTheClientAsTheyAre) {
    EXPECT_THROW(client.getFilename(u"a"), InvalidIRIException);
    EXPECT_THROW(client.getExtension(u"a"), InvalidIRIException);
}

TEST_F(VirtualEscapes, OfLocalPathLeaveTheTextOfTheCallerAlone) {
    opc::ustring local = u"old";
    EXPECT_THROW(client.getLocalPath(u"a", local), InvalidIRIException);
    EXPECT_EQ(local, u"old");
}

TEST_F(VirtualEscapes, AreNoneWhereTheLibrarySaysSo) {
    EXPECT_THROW(client.getParentPath(u"a"), opc::Exception);
    storage.hasIRIPrefix.returns(true);
    storage.makeIRI.throws(InvalidIRIException("words", u"p"));
    EXPECT_FALSE(client.isAbsolutePath(u"a"));
}

}  // namespace
