#include <pkgcore/streams/COMIStreamInAdaptor.hpp>

#include <pkgcore/streams/COMResult.hpp>

namespace opc {

COMIStreamInAdaptor::COMIStreamInAdaptor(IStream& stream) : stream_(&stream) {}

COMIStreamInAdaptor::~COMIStreamInAdaptor() = default;

void COMIStreamInAdaptor::open() {
    if (open_) {
        return;
    }
    LARGE_INTEGER noMove;
    noMove.QuadPart = 0;
    if (stream_->Seek(noMove, STREAM_SEEK_SET, nullptr) == S_OK) {
        open_ = true;
        done_ = false;
    }
}

std::size_t COMIStreamInAdaptor::read(std::uint8_t* buffer, std::size_t count) {
    if (!open_) {
        return 0;
    }
    ULONG bytesRead = 0;
    done_ = !detail::mayGoOn(stream_->Read(buffer, static_cast<ULONG>(count), &bytesRead));
    return bytesRead;
}

bool COMIStreamInAdaptor::isDone() const { return done_; }

void COMIStreamInAdaptor::close() {
    open_ = false;
    done_ = true;
}

}  // namespace opc
