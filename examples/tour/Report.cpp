#include "Report.hpp"

#include "../support/Interruption.hpp"
#include "../support/Progress.hpp"

#include <chrono>
#include <exception>
#include <iomanip>
#include <iostream>

namespace tour {

namespace {

constexpr int kTitleWidth = 30;
constexpr int kItemsWidth = 9;
constexpr int kBytesWidth = 14;
constexpr int kTimeWidth = 12;

/// A dash reads better than a column of zeros.
std::string number(std::uintmax_t value) { return value == 0 ? "-" : std::to_string(value); }

double millisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

void Step::count(std::uintmax_t items, std::uintmax_t bytes) {
    items_ += items;
    bytes_ += bytes;
}

void Step::check(bool holds, const std::string& difference) {
    if (holds) {
        ++held_;
    } else {
        differences_.push_back(difference);
    }
}

void Step::progress(std::size_t done, std::size_t total) const { showProgress(title_, done, total); }

Report::Report() {
    std::cout << std::left << "  " << std::setw(kTitleWidth) << "step" << std::right << std::setw(kItemsWidth)
              << "items" << std::setw(kBytesWidth) << "bytes" << std::setw(kTimeWidth) << "time"
              << "\n";
}

void Report::run(const std::string& title, const std::function<void(Step&)>& work) {
    if (isInterrupted()) {
        return;
    }
    Step step(title);
    const auto start = std::chrono::steady_clock::now();
    try {
        work(step);
    } catch (const std::exception& failure) {
        step.check(false, failure.what());
    }
    print(step, millisecondsSince(start));
    held_ += step.held_;
    failed_ += step.differences_.size();
}

bool Report::conclude() const {
    std::cout << "\n"
              << held_ << " checks held, " << failed_ << " did not.\n"
              << (isInterrupted() ? "Interrupted.\n" : "");
    return failed_ == 0 && !isInterrupted();
}

void Report::print(const Step& step, double milliseconds) const {
    clearProgress();
    std::cout << std::left << "  " << std::setw(kTitleWidth) << step.title_ << std::right
              << std::setw(kItemsWidth) << number(step.items_) << std::setw(kBytesWidth)
              << number(step.bytes_) << std::fixed << std::setprecision(1) << std::setw(kTimeWidth - 3)
              << milliseconds << " ms" << (step.differences_.empty() ? "  ok" : "  FAILED") << "\n";
    for (const std::string& note : step.notes_) {
        std::cout << "      " << note << "\n";
    }
    for (const std::string& difference : step.differences_) {
        std::cout << "      failed: " << difference << "\n";
    }
    std::cout << std::flush;
}

}  // namespace tour
