// Reads the input as UTF-8 and as UTF-16 and compares our conversions with ICU's of the whole text and with
// the literal reading of the Unicode Standard.

#include <pkgcore/platform/i18n/CvtException.hpp>
#include <pkgcore/portable/i18n/Utf8.hpp>

#include "tests/fuzz/Input.hpp"
#include "tests/reference/IcuUtf8.hpp"
#include "tests/reference/ReferenceUtf8.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

using fl::i18n::portable::decodeUtf8;
using fl::i18n::portable::encodeUtf8;
using fuzz::require;

template <typename Work>
bool succeeds(Work work) {
    try {
        work();
        return true;
    } catch (const fl::i18n::CvtInvalidSequence&) {
        return false;
    }
}

void checkDecoding(const std::string& bytes) {
    const reference::Decoded expected = reference::decodeUtf8(bytes);
    require(decodeUtf8(bytes.data(), bytes.size(), true) == expected.text);
    require(reference::icuDecodeUtf8(bytes) == expected.text);
    require(succeeds([&] { decodeUtf8(bytes.data(), bytes.size(), false); }) == (expected.malformed == 0));
}

void checkEncoding(const std::u16string& text) {
    const reference::Encoded expected = reference::encodeUtf8(text);
    require(encodeUtf8(text.data(), text.size(), true) == expected.bytes);
    require(reference::icuEncodeUtf8(text) == expected.bytes);
    require(succeeds([&] { encodeUtf8(text.data(), text.size(), false); }) == (expected.unpaired == 0));
}

/// Behind enough ASCII, what was converted before comes to stand across the end of a buffer.
void checkAcrossBuffers(const std::string& bytes, const std::u16string& text) {
    const std::string narrow(8190, 'a');
    const std::u16string wide(8190, u'a');
    const std::string behind = narrow + bytes;
    require(decodeUtf8(behind.data(), behind.size(), true) ==
            wide + decodeUtf8(bytes.data(), bytes.size(), true));
    const std::u16string before = wide.substr(0, 1022) + text;
    require(encodeUtf8(before.data(), before.size(), true) ==
            narrow.substr(0, 1022) + encodeUtf8(text.data(), text.size(), true));
}

bool isOneOf64(const std::string& bytes) { return !bytes.empty() && (bytes.back() & 0x3F) == 0; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = fuzz::bytesOf(data, size);
    checkDecoding(bytes);

    std::u16string text(size / sizeof(char16_t), u'\0');
    if (!text.empty()) std::memcpy(text.data(), data, text.size() * sizeof(char16_t));
    checkEncoding(text);
    checkEncoding(fuzz::textOf(bytes));
    if (isOneOf64(bytes)) checkAcrossBuffers(bytes, text);  // long texts take long
    return 0;
}
