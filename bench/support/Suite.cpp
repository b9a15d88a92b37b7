#include "bench/support/Suite.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <random>

namespace bench {

namespace {

constexpr double kBatchSeconds = 0.004;
constexpr std::size_t kLeastRounds = 9;

double now(clockid_t clock) {
    timespec time;
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The value with `share` of all others below it; sorts its copy.
double quantile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1) + 0.5)];
}

std::vector<double> ratios(const std::vector<double>& times, const std::vector<double>& limits) {
    std::vector<double> result(times.size());
    std::transform(times.begin(), times.end(), limits.begin(), result.begin(), std::divides<>());
    return result;
}

std::string timeText(double seconds) {
    char text[32];
    if (seconds < 1e-6) {
        std::snprintf(text, sizeof text, "%.1f ns", seconds * 1e9);
    } else if (seconds < 1e-3) {
        std::snprintf(text, sizeof text, "%.2f us", seconds * 1e6);
    } else {
        std::snprintf(text, sizeof text, "%.2f ms", seconds * 1e3);
    }
    return text;
}

}  // namespace

Session::Session(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (!take(argv[i])) {
            std::fprintf(stderr,
                         "usage: %s [--quick] [--large] [--rounds=N] [--filter=TEXT] [--cpu] [--check]\n",
                         argv[0]);
            std::exit(2);
        }
    }
}

bool Session::take(const std::string& argument) {
    const std::string name = argument.substr(0, argument.find('='));
    const std::string value =
        name.size() < argument.size() ? argument.substr(name.size() + 1) : std::string();
    if (name == "--quick") {
        quick_ = true;
    } else if (name == "--large") {
        isLarge_ = true;
    } else if (name == "--cpu") {
        clock_ = CLOCK_PROCESS_CPUTIME_ID;
    } else if (name == "--check") {
        check_ = true;
    } else if (name == "--rounds") {
        rounds_ = std::strtoul(value.c_str(), nullptr, 10);
        return rounds_ > 0;
    } else if (name == "--filter") {
        filter_ = value;
    } else {
        return false;
    }
    return true;
}

std::size_t Session::rounds(std::size_t full) const noexcept {
    if (rounds_ > 0) {
        return rounds_;
    }
    return quick_ ? std::max(kLeastRounds, full / 4) : full;
}

double Row::sample(std::size_t count, clockid_t clock) const {
    prepare_();
    const double start = now(clock);
    repeat_(count);
    return (now(clock) - start) / static_cast<double>(count);
}

Suite::Suite(Session& session, std::string title, Sampling sampling, std::size_t rounds)
    : session_(session), title_(std::move(title)), sampling_(sampling), rounds_(session.rounds(rounds)) {}

std::size_t Suite::batchSize() const {
    if (sampling_ == Sampling::single) {
        return 1;
    }
    std::size_t count = 1;
    while (rows_.front().sample(count, session_.clock()) * static_cast<double>(count) < kBatchSeconds) {
        count *= 2;
    }
    return count;
}

// One time per row, and one more of the limit at the end, in an order drawn anew.
void Suite::measureRound(std::size_t batch, std::vector<Samples>& times) const {
    static std::mt19937 random{20260714};
    std::vector<std::size_t> order(times.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), random);
    for (const std::size_t index : order) {
        times[index].push_back(timedRow(index).sample(batch, session_.clock()));
    }
}

void Suite::run() {
    if (!session_.selects(title_)) {
        return;
    }
    const std::size_t batch = batchSize();
    std::vector<Samples> warmUp(rows_.size() + 1);
    measureRound(batch, warmUp);
    std::vector<Samples> times(rows_.size() + 1);
    for (std::size_t round = 0; round < rounds_; ++round) {
        measureRound(batch, times);
    }
    print(times);
}

void Suite::print(const std::vector<Samples>& times) const {
    std::printf("\n%s (%zu rounds)\n\n", title_.c_str(), rounds_);
    std::printf("| %-44s | %10s | %6s | %6s | %6s | %-12s |\n", "", "time", "median", "p25", "p75", "goal");
    std::printf("|%s|%s|%s|%s|%s|%s|\n", std::string(46, '-').c_str(),
                "-----------:", "-------:", "-------:", "-------:", std::string(14, '-').c_str());
    for (std::size_t index = 0; index < times.size(); ++index) {
        const Row& row = timedRow(index);
        const bool again = index == rows_.size();
        const std::string name = again        ? "(limit again: noise)"
                                 : index == 0 ? "limit: " + row.name()
                                              : row.name();
        printRow(row, name, times[index], ratios(times[index], times.front()));
    }
    std::fflush(stdout);
}

void Suite::printRow(const Row& row, const std::string& name, const Samples& times,
                     const Samples& ratios) const {
    const double median = quantile(ratios, 0.5);
    std::string goal;
    if (row.goal() > 0) {
        const bool met = median <= row.goal();
        char text[32];
        std::snprintf(text, sizeof text, "%.2f %s", row.goal(), met ? "met" : "MISSED");
        goal = text;
        if (!met) {
            session_.noteMissedGoal();
        }
    }
    std::printf("| %-44s | %10s | %6.3f | %6.3f | %6.3f | %-12s |\n", name.c_str(),
                timeText(quantile(times, 0.5)).c_str(), median, quantile(ratios, 0.25),
                quantile(ratios, 0.75), goal.c_str());
}

}  // namespace bench
