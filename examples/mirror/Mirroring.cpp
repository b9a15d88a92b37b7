#include "Mirroring.hpp"

#include "../support/Interruption.hpp"
#include "../support/Progress.hpp"
#include "FileCopy.hpp"
#include "Marks.hpp"

#include <exception>

namespace mirror {

namespace {

void markFolder(const Item& original, const Item& copy) {
    setTime(copy, original.files().getLastModifiedTime(original.path));
    copyPermissions(original, copy);
}

}  // namespace

/// A failure is one of this item.
template <typename Work>
void Mirroring::attempt(Work work) {
    try {
        work();
    } catch (const Interrupted&) {
        throw;
    } catch (const std::exception& failure) {
        tally_.fail(failure.what());
    }
}

bool Mirroring::run(bool mayRemove) {
    bool begun = false;
    try {
        begun = prepare();
        if (begun) {
            mirrorAll(mayRemove);
        }
    } catch (const std::exception& failure) {
        tally_.fail(failure.what());
    }
    return begun && !isInterrupted();
}

Listing Mirroring::listAll(const Place& place) {
    return list(place, [this](const std::string& reason) { tally_.fail(reason); });
}

Item Mirroring::copyOf(const opc::ustring& relative) const {
    return {to_, relative.empty() ? to_.root : to_.files.appendPath(to_.root, relative)};
}

bool Mirroring::prepare() {
    sources_ = listAll(from_);
    if (tally_.failures > 0 && sources_.empty()) {
        return false;
    }
    const std::uintmax_t before = tally_.failures;
    attempt([this] { to_.files.createFolders(to_.root); });
    return tally_.failures == before;
}

void Mirroring::mirrorAll(bool mayRemove) {
    openUp(copyOf({}));
    if (mayRemove && tally_.failures == 0) {
        removeOthers();
    }
    std::size_t done = 0;
    for (const auto& [relative, source] : sources_) {
        showProgress("mirroring", done++, sources_.size());
        attempt([this, &relative = relative, &source = source] { mirrorItem(relative, source); });
    }
    markFolders();
}

/// A folder does not give way to a file, nor a file to a folder.
bool Mirroring::isOther(const opc::ustring& relative, Kind kind) const {
    const auto source = sources_.find(relative);
    return source == sources_.end() || (source->second.kind == Kind::Folder) != (kind == Kind::Folder);
}

/// What a folder holds goes before the folder.
void Mirroring::removeOthers() {
    const Listing present = listAll(to_);
    for (const auto& [relative, item] : present) {
        if (item.kind == Kind::Folder) {
            openUp({to_, item.path});
        }
    }
    std::size_t done = 0;
    for (auto item = present.rbegin(); item != present.rend(); ++item) {
        showProgress("removing", done++, present.size());
        if (isOther(item->first, item->second.kind)) {
            attempt([&] {
                to_.files.remove(item->second.path);
                ++tally_.removed;
            });
        }
    }
}

void Mirroring::mirrorItem(const opc::ustring& relative, const Listed& source) {
    const Item original{from_, source.path};
    switch (source.kind) {
        case Kind::Folder:
            return mirrorFolder(original, copyOf(relative));
        case Kind::File:
            return mirrorFile(original, copyOf(relative));
        case Kind::Link:
            return mirrorLink(original, copyOf(relative));
        case Kind::Other:  // a pipe or a device: there is nothing in it that could be copied
            return tally_.skip(source.path, "neither a file nor a folder");
    }
}

/// A link there, which would lead out of the place, gives way.
void Mirroring::mirrorFolder(const Item& original, const Item& copy) {
    const std::optional<opc::ustring> native = copy.native();
    if (native && copy.nativeFiles().isSymlink(*native)) {
        copy.nativeFiles().remove(*native);
    }
    if (!copy.files().isFolder(copy.path)) {
        copy.files().createFolder(copy.path);
        if (areNative(original, copy)) {
            copyPermissions(original, copy);
        }
    }
    openUp(copy);
    ++tally_.folders;
    folders_.emplace_back(original, copy);
}

void Mirroring::mirrorFile(const Item& original, const Item& copy) {
    const std::uintmax_t length = lengthOf(original);
    if (isUpToDate(original, copy)) {
        copyPermissions(original, copy);
        ++tally_.unchanged;
    } else {
        copyFile(original, copy);
        ++tally_.copied;
    }
    ++tally_.files;
    tally_.bytes += length;
}

void Mirroring::mirrorLink(const Item& original, const Item& copy) {
    if (!areNative(original, copy)) {
        return tally_.skip(original.path, "a link");
    }
    if (isSameLink(original, copy)) {
        ++tally_.unchanged;
    } else {
        copyLink(original, copy);
        ++tally_.copied;
    }
    ++tally_.links;
}

/// When all is in them, since that changes their times and takes the right to write; a folder after those in
/// it.
void Mirroring::markFolders() {
    for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder) {
        stopIfInterrupted();
        attempt([&] { markFolder(folder->first, folder->second); });
    }
    attempt([&] { markFolder({from_, from_.root}, copyOf({})); });
}

}  // namespace mirror
