#include "bench/storage/Fixture.hpp"
#include "bench/storage/Suites.hpp"
#include "bench/support/WorkFolder.hpp"

#include <algorithm>
#include <map>
#include <memory>

namespace bench {

namespace {

using boost::system::error_code;

constexpr std::size_t kFolders = 1000;
constexpr std::size_t kFilesPerFolder = 100;

Paths list(opc::FileSystemOps& ops, const std::u16string& folder) {
    error_code error;
    Paths paths;
    ops.getFiles(folder, paths, true, error);
    require(!error.failed(), "a folder cannot be listed");
    return paths;
}

Paths makeStorageTree(opc::FileSystemOps& ops, const std::u16string& root) {
    Paths paths;
    for (std::size_t folder = 0; folder < kFolders; ++folder) {
        const std::u16string path = numbered(root + u"/folder", folder);
        ops.createFolders(path);
        for (std::size_t file = 0; file < kFilesPerFolder; ++file) {
            paths.push_back(numbered(path + u"/file", file) + u".bin");
            writeFile(ops, paths.back(), 0);
        }
    }
    return paths;
}

void measureMemoryListing(Session& session) {
    const std::string title = "Storage: list 100,000 files in 1,000 folders in memory";
    if (!session.selects(title)) {
        return;
    }
    const std::u16string root = u"mem://store/tree";
    opc::VirtualFileSystemOps storage = newStorage();
    opc::FileSystemOps& ops = storage;
    Paths expected = makeStorageTree(ops, root);
    std::sort(expected.begin(), expected.end());
    require(list(ops, root) == expected, "the listing is wrong");
    Suite suite(session, title, Sampling::single, 31);
    suite.limit("a vector of the same strings", [&] {
        Paths paths;
        for (const std::u16string& path : expected) {
            paths.push_back(path);
        }
        return paths;
    });
    suite.row("pkgcore getFiles(folder, files, true, ec)", [&] { return list(ops, root); }).atMost(2);
    suite.run();
}

void measureFileListing(Session& session) {
    const std::string title = "Storage: list 100,000 files in 1,000 folders on a disk";
    if (!session.selects(title)) {
        return;
    }
    WorkFolder work(diskFolder());
    makeTree(work.path(), kFolders, kFilesPerFolder, 0);
    opc::VirtualFileSystemOps storage = newStorage();
    opc::FileSystemOps& ops = storage;
    const std::u16string text = work.path().u16string();
    const std::u16string iri = iriOf(work.path());
    require(list(ops, iri).size() == list(localOps(), text).size(), "the listings differ");
    Suite suite(session, title, Sampling::single, 21);
    suite.limit("pkgcore getFiles, local", [&] { return list(localOps(), text); });
    suite.row("pkgcore getFiles, file://", [&] { return list(ops, iri); });
    suite.row("pkgcore getFiles, local, sorted", [&] {
        Paths paths = list(localOps(), text);
        std::sort(paths.begin(), paths.end());
        return paths;
    });
    suite.run();
}

void measureCopying(Session& session) {
    constexpr std::size_t kFiles = 1000;
    constexpr std::size_t kFileSize = 4096;
    opc::VirtualFileSystemOps storage = newStorage();
    opc::FileSystemOps& ops = storage;
    std::map<std::u16string, std::shared_ptr<std::string>> folder;
    ops.createFolders(u"mem://store/folder");
    for (std::size_t i = 0; i < kFiles; ++i) {
        const std::u16string name = numbered(u"small-file-", i);
        writeFile(ops, u"mem://store/folder/" + name, kFileSize);
        folder.emplace(name, std::make_shared<std::string>(kFileSize, 'x'));
    }
    const std::u16string to = u"mem://store/copy";
    const auto remove = [&] {
        error_code error;
        ops.removeAll(to, error);
    };
    Suite suite(session, "Storage: copy a folder of 1,000 files of 4 KiB within memory", Sampling::single);
    suite.limit("a std::map with contents of its own", [&] {
        auto copy = folder;
        for (auto& entry : copy) {
            entry.second = std::make_shared<std::string>(*entry.second);
        }
        return copy.size();
    });
    suite
        .row("pkgcore copy(from, to, mode)",
             [&] { ops.copy(u"mem://store/folder", to, opc::ExistsMode::Fail); })
        .preparedBy(remove);
    suite.row("a std::map that shares contents", [&] {
        const auto copy = folder;
        return copy.size();
    });
    suite.run();
}

/// A folder with many entries, and a map from the same IRIs.
class ManyEntries {
public:
    explicit ManyEntries(std::size_t count) : storage_(newStorage()) {
        for (std::size_t i = 0; i < count; ++i) {
            names_.push_back(numbered(kFolder + u"/entry-", (i * kStride) % count));
        }
    }

    void measure(Session& session) {
        const auto verbs = {"list", "find", "create", "remove"};
        if (std::none_of(verbs.begin(), verbs.end(),
                         [&](const char* verb) { return session.selects(titleOf(verb)); })) {
            return;
        }
        const auto clear = [this] { clearBoth(); };
        const auto fill = [this] { fillBoth(); };
        fill();
        run(
            session, "list", [this] { listMap(); }, [this] { list(ops(), kFolder); }, [] {});
        run(
            session, "find", [this] { findInMap(); }, [this] { findInStore(); }, [] {});
        run(
            session, "create", [this] { fillMap(); }, [this] { fillStore(); }, clear);
        run(
            session, "remove", [this] { emptyMap(); }, [this] { emptyStore(); }, fill);
    }

private:
    static constexpr std::size_t kStride = 7919;  // so that the names do not come in order
    const std::u16string kFolder = u"mem://store/folder";

    std::string titleOf(const std::string& verb) const {
        return "Storage: " + verb + " " + std::to_string(names_.size()) + " entries of one folder in memory";
    }

    opc::FileSystemOps& ops() noexcept { return storage_; }

    void listMap() const {
        Paths paths;
        for (const auto& entry : map_) paths.push_back(entry.first);
        require(paths.size() == names_.size(), "an entry is missing");
    }
    void findInMap() const {
        for (const std::u16string& name : names_) require(map_.count(name) == 1, "an entry is missing");
    }
    void findInStore() {
        for (const std::u16string& name : names_) require(ops().exists(name), "an entry is missing");
    }
    void fillMap() {
        for (const std::u16string& name : names_) map_.emplace(name, std::make_shared<std::string>());
    }
    void fillStore() {
        for (const std::u16string& name : names_) writeFile(ops(), name, 0);
    }
    void emptyMap() {
        for (const std::u16string& name : names_) map_.erase(name);
    }
    void emptyStore() {
        for (const std::u16string& name : names_) ops().remove(name);
    }

    void clearBoth() {
        map_.clear();
        error_code error;
        ops().removeAll(kFolder, error);
        ops().createFolders(kFolder);
    }
    void fillBoth() {
        clearBoth();
        fillMap();
        fillStore();
    }

    template <typename Limit, typename Operation, typename Prepare>
    void run(Session& session, const std::string& verb, Limit limit, Operation operation, Prepare prepare) {
        Suite suite(session, titleOf(verb), Sampling::single, 15);
        suite.limit("std::map of the whole IRIs", limit).preparedBy(prepare);
        suite.row("pkgcore", operation).preparedBy(prepare);
        suite.run();
    }

    Paths names_;
    std::map<std::u16string, std::shared_ptr<std::string>> map_;
    opc::VirtualFileSystemOps storage_;
};

}  // namespace

void measureStorageFolders(Session& session) {
    measureMemoryListing(session);
    measureFileListing(session);
    measureCopying(session);
    for (const std::size_t count : {std::size_t{1000}, std::size_t{100000}}) {
        ManyEntries(count).measure(session);
    }
}

}  // namespace bench
