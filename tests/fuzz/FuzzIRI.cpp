// Reads the input as an IRI and as plain text. What is taken is spelled and made canonical once and for all,
// stays below its root, and names survive the way into an IRI and back.

#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::CanonicalAbsoluteIRI;
using foundation::storage::vfs::InvalidIRIException;
using foundation::storage::vfs::UnsupportedIRISchemeException;

void require(bool condition) {
    if (!condition) std::abort();
}

template <typename Work>
void unlessRefused(Work work) {
    try {
        work();
    } catch (const InvalidIRIException&) {
    } catch (const UnsupportedIRISchemeException&) {
    }
}

void checkFamily(CanonicalAbsoluteIRI iri) {
    while (iri.hasParent()) {
        const std::u16string name = iri.getName();
        require(!name.empty() && name != u"." && name != u".." && name.find(u'/') == std::u16string::npos);
        const CanonicalAbsoluteIRI parent = iri.getParent();
        require(AbsoluteIRI(parent, name).toString() == iri.toString());
        iri = parent;
    }
    require(iri.getName().empty());
}

void checkIRI(const std::u16string& text) {
    const AbsoluteIRI iri(text);
    require(AbsoluteIRI(iri.toString()).toString() == iri.toString());
    const CanonicalAbsoluteIRI canonical(text);
    require(CanonicalAbsoluteIRI(canonical.toString()) == canonical);
    require(CanonicalAbsoluteIRI(iri) == canonical);
    checkFamily(canonical);
}

void checkPlain(const std::u16string& base, const std::u16string& text) {
    checkIRI(AbsoluteIRI(AbsoluteIRI(base), text).toString());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::u16string narrow(data, data + size);
    std::u16string wide(size / sizeof(char16_t), u'\0');
    if (!wide.empty()) std::memcpy(wide.data(), data, wide.size() * sizeof(char16_t));
    for (const std::u16string& text : {narrow, wide}) {
        unlessRefused([&] { checkIRI(text); });
        unlessRefused([&] { checkIRI(u"mem://" + text); });
        unlessRefused([&] { checkIRI(u"file:///" + text); });
        unlessRefused([&] { checkPlain(u"mem://store", text); });
        unlessRefused([&] { checkPlain(u"file:///a", text); });
    }
    return 0;
}
