#include "tests/contract/FacadeOperations.hpp"

#include <algorithm>
#include <iterator>

namespace contract {

using boost::system::error_code;
using scripted::show;

namespace {

using Ops = RecordingOps;

const boost::posix_time::ptime kTime(boost::gregorian::date(1999, 12, 31));
constexpr auto kPerms = static_cast<opc::Perms::Perms_tag>(0755);
constexpr auto kOddMode = static_cast<opc::ExistsMode>(7);

template <typename Stream>
std::string showStream(const boost::shared_ptr<Stream>& stream, const boost::shared_ptr<Stream>& expected) {
    return stream == expected ? "the back end's stream" : "another stream";
}

/// For operations without a result.
std::string none() { return "-"; }

std::string getFiles(Ops& ops, error_code* ec) {
    std::vector<opc::ustring> files{u"before"};
    ec == nullptr ? ops.getFiles(u"p", files, true) : ops.getFiles(u"p", files, true, *ec);
    return show(files.at(0)) + " " + show(files.at(1));
}

std::vector<FacadeOperation> pathOperations() {
    return {
        {"getTempName",
         [](Ops& o) { return show(o.getTempName(u"p")); },
         {},
         "doGetTempName('p')",
         "'result'"},
        {"getParentPath",
         [](Ops& o) { return show(o.getParentPath(u"p")); },
         {},
         "doGetParentPath('p')",
         "'result'"},
        {"getFilename",
         [](Ops& o) { return show(o.getFilename(u"p")); },
         {},
         "doGetFilename('p')",
         "'result'"},
        {"getExtension",
         [](Ops& o) { return show(o.getExtension(u"p")); },
         {},
         "doGetExtension('p')",
         "'result'"},
        {"appendPath",
         [](Ops& o) { return show(o.appendPath(u"p", u"//q")); },
         {},
         "doAppendPath('p', '//q')",
         "'result'"},
        {"normalizePath",
         [](Ops& o) { return show(o.normalizePath(u"p")); },
         {},
         "doNormalizePath('p')",
         "'result'"},
    };
}

std::vector<FacadeOperation> queries() {
    return {
        {"exists", [](Ops& o) { return show(o.exists(u"p")); },
         [](Ops& o, error_code& ec) { return show(o.exists(u"p", ec)); }, "doExists('p')", "true"},
        {"isFile", [](Ops& o) { return show(o.isFile(u"p")); },
         [](Ops& o, error_code& ec) { return show(o.isFile(u"p", ec)); }, "doIsFile('p')", "true"},
        {"isFolder", [](Ops& o) { return show(o.isFolder(u"p")); },
         [](Ops& o, error_code& ec) { return show(o.isFolder(u"p", ec)); }, "doIsFolder('p')", "true"},
        {"isSymlink", [](Ops& o) { return show(o.isSymlink(u"p")); },
         [](Ops& o, error_code& ec) { return show(o.isSymlink(u"p", ec)); }, "doIsSymlink('p')", "true"},
        {"getPermissions", [](Ops& o) { return show(o.getPermissions(u"p")); },
         [](Ops& o, error_code& ec) { return show(o.getPermissions(u"p", ec)); }, "doGetPermissions('p')",
         "416"},
        {"getLastModifiedTime", [](Ops& o) { return show(o.getLastModifiedTime(u"p")); },
         [](Ops& o, error_code& ec) { return show(o.getLastModifiedTime(u"p", ec)); },
         "doGetLastModifiedTime('p')", "20240229T000000"},
        {"getLinkTarget", [](Ops& o) { return show(o.getLinkTarget(u"p")); },
         [](Ops& o, error_code& ec) { return show(o.getLinkTarget(u"p", ec)); }, "doGetLinkTarget('p')",
         "'result'"},
        {"getFiles", [](Ops& o) { return getFiles(o, nullptr); },
         [](Ops& o, error_code& ec) { return getFiles(o, &ec); }, "doGetFiles('p', true)",
         "'before' 'result'"},
        {"createInputStream", [](Ops& o) { return showStream(o.createInputStream(u"p", 77), o.input); },
         [](Ops& o, error_code& ec) { return showStream(o.createInputStream(u"p", 77, ec), o.input); },
         "doCreateInputStream('p', 77)", "the back end's stream"},
        {"createOutputStream", [](Ops& o) { return showStream(o.createOutputStream(u"p", -1), o.output); },
         [](Ops& o, error_code& ec) { return showStream(o.createOutputStream(u"p", -1, ec), o.output); },
         "doCreateOutputStream('p', -1)", "the back end's stream"},
    };
}

std::vector<FacadeOperation> changes() {
    return {
        {"setPermissions", [](Ops& o) { return o.setPermissions(u"p", kPerms), none(); },
         [](Ops& o, error_code& ec) { return o.setPermissions(u"p", kPerms, ec), none(); },
         "doSetPermissions('p', 493)", "-"},
        {"setLastModifiedTime", [](Ops& o) { return o.setLastModifiedTime(u"p", kTime), none(); },
         [](Ops& o, error_code& ec) { return o.setLastModifiedTime(u"p", kTime, ec), none(); },
         "doSetLastModifiedTime('p', 19991231T000000)", "-"},
        {"createFolder", [](Ops& o) { return o.createFolder(u"p"), none(); },
         [](Ops& o, error_code& ec) { return o.createFolder(u"p", ec), none(); }, "doCreateFolder('p')", "-"},
        {"createFolders", [](Ops& o) { return o.createFolders(u"p"), none(); },
         [](Ops& o, error_code& ec) { return o.createFolders(u"p", ec), none(); }, "doCreateFolders('p')",
         "-"},
        {"createSymlink", [](Ops& o) { return o.createSymlink(u"p", u"q"), none(); },
         [](Ops& o, error_code& ec) { return o.createSymlink(u"p", u"q", ec), none(); },
         "doCreateSymlink('p', 'q')", "-"},
        {"copy", [](Ops& o) { return o.copy(u"p", u"q", kOddMode), none(); },
         [](Ops& o, error_code& ec) { return o.copy(u"p", u"q", kOddMode, ec), none(); },
         "doCopy('p', 'q', 7)", "-"},
        {"rename", [](Ops& o) { return o.rename(u"p", u""), none(); },
         [](Ops& o, error_code& ec) { return o.rename(u"p", u"", ec), none(); }, "doRename('p', '')", "-"},
        {"remove", [](Ops& o) { return o.remove(u"p"), none(); },
         [](Ops& o, error_code& ec) { return o.remove(u"p", ec), none(); }, "doRemove('p')", "-"},
        {"removeAll", [](Ops& o) { return o.removeAll(u"p"), none(); },
         [](Ops& o, error_code& ec) { return o.removeAll(u"p", ec), none(); }, "doRemoveAll('p')", "-"},
    };
}

std::vector<FacadeOperation> allOperations() {
    std::vector<FacadeOperation> all = pathOperations();
    for (const auto& group : {queries(), changes()}) {
        all.insert(all.end(), group.begin(), group.end());
    }
    return all;
}

}  // namespace

const std::vector<FacadeOperation>& facadeOperations() {
    static const std::vector<FacadeOperation> all = allOperations();
    return all;
}

std::vector<FacadeOperation> facadeOperationsWithBothStyles() {
    std::vector<FacadeOperation> both;
    std::copy_if(facadeOperations().begin(), facadeOperations().end(), std::back_inserter(both),
                 [](const FacadeOperation& operation) { return operation.reporting != nullptr; });
    return both;
}

}  // namespace contract
