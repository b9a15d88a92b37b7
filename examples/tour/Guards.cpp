// Temporary files and folders that go with the scope they are made in.

#include "Tour.hpp"

namespace tour {

namespace {

/// What was guarded, for a look after the guards have ended.
struct Guarded {
    opc::ustring file;
    opc::ustring folder;
};

Guarded useTempItems(Tour& tour, Step& step) {
    opc::FileSystemOps& files = tour.files;
    const opc::util::TempfileGuard file(tour.scratch, u"draft-", u".txt");
    const opc::util::TempdirGuard folder(tour.scratch, u"work-");
    writeText(files, file.getFileName(), "a draft");
    writeText(files, files.appendPath(folder.getDirectoryName(), u"part"), "a part");
    step.checkEqual("text of the guarded file", readText(files, file.getFileName()), std::string("a draft"));
    step.checkEqual("isFolder(guarded folder)", files.isFolder(folder.getDirectoryName()), true);
    step.count(3);
    step.note("in scope: " + printable(files.getFilename(file.getFileName())) + " and " +
              printable(files.getFilename(folder.getDirectoryName())));
    return {file.getFileName(), folder.getDirectoryName()};
}

opc::ustring releaseTempFile(Tour& tour) {
    opc::util::TempfileGuard file(tour.scratch, u"result-", u".txt");
    writeText(tour.files, file.getFileName(), "a result");
    file.release();  // the work is done: from here on the file is to stay
    return file.getFileName();
}

}  // namespace

void guardTempItems(Tour& tour, Step& step) {
    const Guarded gone = useTempItems(tour, step);
    step.checkEqual("exists(file) behind the scope", tour.files.exists(gone.file), false);
    step.checkEqual("exists(folder) behind the scope", tour.files.exists(gone.folder), false);
    step.note("behind the scope: both are gone, the folder with all that it held");
    const opc::ustring kept = releaseTempFile(tour);
    step.checkEqual("text of the released file", readText(tour.files, kept), std::string("a result"));
    step.count(1);
    step.note("released, and kept: " + printable(tour.files.getFilename(kept)));
}

}  // namespace tour
