#include "tests/fault/Operations.hpp"

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/platform/filesystem/Temporary.hpp>

#include "tests/fault/Losses.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ostream>

namespace test {

namespace {

namespace fsys = fl::filesystem;

void makeTree(const std::string& top) {
    makeFolder(top);
    makeFile(top + "/file", "text", 0640);
    makeFolder(top + "/inner");
    makeFile(top + "/inner/one", someBytes(70'000));
    makeFile(top + "/inner/two", "two");
    makeLink("two", top + "/inner/link");
    makeFolder(top + "/inner/void");
    makeFolder(top + "/other");
    makeFile(top + "/other/three", "three");
}

/// More levels than are kept open, so that some are closed and found again: a walk keeps 16, listings 32.
template <int kLevels>
void makeDeepTree(const std::string& top) {
    std::string folder = top;
    makeFolder(folder);
    for (int level = 0; level < kLevels; ++level) {
        makeFile(folder + (level % 2 == 0 ? "/a" : "/z"), "text");
        folder += "/d";
        makeFolder(folder);
    }
}

/// Of such a tree, one error stands for all.
Operation deep(Operation operation) {
    operation.name += "Deep";
    operation.errors = {EIO};
    operation.harmless["getdents64"] = "a folder that was closed on the way down is read again on the way up";
    return operation;
}

using MakeTree = void (*)(const std::string& top);

/// Has renaming an item to another place fail with EXDEV, so that the library sees two file systems. What it
/// made itself beside the destination is renamed by the system.
class TwoDevices {
public:
    TwoDevices() {
        inForce_ = fsys::posix::callsInForce.load();
        static thread_local const fsys::posix::SystemCalls* beneath;
        beneath = inForce_;
        table_ = *inForce_;
        table_.renameat = [](int fromFolder, const char* from, int toFolder, const char* to) {
            if (from[0] == '.') {
                return beneath->renameat(fromFolder, from, toFolder, to);
            }
            errno = EXDEV;
            return -1;
        };
        fsys::posix::callsInForce.store(&table_);
    }
    ~TwoDevices() { fsys::posix::callsInForce.store(inForce_); }
    TwoDevices(const TwoDevices&) = delete;
    TwoDevices& operator=(const TwoDevices&) = delete;

private:
    const fsys::posix::SystemCalls* inForce_;
    fsys::posix::SystemCalls table_;
};

const Reasons kListingIsHarmless = {
    {"close", "what was only read is complete by then"},
    {"fstat", "a folder that cannot be told from others stays open"},
    {"openat(..)", "a folder is found by its path as well"},
    {"lseek", "a place that is lost is looked for from the beginning"},
};

Operation copyFile(const std::string& name, fsys::copy_option option,
                   const std::function<void(const TempTree&)>& source) {
    const bool replaces = option == fsys::copy_option::overwrite_if_exists;
    Operation operation;
    operation.name = name;
    operation.prepare = [=](const TempTree& tree) {
        source(tree);
        if (replaces) {
            makeFile(tree / "to", "old content", 0600);
        }
    };
    operation.run = [=](const TempTree& tree) {
        fsys::copy_file(tree.text("from"), tree.text("to"), option);
        return std::string();
    };
    operation.lost = [=](const Outcome& outcome) {
        return changed(
            outcome, replaces ? isTemporary : [](const std::string& left) { return left == "to"; });
    };
    operation.recover = [](const TempTree& tree) {
        if (isThere(tree / "to") && contentOf(tree / "to") != "old content") {
            ::unlink((tree / "to").c_str());
        }
    };
    operation.harmless = kCopyIsHarmless;
    return operation;
}

void addFileCopies(std::vector<Operation>& all) {
    const auto small = [](const TempTree& tree) { makeFile(tree / "from", "text", 0640); };
    const auto large = [](const TempTree& tree) { makeFile(tree / "from", someBytes(300'000), 0755); };
    const auto sparse = [](const TempTree& tree) {
        makeSparseFile(tree / "from", 1'000'000, 400'000, someBytes(20'000));
    };
    all.push_back(copyFile("CopySmallFile", fsys::copy_option::fail_if_exists, small));
    all.push_back(copyFile("CopyLargeFile", fsys::copy_option::fail_if_exists, large));
    all.push_back(copyFile("CopySparseFile", fsys::copy_option::fail_if_exists, sparse));
    all.push_back(copyFile("CopySmallFileOver", fsys::copy_option::overwrite_if_exists, small));
    all.push_back(copyFile("CopyLargeFileOver", fsys::copy_option::overwrite_if_exists, large));
    all.push_back(copyFile("CopySparseFileOver", fsys::copy_option::overwrite_if_exists, sparse));
}

Operation copyDirectory(MakeTree make) {
    Operation operation;
    operation.name = "CopyDirectory";
    operation.prepare = [=](const TempTree& tree) { make(tree / "from"); };
    operation.run = [](const TempTree& tree) {
        fsys::copy_directory(tree.text("from"), tree.text("to"));
        return std::string();
    };
    operation.lost = [](const Outcome& outcome) {
        return changedBesidesRemoval(outcome.before, outcome.after, "nothing") + isNoPartOfDone(outcome);
    };
    operation.recover = [](const TempTree& tree) {
        fsys::exists(tree.text("to")) ? fsys::remove_all(tree.text("to")) : void();
    };
    operation.harmless =
        together(kCopyIsHarmless,
                 {{"openat(..)", "a folder that cannot be passed on the way up stops a copy on its way down"},
                  {"openat", "a folder just made that may not be opened is opened up first"}});
    return operation;
}

Operation rename(const std::string& name, bool overOld) {
    Operation operation;
    operation.name = name;
    operation.prepare = [=](const TempTree& tree) {
        makeFile(tree / "from", "text");
        if (overOld) {
            makeFile(tree / "to", "old content");
        }
    };
    operation.run = [](const TempTree& tree) {
        fsys::rename(tree.text("from"), tree.text("to"));
        return std::string();
    };
    operation.lost = [](const Outcome& outcome) { return changed(outcome, isNothing); };
    return operation;
}

/// Either nothing has happened yet, or the new place holds all of it and the old one may be gone in part.
std::string lostByMoving(const Outcome& outcome) {
    const std::string undone = changed(outcome, isTemporary);
    if (undone.empty()) {
        return undone;
    }
    std::string result = changedBesidesRemoval(outcome.before, outcome.after, "from");
    for (const auto& [name, what] : outcome.done) {
        const auto found = outcome.after.find(name);
        result += found == outcome.after.end() || found->second != what ? differs(name, outcome.after) : "";
    }
    return result.empty() ? result : undone + "and " + result;
}

Operation renameAcross(const std::string& name, const std::function<void(const TempTree&)>& source) {
    Operation operation;
    operation.name = name;
    operation.prepare = source;
    operation.run = [](const TempTree& tree) {
        const TwoDevices devices;
        fsys::rename(tree.text("from"), tree.text("to"));
        return std::string();
    };
    operation.lost = lostByMoving;
    operation.recover = [=](const TempTree& tree) {
        for (const char* const item : {"from", "to"}) {
            fsys::exists(tree.text(item)) ? fsys::remove_all(tree.text(item)) : void();
        }
        source(tree);
    };
    operation.harmless = together(kCopyIsHarmless, kRemovalIsHarmless);
    return operation;
}

void addRenames(std::vector<Operation>& all) {
    all.push_back(rename("Rename", false));
    all.push_back(rename("RenameOver", true));
    all.push_back(renameAcross(
        "RenameFileAcross", [](const TempTree& tree) { makeFile(tree / "from", someBytes(100'000), 0640); }));
    all.push_back(renameAcross("RenameTreeAcross", [](const TempTree& tree) { makeTree(tree / "from"); }));
    all.push_back(
        renameAcross("RenameLinkAcross", [](const TempTree& tree) { makeLink("nowhere", tree / "from"); }));
}

Operation removeAll(MakeTree make) {
    Operation operation;
    operation.name = "RemoveAll";
    operation.prepare = [=](const TempTree& tree) {
        make(tree / "top");
        makeTree(tree / "outside");
        makeLink("../outside", tree / "top/toOutside");
    };
    operation.run = [](const TempTree& tree) {
        fsys::remove_all(tree.text("top"));
        return std::string();
    };
    operation.lost = [](const Outcome& outcome) {
        return changedBesidesRemoval(outcome.before, outcome.after, "top") +
               (outcome.before.size() < outcome.after.size() ? "something was made; " : "");
    };
    operation.recover = [=](const TempTree& tree) {
        if (!isThere(tree / "top")) {
            make(tree / "top");
        }
    };
    operation.harmless = kRemovalIsHarmless;
    return operation;
}

Operation listFiles(MakeTree make) {
    Operation operation;
    operation.name = "ListFiles";
    operation.prepare = [=](const TempTree& tree) { make(tree / "top"); };
    operation.run = [](const TempTree& tree) {
        std::vector<opc::ustring> files;
        opc::LocalFileSystemOps().getFiles(tree.text("top"), files, true);
        std::string result;
        for (const opc::ustring& file : files) {
            result +=
                std::string(file.begin() + static_cast<std::ptrdiff_t>(tree.path().size()), file.end()) +
                '\n';
        }
        return result;
    };
    operation.lost = [](const Outcome& outcome) { return changed(outcome, isNothing); };
    operation.harmless = kListingIsHarmless;
    return operation;
}

Operation createDirectories() {
    Operation operation;
    operation.name = "CreateDirectories";
    operation.prepare = [](const TempTree& tree) { makeFolder(tree / "a"); };
    operation.run = [](const TempTree& tree) {
        fsys::create_directories(tree.text("a/b/c/d"));
        return std::string();
    };
    operation.lost = [](const Outcome& outcome) { return isNoPartOfDone(outcome); };
    operation.harmless = kReadingIsHarmless;
    return operation;
}

Operation temporaryFile() {
    Operation operation;
    operation.name = "TemporaryFile";
    operation.prepare = [](const TempTree&) {};
    operation.run = [](const TempTree& tree) {
        const std::string made = tree / "made";
        std::u16string name;
        std::string narrowName;
        narrowName.reserve(made.size() + 100);  // no memory of our own is needed once the file is there
        std::FILE* const file = fsys::tmpfile(name, text(tree.path()), u".", u".tmp");
        if (file == nullptr) {
            throw ReportedFailure();
        }
        std::fputs("text", file);
        std::fclose(file);
        for (const char16_t unit : name) {
            narrowName.push_back(static_cast<char>(unit));
        }
        ::rename(narrowName.c_str(), made.c_str());
        return std::string();
    };
    operation.lost = [](const Outcome& outcome) { return changed(outcome, isTemporary); };
    operation.harmless = {
        {"fchmod", "the file was made with these permissions; only an odd mask takes some"}};
    return operation;
}

/// Opening tells no more than that it failed.
template <typename Open>
auto opened(Open open) {
    try {
        return open();
    } catch (const opc::Exception&) {
        throw ReportedFailure();
    }
}

Operation writeStream() {
    Operation operation;
    operation.name = "WriteStream";
    operation.prepare = [](const TempTree& tree) { makeFile(tree / "other", "other"); };
    operation.run = [](const TempTree& tree) {
        const auto stream =
            opened([&] { return opc::LocalFileSystemOps().createOutputStream(tree.text("to"), 0); });
        *stream << someBytes(100'000) << "small" << 42 << std::flush;
        if (!stream->good()) {
            throw ReportedFailure();
        }
        return std::string();
    };
    operation.lost = [](const Outcome& outcome) {
        return changedBesidesRemoval(outcome.before, outcome.after, "nothing");
    };
    operation.harmless = {
        {"close after writing", "whoever flushed has been told; a stream that ends has no say"}};
    return operation;
}

Operation readStream() {
    Operation operation;
    operation.name = "ReadStream";
    operation.prepare = [](const TempTree& tree) { makeFile(tree / "from", someBytes(200'000)); };
    operation.run = [](const TempTree& tree) {
        const auto stream =
            opened([&] { return opc::LocalFileSystemOps().createInputStream(tree.text("from"), 0); });
        std::string content(10, '\0');
        stream->read(content.data(), 10);
        for (char chunk[30'000]; stream->read(chunk, sizeof chunk) || stream->gcount() > 0;) {
            content.append(chunk, static_cast<std::size_t>(stream->gcount()));
        }
        if (stream->bad()) {
            throw ReportedFailure();
        }
        return std::to_string(content.size()) + " bytes #" +
               std::to_string(std::hash<std::string>()(content));
    };
    operation.lost = [](const Outcome& outcome) { return changed(outcome, isNothing); };
    operation.harmless = kReadingIsHarmless;
    return operation;
}

}  // namespace

std::vector<Operation> operations() {
    std::vector<Operation> all;
    addFileCopies(all);
    all.push_back(copyDirectory(makeTree));
    all.push_back(deep(copyDirectory(makeDeepTree<19>)));
    addRenames(all);
    all.push_back(removeAll(makeTree));
    all.push_back(deep(removeAll(makeDeepTree<19>)));
    all.push_back(listFiles(makeTree));
    all.push_back(deep(listFiles(makeDeepTree<36>)));
    all.push_back(createDirectories());
    all.push_back(temporaryFile());
    all.push_back(writeStream());
    all.push_back(readStream());
    return all;
}

void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

}  // namespace test
