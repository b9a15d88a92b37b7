// Reads the input as the bytes of a name and as a name, and compares what the one becomes of the other with
// their rule. No two names on a disk are called the same.

#include <pkgcore/portable/filesystem/PathText.hpp>

#include "tests/fuzz/Input.hpp"
#include "tests/reference/ReferenceEncodings.hpp"
#include "tests/reference/ReferenceNames.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace {

namespace names = fl::filesystem::posix;

using fuzz::require;

std::u16string decoded(const std::string& bytes) {
    // Of the exact size, so that a sanitizer sees what is written behind it.
    std::vector<char16_t> units(bytes.size());
    return std::u16string(units.data(), names::decodeText(bytes, units.data()));
}

template <typename Text>
std::optional<std::string> encoded(const Text& text, std::size_t bytesPerUnit) {
    std::vector<char> bytes(text.size() * bytesPerUnit);
    const std::size_t size = names::encodeText(text, bytes.data());
    return size == names::kInvalidText ? std::nullopt : std::optional(std::string(bytes.data(), size));
}

/// From one string type to a view of the same characters.
std::optional<std::string> encodedName(std::u16string_view text) {
    return encoded(text, names::kMaxBytesPerUnit);
}

std::optional<std::string> encodedWide(std::wstring_view text) { return encoded(text, 4); }

void checkBytes(const std::string& bytes) {
    const std::u16string name = decoded(bytes);
    require(name == reference::decodeName(bytes));
    std::u16string appended = u"before";
    names::appendDecoded(bytes, appended);
    require(appended == u"before" + name);
    if (bytes.find('\0') == std::string::npos) require(encodedName(name) == bytes);
}

void checkName(const std::u16string& name) {
    const std::optional<std::string> expected = reference::encodeName(name);
    require(encodedName(name) == expected);
    require(encodedWide(reference::widened(name)) == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = fuzz::bytesOf(data, size);
    checkBytes(bytes);
    checkName(fuzz::textOf(bytes));
    return 0;
}
