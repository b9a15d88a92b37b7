#include "HostPath.hpp"

namespace {

constexpr std::size_t kLongestCharacter = 4;
constexpr char16_t kFirstLoneByte = 0xDC00;

/// Appends the character that begins at `at`, or the byte there, and returns how many bytes that took.
std::size_t appendNext(const std::string& bytes, std::size_t at, opc::ustring& path) {
    for (std::size_t length = 1; length <= kLongestCharacter && at + length <= bytes.size(); ++length) {
        try {
            path += opc::detail::toStringFromUTF8String(bytes.substr(at, length), false);
            return length;
        } catch (const opc::Exception&) {
            // No character yet, or never one.
        }
    }
    path += static_cast<char16_t>(kFirstLoneByte + static_cast<unsigned char>(bytes[at]));
    return 1;
}

bool isLoneByte(char16_t unit) { return unit >= kFirstLoneByte + 0x80 && unit <= kFirstLoneByte + 0xFF; }

bool isLeadSurrogate(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }

}  // namespace

opc::ustring pathFromHost(const std::string& bytes) {
    try {
        return opc::detail::toStringFromUTF8String(bytes, false);
    } catch (const opc::Exception&) {
        opc::ustring path;
        for (std::size_t at = 0; at < bytes.size();) {
            at += appendNext(bytes, at, path);
        }
        return path;
    }
}

std::string hostFromPath(const opc::ustring& path) {
    std::string bytes;
    for (std::size_t at = 0; at < path.size();) {
        const std::size_t length = isLeadSurrogate(path[at]) ? 2 : 1;
        bytes += isLoneByte(path[at]) ? std::string(1, static_cast<char>(path[at] - kFirstLoneByte))
                                      : opc::detail::toUTF8String(path.substr(at, length), false);
        at += length;
    }
    return bytes;
}
