#pragma once

#include <gtest/gtest.h>

#include <string>

namespace test {

/// A text as it is written in a test, for messages.
inline std::string shown(const std::u16string& text) { return testing::PrintToString(text); }

}  // namespace test
