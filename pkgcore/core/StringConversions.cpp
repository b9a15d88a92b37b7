#include <pkgcore/core/StringConversions.hpp>

#include <pkgcore/core/AsciiCase.hpp>
#include <pkgcore/core/CtypeException.hpp>
#include <pkgcore/core/Exception.hpp>
#include <pkgcore/platform/i18n/Characters.hpp>
#include <pkgcore/platform/i18n/Codecvt.hpp>
#include <pkgcore/platform/i18n/Conversion.hpp>
#include <pkgcore/platform/i18n/CvtException.hpp>
#include <pkgcore/platform/i18n/Initialize.hpp>

#include <algorithm>
#include <cstddef>

namespace opc {
namespace {

using fl::i18n::CvtExceptionBase;
using foundation::ustring::CtypeExceptionBase;

constexpr const char* kDefaultNarrowEncoding = "";
constexpr const char* kUTF8 = "UTF-8";

/// Runs the work and turns a failure of exactly one kind into an Exception with a cleared code.
template <typename Failure, typename Work>
auto convertingFailure(Work work) {
    try {
        return work();
    } catch (const Failure& failure) {
        throw Exception(failure.what(), boost::system::error_code());
    }
}

ustring decode(const std::string& s, const char* encodingName, bool lenient) {
    fl::i18n::initialize();
    return convertingFailure<CvtExceptionBase>([&] {
        const fl::i18n::codecvt_string_to_ustring converter(encodingName, lenient);
        return fl::i18n::to_ustring(s, converter);
    });
}

ustring lowerFully(const ustring& u) {
    constexpr std::size_t kCapacity = 1024;
    char16_t buffer[kCapacity];
    const auto lowerInto = [&](char16_t* out, std::size_t capacity) {
        return fl::i18n::detail::transform(out, capacity, u.data(), u.size(), fl::i18n::to_lower);
    };
    const std::size_t length = lowerInto(buffer, kCapacity);
    if (length <= kCapacity) return ustring(buffer, length);

    ustring lowered(length, u'\0');
    lowerInto(lowered.data(), length);
    return lowered;
}

int compareLengths(const ustring& a, const ustring& b) noexcept {
    if (a.size() == b.size()) return 0;
    return a.size() < b.size() ? -1 : 1;
}

int compareCaselessly(const ustring& a, const ustring& b) {
    const std::size_t shorter = std::min(a.size(), b.size());
    for (std::size_t i = detail::caselessPrefix(a.data(), b.data(), shorter); i < shorter; ++i) {
        const int difference = detail::toLowerASCII(a[i]) - detail::toLowerASCII(b[i]);
        if (difference != 0) return difference;
    }
    return compareLengths(a, b);
}

}  // namespace

ustring toString(const std::string& s, bool lenient) { return decode(s, kDefaultNarrowEncoding, lenient); }

std::string toASCIIString(const ustring& u) {
    return convertingFailure<CvtExceptionBase>([&] {
        const fl::i18n::codecvt_ustring_to_ascii converter(false);
        return fl::i18n::to_string(u, converter);
    });
}

ustring toStringFromASCIIStringLiteral(const char* literal) {
    return convertingFailure<CvtExceptionBase>([&] {
        const fl::i18n::codecvt_ascii_to_ustring converter(false);
        return fl::i18n::to_ustring(literal, converter);
    });
}

std::string toUDEString(const ustring& u) {
    fl::i18n::initialize();
    return convertingFailure<CvtExceptionBase>([&] { return fl::i18n::to_string(u); });
}

ustring toString(const std::wstring& w) { return fl::i18n::to_ustring(w); }

std::wstring toWideString(const ustring& u) { return fl::i18n::to_wstring(u); }

ustring toLowerString(const ustring& u) {
    fl::i18n::initialize();
    return convertingFailure<CtypeExceptionBase>([&] { return lowerFully(u); });
}

ustring toLowerASCIIString(const ustring& u) {
    fl::i18n::initialize();
    return convertingFailure<CtypeExceptionBase>([&] {
        ustring lowered = u;
        const std::size_t done = detail::lowerASCIIPrefix(lowered.data(), lowered.size());
        const auto rest = lowered.begin() + static_cast<std::ptrdiff_t>(done);
        std::transform(rest, lowered.end(), rest, detail::toLowerASCII);
        return lowered;
    });
}

int caselessCompare(const ustring& a, const ustring& b) {
    fl::i18n::initialize();
    return convertingFailure<CtypeExceptionBase>([&] { return compareCaselessly(a, b); });
}

bool hasWhitespace(const ustring& u) {
    using namespace fl::i18n::detail;
    return scan(u.data(), u.size(), white_space_class, fl::i18n::is_posix) != u.size();
}

namespace detail {

ustring toStringFromUTF8String(const std::string& s, bool lenient) { return decode(s, kUTF8, lenient); }

std::string toUTF8String(const ustring& u, bool lenient) {
    fl::i18n::initialize();
    return convertingFailure<fl::i18n::CvtExceptionBase>([&] {
        const fl::i18n::codecvt_ustring_to_string converter(kUTF8, lenient);
        return fl::i18n::to_string(u, converter);
    });
}

}  // namespace detail
}  // namespace opc
