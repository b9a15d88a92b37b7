#pragma once

#include <pkgcore/portable/storage/layer/ReadBuffer.hpp>
#include <pkgcore/portable/storage/layer/Spot.hpp>

#include <ios>
#include <memory>

namespace foundation::storage::portable {

/// Opens a file for a stream, with the meaning that the C++ standard gives the mode flags (table of
/// basic_filebuf::open). Throws where the file cannot be opened; NotSupported for flags that make no sense
/// together. What is opened for writing is a Publisher, too.
std::unique_ptr<ReadBuffer> openForReading(const Spot& file);
std::unique_ptr<std::streambuf> openForWriting(const Spot& file, std::ios_base::openmode mode);

}  // namespace foundation::storage::portable
