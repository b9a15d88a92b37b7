#include "tests/conformance/BackEndCalls.hpp"

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <algorithm>
#include <iterator>

namespace test {

using boost::posix_time::ptime;
using boost::system::error_code;
using Paths = std::vector<opc::ustring>;

const std::vector<std::string> kSubjects = {"",           "missing",    "missing/below",  "file",
                                            "other",      "file/below", "empty",          "full",
                                            "full/inner", "full/deep",  "full/deep/leaf", "empty/new"};
const std::string kLongName(300, 'n');

namespace {

std::string content(opc::FileSystemOps& ops, const opc::ustring& path) {
    error_code ec;
    const auto stream = ops.createInputStream(path, 0, ec);
    return stream ? std::string(std::istreambuf_iterator<char>(*stream), {}) : "(not opened)";
}

}  // namespace

Scene::Scene(const BackEnd& backEnd) : place_(backEnd.makePlace()) {
    ops().createFolder(at("empty"));
    ops().createFolders(at("full/deep"));
    for (const char* name : {"file", "other", "full/inner", "full/deep/leaf"}) {
        *ops().createOutputStream(at(name), 0) << "text of " << name << std::flush;
    }
}

opc::ustring Scene::at(const std::string& name) const {
    return name.empty() ? opc::ustring()
                        : ops().appendPath(place_->folder(), opc::ustring(name.begin(), name.end()));
}

opc::ustring Scene::root() const {
    opc::ustring top = place_->folder();
    for (opc::ustring above = top; !above.empty(); above = ops().getParentPath(top)) top = above;
    return top;
}

std::string Scene::shown(const opc::ustring& path) const {
    const opc::ustring base = place_->folder();
    const opc::ustring rest = path.compare(0, base.size(), base) == 0 ? path.substr(base.size()) : path;
    return {rest.begin(), rest.end()};
}

std::string Scene::tree() const {
    Paths files;
    ops().getFiles(place_->folder(), files, true);
    std::sort(files.begin(), files.end());
    std::string text;
    for (const opc::ustring& path : files) {
        text += ' ' + shown(path) + '=' + content(ops(), path);
    }
    for (const std::string& name : kSubjects) {
        error_code ec;
        if (ops().isFolder(at(name), ec)) text += ' ' + name + '/';
    }
    return text;
}

Outcome Call::on(const BackEnd& backEnd) const {
    Scene scene(backEnd);
    Outcome outcome;
    outcome.result = run(scene, outcome.code);
    outcome.tree = scene.tree();
    return outcome;
}

namespace {

std::string yesOrNo(bool answer) { return answer ? "yes" : "no"; }

std::string listed(Scene& scene, const std::string& subject, bool recursive, error_code& ec) {
    Paths files{u"before"};
    scene.ops().getFiles(scene.at(subject), files, recursive, ec);
    std::sort(files.begin() + 1, files.end());
    std::string text;
    for (const opc::ustring& path : files) text += scene.shown(path) + ' ';
    return text;
}

std::string written(Scene& scene, const std::string& subject, int mode, error_code& ec) {
    const auto stream = scene.ops().createOutputStream(scene.at(subject), mode, ec);
    if (!stream) {
        return "";
    }
    *stream << "new" << std::flush;
    return yesOrNo(stream->good());
}

std::string readBack(Scene& scene, const std::string& subject, error_code& ec) {
    const auto stream = scene.ops().createInputStream(scene.at(subject), 0, ec);
    return stream ? std::string(std::istreambuf_iterator<char>(*stream), {}) : "";
}

using Ops = opc::FileSystemOps;

std::vector<Call> queriesOf(const std::string& subject) {
    const auto query = [&subject](const char* name,
                                  bool (Ops::*member)(const opc::ustring&, error_code&) noexcept) {
        return Call{name, subject, "", [=](Scene& scene, error_code& ec) {
                        return yesOrNo((scene.ops().*member)(scene.at(subject), ec));
                    }};
    };
    return {query("exists", &Ops::exists), query("isFile", &Ops::isFile), query("isFolder", &Ops::isFolder),
            query("isSymlink", &Ops::isSymlink)};
}

std::vector<Call> changesOf(const std::string& subject) {
    const auto change = [&subject](const char* name,
                                   void (Ops::*member)(const opc::ustring&, error_code&) noexcept) {
        return Call{name, subject, "", [=](Scene& scene, error_code& ec) {
                        (scene.ops().*member)(scene.at(subject), ec);
                        return std::string();
                    }};
    };
    return {change("createFolder", &Ops::createFolder), change("createFolders", &Ops::createFolders),
            change("remove", &Ops::remove), change("removeAll", &Ops::removeAll)};
}

std::vector<Call> marksOf(const std::string& subject) {
    const auto getPermissions = [=](Scene& scene, error_code& ec) {
        const auto perms = scene.ops().getPermissions(scene.at(subject), ec);
        return perms == opc::Perms::NotKnown ? "unknown" : yesOrNo((perms & opc::Perms::AnyWrite) != 0);
    };
    const auto setNoPermissions = [=](Scene& scene, error_code& ec) {
        scene.ops().setPermissions(scene.at(subject), opc::Perms::NotKnown, ec);
        return std::string();
    };
    const auto setPermissions = [=](Scene& scene, error_code& ec) {
        scene.ops().setPermissions(scene.at(subject), opc::Perms::ReadOnly, ec);
        error_code ignored;
        return std::to_string(scene.ops().getPermissions(scene.at(subject), ignored) & opc::Perms::AnyWrite);
    };
    const auto getTime = [=](Scene& scene, error_code& ec) {
        return yesOrNo(scene.ops().getLastModifiedTime(scene.at(subject), ec).is_special());
    };
    const auto setNoTime = [=](Scene& scene, error_code& ec) {
        scene.ops().setLastModifiedTime(scene.at(subject), ptime(), ec);
        return std::string();
    };
    const ptime time(boost::gregorian::date(2001, 2, 3), boost::posix_time::microseconds(4));
    const auto setTime = [=](Scene& scene, error_code& ec) {
        scene.ops().setLastModifiedTime(scene.at(subject), time, ec);
        error_code ignored;
        return yesOrNo(scene.ops().getLastModifiedTime(scene.at(subject), ignored) == time);
    };
    const auto setEndlessTime = [=](Scene& scene, error_code& ec) {
        scene.ops().setLastModifiedTime(scene.at(subject), ptime(boost::posix_time::pos_infin), ec);
        return std::string();
    };
    return {{"getPermissions", subject, "", getPermissions},
            {"setPermissions NotKnown", subject, "", setNoPermissions},
            {"setPermissions", subject, "", setPermissions},
            {"getLastModifiedTime", subject, "", getTime},
            {"setLastModifiedTime none", subject, "", setNoTime},
            {"setLastModifiedTime endless", subject, "", setEndlessTime},
            {"setLastModifiedTime", subject, "", setTime}};
}

std::vector<Call> linksAndListingsOf(const std::string& subject) {
    const auto getLinkTarget = [=](Scene& scene, error_code& ec) {
        return scene.shown(scene.ops().getLinkTarget(scene.at(subject), ec));
    };
    const auto createSymlink = [=](Scene& scene, error_code& ec) {
        scene.ops().createSymlink(u"target", scene.at(subject), ec);
        return std::string();
    };
    const auto list = [=](Scene& scene, error_code& ec) { return listed(scene, subject, false, ec); };
    const auto listTree = [=](Scene& scene, error_code& ec) { return listed(scene, subject, true, ec); };
    return {{"getLinkTarget", subject, "", getLinkTarget},
            {"createSymlink", subject, "", createSymlink},
            {"getFiles", subject, "", list},
            {"getFiles recursive", subject, "", listTree}};
}

std::vector<Call> streamsOf(const std::string& subject) {
    using std::ios;
    const int modes[] = {0,
                         ios::app,
                         ios::trunc,
                         ios::in,
                         ios::in | ios::ate,
                         ios::ate,
                         ios::trunc | ios::app,
                         ios::in | ios::trunc,
                         ios::in | ios::app,
                         ios::binary};
    std::vector<Call> calls{{"createInputStream", subject, "",
                             [=](Scene& scene, error_code& ec) { return readBack(scene, subject, ec); }}};
    for (const int mode : modes) {
        calls.push_back({"createOutputStream " + std::to_string(mode), subject, "",
                         [=](Scene& scene, error_code& ec) { return written(scene, subject, mode, ec); }});
    }
    return calls;
}

std::vector<Call> transfersOf(const std::string& from, const std::string& to) {
    const auto rename = [=](Scene& scene, error_code& ec) {
        scene.ops().rename(scene.at(from), scene.at(to), ec);
        return std::string();
    };
    const auto copy = [=](opc::ExistsMode mode) {
        return [=](Scene& scene, error_code& ec) {
            scene.ops().copy(scene.at(from), scene.at(to), mode, ec);
            return std::string();
        };
    };
    return {{"rename", from, to, rename},
            {"copy Ignore", from, to, copy(opc::Ignore)},
            {"copy Fail", from, to, copy(opc::Fail)},
            {"copy Replace", from, to, copy(opc::Replace)}};
}

void append(const std::vector<Call>& more, std::vector<Call>& calls) {
    calls.insert(calls.end(), more.begin(), more.end());
}

/// Those on one item.
std::vector<Call> callsOn(const std::string& subject) {
    std::vector<Call> calls;
    append(queriesOf(subject), calls);
    append(changesOf(subject), calls);
    append(marksOf(subject), calls);
    append(linksAndListingsOf(subject), calls);
    append(streamsOf(subject), calls);
    return calls;
}

/// Only what no host could do in any case: `removeAll` and its like would take the machine along, were
/// the refusal missing.
Call removalOfTheRoot() {
    return {"remove the root", "/", "", [](Scene& scene, error_code& ec) {
                scene.ops().remove(scene.root(), ec);
                return std::string();
            }};
}

}  // namespace

std::vector<Call> allCalls() {
    std::vector<Call> calls{removalOfTheRoot()};
    for (const std::string& subject : kSubjects) {
        append(callsOn(subject), calls);
        for (const std::string& to : kSubjects) append(transfersOf(subject, to), calls);
    }
    return calls;
}

std::vector<Call> longNameCalls() {
    std::vector<Call> calls = callsOn(kLongName);
    append(transfersOf(kLongName, kLongName), calls);
    for (const std::string other : {"missing", "file", "full"}) {
        append(transfersOf(kLongName, other), calls);
        append(transfersOf(other, kLongName), calls);
    }
    return calls;
}

}  // namespace test
