#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/i18n/CodePoints.hpp>
#include <pkgcore/portable/storage/iri/IRICharacters.hpp>
#include <pkgcore/portable/storage/iri/IRIErrors.hpp>
#include <pkgcore/portable/storage/iri/IRIText.hpp>
#include <pkgcore/portable/storage/iri/PercentEncoding.hpp>
#include <pkgcore/portable/storage/iri/SchemeRegistry.hpp>

#include <unicode/utf8.h>

#include <cstdint>

namespace foundation::storage::portable {

namespace {

constexpr const char* kInScheme = "in the scheme of an IRI";
constexpr const char* kInMark = "where \"://\" has to stand in an IRI";
constexpr const char* kInHost = "in the host of an IRI";
constexpr const char* kInPort = "in the port of an IRI";
constexpr const char* kInPath = "in the path of an IRI";

constexpr std::size_t kTripletLength = 3;

/// Which characters stand for themselves, and what else the triplets of a part may hold.
struct PartRules {
    const LiteralSet& literals;
    bool mayHoldBytes;
    const char* where;
};

/// Reads an IRI from its beginning to its end and writes its one spelling.
class Parser {
public:
    explicit Parser(const std::u16string& text) : text_(text) { out_.reserve(text.size()); }

    std::u16string run() {
        parseScheme();
        parseAuthority();
        parsePath();
        return std::move(out_);
    }

private:
    bool isAtEnd() const noexcept { return at_ == text_.size(); }
    bool isAt(char16_t unit) const noexcept { return !isAtEnd() && text_[at_] == unit; }
    void take() { out_ += text_[at_++]; }
    void takeRun(const LiteralSet& literals) {
        const std::size_t length = literals.asciiRun(std::u16string_view(text_).substr(at_));
        out_.append(text_, at_, length);
        at_ += length;
    }

    void expect(char16_t unit, const char* where) {
        if (!isAt(unit)) {
            refuseCharacter(text_, at_, where);
        }
        take();
    }

    void parseScheme() {
        if (isAtEnd() || !isAsciiLetter(text_[0])) {
            refuseCharacter(text_, 0, kInScheme);
        }
        while (!isAtEnd() && isSchemeCharacter(text_[at_])) {
            take();
        }
        expect(u':', kInScheme);
        expect(u'/', kInMark);
        expect(u'/', kInMark);
        scheme_ = std::u16string_view(text_).substr(0, at_ - 3);
        if (!isRegisteredScheme(scheme_)) {
            throw vfs::UnsupportedIRISchemeException("The scheme belongs to no storage system",
                                                     std::u16string(scheme_));
        }
    }

    void parseAuthority() {
        if (isAt(u'[')) {
            parseAddress();
        } else {
            const PartRules rules{kHostCharacters, false, kInHost};
            takeRun(rules.literals);
            while (!isAtEnd() && !isAt(u'/') && !isAt(u':')) {
                parseOne(rules);
            }
        }
        if (isAt(u':')) {
            take();
            parsePort();
        }
        if (!isAtEnd() && !isAt(u'/')) {
            refuseCharacter(text_, at_, kInHost);
        }
    }

    void parseAddress() {
        take();
        do {
            if (isAtEnd() || !isAddressCharacter(text_[at_])) {
                refuseCharacter(text_, at_, kInHost);
            }
            take();
        } while (!isAt(u']'));
        expect(u']', kInHost);
    }

    void parsePort() {
        while (!isAtEnd() && !isAt(u'/')) {
            if (!isAsciiDigit(text_[at_])) {
                refuseCharacter(text_, at_, kInPort);
            }
            take();
        }
    }

    void parsePath() {
        takeRun(kPathCharacters);
        if (isAtEnd()) {
            return;
        }
        const PartRules rules{kSegmentCharacters, hasByteNames(scheme_), kInPath};
        while (!isAtEnd()) {
            parseOne(rules);
            takeRun(kPathCharacters);
        }
    }

    /// One character that stands for itself, or all triplets that follow each other. What is wrong first is
    /// what is refused, so triplets in front of a broken one are judged before it.
    void parseOne(const PartRules& rules) {
        if (isAt(u'%')) {
            parseTriplets(rules);
            return;
        }
        const std::size_t start = at_;
        const char32_t point = fl::i18n::portable::nextCodePoint(text_.data(), at_, text_.size());
        if (!rules.literals.contains(point)) {
            refuseCharacter(text_, start, rules.where);
        }
        out_.append(text_, start, at_ - start);
    }

    void parseTriplets(const PartRules& rules) {
        const std::size_t start = at_;
        std::string bytes;
        while (hasTriplet()) {
            bytes += takeTriplet();
        }
        for (std::size_t i = 0; i < bytes.size();) {
            const std::size_t first = i;
            const UChar32 point = nextOfUTF8(bytes, i);
            const std::size_t offset = start + first * kTripletLength;
            if (point < 0) {
                keepBytes(rules, offset, (i - first) * kTripletLength);
            } else {
                respell(rules, offset, static_cast<char32_t>(point));
            }
        }
        if (isAt(u'%')) {
            refuseTriplet(text_, at_, "lacks its two hexadecimal digits");
        }
    }

    /// Below 0 for what is no UTF-8.
    static UChar32 nextOfUTF8(const std::string& bytes, std::size_t& i) {
        const auto* const data = reinterpret_cast<const std::uint8_t*>(bytes.data());
        UChar32 point = 0;
        U8_NEXT(data, i, bytes.size(), point);
        return point;
    }

    /// 0 to 15, or -1 for what is no digit, the end included.
    int digitAt(std::size_t offset) const noexcept {
        return offset < text_.size() ? hexDigitValue(text_[offset]) : -1;
    }

    bool hasTriplet() const noexcept { return isAt(u'%') && digitAt(at_ + 1) >= 0 && digitAt(at_ + 2) >= 0; }

    char takeTriplet() noexcept {
        const int byte = digitAt(at_ + 1) * 16 + digitAt(at_ + 2);
        at_ += kTripletLength;
        return static_cast<char>(byte);
    }

    /// Triplets of bytes that are no UTF-8.
    void keepBytes(const PartRules& rules, std::size_t offset, std::size_t length) {
        if (!rules.mayHoldBytes) {
            refuseTriplet(text_, offset, "is not UTF-8");
        }
        for (std::size_t i = offset; i < offset + length; ++i) {
            const char16_t unit = text_[i];
            out_ += unit >= u'a' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
        }
    }

    void respell(const PartRules& rules, std::size_t offset, char32_t point) {
        if (point == 0 || point == U'/') {
            refuseEncoded(text_, offset, point);
        }
        appendEncoded(point, rules.literals, out_);
    }

    const std::u16string& text_;
    std::size_t at_ = 0;
    std::u16string_view scheme_;
    std::u16string out_;
};

}  // namespace

std::u16string checkedIRI(const std::u16string& text) { return Parser(text).run(); }

}  // namespace foundation::storage::portable
