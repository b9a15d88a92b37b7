#include "bench/sqlite/StoreFixture.hpp"
#include "bench/sqlite/Suites.hpp"
#include "bench/support/Raw.hpp"

#include <optional>

namespace bench {

namespace {

namespace fs = std::filesystem;

/// Of a transfer; the store has its parts of this size.
constexpr std::size_t kPart = std::size_t{64} * 1024;
constexpr std::size_t kMiB = std::size_t{1024} * 1024;

const std::u16string kName = u"large";

std::string& part() {
    static std::string bytes(kPart, 'x');
    return bytes;
}

std::string sizeText(std::size_t size) { return std::to_string(size / kMiB) + " MiB"; }

/// At least 0.6 of the limit's rate.
constexpr double kGoal = 1 / 0.6;

void readByStream(opc::FileSystemOps& ops, std::size_t size) {
    boost::system::error_code error;
    const boost::shared_ptr<std::istream> stream =
        ops.createInputStream(iriOfBlob(kName), std::ios_base::binary, error);
    std::size_t total = 0;
    while (stream->read(part().data(), kPart) || stream->gcount() > 0) {
        total += static_cast<std::size_t>(stream->gcount());
    }
    require(total == size, "short read");
}

void writeByStream(opc::FileSystemOps& ops, std::size_t size) {
    boost::system::error_code error;
    const boost::shared_ptr<std::ostream> stream =
        ops.createOutputStream(iriOfBlob(kName), std::ios_base::binary, error);
    for (std::size_t done = 0; done < size; done += kPart) {
        stream->write(part().data(), kPart);
    }
    require(!stream->flush().fail(), "short write");
}

void readPlainFile(const fs::path& path, std::size_t size) {
    const raw::Descriptor file(AT_FDCWD, path.c_str(), O_RDONLY);
    std::size_t total = 0;
    while (const ssize_t count = ::read(file.get(), part().data(), kPart)) {
        require(count > 0, "read");
        total += static_cast<std::size_t>(count);
    }
    require(total == size, "short read");
}

void writePlainFile(const fs::path& path, std::size_t size) {
    const raw::Descriptor file(AT_FDCWD, path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    for (std::size_t done = 0; done < size; done += kPart) {
        require(::write(file.get(), part().data(), kPart) == static_cast<ssize_t>(kPart), "short write");
    }
}

/// A copy of a store, since the system has the pages of one that was just written in smaller pieces.
void makeStore(const fs::path& file, std::size_t size) {
    WorkFolder work(diskFolder());
    const fs::path made = work.fresh();
    {
        opc::VirtualFileSystemOps storage = newStore(made);
        writeByStream(storage, size);
    }
    fs::copy_file(made, file);
}

void measureReading(Session& session, std::size_t size) {
    const std::string title = "SQLite: read a file of " + sizeText(size);
    if (!session.selects(title)) {
        return;
    }
    WorkFolder work(diskFolder());
    const fs::path file = work.fresh();
    const fs::path logged = work.fresh();
    const fs::path plain = work.fresh();
    makeStore(file, size);
    fs::copy_file(file, logged);
    writePlainFile(plain, size);
    opc::VirtualFileSystemOps storage = storageOf(file);
    BareFolder bare(file);
    BareFolder bareWithLog(logged, "wal");
    const std::string name = storedName(kName);
    const auto byStatement = [&](BareFolder& folder) {
        folder.store().readLargeFile(folder.number(), name, part().data(), size);
    };
    Suite suite(session, title, Sampling::single, 21);
    suite.limit("bare statement", [&] { byStatement(bare); });
    suite.row("pkgcore createInputStream, read", [&] { readByStream(storage, size); }).atMost(kGoal);
    suite.row("bare statement, write-ahead log", [&] { byStatement(bareWithLog); });
    suite.row("plain file: open, read, close", [&] { readPlainFile(plain, size); });
    suite.run();
}

/// Room for one sample at a time; what the one before has left is removed.
class Room {
public:
    explicit Room(const fs::path& parent) : work_(parent) {}

    /// A path that is free.
    fs::path renew() {
        fs::remove_all(work_.path() / "room");
        fs::create_directory(work_.path() / "room");
        return work_.path() / "room" / "file";
    }

private:
    WorkFolder work_;
};

/// A new store for each sample, with a bare connection to it.
class BareTarget {
public:
    explicit BareTarget(std::string journal) : journal_(std::move(journal)) {}

    void renew() {
        folder_.reset();
        const fs::path file = room_.renew();
        newStore(file);
        folder_.emplace(file, journal_);
    }
    void write(std::size_t size) {
        folder_->store().addLargeFile(folder_->number(), storedName(kName), part(), size);
    }

private:
    std::string journal_;
    Room room_{diskFolder()};
    std::optional<BareFolder> folder_;
};

void measureWriting(Session& session, std::size_t size) {
    const std::string title = "SQLite: write a file of " + sizeText(size);
    if (!session.selects(title)) {
        return;
    }
    BareTarget bare(journalOfStores());
    BareTarget bareWithLog("wal");
    Room room(diskFolder());
    Room plainRoom(diskFolder());
    fs::path plain;
    std::optional<opc::VirtualFileSystemOps> storage;
    Suite suite(session, title, Sampling::single, 21);
    suite.limit("bare statements, 4 MiB a transaction", [&] { bare.write(size); }).preparedBy([&] {
        bare.renew();
    });
    suite.row("pkgcore createOutputStream, write, close", [&] { writeByStream(*storage, size); })
        .atMost(kGoal)
        .preparedBy([&] {
            storage.reset();
            storage = newStore(room.renew());
        });
    suite.row("bare statements, write-ahead log", [&] { bareWithLog.write(size); }).preparedBy([&] {
        bareWithLog.renew();
    });
    suite.row("plain file: create, write, close", [&] { writePlainFile(plain, size); }).preparedBy([&] {
        plain = plainRoom.renew();
    });
    suite.run();
}

}  // namespace

void measureSqliteSequence(Session& session) {
    const std::size_t size = session.amount(256, 1024) * kMiB;
    measureReading(session, size);
    measureWriting(session, size);
}

}  // namespace bench
