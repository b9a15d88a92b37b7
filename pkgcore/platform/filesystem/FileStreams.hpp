#pragma once

#include <pkgcore/platform/Export.hpp>

#include <cstdint>
#include <fstream>
#include <memory>
#include <streambuf>
#include <string>

namespace fl::filesystem {

/// Who else may have a file open while a stream has it.
enum class share_mode : unsigned {
    deny_none,  ///< others may read and write
};

/// The buffer between a standard stream and one open file of the host.
///
/// Reads and writes of half a buffer and more go straight to the host; smaller ones through a buffer of 64
/// KiB that is made on first need. One position serves reading and writing, as in std::filebuf. Bytes are
/// passed as they are: std::ios_base::binary makes no difference and the stream's locale is not asked.
class PKGCORE_PLATFORM_API file_buffer : public std::streambuf {
public:
    file_buffer();
    /// Writes what is buffered and closes; failures are lost here, so flush first where they matter.
    ~file_buffer() override;
    file_buffer(const file_buffer&) = delete;
    file_buffer& operator=(const file_buffer&) = delete;

    /// Opens the file with the meaning that the C++ standard gives the mode flags (table of
    /// basic_filebuf::open). False, with nothing opened, where that fails, the mode makes no sense, or the
    /// path names a folder.
    bool open(const std::wstring& accessPath, std::ios_base::openmode mode, share_mode share);

    bool isOpen() const noexcept { return handle_ != closedHandle; }

    /// Writes what is buffered and closes; false where either failed or nothing was open. Closed in any case.
    bool close();

protected:
    std::streamsize showmanyc() override;
    std::streamsize xsgetn(char* out, std::streamsize count) override;
    int_type underflow() override;
    int_type pbackfail(int_type unit) override;
    std::streamsize xsputn(const char* in, std::streamsize count) override;
    int_type overflow(int_type unit) override;
    int sync() override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode which) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

private:
    static constexpr std::intptr_t closedHandle = -1;

    bool flushPending();
    bool dropReadAhead();

    std::intptr_t handle_ = closedHandle;
    std::ios_base::openmode mode_{};
    std::unique_ptr<char[]> buffer_;
};

template <typename Char>
class basic_ifstream;
template <typename Char>
class basic_ofstream;

/// An input file stream whose bytes come from a file_buffer. rdbuf(), is_open() and close() speak of that
/// buffer.
template <>
class PKGCORE_PLATFORM_API basic_ifstream<char> : public std::basic_ifstream<char> {
public:
    basic_ifstream();
    ~basic_ifstream() override;

    /// Opens with `mode | std::ios_base::in`; failbit where that fails.
    void open(const std::wstring& accessPath, std::ios_base::openmode mode, share_mode share);
    bool is_open() const noexcept { return file_.isOpen(); }
    file_buffer* rdbuf() noexcept { return &file_; }
    /// Closes; failbit where nothing was open or the host reports a failure.
    void close();

private:
    file_buffer file_;
};

/// An output file stream over a file_buffer; see basic_ifstream. Opens with `mode | std::ios_base::out`.
template <>
class PKGCORE_PLATFORM_API basic_ofstream<char> : public std::basic_ofstream<char> {
public:
    basic_ofstream();
    ~basic_ofstream() override;

    void open(const std::wstring& accessPath, std::ios_base::openmode mode, share_mode share);
    bool is_open() const noexcept { return file_.isOpen(); }
    file_buffer* rdbuf() noexcept { return &file_; }
    void close();

private:
    file_buffer file_;
};

}  // namespace fl::filesystem
