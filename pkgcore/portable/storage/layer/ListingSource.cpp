#include <pkgcore/portable/storage/layer/ListingSource.hpp>

#include <pkgcore/portable/storage/layer/NamePattern.hpp>

namespace foundation::storage::portable {

using provider::Kind;

ListingSource::ListingSource(Spot folder, vfs::StorageSystemReference storage, std::u16string pattern,
                             Depth depth)
    : storage_(std::move(storage)),
      pattern_(std::move(pattern)),
      depth_(depth),
      entry_(vfs::Folder(folder.iri(), storage_)),
      walk_(std::move(folder)) {}

vfs::ListEntry* ListingSource::next() {
    if (entersNext_) {
        entersNext_ = false;
        walk_.enterIfThere();
    }
    TreeWalk::Step step = walk_.next();
    for (; step != TreeWalk::Step::End; step = walk_.next()) {
        if (step == TreeWalk::Step::Left || walk_.item().isDevice) {
            continue;
        }
        const provider::ListItem& item = walk_.item();
        const bool isTree = item.kind == Kind::Folder && !item.isLink && depth_ == Depth::Tree;
        if (matches(item.name, pattern_)) {
            show();
            entersNext_ = isTree;
            return &entry_;
        }
        if (isTree) {
            walk_.enterIfThere();
        }
    }
    return nullptr;
}

void ListingSource::show() {
    vfs::CanonicalAbsoluteIRI iri = walk_.iri();
    vfs::File* const last = boost::get<vfs::File>(&entry_.getFileOrFolder());
    if (walk_.item().kind == Kind::File && last != nullptr) {
        last->setLocation(std::move(iri));  // without another reference to the storage system
    } else if (walk_.item().kind == Kind::File) {
        entry_.getFileOrFolder() = vfs::File(std::move(iri), storage_);
    } else {
        entry_.getFileOrFolder() = vfs::Folder(std::move(iri), storage_);
    }
}

}  // namespace foundation::storage::portable
