#include <pkgcore/portable/storage/layer/UpdateBuffer.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/platform/filesystem/Temporary.hpp>
#include <pkgcore/platform/path/PathSyntax.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/layer/Reading.hpp>

#include <cstdio>

namespace foundation::storage::portable {

namespace fs = fl::filesystem;

using fs::file_buffer;
using vfs::ErrorCode;

namespace {

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;
const std::streambuf::pos_type kNoPosition = std::streambuf::pos_type(std::streambuf::off_type(-1));

void requireSuccess(bool succeeded) {
    if (!succeeded) {
        throw vfs::Exception(ErrorCode::IOError, "The temporary file failed");
    }
}

/// A file that is gone when the scope ends; what has it open keeps it.
class NamedDraft {
public:
    NamedDraft() {
        if (std::FILE* const file = fs::tmpfile(name_, fs::temp_directory_name(), u".", u".tmp")) {
            static_cast<void>(std::fclose(file));  // nothing was written that could be lost
        }
    }
    NamedDraft(const NamedDraft&) = delete;
    NamedDraft& operator=(const NamedDraft&) = delete;
    ~NamedDraft() {
        try {
            fs::remove(name_);
        } catch (const fs::FsysExceptionBase&) {
            // An empty file is left in the folder for temporary ones.
        }
    }

    std::wstring accessPath() const { return fs::detail::make_native_access_form_with_cleanup(name_); }

private:
    std::u16string name_;
};

}  // namespace

UpdateBuffer::UpdateBuffer(const Spot& file, Base base) : file_(file), isNews_(base == Base::Empty) {
    const std::unique_ptr<provider::Reader> old = isNews_ ? nullptr : file_.openReader();
    writer_ = file_.openWriter(provider::WriteMode::Create);
    openDraft();
    if (old) {
        take(*old);
    }
}

void UpdateBuffer::openDraft() {
    constexpr auto kMode = std::ios_base::in | std::ios_base::out;
    try {
        if (file_buffer::open(NamedDraft().accessPath(), kMode, fs::share_mode::deny_none)) {
            return;
        }
    } catch (const fs::FsysExceptionBase&) {
        // Why there is no temporary file is of no use to one who works on another file.
    }
    throw vfs::Exception(ErrorCode::IOError, "No temporary file could be made", file_.iri());
}

void UpdateBuffer::take(provider::Reader& reader) {
    const std::unique_ptr<char[]> block(new char[kBlockSize]);
    bool fits = true;
    std::streamsize count = 0;
    do {
        count = static_cast<std::streamsize>(
            file_.located([&] { return readNext(reader, block.get(), kBlockSize); }));
        fits = file_buffer::xsputn(block.get(), count) == count;
    } while (fits && count > 0);
    if (!fits || !goTo(0)) {
        throw vfs::Exception(ErrorCode::NoSpace, "No space is left for temporary files", file_.iri());
    }
}

/// Hands over what is buffered first: false where that fails.
bool UpdateBuffer::goTo(pos_type position) {
    return file_buffer::seekpos(position, std::ios_base::in | std::ios_base::out) == position;
}

std::streamsize UpdateBuffer::xsputn(const char* in, std::streamsize count) {
    isNews_ = isNews_ || count > 0;
    return failed_ ? 0 : file_buffer::xsputn(in, count);
}

UpdateBuffer::int_type UpdateBuffer::overflow(int_type unit) {
    isNews_ = isNews_ || !traits_type::eq_int_type(unit, traits_type::eof());
    return failed_ ? traits_type::eof() : file_buffer::overflow(unit);
}

int UpdateBuffer::sync() { return publish() ? 0 : -1; }

/// Goes through the draft from its beginning, and back to where it stood before anybody sees it.
void UpdateBuffer::publishDraft() {
    if (!writer_) {
        writer_ = file_.openWriter(provider::WriteMode::Create);
    }
    const pos_type position = file_buffer::seekoff(0, std::ios_base::cur, std::ios_base::out);
    requireSuccess(position != kNoPosition && goTo(0));
    const std::unique_ptr<char[]> block(new char[kBlockSize]);
    while (const std::streamsize count = file_buffer::xsgetn(block.get(), kBlockSize)) {
        writer_->write(block.get(), static_cast<std::size_t>(count));
    }
    requireSuccess(goTo(position));
    writer_->commit();
    writer_.reset();
}

// The streams of the library tell of a failure by their state alone; why it failed has no way out of here.
bool UpdateBuffer::publish() {
    failed_ = failed_ || file_buffer::sync() != 0;
    if (failed_ || !isNews_) {
        return !failed_;
    }
    try {
        publishDraft();
        isNews_ = false;
    } catch (...) {
        failed_ = true;
        writer_.reset();
    }
    return !failed_;
}

}  // namespace foundation::storage::portable
