#pragma once

#include <pkgcore/core/Ustring.hpp>

namespace opc::detail {

/// What is appended where a client asks to append this text: without one leading slash. One and no more: of
/// two, the second is appended.
inline ustring relativeText(const ustring& toAppend) {
    return toAppend.substr(!toAppend.empty() && toAppend.front() == u'/' ? 1 : 0);
}

}  // namespace opc::detail
