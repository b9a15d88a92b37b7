#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/storage/File.hpp>

#include <ios>
#include <istream>
#include <memory>
#include <ostream>
#include <streambuf>

/// @file
/// Standard streams over files of a storage system. Bytes are passed as they are: std::ios_base::binary makes
/// no difference. A stream keeps its storage system alive and belongs to one thread at a time.
///
/// Required of both: a file that cannot be opened, for whatever reason, leaves a stream with failbit;
/// constructors throw UnsupportedIRISchemeException where the scheme is not mounted, and for want of memory.
/// A store that fails to read or write shows as badbit and never looks like the end of the file.
namespace foundation::storage::vfs {

/// Reads a file. What it reads is the content that the file had when it was opened, whoever replaces or
/// removes it meanwhile. Can seek.
class PKGCORE_PLATFORM_API ifstream : public std::istream {
public:
    /// `mode` holds further flags; std::ios_base::in is added, std::ios_base::out never writes.
    ifstream(File file, std::ios_base::openmode mode);
    ~ifstream() override;
    ifstream(const ifstream&) = delete;
    ifstream& operator=(const ifstream&) = delete;

private:
    std::unique_ptr<std::streambuf> buffer_;
};

/// Writes a file. `mode` decides as in std::ofstream, std::ios_base::out is added: a missing file is created
/// and an existing one emptied, but not with std::ios_base::app (created, and appended to) or with
/// std::ios_base::in (must exist, and keeps its content). The folder around it must exist.
///
/// Written in order: seekp to anywhere but the end fails, tellp tells. Only with std::ios_base::in, and
/// without app, writing goes to any place, beyond the end with zeros between, and rdbuf() reads, too, with
/// one position for both; the file is then worked on as a whole, in a temporary file of the machine, at
/// opening and at every flush.
///
/// What was written is published by flush(), at the latest when the stream is destroyed while it is good and
/// no exception is being thrown; until then readers see the old content or no file. A publication that fails
/// shows as badbit on flush() and leaves the old content, or nothing. More may be written and published after
/// the first time.
class PKGCORE_PLATFORM_API ofstream : public std::ostream {
public:
    /// Opens the file as the class says.
    ofstream(File file, std::ios_base::openmode mode);
    ~ofstream() override;
    ofstream(const ofstream&) = delete;
    ofstream& operator=(const ofstream&) = delete;

private:
    std::unique_ptr<std::streambuf> buffer_;
};

}  // namespace foundation::storage::vfs
