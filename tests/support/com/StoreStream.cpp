#include "tests/support/com/StoreStream.hpp"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace test {

namespace {

constexpr std::uint64_t kLastPosition = std::numeric_limits<std::int64_t>::max();
constexpr DWORD kCommitFlags =
    STGC_OVERWRITE | STGC_ONLYIFCURRENT | STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE | STGC_CONSOLIDATE;

void tell(ULONG* out, ULONG value) {
    if (out != nullptr) {
        *out = value;
    }
}

void tell(ULARGE_INTEGER* out, std::uint64_t value) {
    if (out != nullptr) {
        out->QuadPart = value;
    }
}

/// Moves a position, unless that leads before the start or beyond every store.
bool movePosition(std::uint64_t from, std::int64_t move, std::uint64_t& result) {
    // Negative moves wrap around to the right place, or to one beyond the last.
    result = from + static_cast<std::uint64_t>(move);
    return result <= kLastPosition;
}

/// The counts of a copy in pieces.
struct CopyCounts {
    std::uint64_t read = 0;
    std::uint64_t written = 0;
};

/// Copies one piece. S_FALSE at the end of the source; any other result but S_OK ends the copy as well.
HRESULT copyPiece(IStream& source, IStream& target, std::vector<char>& piece, ULONG count,
                  CopyCounts& counts) {
    ULONG read = 0;
    const HRESULT readResult = source.Read(piece.data(), count, &read);
    counts.read += read;
    ULONG written = 0;
    const HRESULT writeResult = target.Write(piece.data(), read, &written);
    counts.written += written;
    return writeResult != S_OK ? writeResult : readResult;
}

}  // namespace

StoreStream::StoreStream(std::shared_ptr<Store> store, std::uint64_t position)
    : store_(std::move(store)), position_(position) {}

StreamReference StoreStream::make(std::shared_ptr<Store> store, std::uint64_t position) {
    return StreamReference(new StoreStream(std::move(store), position), false);
}

HRESULT StoreStream::QueryInterface(REFIID interfaceId, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (interfaceId != IID_IUnknown && interfaceId != IID_ISequentialStream && interfaceId != IID_IStream) {
        return E_NOINTERFACE;
    }
    *object = static_cast<IStream*>(this);
    AddRef();
    return S_OK;
}

ULONG StoreStream::AddRef() { return ++references_; }

ULONG StoreStream::Release() {
    const ULONG left = --references_;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT StoreStream::Read(void* buffer, ULONG count, ULONG* bytesRead) {
    tell(bytesRead, 0);
    if (buffer == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    const Moved moved = store_->read(position_, buffer, count);
    position_ += moved.count;
    tell(bytesRead, moved.count);
    return moved.result;
}

HRESULT StoreStream::Write(const void* buffer, ULONG count, ULONG* bytesWritten) {
    tell(bytesWritten, 0);
    if (buffer == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    const Moved moved = store_->write(position_, buffer, count);
    position_ += moved.count;
    tell(bytesWritten, moved.count);
    return moved.result;
}

HRESULT StoreStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) {
    const std::uint64_t from = origin == STREAM_SEEK_CUR   ? position_
                               : origin == STREAM_SEEK_END ? store_->size()
                                                           : 0;
    std::uint64_t position = 0;
    if (origin > STREAM_SEEK_END || !store_->canSeek() || !movePosition(from, move.QuadPart, position)) {
        return STG_E_INVALIDFUNCTION;
    }
    position_ = position;
    tell(newPosition, position);
    return S_OK;
}

HRESULT StoreStream::SetSize(ULARGE_INTEGER newSize) {
    return newSize.QuadPart > kLastPosition ? STG_E_INVALIDFUNCTION : store_->setSize(newSize.QuadPart);
}

HRESULT StoreStream::CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* bytesRead,
                            ULARGE_INTEGER* bytesWritten) {
    if (target == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    std::vector<char> piece(65536);
    CopyCounts counts;
    HRESULT result = S_OK;
    while (result == S_OK && counts.read < count.QuadPart) {
        const std::uint64_t left = count.QuadPart - counts.read;
        result = copyPiece(*this, *target, piece,
                           static_cast<ULONG>(std::min<std::uint64_t>(left, piece.size())), counts);
    }
    tell(bytesRead, counts.read);
    tell(bytesWritten, counts.written);
    return result == S_FALSE ? S_OK : result;
}

HRESULT StoreStream::Commit(DWORD flags) {
    return (flags & ~kCommitFlags) != 0 ? STG_E_INVALIDFLAG : store_->commit();
}

HRESULT StoreStream::Revert() { return store_->revert(); }

HRESULT StoreStream::LockRegion(ULARGE_INTEGER /*offset*/, ULARGE_INTEGER /*count*/, DWORD /*lockType*/) {
    return STG_E_INVALIDFUNCTION;
}

HRESULT StoreStream::UnlockRegion(ULARGE_INTEGER /*offset*/, ULARGE_INTEGER /*count*/, DWORD /*lockType*/) {
    return STG_E_INVALIDFUNCTION;
}

HRESULT StoreStream::Stat(STATSTG* status, DWORD flags) {
    if (status == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    if (flags > STATFLAG_NOOPEN) {
        return STG_E_INVALIDFLAG;
    }
    *status = STATSTG{};
    status->type = STGTY_STREAM;
    status->cbSize.QuadPart = store_->size();
    store_->describe(*status);
    return S_OK;
}

HRESULT StoreStream::Clone(IStream** copy) {
    if (copy == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    *copy = make(store_, position_).detach();
    return S_OK;
}

}  // namespace test
