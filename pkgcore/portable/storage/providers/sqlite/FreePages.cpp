#include <pkgcore/portable/storage/providers/sqlite/FreePages.hpp>

#include <pkgcore/portable/storage/providers/sqlite/BigEndian.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Connection.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/PageSeal.hpp>

#include <sqlite3.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace foundation::storage::sqlite {

namespace {

using Page = std::array<char, kPageSize>;

/// Where the header of the file has the first page of the list, and how many free pages there are.
constexpr std::size_t kFirstAt = 32;
constexpr std::size_t kCountAt = 36;

/// A page of the list has the number of the next one, how many pages it names, and their numbers.
constexpr std::size_t kNamesAt = 8;
constexpr std::size_t kMaxNames = (kPageSize - kPageSealSize - kNamesAt) / 4;

std::uint32_t numberAt(const Page& page, std::size_t at) { return readU32(page.data() + at); }

/// The list is under seals; what does not fit the pages there are was never right.
class FreePages {
public:
    explicit FreePages(Connection& connection) : connection_(connection) {
        sqlite3_file_control(connection.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file_);
        sqlite3_int64 size = 0;
        require(file_->pMethods->xFileSize(file_, &size));
        pages_ = size / kStep;
    }

    void mend() {
        const Page header = read(1);
        std::uint32_t left = numberAt(header, kCountAt);
        for (std::uint32_t list = numberAt(header, kFirstAt); list != 0; --left) {
            if (left == 0) {
                failDamaged("the list of free pages");
            }
            const Page names = read(list);
            mendThose(names);
            list = numberAt(names, 0);
        }
    }

private:
    static constexpr auto kStep = static_cast<sqlite3_int64>(kPageSize);

    void mendThose(const Page& names) {
        const std::uint32_t count = numberAt(names, 4);
        if (count > kMaxNames) {
            failDamaged("the list of free pages");
        }
        for (std::size_t i = 0; i < count; ++i) {
            mendOne(numberAt(names, kNamesAt + i * 4));
        }
    }

    void mendOne(std::uint32_t number) {
        Page page{};
        const int result = tryRead(number, page);
        if (result != SQLITE_IOERR_DATA) {
            require(result);
            return;
        }
        page.fill('\0');
        require(file_->pMethods->xWrite(file_, page.data(), static_cast<int>(kPageSize), offsetOf(number)));
    }

    Page read(std::uint32_t number) {
        Page page{};
        require(tryRead(number, page));
        return page;
    }

    int tryRead(std::uint32_t number, Page& page) {
        return file_->pMethods->xRead(file_, page.data(), static_cast<int>(kPageSize), offsetOf(number));
    }

    sqlite3_int64 offsetOf(std::uint32_t number) const {
        if (number == 0 || number > pages_) {
            failDamaged("the list of free pages");
        }
        return (sqlite3_int64{number} - 1) * kStep;
    }

    void require(int result) {
        if (result != SQLITE_OK) {
            failWith(connection_.get(), result);
        }
    }

    Connection& connection_;
    sqlite3_file* file_ = nullptr;
    sqlite3_int64 pages_ = 0;
};

/// Unless others are reading: nobody is waited for.
void emptyLog(Connection& connection) {
    const Patience patience = connection.patience();
    connection.setPatience(Patience(Milliseconds(0)));
    connection.execute("PRAGMA wal_checkpoint(TRUNCATE)");
    connection.setPatience(patience);
}

/// Whether all that is in the store is in its file, as far as a transaction sees it that keeps others from
/// writing. With an empty log, nobody reads an earlier state either.
bool isAllInFile(Connection& connection) {
    if (connection.valueOf("PRAGMA journal_mode") != "wal") {
        return true;
    }
    sqlite3_file* log = nullptr;
    sqlite3_file_control(connection.get(), "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
    sqlite3_int64 size = 0;
    const bool isOpen = log != nullptr && log->pMethods != nullptr;
    return isOpen && log->pMethods->xFileSize(log, &size) == SQLITE_OK && size == 0;
}

}  // namespace

// Who only reads does not read free pages.
void mendFreePages(Connection& connection) {
    emptyLog(connection);
    Transaction transaction(connection, Access::Write);
    if (isAllInFile(connection)) {
        FreePages(connection).mend();
    }
    transaction.commit();
}

}  // namespace foundation::storage::sqlite
