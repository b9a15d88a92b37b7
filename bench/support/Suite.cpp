#include "bench/support/Suite.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
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

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') result += '\\';
        result += character;
    }
    return result + '"';
}

/// A member of an object, with a comma behind it.
std::string member(const char* name, double value) {
    char text[64];
    std::snprintf(text, sizeof text, "\"%s\": %.6g, ", name, value);
    return text;
}

}  // namespace

Session::Session(int argc, char** argv) : program_(argv[0]) {
    for (int i = 1; i < argc; ++i) {
        if (!take(argv[i])) {
            std::fprintf(stderr,
                         "usage: %s [--quick] [--large] [--rounds=N] [--filter=TEXT] [--cpu] [--check] "
                         "[--json=FILE]\n",
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
    } else if (name == "--json") {
        json_ = value;
        return !value.empty();
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

void Session::record(const std::string& json) const {
    if (!json_.empty() && !(std::ofstream(json_, std::ios::app) << json << std::endl)) {
        std::fprintf(stderr, "cannot write to %s\n", json_.c_str());
        std::exit(2);
    }
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
    session_.record(json(times));
}

std::string Suite::nameOf(std::size_t index) const {
    if (index == rows_.size()) {
        return "(limit again: noise)";
    }
    return (index == 0 ? "limit: " : "") + rows_[index].name();
}

void Suite::print(const std::vector<Samples>& times) const {
    std::printf("\n%s (%zu rounds)\n\n", title_.c_str(), rounds_);
    std::printf("| %-44s | %10s | %6s | %6s | %6s | %-12s |\n", "", "time", "median", "p25", "p75", "goal");
    std::printf("|%s|%s|%s|%s|%s|%s|\n", std::string(46, '-').c_str(),
                "-----------:", "-------:", "-------:", "-------:", std::string(14, '-').c_str());
    for (std::size_t index = 0; index < times.size(); ++index) {
        printRow(timedRow(index), nameOf(index), times[index], ratios(times[index], times.front()));
    }
    std::fflush(stdout);
}

std::string Suite::json(const std::vector<Samples>& times) const {
    std::string rows;
    for (std::size_t index = 0; index < times.size(); ++index) {
        const Samples relative = ratios(times[index], times.front());
        rows += (rows.empty() ? "{" : ", {") + member("seconds", quantile(times[index], 0.5)) +
                member("median", quantile(relative, 0.5)) + member("p25", quantile(relative, 0.25)) +
                member("p75", quantile(relative, 0.75)) + member("goal", timedRow(index).goal()) +
                "\"name\": " + quoted(nameOf(index)) + '}';
    }
    const char* const clock = session_.clock() == CLOCK_MONOTONIC ? "wall" : "processor";
    return "{\"program\": " + quoted(std::filesystem::path(session_.program()).filename().string()) +
           ", \"suite\": " + quoted(title_) + ", \"clock\": " + quoted(clock) + ", " +
           member("rounds", static_cast<double>(rounds_)) + "\"rows\": [" + rows + "]}";
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
