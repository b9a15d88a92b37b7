#pragma once

#include <pkgcore/pkgcore.hpp>

#include <string>

namespace tour {

/// A path as a terminal may show it: UTF-8, with U+FFFD for what has no form there and "?" for control
/// characters.
std::string printable(const opc::ustring& path);

/// The values that the checks compare, as text.
std::string describe(bool value);
std::string describe(std::size_t value);
std::string describe(const std::string& text);
std::string describe(const opc::ustring& path);
std::string describe(opc::Perms::Perms_tag permissions);
std::string describe(const boost::posix_time::ptime& time);
std::string describe(const boost::system::error_code& code);

}  // namespace tour
