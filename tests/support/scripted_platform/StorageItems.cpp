#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/platform/storage/Existence.hpp>
#include <pkgcore/platform/storage/FileOrFolder.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

namespace foundation::storage::vfs {

using boost::posix_time::ptime;
using provider::ReplacementPolicy;
using scripted::Answers;
using scripted::Platform;
using scripted::showPlace;
using scripted::Verbatim;

namespace {

scripted::StorageScript& script() { return Platform::current().storage; }

/// A call of a file or a folder that gives nothing back.
template <typename Item, typename... Rest>
void carryOut(const char* name, Answers<void>& answers, const Item& item, const Rest&... rest) {
    Platform::current().record(name, showPlace(item), rest...);
    answers.next(item.getLocation().toString(), [] {});
}

/// File 'location'@name or Folder 'location'@name, and the location alone.
struct ShownEntry : boost::static_visitor<> {
    explicit ShownEntry(const FileOrFolder& entry) { boost::apply_visitor(*this, entry); }

    void operator()(const File& file) { note("File ", file); }
    void operator()(const Folder& folder) { note("Folder ", folder); }

    template <typename Item>
    void note(const char* kind, const Item& item) {
        shown.text = kind + showPlace(item).text;
        location = item.getLocation().toString();
    }

    Verbatim shown;
    std::u16string location;
};

}  // namespace

Exception::Exception(ErrorCode code, const AbsoluteIRI& location)
    : Exception(code, "words for code " + std::to_string(static_cast<unsigned>(code)), location) {}

ExistenceType exists(CanonicalAbsoluteIRI location, StorageSystemReference storage) {
    const File place(std::move(location), std::move(storage));
    Platform::current().record("vfs::exists", showPlace(place));
    return script().exists.next(place.getLocation().toString(), [] { return ExistenceType::Nothing; });
}

bool isWritable(const FileOrFolder& entry) {
    const ShownEntry item(entry);
    Platform::current().record("isWritable", item.shown);
    return script().isWritable.next(item.location, [] { return true; });
}

ptime getLastModified(const FileOrFolder& entry) {
    const ShownEntry item(entry);
    Platform::current().record("getLastModified", item.shown);
    return script().getLastModified.next(item.location,
                                         [] { return ptime(boost::posix_time::not_a_date_time); });
}

void File::setWritable(bool writable) const {
    carryOut("File::setWritable", script().setWritable, *this, writable);
}

void File::setLastModified(ptime time) const {
    carryOut("File::setLastModified", script().setLastModified, *this, time);
}

void File::removeFile() const { carryOut("removeFile", script().remove, *this); }

void File::copyFile(const File& destination, ReplacementPolicy policy) const {
    carryOut("copyFile", script().copy, *this, showPlace(destination), policy);
}

void File::moveFile(const File& destination, ReplacementPolicy policy) const {
    carryOut("moveFile", script().move, *this, showPlace(destination), policy);
}

void Folder::createFolder() const { carryOut("createFolder", script().createFolder, *this); }

void Folder::createFolderRecursive() const {
    carryOut("createFolderRecursive", script().createFolderRecursive, *this);
}

void Folder::setWritable(bool writable) const {
    carryOut("Folder::setWritable", script().setWritable, *this, writable);
}

void Folder::setLastModified(ptime time) const {
    carryOut("Folder::setLastModified", script().setLastModified, *this, time);
}

void Folder::removeFolder(FolderRemovalPolicy policy) const {
    carryOut("removeFolder", script().remove, *this, policy);
}

void Folder::copyFolder(const Folder& destination, ReplacementPolicy policy) const {
    carryOut("copyFolder", script().copy, *this, showPlace(destination), policy);
}

void Folder::moveFolder(const Folder& destination, ReplacementPolicy policy) const {
    carryOut("moveFolder", script().move, *this, showPlace(destination), policy);
}

}  // namespace foundation::storage::vfs
