#include <pkgcore/portable/i18n/UserEncoding.hpp>

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace fl::i18n::portable {
namespace {

constexpr std::string_view kUtf8 = "UTF-8";

struct LocaleEncoding {
    std::string_view locale;
    std::string_view encoding;
};

/// The locales of the GNU C library (localedata/SUPPORTED) whose plain name means an encoding other than
/// UTF-8 that ICU knows. A language without a territory stands for all territories that have no line of their
/// own.
constexpr LocaleEncoding kLegacyLocales[] = {
    {"aa_DJ", "ISO-8859-1"},  {"af", "ISO-8859-1"},     {"an", "ISO-8859-15"},
    {"ar", "ISO-8859-6"},     {"ar_IN", "UTF-8"},       {"ar_SS", "UTF-8"},
    {"ast", "ISO-8859-15"},   {"be", "CP1251"},         {"bg", "CP1251"},
    {"br", "ISO-8859-1"},     {"bs", "ISO-8859-2"},     {"ca", "ISO-8859-1"},
    {"ca_AD", "ISO-8859-15"}, {"ca_FR", "ISO-8859-15"}, {"ca_IT", "ISO-8859-15"},
    {"cs", "ISO-8859-2"},     {"cy", "ISO-8859-14"},    {"da", "ISO-8859-1"},
    {"de", "ISO-8859-1"},     {"el", "ISO-8859-7"},     {"el_GR@euro", "ISO-8859-7"},
    {"en", "ISO-8859-1"},     {"en_AG", "UTF-8"},       {"en_IL", "UTF-8"},
    {"en_IN", "UTF-8"},       {"en_NG", "UTF-8"},       {"en_ZM", "UTF-8"},
    {"es", "ISO-8859-1"},     {"es_CU", "UTF-8"},       {"et", "ISO-8859-1"},
    {"eu", "ISO-8859-1"},     {"fi", "ISO-8859-1"},     {"fo", "ISO-8859-1"},
    {"fr", "ISO-8859-1"},     {"ga", "ISO-8859-1"},     {"gd", "ISO-8859-15"},
    {"gl", "ISO-8859-1"},     {"gv", "ISO-8859-1"},     {"he", "ISO-8859-8"},
    {"hr", "ISO-8859-2"},     {"hsb", "ISO-8859-2"},    {"hu", "ISO-8859-2"},
    {"id", "ISO-8859-1"},     {"is", "ISO-8859-1"},     {"it", "ISO-8859-1"},
    {"iw", "ISO-8859-8"},     {"ja", "EUC-JP"},         {"kl", "ISO-8859-1"},
    {"ko", "EUC-KR"},         {"ku", "ISO-8859-9"},     {"kw", "ISO-8859-1"},
    {"lg", "ISO-8859-10"},    {"lt", "ISO-8859-13"},    {"lv", "ISO-8859-13"},
    {"mg", "ISO-8859-15"},    {"mi", "ISO-8859-13"},    {"mk", "ISO-8859-5"},
    {"ms", "ISO-8859-1"},     {"mt", "ISO-8859-3"},     {"nb", "ISO-8859-1"},
    {"nl", "ISO-8859-1"},     {"nl_AW", "UTF-8"},       {"nn", "ISO-8859-1"},
    {"no", "ISO-8859-1"},     {"oc", "ISO-8859-1"},     {"om_KE", "ISO-8859-1"},
    {"pl", "ISO-8859-2"},     {"pt", "ISO-8859-1"},     {"ro", "ISO-8859-2"},
    {"ru", "ISO-8859-5"},     {"ru_UA", "KOI8-U"},      {"sk", "ISO-8859-2"},
    {"sl", "ISO-8859-2"},     {"so", "ISO-8859-1"},     {"so_ET", "UTF-8"},
    {"sq", "ISO-8859-1"},     {"sq_MK", "UTF-8"},       {"st", "ISO-8859-1"},
    {"sv", "ISO-8859-1"},     {"th", "TIS-620"},        {"tl", "ISO-8859-1"},
    {"tr", "ISO-8859-9"},     {"uk", "KOI8-U"},         {"uz", "ISO-8859-1"},
    {"wa", "ISO-8859-1"},     {"xh", "ISO-8859-1"},     {"yi", "CP1255"},
    {"zh_CN", "GB2312"},      {"zh_HK", "Big5-HKSCS"},  {"zh_SG", "GB2312"},
    {"zh_TW", "Big5"},        {"zu", "ISO-8859-1"},
};

std::string_view cutAt(std::string_view text, char end) noexcept { return text.substr(0, text.find(end)); }

std::string_view behind(std::string_view text, char mark) noexcept {
    const std::size_t at = text.find(mark);
    return at == std::string_view::npos ? std::string_view() : text.substr(at + 1);
}

std::string_view lookUp(std::string_view locale) noexcept {
    const auto* const found = std::find_if(std::begin(kLegacyLocales), std::end(kLegacyLocales),
                                           [&](const LocaleEncoding& line) { return line.locale == locale; });
    return found == std::end(kLegacyLocales) ? std::string_view() : found->encoding;
}

std::string_view impliedEncoding(std::string_view locale) noexcept {
    const std::string_view exactly = lookUp(locale);
    if (!exactly.empty()) return exactly;
    const std::string_view modifier = behind(locale, '@');
    if (modifier == "euro") return "ISO-8859-15";
    if (!modifier.empty()) return kUtf8;  // so are all other locales of GNU that have a modifier
    const std::string_view ofLanguage = lookUp(cutAt(locale, '_'));
    return ofLanguage.empty() ? kUtf8 : ofLanguage;
}

const char* userLocale() noexcept {
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* const value = std::getenv(variable);
        if (value != nullptr && *value != '\0') return value;
    }
    return "C";
}

}  // namespace

std::string_view encodingOfLocale(std::string_view locale) noexcept {
    const std::string_view codeset = behind(cutAt(locale, '@'), '.');
    return codeset.empty() ? impliedEncoding(locale) : codeset;
}

std::string userEncodingName() { return std::string(encodingOfLocale(userLocale())); }

}  // namespace fl::i18n::portable
