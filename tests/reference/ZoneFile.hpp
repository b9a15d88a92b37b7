#pragma once

#include "tests/reference/PosixZoneRule.hpp"
#include "tests/reference/WallClock.hpp"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace reference {

/// A zone file by the letter of RFC 8536: the data block of 64 bits and the footer of version 2 and later.
class ZoneFile {
public:
    explicit ZoneFile(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
        skipBlockOfVersion1(path);
        readBlock();
        readFooter();
    }

    /// As the clocks go until the end of the year `last`.
    WallClock wallClockUntil(std::int64_t last) const {
        std::vector<Change> changes = listed_;
        if (!footer_.empty()) {
            const std::vector<Change> ruled =
                changesAfter(lastListed_, PosixZoneRule(footer_), yearOf(lastListed_) - 1, last);
            changes.insert(changes.end(), ruled.begin(), ruled.end());
        }
        return WallClock(firstOffset_, std::move(changes));
    }

    const std::string& footer() const noexcept { return footer_; }

private:
    struct Counts {
        std::size_t isUt, isStandard, leaps, times, types, characters;
    };

    Seconds takeInteger(std::size_t size) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            value = value << 8 | static_cast<unsigned char>(bytes_.at(next_++));
        }
        const unsigned unused = 64 - 8 * static_cast<unsigned>(size);
        return static_cast<Seconds>(value << unused) >> unused;  // keeps the sign
    }

    std::size_t takeCount() { return static_cast<std::size_t>(takeInteger(4)); }

    Counts takeHeader() {
        next_ += 20;  // the magic number, the version, and what is reserved
        Counts counts{};
        for (std::size_t* const count : {&counts.isUt, &counts.isStandard, &counts.leaps, &counts.times,
                                         &counts.types, &counts.characters}) {
            *count = takeCount();
        }
        return counts;
    }

    void skipBlockOfVersion1(const std::string& path) {
        if (bytes_.compare(0, 4, "TZif") != 0 || bytes_.at(4) < '2') {
            throw std::runtime_error("no zone file of version 2 or later (package tzdata): " + path);
        }
        const Counts counts = takeHeader();
        next_ += counts.times * 5 + counts.types * 6 + counts.characters + counts.leaps * 8 +
                 counts.isStandard + counts.isUt;
    }

    void readBlock() {
        const Counts counts = takeHeader();
        std::vector<Seconds> times;
        for (std::size_t i = 0; i < counts.times; ++i) times.push_back(takeInteger(8));
        std::vector<std::size_t> types;
        for (std::size_t i = 0; i < counts.times; ++i)
            types.push_back(static_cast<std::size_t>(takeInteger(1)));
        std::vector<Seconds> offsets;
        for (std::size_t i = 0; i < counts.types; ++i, next_ += 2) offsets.push_back(takeInteger(4));
        next_ += counts.characters + counts.leaps * 12 + counts.isStandard + counts.isUt;
        list(times, types, offsets);
    }

    void list(const std::vector<Seconds>& times, const std::vector<std::size_t>& types,
              const std::vector<Seconds>& offsets) {
        firstOffset_ = offsets.at(0);
        Seconds before = firstOffset_;
        for (std::size_t i = 0; i < times.size(); ++i) {
            const Seconds after = offsets.at(types[i]);
            if (after != before) listed_.push_back({times[i], before, after});
            before = after;
        }
        if (!times.empty()) lastListed_ = times.back();
    }

    void readFooter() {
        const std::size_t end = bytes_.find('\n', next_ + 1);
        footer_ = bytes_.substr(next_ + 1, end - next_ - 1);
    }

    std::string bytes_;
    std::size_t next_ = 0;
    Seconds firstOffset_ = 0;
    std::vector<Change> listed_;
    Seconds lastListed_ = 0;
    std::string footer_;
};

}  // namespace reference
