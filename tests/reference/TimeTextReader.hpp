#pragma once

#include "tests/reference/CivilTime.hpp"

#include <cstddef>
#include <optional>
#include <string>

namespace reference {

/// The rules of opc::convertStringToTime one after the other, but for the names of special times.
class TimeTextReader {
public:
    explicit TimeTextReader(const std::u16string& text) : raw_(text), text_(characters(text)) {}

    /// Nothing where the text is no time.
    std::optional<Seconds> read() {
        if (raw_.size() > 11 && (raw_[10] != u'T' || raw_.size() < 19)) return std::nullopt;
        if (!readParts() || next_ < text_.size() || !isDay()) return std::nullopt;
        const Seconds time = secondsAt(year_, month_, day_, hour_, minute_, second_);
        if (time > secondsAt(9999, 12, 31, 23, 59, 59)) return std::nullopt;
        return time;
    }

private:
    /// Pairs of surrogates become one character, of which it only counts that it is one.
    static std::u16string characters(const std::u16string& text) {
        std::u16string result;
        for (std::size_t i = 0; i < text.size(); ++i) {
            const bool isPair =
                i + 1 < text.size() && (text[i] & 0xFC00) == 0xD800 && (text[i + 1] & 0xFC00) == 0xDC00;
            result.push_back(text[i]);
            if (isPair) ++i;
        }
        return result;
    }

    bool atEnd() const { return next_ >= text_.size(); }

    /// The character between two parts; false at the end of the text, where the time may end.
    bool skipMark() { return !atEnd() && ++next_ < text_.size(); }

    void skipBlanks() {
        while (!atEnd() && (text_[next_] == u' ' || (text_[next_] >= u'\t' && text_[next_] <= u'\r')))
            ++next_;
    }

    bool takeNumber(int& value, std::size_t atLeast, std::size_t atMost) {
        std::size_t digits = 0;
        int number = 0;
        for (; digits < atMost && !atEnd() && text_[next_] >= u'0' && text_[next_] <= u'9'; ++digits) {
            number = number * 10 + (text_[next_++] - u'0');
        }
        value = number;
        return digits >= atLeast;
    }

    bool readParts() {
        skipBlanks();
        if (!takeNumber(year_, 4, 4)) return false;
        if (!skipMark()) return true;
        skipBlanks();
        if (!takeNumber(month_, 1, 2)) return false;
        if (!skipMark()) return true;
        skipBlanks();
        if (!takeNumber(day_, 2, 2)) return false;
        for (int* const part : {&hour_, &minute_, &second_}) {
            if (!skipMark()) return true;
            if (!takeNumber(*part, 2, 2)) return false;
        }
        skipMark();
        return true;
    }

    bool isDay() const {
        return year_ >= 1400 && month_ >= 1 && month_ <= 12 && day_ >= 1 &&
               day_ <= daysInMonth(year_, month_);
    }

    const std::u16string& raw_;
    std::u16string text_;
    std::size_t next_ = 0;
    int year_ = 0, month_ = 1, day_ = 1, hour_ = 0, minute_ = 0, second_ = 0;
};

}  // namespace reference
