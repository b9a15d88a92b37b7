#include "Tally.hpp"

#include "../support/Printable.hpp"
#include "../support/Progress.hpp"

#include <iostream>

namespace mirror {

void Tally::skip(const opc::ustring& item, const std::string& reason) {
    ++skipped;
    clearProgress();
    std::cout << "skipped, " << reason << ": " << printable(item) << "\n";
}

void Tally::fail(const std::string& reason) {
    ++failures;
    clearProgress();
    std::cerr << "mirror: " << reason << "\n";
}

void Tally::print(const opc::ustring& from, const opc::ustring& to) const {
    clearProgress();
    std::cout << printable(from) << " -> " << printable(to) << ": " << files << " files, " << links
              << " links, " << folders << " folders, " << bytes << " bytes; " << copied << " copied, "
              << unchanged << " unchanged, " << removed << " removed, " << skipped << " skipped, " << failures
              << " failures" << std::endl;
}

}  // namespace mirror
