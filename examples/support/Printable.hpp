#pragma once

#include <pkgcore/pkgcore.hpp>

#include <string>

/// A path as a terminal may show it: UTF-8, with U+FFFD for what has no form there and "?" for control
/// characters.
std::string printable(const opc::ustring& path);
