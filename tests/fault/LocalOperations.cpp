// The operations of the local back end that take a call or two: each asks for one thing or changes one thing.

#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include "tests/fault/Losses.hpp"
#include "tests/fault/Operations.hpp"
#include "tests/support/RawFiles.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

#include <unistd.h>

#include <utility>

namespace test {

namespace {

using opc::LocalFileSystemOps;

std::string inWords(bool answer) { return answer ? "yes" : "no"; }

void makeItems(const TempTree& tree) {
    makeFile(tree / "file", "text", 0640);
    makeFolder(tree / "folder");
    makeLink("file", tree / "link");
}

std::string changesNothing(const Outcome& outcome) { return changed(outcome, isNothing); }

/// What is asked of the file system is answered, or the failure is told: no answer is made up.
Operation asks(const std::string& name,
               std::function<std::string(LocalFileSystemOps&, const TempTree&)> ask) {
    Operation operation;
    operation.name = name;
    operation.prepare = makeItems;
    operation.run = [ask = std::move(ask)](const TempTree& tree) {
        LocalFileSystemOps ops;
        return ask(ops, tree);
    };
    operation.lost = changesNothing;
    operation.harmless = kReadingIsHarmless;
    return operation;
}

/// Either all is as it was, or the change has been made.
Operation changes(const std::string& name, std::function<void(LocalFileSystemOps&, const TempTree&)> change,
                  std::function<void(const TempTree&)> recover) {
    Operation operation =
        asks(name, [change = std::move(change)](LocalFileSystemOps& ops, const TempTree& tree) {
            change(ops, tree);
            return std::string();
        });
    operation.lost = [](const Outcome& outcome) {
        return outcome.after == outcome.done ? std::string() : changesNothing(outcome);
    };
    operation.recover = std::move(recover);
    return operation;
}

void addQuestions(std::vector<Operation>& all) {
    all.push_back(
        asks("Exists", [](auto& ops, auto& tree) { return inWords(ops.exists(tree.text("file"))); }));
    all.push_back(asks("ExistsNothing",
                       [](auto& ops, auto& tree) { return inWords(ops.exists(tree.text("missing"))); }));
    all.push_back(
        asks("IsFile", [](auto& ops, auto& tree) { return inWords(ops.isFile(tree.text("file"))); }));
    all.push_back(
        asks("IsFolder", [](auto& ops, auto& tree) { return inWords(ops.isFolder(tree.text("folder"))); }));
    all.push_back(
        asks("IsSymlink", [](auto& ops, auto& tree) { return inWords(ops.isSymlink(tree.text("link"))); }));
    all.push_back(asks("GetLinkTarget", [](auto& ops, auto& tree) {
        return inWords(ops.getLinkTarget(tree.text("link")) == u"file");
    }));
    all.push_back(asks("GetPermissions", [](auto& ops, auto& tree) {
        return std::to_string(ops.getPermissions(tree.text("file")));
    }));
    all.push_back(asks("GetLastModifiedTime", [](auto& ops, auto& tree) {
        return inWords(ops.getLastModifiedTime(tree.text("file")).is_special());
    }));
}

void addChanges(std::vector<Operation>& all) {
    all.push_back(changes(
        "CreateFolder", [](auto& ops, auto& tree) { ops.createFolder(tree.text("new")); },
        [](const TempTree& tree) { ::rmdir((tree / "new").c_str()); }));
    all.push_back(changes(
        "CreateSymlink", [](auto& ops, auto& tree) { ops.createSymlink(u"file", tree.text("new")); },
        [](const TempTree& tree) { ::unlink((tree / "new").c_str()); }));
    const auto makeFileAgain = [](const TempTree& tree) { makeFile(tree / "file", "text", 0640); };
    all.push_back(changes(
        "RemoveFile", [](auto& ops, auto& tree) { ops.remove(tree.text("file")); }, makeFileAgain));
    all.push_back(changes(
        "RemoveFolder", [](auto& ops, auto& tree) { ops.remove(tree.text("folder")); },
        [](const TempTree& tree) { isThere(tree / "folder") ? void() : makeFolder(tree / "folder"); }));
    const auto nothing = [](const TempTree& /*tree*/) {};
    all.push_back(changes(
        "SetPermissions",
        [](auto& ops, auto& tree) { ops.setPermissions(tree.text("file"), opc::Perms::ReadOnly); }, nothing));
    all.push_back(changes(
        "SetLastModifiedTime",
        [](auto& ops, auto& tree) {
            ops.setLastModifiedTime(tree.text("file"),
                                    boost::posix_time::time_from_string("2001-02-03 04:05:06"));
        },
        nothing));
}

}  // namespace

std::vector<Operation> localOperations() {
    std::vector<Operation> all;
    addQuestions(all);
    addChanges(all);
    return all;
}

}  // namespace test
