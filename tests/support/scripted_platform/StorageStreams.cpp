#include <pkgcore/platform/storage/Streams.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

#include <sstream>

namespace foundation::storage::vfs {

using scripted::Platform;
using scripted::showPlace;
using scripted::Verbatim;
using std::ios_base;

namespace {

/// What a stream reads and writes; its end is the end of the stream.
class ScriptedBuffer : public std::stringbuf {
public:
    ScriptedBuffer(std::string streamName, const File& file)
        : std::stringbuf(Platform::current().storage.content),
          streamName_(std::move(streamName)),
          file_(file) {}

    ~ScriptedBuffer() override { Platform::current().record("~" + streamName_, showPlace(file_)); }

protected:
    std::streamsize xsputn(const char* in, std::streamsize count) override {
        Platform::current().storage.written.append(in, static_cast<std::size_t>(count));
        return count;
    }

private:
    std::string streamName_;
    File file_;
};

void recordOpening(const char* streamName, const File& file, ios_base::openmode mode) {
    Platform::current().record(streamName, showPlace(file), Verbatim{scripted::showMode(mode)});
}

ios_base::iostate openState(scripted::Answers<ios_base::iostate>& answers, const File& file) {
    return answers.next(file.getLocation().toString(), [] { return ios_base::goodbit; });
}

}  // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform takes it over
ifstream::ifstream(File file, ios_base::openmode mode) : std::istream(nullptr) {
    recordOpening("ifstream", file, mode);
    const ios_base::iostate state = openState(Platform::current().storage.openInput, file);
    buffer_ = std::make_unique<ScriptedBuffer>("ifstream", file);
    rdbuf(buffer_.get());
    setstate(state);
}

ifstream::~ifstream() = default;

// NOLINTNEXTLINE(performance-unnecessary-value-param): the platform takes it over
ofstream::ofstream(File file, ios_base::openmode mode) : std::ostream(nullptr) {
    recordOpening("ofstream", file, mode);
    const ios_base::iostate state = openState(Platform::current().storage.openOutput, file);
    buffer_ = std::make_unique<ScriptedBuffer>("ofstream", file);
    rdbuf(buffer_.get());
    setstate(state);
}

ofstream::~ofstream() = default;

}  // namespace foundation::storage::vfs
