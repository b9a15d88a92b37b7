#include <pkgcore/platform/filesystem/FileStreams.hpp>

namespace fl::filesystem {

namespace {

/// The standard's rule for streams: opening clears the state or sets failbit.
void reportOpening(std::ios& stream, bool opened) {
    if (opened) {
        stream.clear();
    } else {
        stream.setstate(std::ios_base::failbit);
    }
}

void reportClosing(std::ios& stream, bool closed) {
    if (!closed) {
        stream.setstate(std::ios_base::failbit);
    }
}

}  // namespace

basic_ifstream<char>::basic_ifstream() { std::ios::rdbuf(&file_); }

basic_ifstream<char>::~basic_ifstream() = default;

void basic_ifstream<char>::open(const std::wstring& accessPath, std::ios_base::openmode mode,
                                share_mode share) {
    reportOpening(*this, file_.open(accessPath, mode | std::ios_base::in, share));
}

void basic_ifstream<char>::close() { reportClosing(*this, file_.close()); }

basic_ofstream<char>::basic_ofstream() { std::ios::rdbuf(&file_); }

basic_ofstream<char>::~basic_ofstream() = default;

void basic_ofstream<char>::open(const std::wstring& accessPath, std::ios_base::openmode mode,
                                share_mode share) {
    reportOpening(*this, file_.open(accessPath, mode | std::ios_base::out, share));
}

void basic_ofstream<char>::close() { reportClosing(*this, file_.close()); }

}  // namespace fl::filesystem
