#pragma once

#include <boost/system/error_code.hpp>

#include <string>

namespace opc::detail {

/// Turns the exception being handled into a description and a code; call it inside a catch-all only (see
/// Translated). A code of the storage system that is not known here leaves `ec` as it was, the description
/// is set all the same. Throws only where describing fails; the code is set by then.
void translateCurrentException(std::string& msg, boost::system::error_code& ec);

}  // namespace opc::detail
