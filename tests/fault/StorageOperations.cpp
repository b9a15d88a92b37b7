#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/platform/storage/NativePaths.hpp>
#include <pkgcore/portable/storage/providers/folder/FolderProvider.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/fault/Losses.hpp"
#include "tests/fault/Operations.hpp"
#include "tests/support/RawFiles.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

namespace test {

namespace {

using namespace foundation::storage;
using conformance::Ground;
using conformance::kReplace;
using conformance::Workplace;

/// A store over the tree of an operation.
using MakeGround = Ground (*)(const TempTree& tree);

Ground groundOfMachine(const TempTree& tree) {
    return Ground{vfs::StorageSystemBuilder().build(),
                  vfs::toAbsoluteIRI(u"file", text(tree.path())).toString(), nullptr, provider::Path(),
                  nullptr};
}

Ground groundOfFolder(const TempTree& tree) {
    const auto store = provider::makeFolderProvider(text(tree.path()));
    return Ground{vfs::StorageSystemBuilder().mount(u"box", u"inbox", store).build(), u"box://inbox/", store,
                  provider::Path(), nullptr};
}

/// Runs work in a store; its failures are reported, by exception or in the state of a stream.
std::function<std::string(const TempTree&)> inStore(MakeGround makeGround,
                                                    std::function<std::string(const Workplace&)> work) {
    return [=](const TempTree& tree) {
        try {
            return work(Workplace(makeGround(tree)));
        } catch (const vfs::Exception&) {
            throw ReportedFailure();
        }
    };
}

std::string orReport(bool isGood) {
    if (!isGood) {
        throw ReportedFailure();
    }
    return std::string();
}

/// Either nothing has happened, or all of it and only what was replaced is not gone yet.
std::string lostByReplacing(const Outcome& outcome) {
    const std::string undone = changed(outcome, isTemporary);
    if (undone.empty()) {
        return undone;
    }
    std::string result;
    for (const auto& [name, what] : outcome.done) {
        const auto found = outcome.after.find(name);
        result += found == outcome.after.end() || found->second != what ? differs(name, outcome.after) : "";
    }
    return result.empty() ? result : undone + "and " + result;
}

void makeTrees(const TempTree& tree) {
    for (const char* const top : {"from", "to"}) {
        makeFolder(tree / top);
        makeFolder(tree / (std::string(top) + "/inner"));
        makeFile(tree / (std::string(top) + "/inner/" + top), someBytes(70'000), 0640);
    }
}

/// Room for another run; what else is left has a temporary name and is in nobody's way.
void prepareAgain(const TempTree& tree, const std::function<void(const TempTree&)>& prepare) {
    for (const char* const item : {"from", "to"}) {
        if (isThere(tree / item)) {
            fl::filesystem::remove_all(tree.text(item));
        }
    }
    prepare(tree);
}

Operation write(MakeGround makeGround, const std::string& name, std::ios_base::openmode mode, bool isOver) {
    Operation operation;
    operation.name = name;
    operation.prepare = [=](const TempTree& tree) {
        if (isOver) makeFile(tree / "to", "old content", 0640);
    };
    operation.run = inStore(makeGround, [=](const Workplace& place) {
        return orReport(place.write(u"to", someBytes(100'000), mode));
    });
    operation.lost = [=](const Outcome& outcome) {
        const bool mayBeAhead = mode == std::ios_base::app && !outcome.couldCleanUp;
        return mayBeAhead ? std::string() : changed(outcome, isTemporary);
    };
    operation.recover = [prepare = operation.prepare](const TempTree& tree) { prepareAgain(tree, prepare); };
    operation.harmless = {
        {"close", "what was written is complete by then, and only network file systems say more"},
        {"close after writing", "the same"}};
    return operation;
}

Operation transfer(MakeGround makeGround, const std::string& name,
                   const std::function<void(const TempTree&)>& prepare,
                   const std::function<void(const Workplace&)>& work) {
    Operation operation;
    operation.name = name;
    operation.prepare = prepare;
    operation.run = inStore(makeGround, [=](const Workplace& place) {
        work(place);
        return std::string();
    });
    operation.lost = lostByReplacing;
    operation.recover = [prepare](const TempTree& tree) { prepareAgain(tree, prepare); };
    operation.harmless =
        together(together(kCopyIsHarmless, kRemovalIsHarmless),
                 {{"fstatat", "whether both are names of one file need not be known where they are not"}});
    return operation;
}

Operation readAndList(MakeGround makeGround, const std::string& name) {
    Operation operation;
    operation.name = name;
    operation.prepare = makeTrees;
    operation.run = inStore(makeGround, [](const Workplace& place) {
        const std::string content = place.read(u"from/inner/from");
        orReport(content != "(none)" && content != "(broken)");
        return content + std::to_string(place.listTree(u"").size());
    });
    operation.lost = [](const Outcome& outcome) { return changed(outcome, isNothing); };
    operation.harmless = kReadingIsHarmless;
    return operation;
}

/// One verb of a store on the trees.
Operation verb(MakeGround makeGround, const std::string& name,
               const std::function<std::string(const Workplace&)>& work) {
    Operation operation;
    operation.name = name;
    operation.prepare = makeTrees;
    operation.run = inStore(makeGround, work);
    operation.recover = [](const TempTree& tree) { prepareAgain(tree, makeTrees); };
    operation.harmless = kReadingIsHarmless;
    return operation;
}

/// Of these, all is as it was or all is done.
std::string lostByOneStep(const Outcome& outcome) {
    return outcome.after == outcome.done ? std::string() : changed(outcome, isNothing);
}

void addVerbs(std::vector<Operation>& all, MakeGround ground, const std::string& suffix) {
    const auto add = [&](const char* name, const std::function<void(const Workplace&)>& work) {
        all.push_back(verb(ground, name + suffix, [work](const Workplace& place) {
            work(place);
            return std::string();
        }));
        all.back().lost = lostByOneStep;
    };
    add("CreateFolder", [](const Workplace& place) { place.folder(u"to/new").createFolder(); });
    add("RemoveFile", [](const Workplace& place) { place.file(u"to/inner/to").removeFile(); });
    add("MarkReadOnly", [](const Workplace& place) { place.file(u"to/inner/to").setWritable(false); });
    add("SetTime", [](const Workplace& place) {
        place.file(u"to/inner/to").setLastModified(boost::posix_time::from_time_t(1'000'000'000));
    });
    all.push_back(verb(ground, "Find" + suffix, [](const Workplace& place) {
        return std::string(place.isMissing(u"to/inner/to") ? "missing" : "there") +
               (place.isMissing(u"to/inner/none") ? "missing" : "there");
    }));
    all.back().lost = lostByOneStep;
    all.push_back(verb(ground, "RemoveTree" + suffix, [](const Workplace& place) {
        place.folder(u"to").removeFolder(vfs::FolderRemovalPolicy::WithContents);
        return std::string();
    }));
    all.back().lost = [](const Outcome& outcome) {
        return changedBesidesRemoval(outcome.before, outcome.after, "to");
    };
    all.back().harmless = kRemovalIsHarmless;
}

void addOperations(std::vector<Operation>& all, MakeGround ground, const std::string& suffix) {
    const auto makeFiles = [](const TempTree& tree) {
        makeFile(tree / "from", someBytes(100'000), 0640);
        makeFile(tree / "to", "old content");
    };
    all.push_back(write(ground, "WriteNew" + suffix, std::ios_base::out, false));
    all.push_back(write(ground, "WriteOver" + suffix, std::ios_base::out, true));
    all.push_back(write(ground, "Append" + suffix, std::ios_base::app, true));
    all.push_back(transfer(ground, "CopyFileOver" + suffix, makeFiles, [](const Workplace& place) {
        place.file(u"from").copyFile(place.file(u"to"), kReplace);
    }));
    all.push_back(transfer(ground, "CopyFolderOver" + suffix, makeTrees, [](const Workplace& place) {
        place.folder(u"from").copyFolder(place.folder(u"to"), kReplace);
    }));
    all.push_back(transfer(ground, "MoveFileOver" + suffix, makeFiles, [](const Workplace& place) {
        place.file(u"from").moveFile(place.file(u"to"), kReplace);
    }));
    all.push_back(transfer(ground, "MoveFolderOver" + suffix, makeTrees, [](const Workplace& place) {
        place.folder(u"from").moveFolder(place.folder(u"to"), kReplace);
    }));
    all.push_back(readAndList(ground, "ReadAndList" + suffix));
    addVerbs(all, ground, suffix);
}

}  // namespace

std::vector<Operation> storageOperations() {
    std::vector<Operation> all;
    addOperations(all, groundOfMachine, "OfMachine");
    addOperations(all, groundOfFolder, "OfFolder");
    return all;
}

}  // namespace test
