#pragma once

#include <pkgcore/platform/Export.hpp>

#include <cstddef>
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
/// Transfers of half a buffer and more go straight to the host, smaller ones through a buffer of 64 KiB that
/// is made on first need (a much smaller one serves where memory is short). The first read after opening or
/// seeking goes straight from 4 KiB on, so that a file which is read in one piece needs no buffer, and
/// reading here and there does not read much ahead. One position serves reading and writing, as in
/// std::filebuf, and one may follow the other without a seek between them. Bytes are passed as they are:
/// std::ios_base::binary makes no difference and the stream's locale is not asked.
///
/// A host that fails to read makes the reading functions throw std::ios_base::failure, which the stream above
/// turns into badbit, so that a failing disk never looks like the end of the file. A host that fails to write
/// makes them report what was taken; what is buffered stays buffered and is written once, should a later
/// attempt succeed.
class PKGCORE_PLATFORM_API file_buffer : public std::streambuf {
public:
    file_buffer();
    /// Writes what is buffered and closes; failures are lost here, so flush first where they matter.
    ~file_buffer() override;
    file_buffer(const file_buffer&) = delete;
    file_buffer& operator=(const file_buffer&) = delete;

    /// Opens the file with the meaning that the C++ standard gives the mode flags (table of
    /// basic_filebuf::open). False, with nothing opened, where that fails, the mode makes no sense, the path
    /// names a folder or has no form in the host's encoding of names, or something is open already. Opening a
    /// pipe waits as the host does.
    bool open(const std::wstring& accessPath, std::ios_base::openmode mode, share_mode share);

    /// Whether open() succeeded and close() has not been called since.
    bool isOpen() const noexcept { return handle_ != kClosedHandle; }

    /// Writes what is buffered and closes; false where either failed or nothing was open. Closed in any case.
    bool close() noexcept;

protected:
    /// For a regular file, what its size promises behind the buffer; else 0.
    std::streamsize showmanyc() override;
    /// Reading throws std::ios_base::failure where the host fails, also behind bytes that it gave before.
    /// @{
    std::streamsize xsgetn(char* out, std::streamsize count) override;
    int_type underflow() override;
    /// @}
    /// Goes back to any byte of a file that can seek. A byte other than the file's own is put into the buffer
    /// alone and stays there until the buffer moves on.
    int_type pbackfail(int_type unit) override;
    /// Writing gives what was taken, which is less than asked for where the host fails.
    /// @{
    std::streamsize xsputn(const char* in, std::streamsize count) override;
    int_type overflow(int_type unit) override;
    /// @}
    /// Hands what is buffered to the host, which is not asked to force it to the disk.
    int sync() override;
    /// After writes in append mode the position is the end of the file. -1 where what is buffered cannot be
    /// written, or the file cannot seek.
    /// @{
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode which) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;
    /// @}

private:
    static constexpr std::intptr_t kClosedHandle = -1;
    static constexpr std::size_t kSpareSize = 256;

    int descriptor() const noexcept { return static_cast<int>(handle_); }
    std::streamsize unread() const noexcept { return egptr() - gptr(); }
    std::streamsize pending() const noexcept { return pptr() - pbase(); }

    void makeArea() noexcept;
    bool readsDirectly(std::streamsize count) const noexcept;
    bool startReading();
    std::size_t refill();
    std::streamsize takeBuffered(char* out, std::streamsize count) noexcept;
    std::streamsize readDirectly(char* out, std::streamsize count);
    bool stepBack();
    bool startWriting() noexcept;
    bool makeRoom() noexcept;
    std::streamsize putIntoArea(const char* in, std::streamsize count) noexcept;
    std::streamsize writeDirectly(const char* in, std::streamsize count) noexcept;
    bool flushPending() noexcept;
    bool dropReadAhead() noexcept;
    off_type position() const noexcept;

    std::intptr_t handle_ = kClosedHandle;
    std::ios_base::openmode mode_{};
    bool readsOn_ = false;  // whether bytes were read since opening or the last seek
    char* area_ =
        nullptr;  // buffer_, or spare_ where there was no memory for a buffer; null before the first need
    std::size_t areaSize_ = 0;
    std::unique_ptr<char[]> buffer_;
    char spare_[kSpareSize];
};

template <typename Char>
class basic_ifstream;
template <typename Char>
class basic_ofstream;

/// An input file stream whose bytes come from a file_buffer.
template <>
class PKGCORE_PLATFORM_API basic_ifstream<char> : public std::basic_ifstream<char> {
public:
    basic_ifstream();
    ~basic_ifstream() override;

    /// Opens with `mode | std::ios_base::in`; failbit where that fails.
    void open(const std::wstring& accessPath, std::ios_base::openmode mode, share_mode share);
    /// Whether a file is open.
    bool is_open() const noexcept { return file_.isOpen(); }
    /// The stream's own buffer, which lives as long as the stream.
    file_buffer* rdbuf() noexcept { return &file_; }
    /// Closes; failbit where nothing was open or the host reports a failure.
    void close();

private:
    file_buffer file_;
};

/// An output file stream whose bytes go to a file_buffer.
template <>
class PKGCORE_PLATFORM_API basic_ofstream<char> : public std::basic_ofstream<char> {
public:
    basic_ofstream();
    ~basic_ofstream() override;

    /// Opens with `mode | std::ios_base::out`; failbit where that fails.
    void open(const std::wstring& accessPath, std::ios_base::openmode mode, share_mode share);
    /// Whether a file is open.
    bool is_open() const noexcept { return file_.isOpen(); }
    /// The stream's own buffer, which lives as long as the stream.
    file_buffer* rdbuf() noexcept { return &file_; }
    /// Writes what is buffered and closes; failbit where either failed or nothing was open.
    void close();

private:
    file_buffer file_;
};

}  // namespace fl::filesystem
