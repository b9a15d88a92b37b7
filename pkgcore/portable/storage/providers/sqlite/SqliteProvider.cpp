#include <pkgcore/portable/storage/providers/sqlite/SqliteProvider.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Changes.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Copies.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Creation.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Draft.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Lookup.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Names.hpp>
#include <pkgcore/portable/storage/providers/sqlite/OpenFile.hpp>
#include <pkgcore/portable/storage/providers/sqlite/PathBytes.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Recognition.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Sweep.hpp>

#include <sqlite3.h>

#include <utility>

namespace foundation::storage::provider {

namespace {

using namespace foundation::storage::sqlite;
using vfs::ErrorCode;

class SqliteReader : public Reader {
public:
    SqliteReader(SharedStore store, const Path& file) : file_(std::move(store), file) {}

    std::size_t read(char* out, std::size_t count) override {
        const std::size_t taken = file_.readAt(position_, out, count);
        position_ += taken;
        return taken;
    }
    std::size_t readAt(std::uint64_t offset, char* out, std::size_t count) override {
        return file_.readAt(offset, out, count);
    }
    std::optional<std::uint64_t> size() const override { return file_.size(); }

private:
    OpenFile file_;
    std::uint64_t position_ = 0;
};

class SqliteWriter : public Writer {
public:
    SqliteWriter(const SharedStore& store, Path file, WriteMode mode)
        : draft_(store), file_(std::move(file)), mayReplace_(mode != WriteMode::CreateNew) {}

    void continueFrom(OpenFile old) { draft_.continueFrom(std::move(old)); }

    void write(const char* bytes, std::size_t count) override { draft_.write(bytes, count); }

    void commit() override {
        draft_.publish([this](Entries& entries) { return placeForWriting(entries, file_, mayReplace_); });
        mayReplace_ = true;
    }

    void discard() noexcept override { draft_.discard(); }

private:
    Draft draft_;
    Path file_;
    bool mayReplace_;
};

/// Goes on behind the last name that it has shown, so that the folder may be changed meanwhile.
class SqliteLister : public Lister {
public:
    SqliteLister(SharedStore store, std::int64_t folder) : store_(std::move(store)), folder_(folder) {}

    std::vector<ListItem> next() override {
        constexpr std::int64_t kPageSize = 512;
        const std::vector<Entry> page = store_->read([this](Connection& connection) {
            return Entries(connection).listAfter(folder_, last_, kPageSize);
        });
        std::vector<ListItem> items;
        items.reserve(page.size());
        for (const Entry& entry : page) {
            items.push_back(ListItem{decodeName(entry.name), entry.kind, false});
        }
        last_ = page.empty() ? last_ : page.back().name;
        return items;
    }

private:
    SharedStore store_;
    std::int64_t folder_;
    std::string last_;
};

Traits traitsOfStore() {
    Traits traits;
    traits.readsAt = true;
    traits.writes = true;
    traits.appends = true;
    traits.createsFolders = true;
    traits.removes = true;
    traits.removesTrees = true;
    traits.copiesFiles = true;
    traits.copiesFolders = true;
    traits.movesFiles = true;
    traits.movesFolders = true;
    traits.setsWritable = true;
    traits.setsLastModified = true;
    traits.hasByteNames = true;
    traits.maxNameLength = kMaxNameLength;
    traits.maxFileSize = kMaxFileSize;
    return traits;
}

class SqliteProvider : public Provider {
public:
    explicit SqliteProvider(SharedStore store) : store_(std::move(store)) {}

    Traits traits() const override { return traitsOfStore(); }

    std::optional<Item> find(const Path& path) override {
        const std::optional<Entry> entry = lookUp(*store_, path);
        if (!entry) {
            return std::nullopt;
        }
        Item item = itemOf(*entry);
        item.identity = store_->identityOf(entry->id);
        return item;
    }

    std::unique_ptr<Lister> list(const Path& folder) override {
        const Entry entry = store_->read(
            [&folder](Connection& connection) { return Entries(connection).requireFolder(folder); });
        return std::make_unique<SqliteLister>(store_, entry.id);
    }

    std::unique_ptr<Reader> openReader(const Path& file) override {
        return std::make_unique<SqliteReader>(store_, file);
    }

    std::unique_ptr<Writer> openWriter(const Path& file, WriteMode mode) override {
        store_->requireWritable();
        store_->read([&file](Connection& connection) {
            Entries entries(connection);
            placeForWriting(entries, file, true);
        });
        auto writer = std::make_unique<SqliteWriter>(store_, file, mode);
        std::optional<OpenFile> old =
            mode == WriteMode::Append ? OpenFile::ifThere(store_, file) : std::nullopt;
        if (old) {
            writer->continueFrom(*std::move(old));
        }
        return writer;
    }

    void createFolder(const Path& folder) override { sqlite::createFolder(*store_, folder); }
    void remove(const Path& path) override { removeEntry(*store_, path); }
    void removeTree(const Path& folder) override { sqlite::removeTree(*store_, folder); }

    void copy(const Path& from, const Path& to, ReplacementPolicy policy) override {
        copyEntry(store_, from, to, policy);
    }
    void move(const Path& from, const Path& to, ReplacementPolicy policy) override {
        moveEntry(*store_, from, to, policy);
    }
    void setWritable(const Path& path, bool isWritable) override {
        sqlite::setWritable(*store_, path, isWritable);
    }
    void setLastModified(const Path& path, const boost::posix_time::ptime& time) override {
        sqlite::setLastModified(*store_, path, time);
    }
    void sync(const Path& /*path*/) override { store_->sync(); }

private:
    SharedStore store_;
};

/// Makes it if that is wanted; throws unless there is a store then.
void requireStoreAt(const std::string& path, const SqliteOptions& options) {
    if (look(path) == Found::Nothing) {
        if (!options.mayCreate || options.isReadOnly) {
            fail(ErrorCode::NotFound, "There is no store");
        }
        if (createStore(path, options.busyTime)) {
            return;
        }
    }
    requireFitting(path);
    requireStore(path);
    if (!options.isReadOnly) {
        requireWritableStore(path);
    }
}

SharedStore openStore(const std::string& path, const SqliteOptions& options) {
    try {
        return std::make_shared<Store>(path, options);
    } catch (const vfs::Exception& failure) {
        if (failure.getErrorCode() == ErrorCode::NotRecoverable) {
            requireWholeFile(path);
        }
        throw;
    }
}

/// Rid of what ended processes have left, if it may be changed.
SharedStore openTidyStore(const std::u16string& path, const SqliteOptions& options) {
    if (sqlite3_threadsafe() == 0) {
        fail(ErrorCode::NotSupported, "This SQLite was built for programs without threads");
    }
    const std::string native = pathBytes(path);
    requireStoreAt(native, options);
    SharedStore store = openStore(native, options);
    if (!options.isReadOnly) {
        sweep(*store);
    }
    return store;
}

}  // namespace

std::shared_ptr<Provider> openSqliteProvider(const std::u16string& path, const SqliteOptions& options) {
    return std::make_shared<SqliteProvider>(openTidyStore(path, options));
}

void compactSqliteStore(const std::u16string& path, std::chrono::milliseconds busyTime) {
    SqliteOptions options;
    options.mayCreate = false;
    options.busyTime = busyTime;
    openTidyStore(path, options)->compact();
}

}  // namespace foundation::storage::provider
