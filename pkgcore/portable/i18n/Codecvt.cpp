#include <pkgcore/platform/i18n/Codecvt.hpp>

#include <pkgcore/platform/i18n/Conversion.hpp>
#include <pkgcore/portable/i18n/ConversionErrors.hpp>
#include <pkgcore/portable/i18n/EncodingConverter.hpp>
#include <pkgcore/portable/i18n/UserEncoding.hpp>
#include <pkgcore/portable/i18n/Utf8.hpp>

namespace fl::i18n {
namespace {

/// Null stands for UTF-8, which needs no converter.
using StateOwner = std::unique_ptr<detail::converter_state>;

bool isUtf8(const std::string& name) noexcept {
    if (name == "UTF-8") return true;
    return name.find('\0') == std::string::npos && ucnv_compareNames(name.c_str(), "UTF-8") == 0;
}

/// A code set that nobody knows is no error: a locale that does not exist counts as "C", and that as UTF-8.
StateOwner openUserEncoding(bool lenient) {
    const std::string name = portable::userEncodingName();
    return isUtf8(name) ? nullptr : detail::converter_state::open(name, lenient);
}

StateOwner openEncoding(const std::string& name, bool lenient) {
    if (name.empty()) return openUserEncoding(lenient);
    if (isUtf8(name)) return nullptr;
    StateOwner state = detail::converter_state::open(name, lenient);
    if (!state) portable::throwUnknownEncoding(name);
    return state;
}

}  // namespace

codecvt_string_to_ustring::codecvt_string_to_ustring(const std::string& encodingName, bool lenient)
    : state_(openEncoding(encodingName, lenient)), lenient_(lenient) {}

codecvt_string_to_ustring::~codecvt_string_to_ustring() = default;

codecvt_ustring_to_string::codecvt_ustring_to_string(const std::string& encodingName, bool lenient)
    : state_(openEncoding(encodingName, lenient)), lenient_(lenient) {}

codecvt_ustring_to_string::~codecvt_ustring_to_string() = default;

std::u16string to_ustring(const std::string& text, const codecvt_string_to_ustring& converter) {
    detail::converter_state* const state = converter.state();
    return state != nullptr ? state->decode(text)
                            : portable::decodeUtf8(text.data(), text.size(), converter.lenient());
}

std::string to_string(const std::u16string& text, const codecvt_ustring_to_string& converter) {
    detail::converter_state* const state = converter.state();
    return state != nullptr ? state->encode(text)
                            : portable::encodeUtf8(text.data(), text.size(), converter.lenient());
}

std::string to_string(const std::u16string& text) {
    const codecvt_ustring_to_string converter(std::string(), false);
    return to_string(text, converter);
}

}  // namespace fl::i18n
