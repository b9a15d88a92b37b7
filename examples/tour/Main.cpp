// A tour of what the library does, on a real folder of this machine:
//
//     tour FOLDER
//
// The folder is only read. Everything else happens in a scratch folder, which is removed at the end. The exit
// status is 0 if every check held, 1 if one did not, and 2 if the tour could not begin.
//
// Read on in the order of the steps below: List, Compare, Bytes, Streams, Items, Times,
// Folders, Words, Guards, Request.

#include "../support/HostPath.hpp"
#include "../support/Interruption.hpp"
#include "Tour.hpp"

#include <exception>
#include <iostream>

namespace {

using tour::Report;
using tour::Step;
using tour::Tour;

struct Chapter {
    const char* title;
    void (*work)(Tour& tour, Step& step);
};

constexpr Chapter kChapters[] = {
    {"list the folder", tour::listFolder},
    {"copy a part of it", tour::copyPart},
    {"read back and compare", tour::compareCopies},
    {"pass bytes on", tour::passBytesOn},
    {"copy between streams", tour::copyBetweenStreams},
    {"set times and permissions", tour::setTimesAndPermissions},
    {"tell the time", tour::tellTheTime},
    {"make and follow links", tour::makeAndFollowLinks},
    {"copy folders", tour::copyFolders},
    {"rename", tour::renameItems},
    {"remove", tour::removeItems},
    {"fail, in both styles", tour::provokeFailures},
    {"take paths apart", tour::takePathsApart},
    {"draw temporary names", tour::drawTempNames},
    {"guard temporary items", tour::guardTempItems},
    {"request files by IRI", tour::requestByIRI},
};

/// Throws if the folder cannot be listed, with the reason in words. Asking by doing leaves no moment in
/// between.
void requireFolder(opc::FileSystemOps& files, const opc::ustring& folder) {
    std::vector<opc::ustring> ignored;
    files.getFiles(folder, ignored, false);
}

void takeSteps(Tour& tour, Report& report) {
    for (const Chapter& chapter : kChapters) {
        report.run(chapter.title, [&](Step& step) { chapter.work(tour, step); });
    }
    report.run("remove the scratch folder", [&](Step& step) {
        step.count(tour::relativeListing(tour.files, tour.scratch).size());
        tour.files.removeAll(tour.scratch);
        step.checkEqual("exists(scratch folder)", tour.files.exists(tour.scratch), false);
    });
}

/// What lay in a private folder must not be readable for everybody in the temporary one.
void makePrivate(opc::FileSystemOps& files, const opc::ustring& folder) {
    files.setPermissions(folder,
                         static_cast<opc::Perms::Perms_tag>(opc::Perms::OwnerRead | opc::Perms::OwnerWrite |
                                                            opc::Perms::OwnerExecute));
}

/// True if every check held.
bool visit(const opc::ustring& given) {
    const opc::FileSystemOpsSelector selector;
    opc::FileSystemOps& files = selector.getForPath(given);
    const opc::ustring folder = files.normalizePath(given);
    requireFolder(files, folder);
    // Whatever happens from here on, the folder goes when the guard does. The last step removes it with a
    // word.
    const opc::util::TempdirGuard scratch({}, u"pkgcore-tour-");
    makePrivate(files, scratch.getDirectoryName());
    std::cout << "A tour of " << printable(folder) << ", with a scratch folder at "
              << printable(scratch.getDirectoryName()) << "\n\n";
    Report report;
    Tour tour{files, folder, scratch.getDirectoryName(),
              files.appendPath(scratch.getDirectoryName(), u"copies")};
    takeSteps(tour, report);
    return report.conclude();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 || argv[1][0] == '\0') {
        std::cerr << "usage: tour FOLDER\n";
        return 2;
    }
    handleSignals();
    try {
        return visit(pathFromHost(argv[1])) ? 0 : 1;
    } catch (const std::exception& failure) {
        std::cerr << "tour: " << failure.what() << "\n";
        return 2;
    }
}
