#pragma once

#include "Text.hpp"

#include <boost/system/error_code.hpp>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tour {

/// What one step of the tour counts, checks and has to say.
class Step {
public:
    explicit Step(std::string title) : title_(std::move(title)) {}

    void count(std::uintmax_t items, std::uintmax_t bytes = 0);

    /// A line to stand under the step's row.
    void note(const std::string& text) { notes_.push_back(text); }

    /// One check; `difference` says what is wrong if it does not hold.
    void check(bool holds, const std::string& difference);

    template <typename Value>
    void checkEqual(const std::string& what, const Value& found, const Value& expected) {
        check(found == expected, what + " is " + describe(found) + " instead of " + describe(expected));
    }

    /// Checks that `operation`, which is given an error code to fill, fails for the reason that is expected.
    template <typename Operation>
    void checkFails(const std::string& what, boost::system::errc::errc_t expected, Operation operation) {
        boost::system::error_code ec;
        operation(ec);
        check(ec == expected,
              what + ": " + describe(ec) + " instead of " + describe(make_error_code(expected)));
    }

    /// Shows on a terminal how far the step is, in a line that the next one overwrites. Throws once the tour
    /// is to stop.
    void progress(std::size_t done, std::size_t total) const;

private:
    friend class Report;

    std::string title_;
    std::uintmax_t items_ = 0;
    std::uintmax_t bytes_ = 0;
    std::uintmax_t held_ = 0;
    std::vector<std::string> notes_;
    std::vector<std::string> differences_;
};

/// Runs steps and prints one row for each.
class Report {
public:
    Report();

    /// Runs the step. An exception counts as a check that did not hold; the tour goes on with the next step,
    /// but with none after an interruption.
    void run(const std::string& title, const std::function<void(Step&)>& work);

    /// Prints the sum of it; true if every check held and nothing was left out.
    bool conclude() const;

private:
    void print(const Step& step, double milliseconds) const;

    std::uintmax_t held_ = 0;
    std::uintmax_t failed_ = 0;
};

}  // namespace tour
