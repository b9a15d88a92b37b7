// Whole folders: copying them in the three modes, renaming, removing.

#include "Tour.hpp"

#include <algorithm>

namespace tour {

namespace {

namespace errc = boost::system::errc;

using Listing = std::vector<opc::ustring>;

void checkListing(const std::string& what, const Listing& found, const Listing& expected, Step& step) {
    const auto [has, lacks] = std::mismatch(found.begin(), found.end(), expected.begin(), expected.end());
    step.check(found == expected, what + ": " + (has == found.end() ? "an end" : printable(*has)) +
                                      " instead of " +
                                      (lacks == expected.end() ? "an end" : printable(*lacks)));
}

/// Puts a file into `folder` whose name is free in `elsewhere` too, and returns that name.
opc::ustring addFile(opc::FileSystemOps& files, const opc::ustring& folder, const opc::ustring& elsewhere) {
    opc::ustring name = files.getFilename(files.getTempName(elsewhere));
    writeText(files, files.appendPath(folder, name), "in the way");
    return name;
}

/// Fail: a destination that exists is an error.
void copyToNewFolder(Tour& tour, const opc::ustring& to, const Listing& expected, Step& step) {
    tour.files.copy(tour.copies, to, opc::Fail);
    checkListing("copy with Fail", relativeListing(tour.files, to), expected, step);
    step.checkFails("a second copy with Fail", errc::file_exists,
                    [&](auto& ec) { tour.files.copy(tour.copies, to, opc::Fail, ec); });
}

/// Replace: a destination that exists is removed first.
void replaceFolder(Tour& tour, const opc::ustring& to, const Listing& expected, Step& step) {
    addFile(tour.files, to, tour.copies);
    tour.files.copy(tour.copies, to, opc::Replace);
    checkListing("copy with Replace", relativeListing(tour.files, to), expected, step);
}

/// Ignore: the copy goes into the folder that is there.
void mergeFolders(Tour& tour, const opc::ustring& to, Listing expected, Step& step) {
    tour.files.createFolder(to);
    expected.push_back(addFile(tour.files, to, tour.copies));
    std::sort(expected.begin(), expected.end());
    tour.files.copy(tour.copies, to, opc::Ignore);
    checkListing("copy with Ignore", relativeListing(tour.files, to), expected, step);
}

}  // namespace

void copyFolders(Tour& tour, Step& step) {
    const Listing expected = relativeListing(tour.files, tour.copies);
    const opc::ustring again = tour.files.appendPath(tour.scratch, u"again");
    copyToNewFolder(tour, again, expected, step);
    replaceFolder(tour, again, expected, step);
    mergeFolders(tour, tour.files.appendPath(tour.scratch, u"merged"), expected, step);
    step.count(3 * expected.size());
}

void renameItems(Tour& tour, Step& step) {
    opc::FileSystemOps& files = tour.files;
    const opc::ustring merged = files.appendPath(tour.scratch, u"merged");
    const opc::ustring renamed = files.appendPath(tour.scratch, u"renamed");
    const Listing expected = relativeListing(files, merged);
    files.rename(merged, renamed);
    step.checkEqual("exists(old name)", files.exists(merged), false);
    checkListing("the renamed folder", relativeListing(files, renamed), expected, step);

    const opc::ustring draft = files.appendPath(tour.scratch, u"draft.txt");
    const opc::ustring published = files.appendPath(tour.scratch, u"final.txt");
    writeText(files, published, "old");
    writeText(files, draft, "new");
    files.rename(draft, published);  // a file at the destination is replaced, in one step
    step.checkEqual("text of the replaced file", readText(files, published), std::string("new"));
    step.count(2);
}

void removeItems(Tour& tour, Step& step) {
    opc::FileSystemOps& files = tour.files;
    const opc::ustring renamed = files.appendPath(tour.scratch, u"renamed");
    // The folder holds a file at least: the one that was there before the copy was merged into it.
    step.checkFails("remove of a folder with contents", errc::directory_not_empty,
                    [&](auto& ec) { files.remove(renamed, ec); });
    const Listing held = relativeListing(files, renamed);
    files.removeAll(renamed);
    step.checkEqual("exists(removed folder)", files.exists(renamed), false);
    step.count(held.size());
}

}  // namespace tour
