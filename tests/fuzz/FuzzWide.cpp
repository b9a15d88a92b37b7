// Reads the input as a text and as wide characters of any value, and compares what the one becomes of the
// other with their rule.

#include <pkgcore/core/StringConversions.hpp>
#include <pkgcore/platform/i18n/CvtException.hpp>

#include "tests/fuzz/Input.hpp"
#include "tests/reference/ReferenceEncodings.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

namespace {

using fuzz::require;

std::optional<std::u16string> narrowed(const std::wstring& wide) {
    try {
        return opc::toString(wide);
    } catch (const fl::i18n::CvtInvalidSequence&) {
        return std::nullopt;
    }
}

void checkText(const std::u16string& text) {
    const std::wstring wide = opc::toWideString(text);
    require(wide == reference::widened(text));
    require(opc::toString(wide) == text);
}

void checkWide(const std::wstring& wide) {
    const std::optional<std::u16string> text = narrowed(wide);
    require(text == reference::narrowed(wide));
    if (text) checkText(*text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    checkText(fuzz::textOf(fuzz::bytesOf(data, size)));

    std::wstring wide(size / sizeof(wchar_t), L'\0');
    if (!wide.empty()) std::memcpy(wide.data(), data, wide.size() * sizeof(wchar_t));
    checkWide(wide);
    return 0;
}
