#include <pkgcore/platform/filesystem/FileStreams.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

namespace fl::filesystem {

using scripted::Platform;
using std::ios_base;

namespace {

ios_base::iostate openState(const char* name, scripted::Answers<ios_base::iostate>& answers,
                            const std::wstring& path, ios_base::openmode mode, share_mode share) {
    const std::u16string firstArgument(path.begin(), path.end());
    Platform::current().record(name, path, scripted::Verbatim{scripted::showMode(mode)}, share);
    return answers.next(firstArgument, [] { return ios_base::goodbit; });
}

}  // namespace

file_buffer::file_buffer() = default;
file_buffer::~file_buffer() = default;

bool file_buffer::open(const std::wstring& /*accessPath*/, ios_base::openmode /*mode*/,
                       share_mode /*share*/) {
    return true;
}

bool file_buffer::close() noexcept { return true; }

std::streamsize file_buffer::showmanyc() { return 0; }
std::streamsize file_buffer::xsgetn(char* out, std::streamsize count) {
    return std::streambuf::xsgetn(out, count);
}

file_buffer::int_type file_buffer::underflow() {
    std::string& content = Platform::current().content;
    if (gptr() != nullptr || content.empty()) {
        return traits_type::eof();
    }
    setg(content.data(), content.data(), content.data() + content.size());
    return traits_type::to_int_type(content.front());
}

file_buffer::int_type file_buffer::pbackfail(int_type /*unit*/) { return traits_type::eof(); }

std::streamsize file_buffer::xsputn(const char* in, std::streamsize count) {
    Platform::current().written.append(in, static_cast<std::size_t>(count));
    return count;
}

file_buffer::int_type file_buffer::overflow(int_type unit) {
    Platform::current().written += traits_type::to_char_type(unit);
    return unit;
}

int file_buffer::sync() { return 0; }

file_buffer::pos_type file_buffer::seekoff(off_type /*offset*/, ios_base::seekdir /*direction*/,
                                           ios_base::openmode /*which*/) {
    return pos_type(off_type(-1));
}

file_buffer::pos_type file_buffer::seekpos(pos_type /*position*/, ios_base::openmode /*which*/) {
    return pos_type(off_type(-1));
}

basic_ifstream<char>::basic_ifstream() { std::ios::rdbuf(&file_); }
basic_ifstream<char>::~basic_ifstream() = default;

void basic_ifstream<char>::open(const std::wstring& accessPath, ios_base::openmode mode, share_mode share) {
    file_.open(accessPath, mode, share);
    setstate(openState("basic_ifstream::open", Platform::current().openInput, accessPath, mode, share));
}

void basic_ifstream<char>::close() { file_.close(); }

basic_ofstream<char>::basic_ofstream() { std::ios::rdbuf(&file_); }
basic_ofstream<char>::~basic_ofstream() = default;

void basic_ofstream<char>::open(const std::wstring& accessPath, ios_base::openmode mode, share_mode share) {
    file_.open(accessPath, mode, share);
    setstate(openState("basic_ofstream::open", Platform::current().openOutput, accessPath, mode, share));
}

void basic_ofstream<char>::close() { file_.close(); }

}  // namespace fl::filesystem
