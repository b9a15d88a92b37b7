#include <pkgcore/streams/OutputStream.hpp>

namespace opc {

OutputStream::OutputStream() = default;
OutputStream::~OutputStream() = default;

}  // namespace opc
