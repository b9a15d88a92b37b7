#pragma once

#include <pkgcore/pkgcore.hpp>

#include <string>

/// A path as the host gives it to a program, which may be any bytes, as the library takes it: UTF-8, and each
/// byte that is no part of it as the code unit U+DC00 plus the byte.
opc::ustring pathFromHost(const std::string& bytes);

/// The other way round: the bytes by which the host knows the path.
std::string hostFromPath(const opc::ustring& path);
