#include <pkgcore/platform/i18n/Conversion.hpp>

namespace fl::i18n {

static_assert(sizeof(wchar_t) == 2, "this file is for hosts whose wide strings are UTF-16");

std::u16string to_ustring(const std::wstring& text) { return std::u16string(text.begin(), text.end()); }

std::wstring to_wstring(const std::u16string& text) { return std::wstring(text.begin(), text.end()); }

}  // namespace fl::i18n
