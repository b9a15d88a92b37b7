// Reads the input as a native path and compares the IRI of it with what the rules give; and leads what is an
// IRI back to a native path.

#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>
#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/platform/storage/NativePaths.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>

#include "tests/fuzz/Input.hpp"
#include "tests/reference/ReferenceIRI.hpp"
#include "tests/reference/ReferencePaths.hpp"

#include <algorithm>
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
using reference::PosixPaths;
using Text = std::u16string;

opc::FileSystemOps& backEnd() {
    static const opc::FileSystemOpsSelector selector(
        foundation::storage::vfs::StorageSystemBuilder().build());
    return selector.getVirtual();
}

/// Nothing where the IRI has no native path.
std::optional<Text> nativePathOf(const AbsoluteIRI& iri) {
    try {
        return foundation::storage::vfs::fromAbsoluteIRI(iri);
    } catch (const InvalidIRIException&) {
        return std::nullopt;
    } catch (const UnsupportedIRISchemeException&) {
        return std::nullopt;
    }
}

void checkBack(const AbsoluteIRI& iri) {
    const reference::SpelledParts parts = reference::partsOfIRI(iri.toString());
    const bool isHere =
        reference::loweredAscii(parts.scheme) == u"file" && reference::canonicalAuthority(parts).empty();
    const std::optional<Text> path = nativePathOf(iri);
    require(path.has_value() == isHere);
    if (!path) return;
    require(*path == (parts.path.empty() ? u"/" : reference::plainText(parts.path)));
    // From there to the same IRI, but for a second slash, which would be the mark of an authority.
    if (path->substr(0, 2) != u"//") {
        require(foundation::storage::vfs::toAbsoluteIRI(u"file", *path).toString() ==
                u"file://" + (parts.path.empty() ? u"/" : parts.path));
    }
}

void checkIRIOf(const Text& scheme, const Text& path) {
    const reference::IRIReading expected = reference::iriOfPath(scheme, path);
    try {
        const AbsoluteIRI iri = foundation::storage::vfs::toAbsoluteIRI(scheme, path);
        require(expected.kind == IRIKind::Valid && iri.toString() == expected.text);
        checkBack(iri);
    } catch (const InvalidIRIException&) {
        require(expected.kind == IRIKind::Invalid);
    }
}

/// Whether the path is absolute, in tidied form and as a name on the disk is read.
bool isPlain(const Text& path) {
    const auto bytes = reference::encodeName(path);
    return PosixPaths::isAbsolute(path) && PosixPaths::tidied(path) == path && bytes &&
           reference::decodeName(*bytes) == path;
}

bool holdsDots(const Text& path) {
    const auto names = PosixPaths::take(path).names;
    return std::any_of(names.begin(), names.end(),
                       [](const Text& name) { return name == u"." || name == u".."; });
}

/// What the back end gives for a path of the disk leads to it again.
void checkBothWays(const Text& path) {
    const Text iri = backEnd().normalizePath(path);
    require(foundation::storage::vfs::fromAbsoluteIRI(AbsoluteIRI(iri)) == path);
    require(backEnd().isAbsolutePath(iri) && backEnd().normalizePath(iri) == iri);
    Text local;
    require(backEnd().getLocalPath(iri, local));
    require(holdsDots(path) || local == path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Text path = fuzz::textOf(fuzz::bytesOf(data, size));
    if (path.find(u"://") != Text::npos) {
        if (reference::spelledIRI(path).kind == IRIKind::Valid) checkBack(AbsoluteIRI(path));
        return 0;
    }
    const bool isOdd = path.size() % 2 == 1;  // one scheme at a time, for more inputs
    checkIRIOf(isOdd ? u"file" : u"mem", path);
    if (isPlain(path)) checkBothWays(path);
    return 0;
}
