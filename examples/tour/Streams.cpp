// Byte streams over memory and standard streams, and one of our own.

#include "Tour.hpp"

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace tour {

namespace {

using Bytes = std::vector<std::uint8_t>;
using opc::StreamHelper;

/// A sink of our own: room for some bytes, and done when they are there.
class FirstBytes : public opc::OutputStream {
public:
    explicit FirstBytes(std::size_t room) : room_(room) {}
    ~FirstBytes() override = default;

    std::size_t write(const std::uint8_t* buffer, std::size_t count) override {
        const std::size_t taken = std::min(count, room_ - held_.size());
        held_.insert(held_.end(), buffer, buffer + taken);
        return taken;
    }
    bool isDone() const override { return held_.size() == room_; }
    void flush() override {}
    void close() override {}

    std::size_t held() const { return held_.size(); }

private:
    std::size_t room_;
    Bytes held_;
};

void passThroughStandardStream(const Bytes& original, Step& step) {
    opc::ByteArrayInAdaptor source(original);
    std::stringstream middle;
    Bytes copy;
    opc::ByteArrayOutAdaptor sink(copy);
    step.check(StreamHelper::copyStreamToStream(source, middle), "not all bytes went into the stream");
    step.check(StreamHelper::copyStreamToStream(middle, sink), "not all bytes came out of the stream");
    step.check(copy == original, "the bytes that came back differ");
    step.count(2, 2 * original.size());
    step.note("byte array -> std::stringstream -> byte array: " + std::to_string(copy.size()) + " bytes");
}

/// A copy begins where the input stands; closing and opening goes back to the start.
void readFromTheMiddle(const Bytes& original, Step& step) {
    constexpr std::size_t kSkipped = 1000;
    opc::ByteArrayInAdaptor source(original);
    Bytes skipped(kSkipped);
    source.read(skipped.data(), kSkipped);
    std::ostringstream rest;
    StreamHelper::copyStreamToStream(source, rest);
    step.checkEqual("size of the rest", rest.str().size(), original.size() - kSkipped);
    source.close();
    source.open();
    std::ostringstream whole;
    StreamHelper::copyStreamToStream(source, whole);
    step.checkEqual("size from the start", whole.str().size(), original.size());
    step.count(2, rest.str().size() + whole.str().size());
    step.note("from the middle: " + std::to_string(rest.str().size()) +
              " bytes; reopened: " + std::to_string(whole.str().size()));
}

void fillASmallSink(const Bytes& original, Step& step) {
    constexpr std::size_t kRoom = 20'000;  // ends within the second chunk
    opc::ByteArrayInAdaptor source(original);
    FirstBytes sink(kRoom);
    step.checkEqual("result of a copy that does not fit", StreamHelper::copyStreamToStream(source, sink),
                    false);
    step.checkEqual("bytes that fitted", sink.held(), kRoom);
    step.note("into a sink with room for less: false after " + std::to_string(sink.held()) + " bytes");
}

}  // namespace

void copyBetweenStreams(Tour& /*tour*/, Step& step) {
    constexpr std::size_t kLength = 40'000;
    const std::string text = numbers(kLength);
    const Bytes original(text.begin(), text.end());
    passThroughStandardStream(original, step);
    readFromTheMiddle(original, step);
    fillASmallSink(original, step);
}

}  // namespace tour
