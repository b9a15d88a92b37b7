#include "bench/sqlite/Blobs.hpp"
#include "bench/sqlite/Suites.hpp"

namespace bench {

namespace {

namespace fs = std::filesystem;

const std::u16string kRoot = u"sqlite://store/";

/// Gives a folder another name, and the next time the one that it had.
class Mover {
public:
    explicit Mover(std::u16string name) : from_(std::move(name)), to_(u"moved-" + from_) {}

    void byStore(opc::FileSystemOps& ops) {
        ops.rename(kRoot + from_, kRoot + to_);
        std::swap(from_, to_);
    }
    void byStatement(BareStore& store) {
        constexpr std::int64_t kRootNumber = 1;
        store.rename(kRootNumber, storedName(from_), storedName(to_));
        std::swap(from_, to_);
    }
    void bySystem(const fs::path& parent) {
        require(::rename((parent / from_).c_str(), (parent / to_).c_str()) == 0, "rename");
        std::swap(from_, to_);
    }

private:
    std::u16string from_;
    std::u16string to_;
};

}  // namespace

void measureSqliteMoves(Session& session) {
    constexpr std::size_t kCount = 100000;
    const std::string title = "SQLite: move a folder of 100,000 files";
    if (!session.selects(title)) {
        return;
    }
    WorkFolder work(diskFolder());
    const fs::path file = work.fresh();
    const fs::path bareFile = work.fresh();
    makeFilledStore(file, blobNames(kCount), 0);
    fs::copy_file(file, bareFile);
    opc::VirtualFileSystemOps storage = storageOf(file);
    opc::FileSystemOps& ops = storage;
    ops.createFolder(kRoot + u"empty");
    fs::create_directory(work.path() / "empty");
    BareStore bare(bareFile, journalOfStores());

    Mover empty(u"empty");
    Mover full(kBlobFolder);
    Mover bareFull(kBlobFolder);
    Mover plain(u"empty");
    Suite suite(session, title);
    suite.limit("pkgcore rename, an empty folder", [&] { empty.byStore(ops); });
    suite.row("pkgcore rename", [&] { full.byStore(ops); }).atMost(1.5);
    suite.row("bare statement", [&] { bareFull.byStatement(bare); });
    suite.row("plain folder, empty: rename", [&] { plain.bySystem(work.path()); });
    suite.run();
}

}  // namespace bench
