// Reads the input as a base, up to the end of a line, and a relative text, and compares what they are joined
// to by both back ends with what the rules give.

#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/platform/storage/AbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>

#include "tests/fuzz/Input.hpp"
#include "tests/reference/ReferenceIRI.hpp"
#include "tests/reference/ReferencePaths.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace {

using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::InvalidIRIException;
using foundation::storage::vfs::UnsupportedIRISchemeException;
using fuzz::require;
using reference::IRIKind;
using Text = std::u16string;

const opc::FileSystemOpsSelector& selector() {
    static const opc::FileSystemOpsSelector made(foundation::storage::vfs::StorageSystemBuilder().build());
    return made;
}

/// Nothing where one of the two is refused.
std::optional<Text> joinedByConstructors(const Text& base, const Text& relative) {
    try {
        return AbsoluteIRI(AbsoluteIRI(base), relative).toString();
    } catch (const InvalidIRIException&) {
        return std::nullopt;
    } catch (const UnsupportedIRISchemeException&) {
        return std::nullopt;
    }
}

bool isName(const Text& text) {
    const auto bytes = reference::encodeName(text);
    return !text.empty() && text != u"." && text != u".." && text.find(u'/') == Text::npos && bytes &&
           reference::decodeName(*bytes) == text;
}

/// A name comes out as it went in, and the place that it was put into with it.
void checkWayBack(const Text& base, const Text& name, const Text& joined) {
    opc::FileSystemOps& files = selector().getVirtual();
    require(files.getFilename(joined) == name);
    require(files.getExtension(joined) == reference::extensionOfName(name));
    require(files.getParentPath(joined) == reference::canonicalIRI(base));
}

Text withoutFirstSlash(const Text& text) { return text.substr(!text.empty() && text[0] == u'/' ? 1 : 0); }

/// The back end drops one slash in front, which the constructor keeps. It goes the way of the constructors,
/// so it is asked only for what they take: saying why something is refused takes long.
void checkIRI(const Text& given, const Text& rest) {
    const reference::IRIReading base = reference::spelledIRI(given);
    const Text relative = withoutFirstSlash(rest);
    const reference::IRIReading expected =
        base.kind == IRIKind::Valid ? reference::joinedIRI(base.text, relative) : base;
    if (expected.kind != IRIKind::Valid) {
        require(!joinedByConstructors(given, relative));
        return;
    }
    require(selector().getVirtual().appendPath(given, rest) == expected.text);
    require(joinedByConstructors(given, rest) == reference::joinedIRI(base.text, rest).text);
    if (isName(relative)) checkWayBack(base.text, relative, expected.text);
}

void checkNative(const Text& base, const Text& rest) {
    const Text expected =
        reference::PosixPaths::joined(reference::PosixPaths::tidied(base), withoutFirstSlash(rest), u'/');
    require(selector().getLocal().appendPath(base, rest) == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [line, rest] = fuzz::lineAndRest(fuzz::textOf(fuzz::bytesOf(data, size)));
    const bool hasMark = line.find(u"://") != Text::npos;
    checkIRI(hasMark ? line : u"mem://" + line, rest);
    checkNative(line, rest);
    return 0;
}
