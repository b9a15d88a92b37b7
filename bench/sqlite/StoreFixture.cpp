#include "bench/sqlite/StoreFixture.hpp"

#include "bench/sqlite/Suites.hpp"
#include "bench/support/WorkFolder.hpp"

#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>

#include <algorithm>
#include <cstdio>
#include <random>

namespace bench {

namespace fs = std::filesystem;
namespace provider = foundation::storage::provider;

const std::string& blob() {
    static const std::string bytes(kBlobSize, 'x');
    return bytes;
}

std::shared_ptr<provider::Provider> openStore(const fs::path& file) {
    provider::SqliteOptions options;
    options.durability = provider::SqliteDurability::Normal;
    return provider::openSqliteProvider(file.u16string(), options);
}

opc::VirtualFileSystemOps storageOf(const fs::path& file) {
    return opc::VirtualFileSystemOps(
        foundation::storage::vfs::StorageSystemBuilder().mount(u"sqlite", u"store", openStore(file)).build());
}

opc::VirtualFileSystemOps newStore(const fs::path& file) {
    opc::VirtualFileSystemOps storage = storageOf(file);
    opc::FileSystemOps& ops = storage;
    ops.createFolder(std::u16string(u"sqlite://store/") + kBlobFolder);
    return storage;
}

Names blobNames(std::size_t count) {
    constexpr std::size_t kFirst = 1000000;  // so that all are of one length
    Names names;
    for (std::size_t i = 0; i < count; ++i) {
        names.push_back(numbered(u"blob-", kFirst + i));
    }
    static std::mt19937 random{20260714};
    std::shuffle(names.begin(), names.end(), random);
    return names;
}

std::u16string iriOfBlob(const std::u16string& name) {
    return std::u16string(u"sqlite://store/") + kBlobFolder + u'/' + name;
}

void makeFilledStore(const fs::path& file, const Names& names, std::size_t size) {
    WorkFolder memory(memoryFolder());
    const fs::path made = memory.fresh();
    {
        opc::VirtualFileSystemOps storage = newStore(made);
        for (const std::u16string& name : names) {
            writeFile(storage, iriOfBlob(name), size);
        }
    }
    fs::copy_file(made, file);
}

// Normal durability does without the kinds that a connection has for itself, so that another one knows.
const std::string& journalOfStores() {
    static const std::string journal = [] {
        WorkFolder work(diskFolder());
        const fs::path file = work.fresh();
        const opc::VirtualFileSystemOps storage = newStore(file);
        return journalOf(openDatabase(file));
    }();
    return journal;
}

void describeSqlite() {
    std::printf(
        "SQLite %s. The stores have durability \"normal\" and the journal mode \"%s\"; from SQLite "
        "3.51.3 on that is \"wal\".\n",
        sqlite3_libversion(), journalOfStores().c_str());
}

}  // namespace bench
