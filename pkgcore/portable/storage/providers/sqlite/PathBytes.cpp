#include <pkgcore/portable/storage/providers/sqlite/PathBytes.hpp>

#include <pkgcore/platform/i18n/Conversion.hpp>
#include <pkgcore/platform/i18n/CvtException.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/SealedVfs.hpp>

#include <string_view>

namespace foundation::storage::sqlite {

using vfs::ErrorCode;

namespace {

constexpr char16_t kFirstByteUnit = 0xDC80;
constexpr char16_t kLastByteUnit = 0xDCFF;

/// Whether the unit stands for a byte; the second half of a pair does not.
bool isByteAt(std::u16string_view text, std::size_t at) {
    const bool isPair = at > 0 && text[at - 1] >= 0xD800 && text[at - 1] < 0xDC00;
    return text[at] >= kFirstByteUnit && text[at] <= kLastByteUnit && !isPair;
}

std::string encode(std::u16string_view text) {
    const fl::i18n::codecvt_ustring_to_string utf8("UTF-8", false);
    std::string bytes;
    std::size_t done = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (isByteAt(text, at)) {
            bytes += fl::i18n::to_string(std::u16string(text.substr(done, at - done)), utf8);
            bytes += static_cast<char>(text[at] - kFirstByteUnit + 0x80);
            done = at + 1;
        }
    }
    return bytes + fl::i18n::to_string(std::u16string(text.substr(done)), utf8);
}

}  // namespace

std::string pathBytes(const std::u16string& path) {
    if (path.empty()) {
        fail(ErrorCode::NotFound, "The path of the store is empty");
    }
    if (path.find(u'\0') != std::u16string::npos) {
        fail(ErrorCode::NotSupported, "The path of the store holds a NUL");
    }
    try {
        const std::string bytes = encode(path);
        return bytes[0] == '/' ? bytes : "./" + bytes;
    } catch (const fl::i18n::CvtExceptionBase&) {
        fail(ErrorCode::NotSupported, "The path of the store is no valid text");
    }
}

void requireFitting(const std::string& path) {
    constexpr std::size_t kEnding = std::string_view("-journal").size();
    constexpr int kLongest = 8192;
    sqlite3_vfs& files = defaultVfs();
    std::string full(kLongest, '\0');
    // What is wrong with a path that has no full form is found out by opening it.
    const bool isKnown = files.xFullPathname(&files, path.c_str(), kLongest, full.data()) == SQLITE_OK;
    full.resize(isKnown ? full.find('\0') : 0);
    if (full.size() + kEnding > static_cast<std::size_t>(files.mxPathname)) {
        fail(ErrorCode::NotSupported, "The path of the store is too long for SQLite");
    }
}

}  // namespace foundation::storage::sqlite
