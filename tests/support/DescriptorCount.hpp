#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace test {

/// The open descriptors of this process, each with what it stands for.
std::map<int, std::string> openDescriptors();

/// Expects at the end of the scope that the same descriptors are open as at its beginning.
class NoDescriptorLeft {
public:
    NoDescriptorLeft() : before_(openDescriptors()) {}
    ~NoDescriptorLeft() { EXPECT_EQ(before_, openDescriptors()); }
    NoDescriptorLeft(const NoDescriptorLeft&) = delete;
    NoDescriptorLeft& operator=(const NoDescriptorLeft&) = delete;

private:
    std::map<int, std::string> before_;
};

}  // namespace test
