#pragma once

#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"

#include <string>

namespace test {

/// Makes a folder with something of every kind in it.
inline void fill(const TempTree& tree, const std::string& top) {
    makeFolder(tree / top, 0750);
    makeFolder(tree / (top + "/inner"));
    makeFile(tree / (top + "/inner/file"), "text", 0640);
    makeFile(tree / (top + "/large"), someBytes(700'000), 0444);
    makeLink("nowhere", tree / (top + "/dangling"));
    setMode(tree / (top + "/inner"), 0711);
}

}  // namespace test
