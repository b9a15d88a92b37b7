#pragma once

#include <pkgcore/platform/i18n/Codecvt.hpp>

#include <unicode/ucnv.h>

#include <memory>
#include <string>

namespace fl::i18n {
namespace portable {

struct ConverterCloser {
    void operator()(UConverter* converter) const noexcept { ucnv_close(converter); }
};
using ConverterOwner = std::unique_ptr<UConverter, ConverterCloser>;

}  // namespace portable

namespace detail {

/// An open ICU converter with our answers to what cannot be converted.
class converter_state {
public:
    /// A converter for a name that ICU knows, or null. std::bad_alloc for want of memory.
    static std::unique_ptr<converter_state> open(const std::string& encodingName, bool lenient);

    converter_state(portable::ConverterOwner converter, std::string encodingName, bool lenient);

    /// Each conversion starts in the initial shift state and ends in it.
    std::u16string decode(const std::string& bytes);
    std::string encode(const std::u16string& text);

private:
    portable::ConverterOwner converter_;
    std::string encodingName_;
};

}  // namespace detail
}  // namespace fl::i18n
