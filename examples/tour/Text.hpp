#pragma once

#include "../support/Printable.hpp"

#include <pkgcore/pkgcore.hpp>

#include <string>

namespace tour {

/// The values that the checks compare, as text.
std::string describe(bool value);
std::string describe(std::size_t value);
std::string describe(const std::string& text);
std::string describe(const opc::ustring& path);
std::string describe(opc::Perms::Perms_tag permissions);
std::string describe(const boost::posix_time::ptime& time);
std::string describe(const boost::system::error_code& code);

}  // namespace tour
