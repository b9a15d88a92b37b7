#include "FileCopy.hpp"

#include "../support/Interruption.hpp"
#include "../support/Printable.hpp"
#include "../support/Streams.hpp"
#include "Marks.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

#include <stdexcept>

namespace mirror {

namespace {

/// A file that is not complete yet: it goes unless it is published.
class Draft {
public:
    explicit Draft(const Item& target)
        : target_(target),
          item_{target.place, target.files().getTempName(target.files().getParentPath(target.path))} {}
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;
    ~Draft() {
        if (!published_) {
            boost::system::error_code ignored;
            item_.files().remove(item_.path, ignored);
        }
    }

    const Item& item() const { return item_; }

    /// By native paths where there are some: in storage, a link there counts as what it leads to.
    void publish() {
        if (const std::optional<opc::ustring> native = target_.native()) {
            target_.nativeFiles().rename(*item_.native(), *native);
        } else {
            target_.files().rename(item_.path, target_.path);
        }
        published_ = true;
    }

private:
    const Item& target_;
    Item item_;
    bool published_ = false;
};

/// Reads on until a signal asks the program to stop.
class InterruptibleInput : public opc::StdIStreamAdaptor {
public:
    using StdIStreamAdaptor::StdIStreamAdaptor;

    std::size_t read(std::uint8_t* buffer, std::size_t count) override {
        stopIfInterrupted();
        return StdIStreamAdaptor::read(buffer, count);
    }
};

/// A link is none, whatever it leads to.
bool isFile(const Item& item) {
    const std::optional<opc::ustring> native = item.native();
    return native ? item.nativeFiles().isFile(*native) : item.files().isFile(item.path);
}

bool haveSameContent(std::istream& original, std::istream& copy) {
    const bool equal = compareStreams(original, copy).equal;
    if (original.bad() || copy.bad()) {
        throw std::runtime_error("reading failed");
    }
    return equal;
}

void copyContent(const Item& original, const Item& copy) {
    const auto source = openInput(original.files(), original.path);
    const auto sink = copy.files().createOutputStream(copy.path, std::ios_base::binary);
    // Before the content, so that no one sees it who must not; in a store there is no file before it.
    if (areNative(original, copy) && &copy.files() == &copy.nativeFiles()) {
        copyPermissions(original, copy);
    }
    InterruptibleInput input(*source);
    opc::StreamHelper::copyStreamToStream(input, *sink);
    sink->flush();  // from here on the streams' states tell whether all was copied
    if (source->bad()) {
        throw std::runtime_error("reading failed: " + printable(original.path));
    }
    if (!sink->good()) {
        throw std::runtime_error("writing failed: " + printable(copy.path));
    }
}

}  // namespace

std::uintmax_t lengthOf(const Item& file) { return ::lengthOf(*openInput(file.files(), file.path)); }

bool isUpToDate(const Item& original, const Item& copy) {
    if (!isFile(copy)) {
        return false;
    }
    const auto source = openInput(original.files(), original.path);
    const auto found = openInput(copy.files(), copy.path);
    if (::lengthOf(*source) != ::lengthOf(*found)) {
        return false;
    }
    const boost::posix_time::ptime time = original.files().getLastModifiedTime(original.path);
    if (copy.files().getLastModifiedTime(copy.path) == time) {
        return true;
    }
    const bool same = haveSameContent(*source, *found);
    if (same) {
        setTime(copy, time);  // so that the next look is a short one
    }
    return same;
}

void copyFile(const Item& original, const Item& copy) {
    // The time before the content: what changes meanwhile is found by the next run.
    const boost::posix_time::ptime time = original.files().getLastModifiedTime(original.path);
    Draft draft(copy);
    copyContent(original, draft.item());
    setTime(draft.item(), time);
    copyPermissions(original, draft.item());
    draft.publish();
}

bool isSameLink(const Item& original, const Item& copy) {
    opc::FileSystemOps& files = copy.nativeFiles();
    const opc::ustring link = *copy.native();
    return files.isSymlink(link) && files.getLinkTarget(link) == files.getLinkTarget(*original.native());
}

void copyLink(const Item& original, const Item& copy) {
    Draft draft(copy);
    copy.nativeFiles().copy(*original.native(), *draft.item().native(), opc::Ignore);
    draft.publish();
}

}  // namespace mirror
