#include "tests/support/scripted_platform/RecordedFile.hpp"

#include "tests/support/scripted_platform/Platform.hpp"

namespace scripted {

namespace {

int recordEnd(void* /*cookie*/) {
    Platform::current().record("fclose");
    return 0;
}

}  // namespace

// The GNU C library's and musl's way of a stream whose end calls a function.
std::FILE* recordedFile() {
    cookie_io_functions_t functions{};
    functions.close = recordEnd;
    return ::fopencookie(nullptr, "w+b", functions);
}

}  // namespace scripted
