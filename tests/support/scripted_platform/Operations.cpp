#include <pkgcore/platform/filesystem/Operations.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Temporary.hpp>

#include "tests/support/scripted_platform/Platform.hpp"
#include "tests/support/scripted_platform/RecordedFile.hpp"

namespace fl::filesystem {

using boost::posix_time::ptime;
using scripted::Platform;
using Text = std::u16string;

namespace {

Platform& recorded(const char* name) {
    Platform::current().record(name);
    return Platform::current();
}

template <typename... Rest>
Platform& recorded(const char* name, const Text& path, const Rest&... rest) {
    Platform::current().record(name, path, rest...);
    return Platform::current();
}

void success() {}

}  // namespace

file_status symlink_status(const Text& path) {
    return recorded("symlink_status", path).symlink_status.next(path, scripted::nothing);
}

bool exists(const Text& path) {
    return recorded("exists", path).exists.next(path, [] { return false; });
}

void copy_file(const Text& from, const Text& to, copy_option option) {
    recorded("copy_file", from, to, option).copy_file.next(from, success);
}

void copy_directory(const Text& from, const Text& to) {
    recorded("copy_directory", from, to).copy_directory.next(from, success);
}

void copy_symlink(const Text& from, const Text& to) {
    recorded("copy_symlink", from, to).copy_symlink.next(from, success);
}

void rename(const Text& from, const Text& to) { recorded("rename", from, to).rename.next(from, success); }

void remove(const Text& path) { recorded("remove", path).remove.next(path, success); }

void remove_all(const Text& path) { recorded("remove_all", path).remove_all.next(path, success); }

bool create_directory(const Text& path) {
    return recorded("create_directory", path).create_directory.next(path, [] { return true; });
}

bool create_directories(const Text& path) {
    return recorded("create_directories", path).create_directories.next(path, [] { return true; });
}

void create_symlink(const Text& target, const Text& link, unsigned kind) {
    recorded("create_symlink", target, link, kind).create_symlink.next(target, success);
}

Text read_symlink(const Text& path) {
    return recorded("read_symlink", path).read_symlink.next(path, [&] { return u"target(" + path + u")"; });
}

void permissions(const Text& path, unsigned bits) {
    recorded("permissions", path, bits).permissions.next(path, success);
}

void last_write_time(const Text& path, ptime time) {
    recorded("last_write_time", path, time).last_write_time.next(path, success);
}

Text temp_directory_name() {
    return recorded("temp_directory_name").temp_directory_name.next(Text(), [] { return Text(u"tmp"); });
}

Text get_current_path() {
    return recorded("get_current_path").get_current_path.next(Text(), [] { return Text(u"cwd"); });
}

Text tmpnam(const Text& directory, const Text& prefix, const Text& extension) {
    return recorded("tmpnam", directory, prefix, extension).tmpnam.next(directory, [&] {
        return directory + u"/" + prefix + u"random" + extension;
    });
}

std::FILE* tmpfile(Text& name, const Text& directory, const Text& prefix, const Text& extension) {
    Platform& platform = recorded("tmpfile", directory, prefix, extension);
    name = platform.tmpfileName;
    return platform.tmpfile.next(directory, scripted::recordedFile);
}

namespace detail {

void throw_invalid_operation_exception() { throw InvalidOperation(Text()); }

}  // namespace detail
}  // namespace fl::filesystem
