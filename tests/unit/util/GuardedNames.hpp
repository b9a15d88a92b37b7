#pragma once

#include <pkgcore/core/StringConversions.hpp>

#include <string>

namespace test {

/// The name that a guard gives, as the host's calls take it. Throws for one that is not valid Unicode.
inline std::string bytes(const opc::ustring& name) { return opc::detail::toUTF8String(name, false); }

}  // namespace test
