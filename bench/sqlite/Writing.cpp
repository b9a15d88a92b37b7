#include "bench/sqlite/Blobs.hpp"
#include "bench/sqlite/Suites.hpp"
#include "bench/support/Raw.hpp"

namespace bench {

void writePlainBlob(const std::string& path) {
    const raw::Descriptor file(AT_FDCWD, path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    require(::write(file.get(), blob().data(), kBlobSize) == kBlobSize, "short write");
}

namespace {

namespace fs = std::filesystem;
namespace provider = foundation::storage::provider;

fs::path newStoreFile(WorkFolder& work) {
    fs::path file = work.fresh();
    newStore(file);
    return file;
}

void writeByStatement(BareFolder& folder, const std::string& name) {
    folder.store().addFile(folder.number(), name, blob());
}

void writeByProvider(provider::Provider& store, const provider::Path& path) {
    const std::unique_ptr<provider::Writer> writer = store.openWriter(path, provider::WriteMode::Create);
    writer->write(blob().data(), kBlobSize);
    writer->commit();
}

/// Takes turns, so that no database grows faster than the others though the limit is measured twice.
template <typename One, typename Other>
auto inTurns(One one, Other other) {
    return [one, other, isOther = false]() mutable {
        isOther ? other() : one();
        isOther = !isOther;
    };
}

}  // namespace

void measureSqliteWriting(Session& session) {
    constexpr std::size_t kRounds = 21;
    const std::size_t count = session.amount(10000, 100000);
    const std::string title =
        "SQLite: write " + std::to_string(count) + " files of 4 KiB, each published by itself";
    if (!session.selects(title)) {
        return;
    }
    WorkFolder work(diskFolder());
    const Names names = blobNames(count);
    BareFolder one(newStoreFile(work));
    BareFolder other(newStoreFile(work));
    BareFolder bareWithLog(newStoreFile(work), "wal");
    opc::VirtualFileSystemOps storage = newStore(work.fresh());
    const std::shared_ptr<provider::Provider> store = openStore(newStoreFile(work));
    const fs::path plain = work.fresh();
    fs::create_directory(plain);

    const std::size_t portions = session.rounds(kRounds) + 1;
    const auto byStatement = [&](BareFolder& folder) {
        return eachOf(asStored(names), portions,
                      [&folder](const std::string& name) { writeByStatement(folder, name); });
    };
    Suite suite(session, title, Sampling::single, kRounds);
    suite.limit("bare statements, a transaction each", inTurns(byStatement(one), byStatement(other)));
    suite
        .row("pkgcore createOutputStream, write, close",
             eachOf(asIRIs(names), portions,
                    [&](const std::u16string& iri) { writeFile(storage, iri, kBlobSize); }))
        .atMost(1.5);
    suite.row(
        "provider alone: openWriter, write, commit",
        eachOf(asPaths(names), portions, [&](const provider::Path& path) { writeByProvider(*store, path); }));
    suite.row("bare statements, write-ahead log", byStatement(bareWithLog));
    suite.row("plain files: create, write, close", eachOf(asFiles(names, plain), portions, writePlainBlob));
    suite.run();
}

}  // namespace bench
