// testing.md: a table of system calls of one's own.

#include <pkgcore/pkgcore.hpp>

#include "testing/system-calls.includes.inc"

#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

TEST(SystemCalls, FailInATest) {
    const test::TempTree tree;
    opc::LocalFileSystemOps files;
    const auto stream = files.createOutputStream(tree.text("a"), 0);
    {
#include "testing/system-calls.inc"
        EXPECT_FALSE(*stream << "tea" << std::flush);
    }
    stream->clear();
    EXPECT_TRUE(*stream << std::flush);
}

}  // namespace
