#include "Mirroring.hpp"

#include "../support/Interruption.hpp"
#include "../support/Progress.hpp"
#include "FileCopy.hpp"

#include <exception>

namespace mirror {

/// A failure is one of this item.
template <typename Work>
void Mirroring::attempt(Work work) {
    try {
        work();
    } catch (const std::exception& failure) {
        tally_.fail(failure.what());
    }
}

bool Mirroring::run(bool mayRemove) {
    bool begun = false;
    attempt([&] {
        begun = prepare();
        if (begun) {
            mirrorAll(mayRemove);
        }
    });
    return begun && !isInterrupted();
}

bool Mirroring::prepare() {
    std::string reason;
    if (!listInto(sources_, from_, reason)) {
        tally_.fail(reason);
        if (sources_.empty()) {
            return false;
        }
    }
    const std::uintmax_t before = tally_.failures;
    attempt([this] { to_.files.createFolders(to_.root); });
    return tally_.failures == before;
}

void Mirroring::mirrorAll(bool mayRemove) {
    if (mayRemove && tally_.failures == 0) {
        removeOthers();
    }
    std::size_t done = 0;
    for (const auto& [relative, source] : sources_) {
        showProgress("mirroring", done++, sources_.size());
        attempt([this, &relative = relative, &source = source] { mirrorFile(relative, source); });
    }
}

void Mirroring::removeOthers() {
    Listing present;
    std::string reason;
    if (!listInto(present, to_, reason)) {
        tally_.fail(reason);
    }
    std::size_t done = 0;
    for (const auto& [relative, path] : present) {
        showProgress("removing", done++, present.size());
        if (sources_.count(relative) == 0) {
            attempt([this, &path = path] { removeOther(path); });
        }
    }
}

/// And the folders that held nothing else.
void Mirroring::removeOther(const opc::ustring& path) {
    to_.files.remove(path);
    ++tally_.removed;
    boost::system::error_code ec;
    opc::ustring folder = to_.files.getParentPath(path);
    while (!ec.failed() && folder != to_.root) {
        to_.files.remove(folder, ec);  // fails where something is left
        folder = to_.files.getParentPath(folder);
    }
}

void Mirroring::mirrorFile(const opc::ustring& relative, const opc::ustring& source) {
    if (!mayBeCopied(source)) {
        return;
    }
    const FileAt original{from_.files, source};
    const FileAt copy{to_.files, to_.files.appendPath(to_.root, relative)};
    const std::uintmax_t length = lengthOf(original);
    if (isUpToDate(original, copy)) {
        ++tally_.unchanged;
    } else {
        makeFolder(to_.files.getParentPath(copy.path));
        copyFile(original, copy);
        ++tally_.copied;
    }
    tally_.bytes += length;
}

/// Links are not followed; what else is no file (a pipe, a device) has no content to be copied.
bool Mirroring::mayBeCopied(const opc::ustring& source) {
    const bool isLink = from_.files.isSymlink(source);
    const bool isFile = !isLink && from_.files.isFile(source);
    if (!isFile) {
        tally_.skip(source, isLink ? "a link" : "no file");
    }
    return isFile;
}

/// The sources come in order, so that one folder after the other is filled.
void Mirroring::makeFolder(const opc::ustring& folder) {
    if (folder != lastFolder_) {
        to_.files.createFolders(folder);
        lastFolder_ = folder;
    }
}

}  // namespace mirror
