#include <pkgcore/platform/i18n/Characters.hpp>
#include <pkgcore/platform/i18n/Codecvt.hpp>
#include <pkgcore/platform/i18n/Conversion.hpp>
#include <pkgcore/platform/i18n/Initialize.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

#include <algorithm>

namespace fl::i18n {

using scripted::narrow;
using scripted::Platform;
using scripted::Verbatim;
using scripted::widen;

namespace detail {

/// The encoding that a scripted converter was made for.
class converter_state {
public:
    explicit converter_state(std::string name) : encoding(std::move(name)) {}

    std::string encoding;
};

}  // namespace detail

namespace {

void success() {}

void recordConverter(const char* name, const std::string& encoding, bool lenient) {
    Platform& platform = Platform::current();
    platform.record(name, encoding, lenient);
    platform.makeConverter.next(widen(encoding), success);
}

/// A converter as an argument: converter['UTF-8', true].
template <typename Converter>
Verbatim shown(const Converter& converter) {
    return {"converter[" + scripted::show(converter.state()->encoding) + ", " +
            scripted::show(converter.lenient()) + "]"};
}

std::u16string tagged(const std::u16string& tag, const std::u16string& text) {
    return tag + u"(" + text + u")";
}
std::string tagged(const std::string& tag, const std::u16string& text) {
    return tag + "(" + narrow(text) + ")";
}

char16_t loweredASCII(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
}

}  // namespace

codecvt_string_to_ustring::codecvt_string_to_ustring(const std::string& encodingName, bool lenient)
    : state_(std::make_unique<detail::converter_state>(encodingName)), lenient_(lenient) {
    recordConverter("codecvt_string_to_ustring", encodingName, lenient);
}

codecvt_string_to_ustring::~codecvt_string_to_ustring() {
    Platform::current().record("~codecvt_string_to_ustring");
}

codecvt_ustring_to_string::codecvt_ustring_to_string(const std::string& encodingName, bool lenient)
    : state_(std::make_unique<detail::converter_state>(encodingName)), lenient_(lenient) {
    recordConverter("codecvt_ustring_to_string", encodingName, lenient);
}

codecvt_ustring_to_string::~codecvt_ustring_to_string() {
    Platform::current().record("~codecvt_ustring_to_string");
}

codecvt_ustring_to_ascii::codecvt_ustring_to_ascii(bool lenient) : lenient_(lenient) {
    Platform::current().record("codecvt_ustring_to_ascii", lenient);
}

codecvt_ascii_to_ustring::codecvt_ascii_to_ustring(bool lenient) : lenient_(lenient) {
    Platform::current().record("codecvt_ascii_to_ustring", lenient);
}

void initialize() {
    Platform::current().record("initialize");
    Platform::current().initialize.next(std::u16string(), success);
}

std::u16string to_ustring(const std::string& text, const codecvt_string_to_ustring& converter) {
    Platform::current().record("to_ustring", text, shown(converter));
    return Platform::current().to_ustring.next(widen(text), [&] { return tagged(u"decoded", widen(text)); });
}

std::u16string to_ustring(const char* text, const codecvt_ascii_to_ustring& converter) {
    Platform::current().record("to_ustring", text,
                               Verbatim{"ascii[" + scripted::show(converter.lenient()) + "]"});
    return Platform::current().to_ustring.next(widen(text),
                                               [&] { return tagged(u"fromASCII", widen(text)); });
}

std::u16string to_ustring(const std::wstring& text) {
    const std::u16string units(text.begin(), text.end());
    Platform::current().record("to_ustring", text);
    return Platform::current().to_ustring.next(units, [&] { return tagged(u"fromWide", units); });
}

std::string to_string(const std::u16string& text, const codecvt_ustring_to_string& converter) {
    Platform& platform = Platform::current();
    platform.record("to_string", text, shown(converter));
    scripted::Answers<std::string>& answers =
        converter.lenient() ? platform.to_string_leniently : platform.to_string;
    return answers.next(text, [&] { return tagged(converter.lenient() ? "lenient" : "encoded", text); });
}

std::string to_string(const std::u16string& text, const codecvt_ustring_to_ascii& converter) {
    Platform::current().record("to_string", text,
                               Verbatim{"ascii[" + scripted::show(converter.lenient()) + "]"});
    return Platform::current().to_string.next(text, [&] { return tagged("ascii", text); });
}

std::string to_string(const std::u16string& text) {
    Platform::current().record("to_string", text);
    return Platform::current().to_string.next(text, [&] { return tagged("user", text); });
}

std::wstring to_wstring(const std::u16string& text) {
    Platform::current().record("to_wstring", text);
    return Platform::current().to_wstring.next(
        text, [&] { return L"wide(" + std::wstring(text.begin(), text.end()) + L")"; });
}

namespace detail {

std::size_t transform(char16_t* out, std::size_t capacity, const char16_t* in, std::size_t length,
                      transformation operation) {
    Platform::current().record("transform", capacity, length, operation);
    return Platform::current().transform.next(std::u16string(in, length), [&] {
        std::transform(in, in + std::min(length, capacity), out, loweredASCII);
        return length;
    });
}

std::size_t scan(const char16_t* text, std::size_t length, unsigned mask,
                 classification_rules rules) noexcept {
    const std::u16string whole(text, length);
    Platform::current().record("scan", whole, mask, rules);
    return Platform::current().scan.next(whole, [&] { return std::min(whole.find(u' '), length); });
}

}  // namespace detail
}  // namespace fl::i18n
