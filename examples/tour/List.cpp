// Listing a folder, and copying files out of it one by one.

#include "../support/Streams.hpp"
#include "Tour.hpp"

#include <algorithm>
#include <map>

namespace tour {

namespace {

constexpr std::size_t kMostFiles = 400;
constexpr std::uintmax_t kMostBytes = 64u << 20;
constexpr std::size_t kMostNamed = 3;

/// All of them, or kMostFiles that lie evenly among them: the same ones on every run.
std::vector<opc::ustring> choose(const std::vector<opc::ustring>& sorted) {
    const std::size_t count = std::min(sorted.size(), kMostFiles);
    std::vector<opc::ustring> chosen;
    for (std::size_t i = 0; i < count; ++i) {
        chosen.push_back(sorted[i * sorted.size() / count]);
    }
    return chosen;
}

/// The length of a file; 0 for one that cannot be opened, whose copy will tell why.
std::uintmax_t lengthOf(opc::FileSystemOps& files, const opc::ustring& path) {
    boost::system::error_code ec;
    const auto stream = files.createInputStream(path, std::ios_base::binary, ec);
    return stream ? ::lengthOf(*stream) : 0;
}

/// Copies what was chosen; remembers what was left out, by reason.
class PartCopy {
public:
    PartCopy(Tour& tour, Step& step) : tour_(tour), step_(step) {}

    void take(const opc::ustring& source) {
        const std::uintmax_t length = tour_.files.isSymlink(source) ? 0 : lengthOf(tour_.files, source);
        if (length > kMostBytes - bytes_) {
            leftOut_["beyond the limit of bytes"].push_back(source);
        } else if (copy(source)) {
            bytes_ += length;
            step_.count(1, length);
        }
    }

    void noteWhatWasLeftOut() const {
        for (const auto& [reason, paths] : leftOut_) {
            step_.note("left out, " + reason + ": " + std::to_string(paths.size()));
            for (std::size_t i = 0; i < std::min(paths.size(), kMostNamed); ++i) {
                step_.note("    " + printable(paths[i]));
            }
        }
    }

private:
    /// False if the source cannot be had, which is no fault of the copy.
    bool copy(const opc::ustring& source) {
        // appendPath drops the "/" that the rest begins with.
        const opc::ustring target = tour_.files.appendPath(tour_.copies, source.substr(tour_.folder.size()));
        tour_.files.createFolders(tour_.files.getParentPath(target));
        boost::system::error_code ec;
        tour_.files.copy(source, target, opc::Fail, ec);
        if (ec == boost::system::errc::permission_denied) {
            leftOut_["not readable"].push_back(source);
        } else if (ec == boost::system::errc::no_such_file_or_directory) {
            leftOut_["gone since they were listed"].push_back(source);
        } else {
            step_.check(!ec.failed(), "copy of " + printable(source) + ": " + describe(ec));
        }
        if (!ec.failed()) {
            tour_.copied.push_back({source, target});
        }
        return !ec.failed();
    }

    Tour& tour_;
    Step& step_;
    std::uintmax_t bytes_ = 0;
    std::map<std::string, std::vector<opc::ustring>> leftOut_;
};

}  // namespace

void listFolder(Tour& tour, Step& step) {
    try {
        tour.files.getFiles(tour.folder, tour.listed, true);
    } catch (const opc::Exception& failure) {
        // A folder further down that cannot be read ends nothing: the list holds all the others.
        step.note(std::string("not all of it: ") + failure.what());
    }
    std::sort(tour.listed.begin(), tour.listed.end());  // the disk's own order means nothing
    step.count(tour.listed.size());
}

void copyPart(Tour& tour, Step& step) {
    tour.files.createFolder(tour.copies);
    const std::vector<opc::ustring> chosen = choose(tour.listed);
    PartCopy part(tour, step);
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        step.progress(i, chosen.size());
        part.take(chosen[i]);
    }
    part.noteWhatWasLeftOut();
}

}  // namespace tour
