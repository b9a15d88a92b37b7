#pragma once

#include <string>

namespace opc {

/// The text of every public interface: UTF-16 code units in host byte order.
/// Unpaired surrogates are allowed to travel through it, since file names may hold them.
using ustring = std::u16string;

}  // namespace opc
