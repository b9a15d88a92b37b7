#include "Listing.hpp"

#include "../support/Interruption.hpp"
#include "../support/Printable.hpp"

#include <pkgcore/platform/except/Exception.hpp>
#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Folder.hpp>
#include <pkgcore/platform/storage/Listing.hpp>

#include <utility>
#include <vector>

namespace mirror {

namespace {

namespace vfs = foundation::storage::vfs;

/// A folder to be listed, by all of its names.
struct Open {
    vfs::CanonicalAbsoluteIRI location;
    opc::ustring path;
    opc::ustring relative;
};

Kind kindOf(const Item& item, const vfs::ListEntry& entry) {
    const std::optional<opc::ustring> native = item.native();
    if (!native) {
        return boost::get<vfs::Folder>(&entry.getFileOrFolder()) != nullptr ? Kind::Folder : Kind::File;
    }
    opc::FileSystemOps& files = item.nativeFiles();
    if (files.isFile(*native)) {
        return Kind::File;
    }
    return files.isFolder(*native) ? Kind::Folder : files.isSymlink(*native) ? Kind::Link : Kind::Other;
}

/// Storage lists folders too, which getFiles() leaves out: by their IRIs, which native paths have as well.
class Walk {
public:
    Walk(const Place& place, const OnFailure& onFailure) : place_(place), onFailure_(onFailure) {}

    Listing run() {
        open_.push_back({vfs::CanonicalAbsoluteIRI(iriOf(place_)), place_.root, opc::ustring()});
        while (!open_.empty()) {
            const Open folder = std::move(open_.back());
            open_.pop_back();
            tryFolder(folder);
        }
        return std::move(found_);
    }

private:
    void tryFolder(const Open& folder) {
        try {
            listFolder(folder);
        } catch (const foundation::core::except::Exception& failure) {
            onFailure_("cannot be listed: " + printable(folder.path) + ": " + failure.what());
        }
    }

    void listFolder(const Open& folder) {
        vfs::Listing listing = vfs::Folder(folder.location, place_.stores.system).listAll(opc::ustring());
        for (const vfs::ListEntry& entry : listing) {
            stopIfInterrupted();
            add(folder, entry);
        }
    }

    void add(const Open& folder, const vfs::ListEntry& entry) {
        const opc::ustring name = entry.getLocation().getName();
        const opc::ustring relative = folder.relative.empty() ? name : folder.relative + u'/' + name;
        const opc::ustring path = place_.files.appendPath(folder.path, name);
        const Kind kind = kindOf(Item{place_, path}, entry);
        found_.emplace(relative, Listed{path, kind});
        if (kind == Kind::Folder) {
            open_.push_back({entry.getLocation(), path, relative});
        }
    }

    const Place& place_;
    const OnFailure& onFailure_;
    std::vector<Open> open_;
    Listing found_;
};

}  // namespace

Listing list(const Place& place, const OnFailure& onFailure) { return Walk(place, onFailure).run(); }

}  // namespace mirror
