#include <pkgcore/portable/storage/providers/sqlite/Recognition.hpp>

#include <pkgcore/portable/storage/providers/sqlite/BigEndian.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Connection.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/PageSeal.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace foundation::storage::sqlite {

using vfs::ErrorCode;

namespace {

/// The header of a database file, as SQLite describes it.
constexpr int kHeaderSize = 100;
constexpr std::string_view kMagic("SQLite format 3\0", 16);
constexpr std::size_t kPageSizeAt = 16;  // in two bytes
constexpr std::size_t kReservedAt = 20;  // in one
constexpr std::size_t kPageCountAt = 28;
constexpr std::size_t kUserVersionAt = 60;
constexpr std::size_t kApplicationIdAt = 68;

struct Header {
    sqlite3_int64 fileSize = 0;
    char bytes[kHeaderSize] = {};

    bool hasMagic() const { return std::string_view(bytes, kMagic.size()) == kMagic; }
    std::uint32_t numberAt(std::size_t at) const { return readU32(bytes + at); }
    sqlite3_int64 pageSize() const { return numberAt(kPageSizeAt) >> 16U; }
    std::size_t reserved() const { return static_cast<unsigned char>(bytes[kReservedAt]); }
};

Header readHeader(Connection& connection) {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(connection.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
    if (file == nullptr || file->pMethods == nullptr) {
        fail(ErrorCode::IOError, "The file cannot be read");
    }
    Header header;
    int result = file->pMethods->xFileSize(file, &header.fileSize);
    if (result == SQLITE_OK) {
        result = file->pMethods->xRead(file, header.bytes, kHeaderSize, 0);
    }
    if (result != SQLITE_OK && result != SQLITE_IOERR_SHORT_READ) {
        fail(storageCode(result, 0), std::string("The file cannot be read: ") + sqlite3_errstr(result));
    }
    return header;
}

std::string inHex(std::uint32_t number) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "0x";
    for (unsigned shift = 32; shift > 0; shift -= 4) {
        text += kDigits[number >> (shift - 4) & 0xFU];
    }
    return text;
}

[[noreturn]] void refuse(const std::string& found) {
    fail(ErrorCode::NotSupported, "This is no store but " + found);
}

void checkHeader(const Header& header) {
    if (header.fileSize == 0) {
        refuse("an empty file");
    }
    if (!header.hasMagic()) {
        refuse("a file that is no SQLite database");
    }
    if (header.fileSize < kHeaderSize) {
        fail(ErrorCode::NotRecoverable, "The file is cut off in its header");
    }
    const std::uint32_t id = header.numberAt(kApplicationIdAt);
    const std::uint32_t version = header.numberAt(kUserVersionAt);
    if (id != kApplicationId) {
        refuse("an SQLite database of another program (its application id is " + inHex(id) + ')');
    }
    if (version != kVersion) {
        fail(ErrorCode::NotSupported, "The store has version " + std::to_string(version) +
                                          ", and this library knows version " + std::to_string(kVersion));
    }
    if (header.pageSize() != static_cast<sqlite3_int64>(kPageSize) || header.reserved() != kPageSealSize) {
        fail(ErrorCode::NotSupported,
             "The pages of the store have no room for checksums: it was made by another program");
    }
}

}  // namespace

void requireStore(const std::string& path) {
    Connection connection(path, Access::Read, Milliseconds(0));
    checkHeader(readHeader(connection));
}

void requireWholeFile(const std::string& path) {
    Connection connection(path, Access::Read, Milliseconds(0));
    const Header header = readHeader(connection);
    const sqlite3_int64 size = header.pageSize() * header.numberAt(kPageCountAt);
    if (header.fileSize < size) {
        fail(ErrorCode::NotRecoverable, "The store is cut off: it has " + std::to_string(header.fileSize) +
                                            " of " + std::to_string(size) + " bytes");
    }
}

Found look(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        const bool canBeNothingElse = errno == ENOENT || errno == ENAMETOOLONG;
        if (canBeNothingElse) {
            return Found::Nothing;
        }
        failWithSystem(errno, "The store cannot be reached");
    }
    if (S_ISDIR(status.st_mode)) {
        refuse("a folder");
    }
    if (!S_ISREG(status.st_mode)) {
        refuse("a pipe, a device or the like");
    }
    return Found::File;
}

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

void requireWritable(const std::string& path) {
    // By the rights that the calls on the file will have, whoever started the process.
    if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
        failWithSystem(errno, "The store cannot be written");
    }
}

void requireWritableStore(const std::string& path) {
    requireWritable(path);
    // The journal is made beside the file itself, not beside a link to it.
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    if (real) {
        requireWritable(folderOf(real.get()));
    }
}

}  // namespace foundation::storage::sqlite
