#pragma once

#include <pkgcore/filesystem/VirtualFileSystemOps.hpp>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

/// What the measurements of virtual storage have in common.
namespace bench {

using Paths = std::vector<std::u16string>;

/// A storage system with one empty store in memory, "mem".
opc::VirtualFileSystemOps newStorage();

opc::FileSystemOps& localOps();

/// The IRI of a local path whose characters need no encoding.
std::u16string iriOf(const std::filesystem::path& path);

/// The text with the digits of a number behind it.
std::u16string numbered(const std::u16string& stem, std::size_t number);

inline constexpr std::size_t kChunk = 16384;

/// Makes a file of `size` bytes, which are written in chunks of kChunk.
void writeFile(opc::FileSystemOps& ops, const std::u16string& path, std::size_t size);

}  // namespace bench
