#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/system/error_code.hpp>

#include <optional>
#include <ostream>
#include <string>

namespace test::model {

/// What a step came to.
struct Outcome {
    boost::system::error_code code;
    std::optional<std::string> text;  ///< the answer; none from the model where it may be any

    friend std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
        return out << outcome.code.message() << " \"" << outcome.text.value_or("(any)").substr(0, 500) << '"';
    }
};

inline bool agree(const Outcome& expected, const Outcome& actual) {
    return expected.code == actual.code && (!expected.text || expected.text == actual.text);
}

/// The time that a number stands for.
inline boost::posix_time::ptime timeOf(unsigned number) {
    return boost::posix_time::ptime(boost::gregorian::date(2001, 2, 3),
                                    boost::posix_time::microseconds(1'000'003) * static_cast<int>(number));
}

}  // namespace test::model
