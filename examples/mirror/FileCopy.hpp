#pragma once

#include <pkgcore/pkgcore.hpp>

#include <cstdint>

namespace mirror {

/// A file, and the back end that it is reached by.
struct FileAt {
    opc::FileSystemOps& files;
    opc::ustring path;
};

/// The length of a file. Throws if it cannot be read.
std::uintmax_t lengthOf(const FileAt& file);

/// Whether `copy` is a file of the same length and either of the same time or of the same content. Throws if
/// that cannot be found out.
bool isUpToDate(const FileAt& original, const FileAt& copy);

/// Copies content and time, or throws. What is there stays until the new file is complete; a link there gives
/// way to the file.
void copyFile(const FileAt& original, const FileAt& copy);

}  // namespace mirror
