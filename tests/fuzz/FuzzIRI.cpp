// Reads the input as an IRI, and compares its spelling, its canonical form and its parts with those that the
// rules give. What is refused is refused for the reason and at the place that the message names.

#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>

#include "tests/fuzz/Input.hpp"
#include "tests/reference/ReferenceIRI.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::CanonicalAbsoluteIRI;
using foundation::storage::vfs::InvalidIRIException;
using foundation::storage::vfs::UnsupportedIRISchemeException;
using fuzz::require;
using reference::IRIKind;

/// The offset that the message of a refusal names.
std::size_t offsetIn(const std::string& message) {
    constexpr std::string_view kMark = "at offset ";
    const std::size_t at = message.find(kMark);
    require(at != message.npos);
    return std::stoul(message.substr(at + kMark.size()));
}

/// Nothing before the place that a refusal names is at fault.
void checkRefusal(const std::u16string& text, const InvalidIRIException& refusal) {
    require(refusal.getInvalidIRIString() == text);
    const std::size_t offset = offsetIn(refusal.what());
    require(offset <= text.size());
    try {
        const AbsoluteIRI beginning(text.substr(0, offset));
    } catch (const InvalidIRIException& earlier) {
        require(offsetIn(earlier.what()) == offset);  // the end, where there should be more
    } catch (const UnsupportedIRISchemeException&) {
        require(false);
    }
}

void checkFamily(CanonicalAbsoluteIRI iri) {
    while (iri.hasParent()) {
        const std::u16string name = iri.getName();
        require(!name.empty() && name != u"." && name != u".." && name.find(u'/') == std::u16string::npos);
        require(iri.toString().size() > iri.getParent().toString().size());
        require(AbsoluteIRI(iri.getParent(), name).toString() == iri.toString());
        iri = iri.getParent();
    }
    require(iri.getName().empty());
}

/// A file of another host has no path.
void checkRefusalOfPath(const AbsoluteIRI& iri) {
    bool isRefused = false;
    try {
        iri.getPath();
    } catch (const InvalidIRIException&) {
        isRefused = true;
    }
    require(isRefused);
}

void checkParts(const AbsoluteIRI& iri) {
    const reference::SpelledParts parts = reference::partsOfIRI(iri.toString());
    const reference::SpelledParts place = reference::partsOfIRI(reference::canonicalIRI(iri.toString()));
    require(iri.getScheme() == parts.scheme);
    const bool isFile = place.scheme == u"file";
    if (isFile && !place.authority.empty()) {
        checkRefusalOfPath(iri);
        return;
    }
    const std::u16string path = reference::plainText(isFile ? parts.path : parts.authority + parts.path);
    require(iri.getPath() == (path.empty() ? u"/" : path));
}

void checkIRI(const AbsoluteIRI& iri, const std::u16string& spelled) {
    require(iri.toString() == spelled);
    require(AbsoluteIRI(spelled).toString() == spelled);
    checkParts(iri);
    const CanonicalAbsoluteIRI canonical(iri);
    require(canonical.toString() == reference::canonicalIRI(spelled));
    const CanonicalAbsoluteIRI again(canonical.toString());
    require(again == canonical);
    require(!again.isPlain() || reference::plainText(again.toString()) == again.toString());
    checkFamily(canonical);
}

void check(const std::u16string& text) {
    const reference::IRIReading expected = reference::spelledIRI(text);
    try {
        const AbsoluteIRI iri(text);
        require(expected.kind == IRIKind::Valid);
        checkIRI(iri, expected.text);
    } catch (const InvalidIRIException& refusal) {
        require(expected.kind == IRIKind::Invalid);
        checkRefusal(text, refusal);
    } catch (const UnsupportedIRISchemeException& refusal) {
        require(expected.kind == IRIKind::Unsupported);
        require(refusal.getScheme() == reference::partsOfIRI(text).scheme);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::u16string text = fuzz::textOf(fuzz::bytesOf(data, size));
    const bool hasMark = text.find(u"://") != std::u16string::npos;
    check(hasMark ? text : u"mem://" + text);
    return 0;
}
