#pragma once

#include <pkgcore/portable/storage/providers/sqlite/SealedFile.hpp>

#include <sqlite3.h>

#include <string>

namespace foundation::storage::sqlite {

/// What SQLite uses for files unless told otherwise. Throws where there is none, as where SQLite cannot be
/// initialised.
sqlite3_vfs& defaultVfs();

/// A file system for one connection of SQLite: the one that was the default when this was made, with each
/// page of the store and its rollback journal sealed on the way. One for each connection, so that it lies
/// over what is the default at that time, and nothing stays behind. It must outlive the connection, and so
/// must what is below.
class SealedVfs {
public:
    SealedVfs();
    ~SealedVfs();
    SealedVfs(const SealedVfs&) = delete;
    SealedVfs& operator=(const SealedVfs&) = delete;

    /// By which SQLite knows it.
    const char* name() const noexcept { return name_.c_str(); }

    /// What is below.
    sqlite3_vfs& below() const noexcept { return below_; }

    /// How pages are checked when they are read; whole unless told otherwise.
    PageCheck& check() noexcept { return check_; }

private:
    std::string name_;
    sqlite3_vfs& below_;
    sqlite3_vfs vfs_;
    PageCheck check_ = PageCheck::Whole;
};

}  // namespace foundation::storage::sqlite
