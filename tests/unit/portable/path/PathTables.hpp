#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace path_tests {

/// What a syntax makes of one path. The pieces are those of the tidied path.
struct PathRow {
    std::u16string path;
    std::u16string tidied;
    std::u16string parent;
    std::u16string filename;
    std::u16string extension;
    bool absolute;
};

struct JoinRow {
    std::u16string base;
    std::u16string rest;
    std::u16string joined;
};

inline void PrintTo(const PathRow& row, std::ostream* out) { *out << testing::PrintToString(row.path); }

inline void PrintTo(const JoinRow& row, std::ostream* out) {
    *out << testing::PrintToString(row.base) << " + " << testing::PrintToString(row.rest);
}

}  // namespace path_tests
