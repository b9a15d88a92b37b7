#pragma once

#include <boost/system/error_code.hpp>

#include <string>

namespace opc::detail {

/// Turns the exception being handled into a description and a code; call it inside a catch-all only. Never
/// throws: if memory for the description is short, the code is set all the same.
void translateFsysException(std::string& msg, boost::system::error_code& ec) noexcept;

}  // namespace opc::detail
