// Reading files through streams, and comparing what they hold.

#include "../support/Streams.hpp"
#include "Tour.hpp"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace tour {

namespace {

void compareFiles(opc::FileSystemOps& files, const Copied& pair, Step& step) {
    const auto source = openInput(files, pair.source);
    const auto copy = openInput(files, pair.copy);
    const Comparison comparison = compareStreams(*source, *copy);
    step.count(1, comparison.equalBytes);
    // badbit: reading itself failed, which looks like an early end otherwise.
    step.check(!source->bad(), "reading failed: " + printable(pair.source));
    step.check(!copy->bad(), "reading failed: " + printable(pair.copy));
    step.check(comparison.equal, printable(pair.copy) + " differs from its source at byte " +
                                     std::to_string(comparison.equalBytes));
}

void comparePermissions(opc::FileSystemOps& files, const Copied& pair, Step& step) {
    constexpr unsigned kCopiedBits = 0777;  // set-uid, set-gid and sticky stay behind
    const auto expected = static_cast<opc::Perms::Perms_tag>(files.getPermissions(pair.source) & kCopiedBits);
    step.checkEqual("getPermissions(" + printable(pair.copy) + ")", files.getPermissions(pair.copy),
                    expected);
}

/// A link is copied as a link, whether or not anything is where it points to.
void compareLinks(opc::FileSystemOps& files, const Copied& pair, Step& step) {
    step.count(1);
    step.checkEqual("getLinkTarget(" + printable(pair.copy) + ")", files.getLinkTarget(pair.copy),
                    files.getLinkTarget(pair.source));
}

}  // namespace

void compareCopies(Tour& tour, Step& step) {
    for (std::size_t i = 0; i < tour.copied.size(); ++i) {
        step.progress(i, tour.copied.size());
        const Copied& pair = tour.copied[i];
        if (tour.files.isSymlink(pair.source)) {
            compareLinks(tour.files, pair, step);
        } else {
            compareFiles(tour.files, pair, step);
            comparePermissions(tour.files, pair, step);
        }
    }
}

void writeText(opc::FileSystemOps& files, const opc::ustring& path, const std::string& text) {
    const auto stream = files.createOutputStream(path, std::ios_base::binary);
    *stream << text
            << std::flush;  // flush: from then on the stream's state tells whether all of it was written
    if (!*stream) {
        throw std::runtime_error("writing failed: " + printable(path));
    }
}

std::string readText(opc::FileSystemOps& files, const opc::ustring& path) {
    const auto stream = openInput(files, path);
    return {std::istreambuf_iterator<char>(*stream), std::istreambuf_iterator<char>()};
}

std::vector<opc::ustring> relativeListing(opc::FileSystemOps& files, const opc::ustring& folder) {
    std::vector<opc::ustring> listing;
    files.getFiles(folder, listing, true);
    for (opc::ustring& path : listing) {
        path.erase(0, folder.size() + 1);
    }
    std::sort(listing.begin(), listing.end());
    return listing;
}

}  // namespace tour
