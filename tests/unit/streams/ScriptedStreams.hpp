#pragma once

#include <pkgcore/streams/InputStream.hpp>
#include <pkgcore/streams/OutputStream.hpp>

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace opc {

/// What a scripted stream does at one call: moves up to so many bytes, and is done, or throws, afterwards.
struct StreamStep {
    std::size_t most;
    bool done;
    bool throws;
};

struct ScriptEnd : std::runtime_error {
    ScriptEnd() : std::runtime_error("a scripted failure") {}
};

/// 0, 1, 2, ... and round again: from every offset below 256 enough for a chunk of the copy loop.
inline const std::vector<std::uint8_t>& countingBytes() {
    static const std::vector<std::uint8_t> bytes = [] {
        std::vector<std::uint8_t> made(256 + 16384);
        std::uint8_t next = 0;
        std::generate(made.begin(), made.end(), [&next] { return next++; });
        return made;
    }();
    return bytes;
}

/// Gives the bytes 0, 1, 2, ... by its script; when that is used up it is done.
class ScriptedInput : public InputStream {
public:
    ScriptedInput(std::vector<StreamStep> steps, std::vector<std::string>& log)
        : steps_(std::move(steps)), log_(log) {}
    ~ScriptedInput() override = default;

    void open() override { log_.emplace_back("in.open"); }
    std::size_t read(std::uint8_t* buffer, std::size_t count) override {
        log_.push_back("in.read " + std::to_string(count));
        const StreamStep step = next_ < steps_.size() ? steps_[next_++] : StreamStep{0, true, false};
        if (step.throws) {
            throw ScriptEnd();
        }
        done_ = step.done;
        const std::size_t given = std::min(step.most, count);
        std::copy_n(countingBytes().data() + byte_, given, buffer);
        byte_ = static_cast<std::uint8_t>(byte_ + given);
        return given;
    }
    bool isDone() const override {
        log_.emplace_back("in.isDone");
        return done_;
    }
    void close() override { log_.emplace_back("in.close"); }

private:
    std::vector<StreamStep> steps_;
    std::vector<std::string>& log_;
    std::size_t next_ = 0;
    std::uint8_t byte_ = 0;
    bool done_ = false;
};

/// Takes bytes by its script; when that is used up it takes everything.
class ScriptedOutput : public OutputStream {
public:
    ScriptedOutput(std::vector<StreamStep> steps, std::vector<std::string>& log)
        : steps_(std::move(steps)), log_(log) {}
    ~ScriptedOutput() override = default;

    std::size_t write(const std::uint8_t* buffer, std::size_t count) override {
        log_.push_back("out.write " + std::to_string(count));
        const StreamStep step = next_ < steps_.size() ? steps_[next_++] : StreamStep{count, false, false};
        if (step.throws) {
            throw ScriptEnd();
        }
        done_ = step.done;
        const std::size_t accepted = std::min(step.most, count);
        taken.insert(taken.end(), buffer, buffer + accepted);
        return accepted;
    }
    bool isDone() const override {
        log_.emplace_back("out.isDone");
        return done_;
    }
    void flush() override { log_.emplace_back("out.flush"); }
    void close() override { log_.emplace_back("out.close"); }

    std::vector<std::uint8_t> taken;

private:
    std::vector<StreamStep> steps_;
    std::vector<std::string>& log_;
    std::size_t next_ = 0;
    bool done_ = false;
};

}  // namespace opc
