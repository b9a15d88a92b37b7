#pragma once

#include <pkgcore/platform/filesystem/FileStreams.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace test {

inline std::unique_ptr<fl::filesystem::file_buffer> opened(const std::string& path,
                                                           std::ios_base::openmode mode) {
    auto buffer = std::make_unique<fl::filesystem::file_buffer>();
    EXPECT_TRUE(
        buffer->open(std::wstring(path.begin(), path.end()), mode, fl::filesystem::share_mode::deny_none))
        << path;
    return buffer;
}

inline std::streamsize put(std::streambuf& buffer, const std::string& bytes) {
    return buffer.sputn(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string get(std::streambuf& buffer, std::size_t size) {
    std::string bytes(size, '\0');
    bytes.resize(static_cast<std::size_t>(buffer.sgetn(bytes.data(), static_cast<std::streamsize>(size))));
    return bytes;
}

inline std::streamoff tell(std::streambuf& buffer) { return buffer.pubseekoff(0, std::ios_base::cur); }

}  // namespace test
