#pragma once

#include <boost/filesystem.hpp>
#include <boost/locale/encoding_utf.hpp>

#include <filesystem>
#include <string>

/// What a client of the other libraries writes to get from UTF-16 to their paths and back.
namespace bench {

inline std::filesystem::path stdPath(const std::u16string& path) { return path; }

inline boost::filesystem::path boostPath(const std::u16string& path) {
    return boost::locale::conv::utf_to_utf<char>(path);
}

inline std::u16string fromBoostPath(const boost::filesystem::path& path) {
    return boost::locale::conv::utf_to_utf<char16_t>(path.native());
}

}  // namespace bench
