#include <pkgcore/portable/i18n/ConversionErrors.hpp>

#include <pkgcore/platform/i18n/CvtException.hpp>

#include <iomanip>
#include <locale>
#include <sstream>

namespace fl::i18n::portable {
namespace {

/// A stream that writes numbers plainly, whatever global locale the process has set.
std::ostringstream messageStream() {
    std::ostringstream message;
    message.imbue(std::locale::classic());
    return message;
}

std::string hex(unsigned long value, int digits) {
    std::ostringstream text = messageStream();
    text << std::uppercase << std::hex << std::setfill('0') << std::setw(digits) << value;
    return text.str();
}

std::string hexBytes(const char* bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += " " + hex(static_cast<unsigned char>(bytes[i]), 2);
    return text;
}

std::string atOffset(const char* unitName, std::size_t offset) {
    std::ostringstream text = messageStream();
    text << " at " << unitName << " offset " << offset;
    return text.str();
}

}  // namespace

void throwMalformedBytes(const std::string& encoding, std::size_t offset, const char* bytes,
                         std::size_t count) {
    throw CvtInvalidSequence("Malformed " + encoding + atOffset("byte", offset) + ":" +
                             hexBytes(bytes, count));
}

void throwTruncatedBytes(const std::string& encoding, std::size_t offset, const char* bytes,
                         std::size_t count) {
    throw CvtInvalidSequence("Unfinished " + encoding + " sequence" + atOffset("byte", offset) + ":" +
                             hexBytes(bytes, count));
}

void throwUnpairedSurrogate(std::size_t offset, char16_t unit) {
    throw CvtInvalidSequence("Unpaired surrogate" + atOffset("code unit", offset) + ": " + hex(unit, 4));
}

void throwNoCodePoint(std::size_t offset, unsigned long value) {
    throw CvtInvalidSequence("Wide character that is no code point" + atOffset("character", offset) + ": " +
                             hex(value, 4));
}

void throwUnmappable(const std::string& encoding, std::size_t offset, char32_t codePoint) {
    throw CvtUnmappableCharacter("Character that " + encoding + " does not have" +
                                 atOffset("code unit", offset) + ": U+" + hex(codePoint, 4));
}

void throwUnknownEncoding(const std::string& name) { throw CvtUnknownEncoding("Unknown encoding: " + name); }

}  // namespace fl::i18n::portable
