#pragma once

#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/ExpectFailure.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace test {

namespace errc = boost::system::errc;

/// The local back end and a folder of its own on the real disk; no test leaves a descriptor open.
class LocalTest : public ::testing::Test {
protected:
    explicit LocalTest(const std::string& parent = "/tmp") : tree(parent) {}

    NoDescriptorLeft noDescriptorLeft;
    TempTree tree;
    opc::LocalFileSystemOps ops;
};

/// What getFiles appends, sorted: the host delivers names in an order of its own.
inline std::vector<opc::ustring> sortedFiles(opc::FileSystemOps& ops, const opc::ustring& folder,
                                             bool recursive) {
    std::vector<opc::ustring> files;
    ops.getFiles(folder, files, recursive);
    std::sort(files.begin(), files.end());
    return files;
}

/// `name` `levels` times, with separators between.
inline std::string chainPath(const std::string& name, int levels) {
    std::string path = name;
    for (int level = 1; level < levels; ++level) {
        path += '/' + name;
    }
    return path;
}

/// Names that a file can have and that have tripped programs, each as the disk holds it and as the library
/// gives it.
struct OddName {
    std::string onDisk;
    opc::ustring asText;
};

inline void PrintTo(const OddName& name, std::ostream* out) { *out << ::testing::PrintToString(name.onDisk); }

std::vector<OddName> oddNames();

}  // namespace test
