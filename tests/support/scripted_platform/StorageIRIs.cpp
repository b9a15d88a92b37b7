#include <pkgcore/platform/storage/AbsoluteIRI.hpp>
#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/IRIPrefix.hpp>
#include <pkgcore/platform/storage/NativePaths.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

namespace foundation::storage::vfs {

using scripted::Answers;
using scripted::Platform;
using Text = std::u16string;

namespace {

Text tagged(const Text& tag, const Text& text) { return tag + u"(" + text + u")"; }

/// Records the call and answers it; without a script, the argument in a tag.
Text form(const char* name, Answers<Text>& answers, const Text& tag, const Text& text) {
    Platform::current().record(name, text);
    return answers.next(text, [&] { return tagged(tag, text); });
}

scripted::StorageScript& script() { return Platform::current().storage; }

Text joined(const AbsoluteIRI& base, const Text& relative) {
    Platform::current().record("AbsoluteIRI", base.toString(), relative);
    return script().joinIRI.next(relative,
                                 [&] { return tagged(u"join", base.toString() + u"+" + relative); });
}

}  // namespace

bool hasIRIPrefix(const Text& path) noexcept {
    Platform::current().record("hasIRIPrefix", path);
    return script().hasIRIPrefix.next(path, [] { return false; });
}

AbsoluteIRI::AbsoluteIRI(const Text& text) : text_(form("AbsoluteIRI", script().makeIRI, u"iri", text)) {}

AbsoluteIRI::AbsoluteIRI(const AbsoluteIRI& base, const Text& relative) : text_(joined(base, relative)) {}

Text AbsoluteIRI::getScheme() const { return form("getScheme", script().getScheme, u"scheme", text_); }

Text AbsoluteIRI::getPath() const { return form("getPath", script().getPath, u"path", text_); }

CanonicalAbsoluteIRI::CanonicalAbsoluteIRI(const Text& text)
    : AbsoluteIRI(CheckedIRI{form("CanonicalAbsoluteIRI", script().makeCanonicalIRI, u"canonical", text)}) {}

Text CanonicalAbsoluteIRI::getName() const { return form("getName", script().getName, u"name", toString()); }

bool CanonicalAbsoluteIRI::hasParent() const {
    Platform::current().record("hasParent", toString());
    return script().hasParent.next(toString(), [] { return true; });
}

CanonicalAbsoluteIRI CanonicalAbsoluteIRI::getParent() const {
    return CanonicalAbsoluteIRI(CheckedIRI{form("getParent", script().getParent, u"parent", toString())});
}

AbsoluteIRI toAbsoluteIRI(const Text& scheme, const Text& path) {
    Platform::current().record("toAbsoluteIRI", scheme, path);
    return AbsoluteIRI(CheckedIRI{
        script().toAbsoluteIRI.next(path, [&] { return tagged(u"fromPath", scheme + u"+" + path); })});
}

Text fromAbsoluteIRI(const AbsoluteIRI& iri) {
    return form("fromAbsoluteIRI", script().fromAbsoluteIRI, u"toPath", iri.toString());
}

}  // namespace foundation::storage::vfs
