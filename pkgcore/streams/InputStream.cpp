#include <pkgcore/streams/InputStream.hpp>

namespace opc {

InputStream::InputStream() = default;
InputStream::~InputStream() = default;

}  // namespace opc
