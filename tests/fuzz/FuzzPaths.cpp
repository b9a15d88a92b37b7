// Reads the input as a path and, behind the end of a line, a second one, and compares what the POSIX and the
// Windows syntax make of them with what the rules give.

#include <pkgcore/filesystem/PathHelpers.hpp>
#include <pkgcore/portable/path/PosixSyntax.hpp>
#include <pkgcore/portable/path/WindowsSyntax.hpp>

#include "tests/fuzz/Input.hpp"
#include "tests/reference/ReferenceEncodings.hpp"
#include "tests/reference/ReferencePaths.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

namespace posix = fl::filesystem::syntax::posix;
namespace windows = fl::filesystem::syntax::windows;

using fuzz::require;
using reference::PosixPaths;
using reference::WindowsPaths;
using Text = std::u16string;

void checkPosix(const Text& path) {
    const Text tidied = posix::make_native_form(path, true);
    require(tidied == PosixPaths::tidied(path));
    require(posix::make_native_form(tidied, true) == tidied);
    require(posix::make_native_form(path, false) == path && posix::make_generic_form(path) == path);
    require(posix::extract_filename(path) == PosixPaths::filename(path));
    require(posix::extract_extension(path) == PosixPaths::extension(path));
    require(posix::extract_parent_path(tidied) == PosixPaths::parent(path));
    require(posix::is_absolute(path) == PosixPaths::isAbsolute(path));
    const Text name = posix::extract_filename(tidied);
    require(posix::concatenate_pathname(posix::extract_parent_path(tidied), name, true) ==
            (name.empty() ? Text() : tidied));
}

void checkWindowsPieces(const Text& path) {
    require(windows::extract_filename(path) == WindowsPaths::filename(path));
    require(windows::extract_extension(path) == WindowsPaths::extension(path));
    require(windows::extract_parent_path(path) == WindowsPaths::parent(path));
    require(windows::is_absolute(path) == WindowsPaths::isAbsolute(path));
    require(windows::make_access_form(reference::widened(path)) ==
            reference::widened(WindowsPaths::access(path)));
}

void checkWindows(const Text& path) {
    const Text tidied = windows::make_native_form(path, true);
    require(tidied == WindowsPaths::tidied(path));
    require(windows::make_native_form(tidied, true) == tidied);
    require(windows::make_native_form(path, false) == WindowsPaths::native(path));
    require(windows::make_generic_form(path) == WindowsPaths::generic(path));
    require(windows::make_native_form(windows::make_generic_form(tidied), true) == tidied);
    require(windows::extract_filename(path) == WindowsPaths::filename(path));
    checkWindowsPieces(tidied);
    const Text name = windows::extract_filename(tidied);
    const Text joined = windows::concatenate_pathname(windows::extract_parent_path(tidied), name, true);
    require(name.empty() || joined == tidied);
}

/// The helpers that clients call, in the syntax of this host.
void checkHelpers(const Text& path) {
    require(opc::detail::getFilename(path) == PosixPaths::filename(path));
    require(opc::detail::getExtension(path) == PosixPaths::extension(path));
    require(opc::detail::getParentPath(path) == PosixPaths::parent(path));
    require(opc::detail::normalizePath(path) == PosixPaths::tidied(path));
    require(opc::detail::makeNativePath(path) == reference::widened(PosixPaths::tidied(path)));
}

void checkJoining(const Text& base, const Text& rest) {
    require(posix::concatenate_pathname(base, rest, true) == PosixPaths::joined(base, rest, u'/'));
    require(windows::concatenate_pathname(base, rest, true) == WindowsPaths::joined(base, rest, u'\\'));
    require(windows::concatenate_pathname(base, rest, false) == WindowsPaths::joined(base, rest, u'/'));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Text text = fuzz::textOf(fuzz::bytesOf(data, size));
    const auto [line, rest] = fuzz::lineAndRest(text);
    checkJoining(line, rest);
    if (line.size() % 2 == 1) {  // one syntax at a time, for more inputs
        checkPosix(line);
        checkHelpers(line);
    } else {
        checkWindows(line);
    }
    return 0;
}
