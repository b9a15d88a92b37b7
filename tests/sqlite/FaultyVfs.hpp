#pragma once

#include <sqlite3.h>

#include <functional>
#include <string>

namespace test {

/// A call of SQLite to the files below it.
struct VfsCall {
    /// The last two are of the memory that the users of a write-ahead log share.
    enum class Kind : unsigned char {
        Open,
        Delete,
        Read,
        Write,
        Truncate,
        Sync,
        FileSize,
        Lock,
        MapShared,
        LockShared
    };

    Kind kind = Kind::Open;
    std::string path;
    const void* bytes = nullptr;  ///< of Write
    sqlite3_int64 size = 0;       ///< of Write; the new one of Truncate; of Delete, 1 if the folder is synced
    sqlite3_int64 offset = 0;     ///< of Write
};

/// Puts itself between SQLite and its files, for all of the process, as long as it lives. Asks before each
/// call; a code that is not SQLITE_OK is what the call comes to, and the files are not touched.
class FaultyVfs {
public:
    using Ask = std::function<int(const VfsCall& call)>;

    FaultyVfs();
    ~FaultyVfs();
    FaultyVfs(const FaultyVfs&) = delete;
    FaultyVfs& operator=(const FaultyVfs&) = delete;

    /// Without one, nothing is asked.
    void onCall(Ask ask) { ask_ = std::move(ask); }

    int ask(const VfsCall& call) { return ask_ ? ask_(call) : SQLITE_OK; }

private:
    sqlite3_vfs vfs_;
    Ask ask_;
};

}  // namespace test
