// Reads the first byte as the choice of an encoding and the others as bytes in it and as a text. The strict
// and the lenient conversion agree, what one direction gives the other takes back, and what is simple enough
// is compared with its definition.

#include <pkgcore/platform/i18n/Conversion.hpp>
#include <pkgcore/platform/i18n/CvtException.hpp>

#include "tests/fuzz/Input.hpp"
#include "tests/reference/ReferenceEncodings.hpp"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>

namespace {

using fuzz::require;
using reference::Converted;

template <typename Text, typename Source, typename Converter>
std::optional<Text> strictly(const Source& source, const Converter& converter,
                             Text (*convert)(const Source&, const Converter&)) {
    try {
        return convert(source, converter);
    } catch (const fl::i18n::CvtExceptionBase&) {
        return std::nullopt;
    }
}

/// Both directions of one encoding, both ways.
class Encoding {
public:
    explicit Encoding(const char* name)
        : strictIn_(name, false), lenientIn_(name, true), strictOut_(name, false), lenientOut_(name, true) {}

    std::optional<std::u16string> decode(const std::string& bytes) const {
        return strictly<std::u16string>(bytes, strictIn_, &fl::i18n::to_ustring);
    }
    std::optional<std::string> encode(const std::u16string& text) const {
        return strictly<std::string>(text, strictOut_, &fl::i18n::to_string);
    }
    std::u16string decodeAll(const std::string& bytes) const {
        return fl::i18n::to_ustring(bytes, lenientIn_);
    }
    std::string encodeAll(const std::u16string& text) const { return fl::i18n::to_string(text, lenientOut_); }

private:
    fl::i18n::codecvt_string_to_ustring strictIn_, lenientIn_;
    fl::i18n::codecvt_ustring_to_string strictOut_, lenientOut_;
};

void checkAgreement(const Encoding& encoding, const std::string& bytes, const std::u16string& text) {
    const std::optional<std::u16string> decoded = encoding.decode(bytes);
    const std::u16string decodedAll = encoding.decodeAll(bytes);
    if (decoded) {
        require(*decoded == decodedAll);
    } else {
        require(decodedAll.find(u'\uFFFD') != std::u16string::npos);
    }
    const std::optional<std::string> encoded = encoding.encode(text);
    const std::string encodedAll = encoding.encodeAll(text);
    if (!encoded) return;
    require(*encoded == encodedAll);
    require(encoding.decode(*encoded) == text);
}

template <typename Text>
void requireSame(const std::optional<Text>& strict, const Text& lenient, const Converted<Text>& expected) {
    require(lenient == expected.text);
    require(strict.has_value() == expected.isWhole);
    require(!strict || *strict == expected.text);
}

void checkLatin1(const std::string& bytes, const std::u16string& text) {
    static const Encoding latin1("ISO-8859-1");
    requireSame(latin1.decode(bytes), latin1.decodeAll(bytes), reference::decodedFirst(bytes, 0x100));
    requireSame(latin1.encode(text), latin1.encodeAll(text), reference::encodedFirst(text, 0x100));
}

void checkAscii(const std::string& given, const std::u16string& text) {
    const std::string bytes = given.c_str();  // a literal ends at its first NUL
    using In = fl::i18n::codecvt_ascii_to_ustring;
    using Out = fl::i18n::codecvt_ustring_to_ascii;
    const auto decode = [](const std::string& literal, const In& converter) {
        return fl::i18n::to_ustring(literal.c_str(), converter);
    };
    requireSame(strictly<std::u16string, std::string, In>(bytes, In(false), decode), decode(bytes, In(true)),
                reference::decodedFirst(bytes, 0x80));
    requireSame(strictly<std::string, std::u16string, Out>(text, Out(false), &fl::i18n::to_string),
                fl::i18n::to_string(text, Out(true)), reference::encodedFirst(text, 0x80));
}

void checkOther(std::uint8_t choice, const std::string& bytes, const std::u16string& text) {
    static const Encoding kEncodings[] = {
        Encoding("windows-1252"), Encoding("ISO-8859-15"), Encoding("Shift_JIS"), Encoding("GB18030"),
        Encoding("EUC-JP"),       Encoding("Big5"),        Encoding("EUC-KR"),    Encoding("UTF-16LE"),
        Encoding("UTF-16BE"),     Encoding("UTF-32LE"),    Encoding("KOI8-R"),    Encoding("IBM437"),
    };
    checkAgreement(kEncodings[choice % std::size(kEncodings)], bytes, text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::uint8_t kLatin1 = 'L';
    constexpr std::uint8_t kAscii = 'A';
    if (size == 0) return 0;
    const std::string bytes = fuzz::bytesOf(data + 1, size - 1);
    const std::u16string text = fuzz::textOf(bytes);
    if (data[0] == kLatin1) {
        checkLatin1(bytes, text);
    } else if (data[0] == kAscii) {
        checkAscii(bytes, text);
    } else {
        checkOther(data[0], bytes, text);
    }
    return 0;
}
