#include <pkgcore/streams/COMIStreamOutAdaptor.hpp>

#include <pkgcore/streams/COMResult.hpp>

namespace opc {

COMIStreamOutAdaptor::COMIStreamOutAdaptor(IStream& stream) : stream_(&stream) {}

COMIStreamOutAdaptor::~COMIStreamOutAdaptor() = default;

std::size_t COMIStreamOutAdaptor::write(const std::uint8_t* buffer, std::size_t count) {
    ULONG bytesWritten = 0;
    done_ = !detail::mayGoOn(stream_->Write(buffer, static_cast<ULONG>(count), &bytesWritten));
    return bytesWritten;
}

bool COMIStreamOutAdaptor::isDone() const { return done_; }

void COMIStreamOutAdaptor::flush() { stream_->Commit(STGC_DEFAULT); }

void COMIStreamOutAdaptor::close() {}

}  // namespace opc
