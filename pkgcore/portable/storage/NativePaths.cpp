#include <pkgcore/platform/storage/NativePaths.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/iri/IRIText.hpp>
#include <pkgcore/portable/storage/iri/PercentEncoding.hpp>

#include <algorithm>
#include <string_view>

namespace foundation::storage::vfs {

namespace {

constexpr std::size_t kAuthorityMarkLength = 2;

bool beginsWithAuthorityMark(std::u16string_view path) noexcept {
    const std::u16string_view mark = path.substr(0, kAuthorityMarkLength);
    return mark == u"//" || mark == u"\\\\";
}

}  // namespace

AbsoluteIRI toAbsoluteIRI(const std::u16string& scheme, const std::u16string& path) {
    std::u16string_view rest = path;
    std::u16string iri = scheme + u"://";
    if (beginsWithAuthorityMark(rest)) {
        rest.remove_prefix(kAuthorityMarkLength);
        const std::size_t end = std::min(rest.find(u'/'), rest.size());
        portable::appendAuthority(rest.substr(0, end), iri);
        rest.remove_prefix(end);
    }
    if (rest.empty() || rest.front() != u'/') {
        iri += u'/';
    }
    portable::appendPath(rest, iri);
    return AbsoluteIRI(iri);
}

std::u16string fromAbsoluteIRI(const AbsoluteIRI& iri) {
    const std::u16string scheme = iri.getScheme();
    if (!portable::isFileScheme(scheme)) {
        throw UnsupportedIRISchemeException("The scheme has no native paths", scheme);
    }
    return portable::pathOnThisHost(iri.toString());
}

}  // namespace foundation::storage::vfs
