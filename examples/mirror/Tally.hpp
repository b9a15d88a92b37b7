#pragma once

#include <pkgcore/pkgcore.hpp>

#include <cstdint>
#include <string>

namespace mirror {

/// Counts what became of the items of one mirroring, and says what went wrong where it does.
struct Tally {
    std::uintmax_t files = 0;  ///< that are the same in both places now; so are links and folders
    std::uintmax_t links = 0;
    std::uintmax_t folders = 0;
    std::uintmax_t bytes = 0;   ///< in those files
    std::uintmax_t copied = 0;  ///< files and links
    std::uintmax_t unchanged = 0;
    std::uintmax_t removed = 0;
    std::uintmax_t skipped = 0;
    std::uintmax_t failures = 0;

    /// An item that is left out on purpose.
    void skip(const opc::ustring& item, const std::string& reason);

    /// An item that could not be dealt with; the others are.
    void fail(const std::string& reason);

    /// Prints all counts in one line.
    void print(const opc::ustring& from, const opc::ustring& to) const;
};

}  // namespace mirror
