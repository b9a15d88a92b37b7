#include "FileCopy.hpp"

#include "../support/Printable.hpp"
#include "../support/Streams.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

#include <stdexcept>
#include <utility>

namespace mirror {

namespace {

/// A file that is not complete yet: it goes unless it is published.
class Draft {
public:
    explicit Draft(const FileAt& target)
        : target_(target), path_(target.files.getTempName(target.files.getParentPath(target.path))) {}
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;
    ~Draft() {
        if (!published_) {
            boost::system::error_code ignored;
            target_.files.remove(path_, ignored);
        }
    }

    const opc::ustring& path() const { return path_; }

    void publish() {
        target_.files.rename(path_, target_.path);
        published_ = true;
    }

private:
    const FileAt& target_;
    opc::ustring path_;
    bool published_ = false;
};

/// A store that keeps no times, or coarser ones, is no failure: what tells then is the content.
void setTime(opc::FileSystemOps& files, const opc::ustring& path, const boost::posix_time::ptime& time) {
    boost::system::error_code ignored;
    files.setLastModifiedTime(path, time, ignored);
}

bool haveSameContent(std::istream& original, std::istream& copy) {
    const bool equal = compareStreams(original, copy).equal;
    if (original.bad() || copy.bad()) {
        throw std::runtime_error("reading failed");
    }
    return equal;
}

void copyContent(const FileAt& original, opc::FileSystemOps& files, const opc::ustring& path) {
    const auto source = openInput(original.files, original.path);
    const auto sink = files.createOutputStream(path, std::ios_base::binary);
    opc::StreamHelper::copyStreamToStream(*source, *sink);
    sink->flush();  // from here on the streams' states tell whether all was copied
    if (source->bad()) {
        throw std::runtime_error("reading failed: " + printable(original.path));
    }
    if (!sink->good()) {
        throw std::runtime_error("writing failed: " + printable(path));
    }
}

}  // namespace

std::uintmax_t lengthOf(const FileAt& file) { return ::lengthOf(*openInput(file.files, file.path)); }

bool isUpToDate(const FileAt& original, const FileAt& copy) {
    if (!copy.files.isFile(copy.path)) {
        return false;
    }
    const auto source = openInput(original.files, original.path);
    const auto found = openInput(copy.files, copy.path);
    if (::lengthOf(*source) != ::lengthOf(*found)) {
        return false;
    }
    const boost::posix_time::ptime time = original.files.getLastModifiedTime(original.path);
    if (copy.files.getLastModifiedTime(copy.path) == time) {
        return true;
    }
    const bool same = haveSameContent(*source, *found);
    if (same) {
        setTime(copy.files, copy.path, time);  // so that the next look is a short one
    }
    return same;
}

void copyFile(const FileAt& original, const FileAt& copy) {
    // The time before the content: what changes meanwhile is found by the next run.
    const boost::posix_time::ptime time = original.files.getLastModifiedTime(original.path);
    Draft draft(copy);
    copyContent(original, copy.files, draft.path());
    setTime(copy.files, draft.path(), time);
    draft.publish();
}

}  // namespace mirror
