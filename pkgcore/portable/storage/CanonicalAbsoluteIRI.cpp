#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>

#include <pkgcore/portable/storage/iri/IRIText.hpp>
#include <pkgcore/portable/storage/iri/PercentEncoding.hpp>

#include <stdexcept>

namespace foundation::storage::vfs {

namespace {

CheckedIRI canonical(const std::u16string& text) {
    if (portable::isPlainIRI(text)) {
        return {text, true};
    }
    return {portable::canonicalIRI(portable::checkedIRI(text))};
}

}  // namespace

CanonicalAbsoluteIRI::CanonicalAbsoluteIRI(const std::u16string& text) : AbsoluteIRI(canonical(text)) {}

CanonicalAbsoluteIRI::CanonicalAbsoluteIRI(const AbsoluteIRI& iri)
    : AbsoluteIRI(CheckedIRI{portable::canonicalIRI(iri.toString())}) {}

std::u16string CanonicalAbsoluteIRI::getName() const {
    return portable::decoded(std::u16string_view(toString()).substr(toString().rfind(u'/') + 1));
}

bool CanonicalAbsoluteIRI::hasParent() const { return portable::partsOf(toString()).path.size() > 1; }

CanonicalAbsoluteIRI CanonicalAbsoluteIRI::getParent() const {
    if (!hasParent()) {
        throw std::logic_error("The root of a storage has no parent");
    }
    portable::IRIParts parts = portable::partsOf(toString());
    const std::size_t separator = parts.path.rfind(u'/');
    parts.path = parts.path.substr(0, separator == 0 ? 1 : separator);
    return CanonicalAbsoluteIRI(CheckedIRI{portable::joinedIRI(parts)});
}

}  // namespace foundation::storage::vfs
