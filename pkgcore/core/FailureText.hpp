#pragma once

#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include <string>

namespace opc::detail {

/// The text of a failure of the file system, with ": " and the path concerned behind it where there is one.
std::string describeFailure(const fl::filesystem::FsysExceptionBase& failure);

}  // namespace opc::detail
