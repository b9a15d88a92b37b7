#pragma once

#include <pkgcore/core/Ustring.hpp>

#include <string>

namespace opc::detail {

/// A path as it stands in messages: in the user's default encoding, and leniently where it has no exact form
/// there, so that describing a failure never becomes a failure of its own (std::bad_alloc aside).
std::string toMessageText(const ustring& path);

}  // namespace opc::detail
