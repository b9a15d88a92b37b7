#include <pkgcore/portable/storage/layer/Spot.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/iri/IRIText.hpp>

namespace foundation::storage::portable {

using provider::Item;
using provider::Kind;
using provider::ReplacementPolicy;
using vfs::CanonicalAbsoluteIRI;
using vfs::ErrorCode;

namespace {

/// A store that throws a code beyond those that it may use has failed in a way that nobody can name.
ErrorCode knownCode(ErrorCode code) noexcept {
    return code <= ErrorCode::NotSupported ? code : ErrorCode::IOError;
}

}  // namespace

Spot Spot::parent() const { return Spot(store_, path_.parent(), iri_.getParent()); }

Spot Spot::child(const std::u16string& name) const { return Spot(store_, path_.child(name), childIRI(name)); }

CanonicalAbsoluteIRI Spot::childIRI(const std::u16string& name) const {
    const std::u16string& folder = iri_.toString();
    std::u16string text;
    text.reserve(folder.size() + 1 + name.size());
    text = folder;
    if (text.back() != u'/') {
        text += u'/';
    }
    appendPath(name, text);
    return CanonicalAbsoluteIRI(vfs::CheckedIRI{std::move(text)});
}

std::optional<Item> Spot::find() const {
    return located([this] { return store_->provider->find(path_); });
}

Item Spot::require(Kind kind) const {
    const std::optional<Item> found = find();
    if (!found || found->kind != kind) {
        fail(ErrorCode::NotFound);
    }
    return *found;
}

std::unique_ptr<provider::Lister> Spot::list() const {
    return located([this] { return store_->provider->list(path_); });
}

std::unique_ptr<provider::Reader> Spot::openReader() const {
    return located([this] { return store_->provider->openReader(path_); });
}

std::unique_ptr<provider::Writer> Spot::openWriter(provider::WriteMode mode) const {
    return located([this, mode] { return store_->provider->openWriter(path_, mode); });
}

void Spot::createFolder() const {
    located([this] { store_->provider->createFolder(path_); });
}

void Spot::remove() const {
    located([this] { store_->provider->remove(path_); });
}

void Spot::removeTree() const {
    located([this] { store_->provider->removeTree(path_); });
}

// What can go wrong at the source was looked at before, as a rule: the destination is what a failure is
// about.
void Spot::copyTo(const Spot& to, ReplacementPolicy policy) const {
    to.located([&] { store_->provider->copy(path_, to.path_, policy); });
}

void Spot::moveTo(const Spot& to, ReplacementPolicy policy) const {
    to.located([&] { store_->provider->move(path_, to.path_, policy); });
}

void Spot::setWritable(bool isWritable) const {
    located([this, isWritable] { store_->provider->setWritable(path_, isWritable); });
}

void Spot::setLastModified(const boost::posix_time::ptime& time) const {
    located([this, &time] { store_->provider->setLastModified(path_, time); });
}

void Spot::sync() const {
    located([this] { store_->provider->sync(path_); });
}

void Spot::fail(ErrorCode code) const { throw vfs::Exception(code, iri_); }

void Spot::rethrowLocated() const {
    try {
        throw;
    } catch (const vfs::Exception& failure) {
        const ErrorCode code = knownCode(failure.getErrorCode());
        if (code == failure.getErrorCode() && !failure.getLocation().toString().empty()) {
            throw;
        }
        throw vfs::Exception(code, failure.what(), iri_);
    }
}

}  // namespace foundation::storage::portable
