#include "Text.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

#include <sstream>

namespace tour {

std::string describe(bool value) { return value ? "true" : "false"; }

std::string describe(std::size_t value) { return std::to_string(value); }

std::string describe(const std::string& text) { return '"' + text + '"'; }

std::string describe(const opc::ustring& path) { return describe(printable(path)); }

std::string describe(opc::Perms::Perms_tag permissions) {
    std::ostringstream text;
    text << '0' << std::oct << static_cast<unsigned>(permissions);
    return text.str();
}

std::string describe(const boost::posix_time::ptime& time) {
    return boost::posix_time::to_iso_extended_string(time);
}

std::string describe(const boost::system::error_code& code) {
    if (!code.failed()) {
        return "no failure";
    }
    return std::string(code.category().name()) + ':' + std::to_string(code.value()) + " (" + code.message() +
           ')';
}

}  // namespace tour
