#pragma once

#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "tests/support/ExpectFailure.hpp"

#include <gmock/gmock.h>

#include <ios>
#include <iterator>
#include <string>
#include <vector>

namespace test {

namespace errc = boost::system::errc;

inline foundation::storage::vfs::StorageSystemReference memoryStorage() {
    return foundation::storage::vfs::StorageSystemBuilder()
        .mount(u"mem", foundation::storage::provider::makeMemoryProvider())
        .build();
}

/// A selector over an empty storage system in memory, mem://, and its back end for IRIs.
class VirtualTest : public ::testing::Test {
protected:
    opc::FileSystemOpsSelector selector{memoryStorage()};
    opc::FileSystemOps& ops = selector.getVirtual();

    void write(const opc::ustring& path, const std::string& content) const {
        const auto stream = ops.createOutputStream(path, std::ios::binary);
        *stream << content << std::flush;
        ASSERT_TRUE(stream->good());
    }

    std::string read(const opc::ustring& path) const {
        const auto stream = ops.createInputStream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(*stream), {}};
    }

    std::vector<opc::ustring> files(const opc::ustring& folder, bool recursive) const {
        std::vector<opc::ustring> found;
        ops.getFiles(folder, found, recursive);
        return found;
    }

    /// store: a, sub (b, deep (c))
    void makeTree(const opc::ustring& root) const {
        ops.createFolders(root + u"/sub/deep");
        write(root + u"/a", "A");
        write(root + u"/sub/b", "B");
        write(root + u"/sub/deep/c", "C");
    }
};

inline const std::string kMissing = "File or folder not found: ";

}  // namespace test
