// Reads the input as UTF-8 and as UTF-16 and compares our conversions with ICU's of the whole text and with
// the literal reading of the Unicode Standard.

#include <pkgcore/platform/i18n/CvtException.hpp>
#include <pkgcore/portable/i18n/Utf8.hpp>

#include "tests/reference/IcuUtf8.hpp"
#include "tests/reference/ReferenceUtf8.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using fl::i18n::portable::decodeUtf8;
using fl::i18n::portable::encodeUtf8;

void require(bool condition) {
    if (!condition) std::abort();
}

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    checkDecoding(bytes);

    std::u16string text(size / sizeof(char16_t), u'\0');
    if (!text.empty()) std::memcpy(text.data(), data, text.size() * sizeof(char16_t));
    checkEncoding(text);
    checkEncoding(reference::decodeUtf8(bytes).text);

    // The same behind enough ASCII to come to stand across the end of a buffer.
    checkDecoding(std::string(8190, 'a') + bytes);
    checkEncoding(std::u16string(1022, u'a') + text);
    return 0;
}
