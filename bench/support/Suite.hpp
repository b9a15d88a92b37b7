#pragma once

#include <benchmark/benchmark.h>

#include <time.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// A small harness that measures ratios. Absolute times on a shared machine mean nothing, so everything that
/// is to be compared runs in one process, side by side: each round runs every row once, in an order drawn
/// anew, and compares it with the limit of the same round. The first row of the result is the limit measured
/// twice, the noise floor.
namespace bench {

/// One run of a benchmark program: what its command line asked for, and whether the goals were met.
class Session {
public:
    /// Understands `--quick` (fewer rounds), `--rounds=N`, `--filter=TEXT` (only suites whose title holds
    /// it), `--large` (as much data as the goals name, where less is measured otherwise),
    /// `--cpu` (the processor time of the program instead of the time that passes: steadier on a machine that
    /// does other things as well, but blind to waiting), `--check` (a missed goal makes exitCode() 1) and
    /// `--json=FILE` (a line is added to the file for each suite, in the form that record() takes); ends the
    /// process with a usage text on anything else.
    Session(int argc, char** argv);

    bool selects(const std::string& title) const { return title.find(filter_) != std::string::npos; }
    /// The rounds to run where `full` are right for a thorough measurement.
    std::size_t rounds(std::size_t full) const noexcept;
    clockid_t clock() const noexcept { return clock_; }
    /// How much to measure where `large` is what a goal names and `usual` takes a bearable time.
    std::size_t amount(std::size_t usual, std::size_t large) const noexcept {
        return isLarge_ ? large : usual;
    }
    void noteMissedGoal() noexcept { missed_ = true; }
    /// Adds a line to the file of `--json`, if one was asked for: an object with "program", "suite", "clock",
    /// "rounds" and "rows", each with "name", "seconds", "median", "p25", "p75" and "goal" (0: none), the
    /// limit first.
    void record(const std::string& json) const;
    const std::string& program() const noexcept { return program_; }
    int exitCode() const noexcept { return check_ && missed_ ? 1 : 0; }

private:
    bool take(const std::string& argument);

    std::string program_;
    std::string filter_;
    std::string json_;
    std::size_t rounds_ = 0;  // 0: not given
    clockid_t clock_ = CLOCK_MONOTONIC;
    bool quick_ = false;
    bool isLarge_ = false;
    bool check_ = false;
    bool missed_ = false;
};

/// One thing to be timed.
class Row {
public:
    /// What `operation` returns is kept from being optimised away.
    template <typename Operation>
    Row(std::string name, Operation operation)
        : name_(std::move(name)), repeat_(repeated(std::move(operation))) {}

    /// The greatest median ratio to the limit that is wanted.
    Row& atMost(double ratio) {
        goal_ = ratio;
        return *this;
    }

    /// Done before each sample, outside of the measured time.
    Row& preparedBy(std::function<void()> prepare) {
        prepare_ = std::move(prepare);
        return *this;
    }

    const std::string& name() const noexcept { return name_; }
    double goal() const noexcept { return goal_; }  ///< 0: none
    /// Seconds for one operation, averaged over `count` of them in a row.
    double sample(std::size_t count, clockid_t clock) const;

private:
    template <typename Operation>
    static std::function<void(std::size_t)> repeated(Operation operation) {
        return [operation = std::move(operation)](std::size_t count) mutable {
            for (; count > 0; --count) {
                if constexpr (std::is_void_v<decltype(operation())>) {
                    operation();
                } else {
                    benchmark::DoNotOptimize(operation());
                }
            }
        };
    }

    std::string name_;
    std::function<void(std::size_t)> repeat_;
    std::function<void()> prepare_ = [] {};
    double goal_ = 0;
};

/// How one sample is taken.
enum class Sampling {
    batched,  ///< as many operations in a row as take some milliseconds: for short ones
    single,   ///< one operation: for long ones and for those that must be prepared each time
};

/// A limit and the rows that are compared with it.
class Suite {
public:
    Suite(Session& session, std::string title, Sampling sampling = Sampling::batched,
          std::size_t rounds = 41);

    /// The cheapest way to the same observable result. Needed once, before run().
    template <typename Operation>
    Row& limit(std::string name, Operation operation) {
        rows_.emplace_front(std::move(name), std::move(operation));
        return rows_.front();
    }

    template <typename Operation>
    Row& row(std::string name, Operation operation) {
        rows_.emplace_back(std::move(name), std::move(operation));
        return rows_.back();
    }

    /// Measures and prints a table, unless the session's filter leaves this suite out.
    void run();

private:
    using Samples = std::vector<double>;

    std::size_t batchSize() const;
    void measureRound(std::size_t batch, std::vector<Samples>& times) const;
    void print(const std::vector<Samples>& times) const;
    void printRow(const Row& row, const std::string& name, const Samples& times, const Samples& ratios) const;
    std::string json(const std::vector<Samples>& times) const;
    std::string nameOf(std::size_t index) const;
    const Row& timedRow(std::size_t index) const {
        return index < rows_.size() ? rows_[index] : rows_.front();
    }

    Session& session_;
    std::string title_;
    Sampling sampling_;
    std::size_t rounds_;
    std::deque<Row> rows_;  // the limit first; references to rows stay valid
};

}  // namespace bench
