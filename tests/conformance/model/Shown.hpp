#pragma once

#include <boost/date_time/posix_time/posix_time.hpp>

#include <functional>
#include <string>

/// The one spelling of answers, for the model and for stores.
namespace test::model {

inline std::string shown(bool value) { return value ? "yes" : "no"; }

inline std::string shown(const boost::posix_time::ptime& time) {
    return boost::posix_time::to_iso_extended_string(time);
}

/// Each character outside ASCII as a question mark: the names of the test differ elsewhere, too.
inline std::string shown(const std::u16string& path) {
    std::string result;
    for (const char16_t unit : path) result += unit < 0x80 ? static_cast<char>(unit) : '?';
    return result;
}

inline std::string shownFolder(const std::u16string& path) { return shown(path) + "/\n"; }

inline std::string shownFile(const std::u16string& path, bool isWritable, const std::string& content) {
    return shown(path) + (isWritable ? " rw " : " r ") + std::to_string(content.size()) + ' ' +
           std::to_string(std::hash<std::string>()(content)) + '\n';
}

}  // namespace test::model
