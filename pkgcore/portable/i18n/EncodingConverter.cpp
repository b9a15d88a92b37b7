#include <pkgcore/portable/i18n/EncodingConverter.hpp>

#include <pkgcore/platform/i18n/CvtException.hpp>
#include <pkgcore/portable/i18n/ChunkedText.hpp>
#include <pkgcore/portable/i18n/CodePoints.hpp>
#include <pkgcore/portable/i18n/ConversionErrors.hpp>

#include <unicode/ucnv_cb.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

namespace fl::i18n::detail {
namespace {

/// ICU takes no more than 2 GiB of input in one call.
constexpr std::size_t kMaxPiece = std::size_t{1} << 20;

/// More bytes than ICU ever holds back of one character.
constexpr std::size_t kMaxSequence = 32;

bool isFailureOfText(UConverterCallbackReason reason) noexcept { return reason <= UCNV_IRREGULAR; }

// ICU's own callbacks are not used: those to Unicode write U+001A for some bytes, and those from Unicode drop
// characters that are invisible but not without meaning, such as joiners, without a word.

void U_CALLCONV stopDecoding(const void*, UConverterToUnicodeArgs*, const char*, std::int32_t,
                             UConverterCallbackReason, UErrorCode*) {
    // The error that ICU came with stands.
}

void U_CALLCONV substituteDecoding(const void*, UConverterToUnicodeArgs* args, const char*, std::int32_t,
                                   UConverterCallbackReason reason, UErrorCode* error) {
    if (!isFailureOfText(reason)) return;
    constexpr UChar replacement = 0xFFFD;
    *error = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(args, &replacement, 1, 0, error);
}

void U_CALLCONV stopEncoding(const void*, UConverterFromUnicodeArgs*, const UChar*, std::int32_t, UChar32,
                             UConverterCallbackReason, UErrorCode*) {
    // The error that ICU came with stands.
}

void U_CALLCONV substituteEncoding(const void*, UConverterFromUnicodeArgs* args, const UChar*, std::int32_t,
                                   UChar32, UConverterCallbackReason reason, UErrorCode* error) {
    if (!isFailureOfText(reason)) return;
    *error = U_ZERO_ERROR;
    ucnv_cbFromUWriteSub(args, 0, error);
}

void setCallbacks(UConverter* converter, bool lenient) {
    UErrorCode error = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter, lenient ? substituteDecoding : stopDecoding, nullptr, nullptr, nullptr,
                        &error);
    ucnv_setFromUCallBack(converter, lenient ? substituteEncoding : stopEncoding, nullptr, nullptr, nullptr,
                          &error);
}

[[noreturn]] void throwUnexpected(const std::string& encoding, UErrorCode error) {
    if (error == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
    throw CvtExceptionBase("Conversion failed (" + encoding + "): " + u_errorName(error));
}

/// What both directions share: the input, and how far it has been read.
template <typename InUnit>
class ConversionSource {
public:
    ConversionSource(UConverter* converter, const std::string& encoding, const InUnit* text,
                     std::size_t length)
        : converter_(converter), encoding_(encoding), begin_(text), in_(text), end_(text + length) {}

    bool done() const noexcept { return done_; }
    std::size_t consumed() const noexcept { return static_cast<std::size_t>(in_ - begin_); }
    std::size_t remaining() const noexcept { return static_cast<std::size_t>(end_ - in_); }

protected:
    /// Calls `convert(in, pieceEnd, flush, error)` until the output is full or the input is at its end.
    template <typename Convert>
    UErrorCode convertPieces(Convert convert) {
        UErrorCode error = U_ZERO_ERROR;
        while (!done_) {
            const InUnit* const pieceEnd = in_ + std::min(remaining(), kMaxPiece);
            const bool flush = pieceEnd == end_;
            convert(&in_, pieceEnd, flush, &error);
            if (U_FAILURE(error)) return error;
            done_ = flush;
        }
        return error;
    }

    UConverter* converter_;
    const std::string& encoding_;
    const InUnit* begin_;
    const InUnit* in_;
    const InUnit* end_;
    bool done_ = false;
};

class DecodingSource : public ConversionSource<char> {
public:
    using ConversionSource::ConversionSource;

    std::size_t fill(char16_t* out, std::size_t capacity) {
        char16_t* to = out;
        const auto convert = [&](const char** in, const char* end, bool flush, UErrorCode* error) {
            ucnv_toUnicode(converter_, &to, out + capacity, in, end, nullptr, static_cast<UBool>(flush),
                           error);
        };
        const UErrorCode error = convertPieces(convert);
        if (U_FAILURE(error) && error != U_BUFFER_OVERFLOW_ERROR) throwFailure(error);
        return static_cast<std::size_t>(to - out);
    }

private:
    [[noreturn]] void throwFailure(UErrorCode failure) const {
        char bytes[kMaxSequence];
        std::int8_t count = sizeof bytes;
        UErrorCode error = U_ZERO_ERROR;
        ucnv_getInvalidChars(converter_, bytes, &count, &error);
        if (U_FAILURE(error) || count <= 0) throwUnexpected(encoding_, failure);
        const std::size_t length{static_cast<std::uint8_t>(count)};
        const std::size_t offset = consumed() - std::min(consumed(), length);
        if (failure == U_TRUNCATED_CHAR_FOUND)
            portable::throwTruncatedBytes(encoding_, offset, bytes, length);
        portable::throwMalformedBytes(encoding_, offset, bytes, length);
    }
};

class EncodingSource : public ConversionSource<char16_t> {
public:
    using ConversionSource::ConversionSource;

    std::size_t fill(char* out, std::size_t capacity) {
        char* to = out;
        const auto convert = [&](const char16_t** in, const char16_t* end, bool flush, UErrorCode* error) {
            ucnv_fromUnicode(converter_, &to, out + capacity, in, end, nullptr, static_cast<UBool>(flush),
                             error);
        };
        const UErrorCode error = convertPieces(convert);
        if (U_FAILURE(error) && error != U_BUFFER_OVERFLOW_ERROR) throwFailure(error);
        return static_cast<std::size_t>(to - out);
    }

private:
    [[noreturn]] void throwFailure(UErrorCode failure) const {
        UChar units[U16_MAX_LENGTH];
        std::int8_t count = U16_MAX_LENGTH;
        UErrorCode error = U_ZERO_ERROR;
        ucnv_getInvalidUChars(converter_, units, &count, &error);
        if (U_FAILURE(error) || count <= 0) throwUnexpected(encoding_, failure);
        const char32_t c =
            count == 2 ? static_cast<char32_t>(U16_GET_SUPPLEMENTARY(units[0], units[1])) : units[0];
        if (U_IS_SURROGATE(c)) portable::throwUnpairedSurrogate(firstOffsetOf(c), units[0]);
        portable::throwUnmappable(encoding_, firstOffsetOf(c), c);
    }

    /// Where the culprit stands: it would have been one at its first place already. ICU's own position may
    /// lie behind it.
    std::size_t firstOffsetOf(char32_t culprit) const noexcept {
        const auto length = static_cast<std::size_t>(end_ - begin_);
        std::size_t start = 0;
        for (std::size_t next = 0; next < length; start = next) {
            if (portable::nextCodePoint(begin_, next, length) == culprit) break;
        }
        return start;
    }
};

}  // namespace

std::unique_ptr<converter_state> converter_state::open(const std::string& encodingName, bool lenient) {
    // ICU would read the name up to the NUL.
    if (encodingName.find('\0') != std::string::npos) return nullptr;
    UErrorCode error = U_ZERO_ERROR;
    portable::ConverterOwner converter(ucnv_open(encodingName.c_str(), &error));
    if (error == U_MEMORY_ALLOCATION_ERROR) throw std::bad_alloc();
    if (U_FAILURE(error)) return nullptr;
    return std::make_unique<converter_state>(std::move(converter), encodingName, lenient);
}

converter_state::converter_state(portable::ConverterOwner converter, std::string encodingName, bool lenient)
    : converter_(std::move(converter)), encodingName_(std::move(encodingName)) {
    ucnv_setFallback(converter_.get(), false);
    setCallbacks(converter_.get(), lenient);
}

std::u16string converter_state::decode(const std::string& bytes) {
    ucnv_reset(converter_.get());
    return portable::collectChunks<char16_t>(
        DecodingSource(converter_.get(), encodingName_, bytes.data(), bytes.size()));
}

std::string converter_state::encode(const std::u16string& text) {
    ucnv_reset(converter_.get());
    return portable::collectChunks<char>(
        EncodingSource(converter_.get(), encodingName_, text.data(), text.size()));
}

}  // namespace fl::i18n::detail
