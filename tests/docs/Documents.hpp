#pragma once

#include <fstream>
#include <sstream>
#include <string>

namespace documents {

inline std::string textOf(const std::string& document) {
    std::ifstream file(PKGCORE_DOCUMENTS "/" + document);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// The row of a table that begins with this cell, without the bars at its ends; empty where there is none.
inline std::string rowOf(const std::string& text, const std::string& firstCell) {
    const std::string opening = "\n| " + firstCell + " |";
    const std::size_t start = text.find(opening);
    return start == std::string::npos ? "" : text.substr(start + 1, text.find('\n', start + 1) - start - 1);
}

}  // namespace documents
