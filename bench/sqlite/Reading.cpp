#include "bench/sqlite/Blobs.hpp"
#include "bench/sqlite/Suites.hpp"
#include "bench/support/Raw.hpp"

#include <array>

namespace bench {

namespace {

namespace fs = std::filesystem;
namespace provider = foundation::storage::provider;

std::array<char, kBlobSize> bytes;

void readByStatement(BareFolder& folder, const std::string& name) {
    folder.store().readFile(folder.number(), name, bytes.data(), kBlobSize);
}

void readByStream(opc::FileSystemOps& ops, const std::u16string& iri) {
    boost::system::error_code error;
    const boost::shared_ptr<std::istream> stream = ops.createInputStream(iri, std::ios_base::binary, error);
    require(stream && stream->read(bytes.data(), kBlobSize).gcount() == kBlobSize, "short read");
}

void readByProvider(provider::Provider& store, const provider::Path& path) {
    require(store.openReader(path)->read(bytes.data(), kBlobSize) == kBlobSize, "short read");
}

void readPlainBlob(const std::string& path) {
    const raw::Descriptor file(AT_FDCWD, path.c_str(), O_RDONLY);
    require(::read(file.get(), bytes.data(), kBlobSize) == kBlobSize, "short read");
}

}  // namespace

void measureSqliteReading(Session& session) {
    constexpr std::size_t kCount = 100000;
    constexpr std::size_t kRounds = 21;
    const std::string title = "SQLite: read 100,000 files of 4 KiB in random order";
    if (!session.selects(title)) {
        return;
    }
    WorkFolder work(diskFolder());
    const fs::path file = work.fresh();
    const fs::path logged = work.fresh();
    const fs::path plain = work.fresh();
    makeFilledStore(file, blobNames(kCount), kBlobSize);
    fs::copy_file(file, logged);
    fs::create_directory(plain);
    for (const std::string& path : asFiles(blobNames(kCount), plain)) {
        writePlainBlob(path);
    }
    const Names names = blobNames(kCount);

    BareFolder bare(file);
    BareFolder bareWithLog(logged, "wal");
    opc::VirtualFileSystemOps storage = storageOf(file);
    const std::shared_ptr<provider::Provider> store = openStore(file);
    const std::size_t portions = session.rounds(kRounds) + 1;
    Suite suite(session, title, Sampling::single, kRounds);
    suite.limit("bare statement", eachOf(asStored(names), portions,
                                         [&](const std::string& name) { readByStatement(bare, name); }));
    suite
        .row("pkgcore createInputStream, read",
             eachOf(asIRIs(names), portions, [&](const std::u16string& iri) { readByStream(storage, iri); }))
        .atMost(1.5);
    suite.row(
        "provider alone: openReader, read",
        eachOf(asPaths(names), portions, [&](const provider::Path& path) { readByProvider(*store, path); }));
    suite.row("bare statement, write-ahead log",
              eachOf(asStored(names), portions,
                     [&](const std::string& name) { readByStatement(bareWithLog, name); }));
    suite.row("plain files: open, read, close", eachOf(asFiles(names, plain), portions, readPlainBlob));
    suite.run();
}

}  // namespace bench
