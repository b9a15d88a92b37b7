#include <pkgcore/platform/storage/AbsoluteIRI.hpp>

#include <pkgcore/portable/storage/iri/IRIText.hpp>
#include <pkgcore/portable/storage/iri/PercentEncoding.hpp>

namespace foundation::storage::vfs {

namespace {

std::u16string joined(const std::u16string& base, const std::u16string& relative) {
    if (relative.empty()) {
        return base;
    }
    std::u16string iri = base;
    if (iri.empty() || iri.back() != u'/' || portable::partsOf(iri).path.empty()) {
        iri += u'/';
    }
    portable::appendPath(relative, iri);
    // Once more, since bytes that are given one by one may be a character together.
    return portable::checkedIRI(iri);
}

}  // namespace

AbsoluteIRI::AbsoluteIRI(const std::u16string& text) : text_(portable::checkedIRI(text)) {}

AbsoluteIRI::AbsoluteIRI(const AbsoluteIRI& base, const std::u16string& relative)
    : text_(joined(base.text_, relative)) {}

std::u16string AbsoluteIRI::getScheme() const { return std::u16string(portable::partsOf(text_).scheme); }

std::u16string AbsoluteIRI::getPath() const {
    const portable::IRIParts parts = portable::partsOf(text_);
    if (portable::isFileScheme(parts.scheme)) {
        return portable::pathOnThisHost(text_);
    }
    std::u16string path = portable::decoded(parts.authority) + portable::decoded(parts.path);
    // A root is written with its slash or without.
    return path.empty() && !text_.empty() ? u"/" : path;
}

}  // namespace foundation::storage::vfs
