#pragma once

#include <pkgcore/platform/storage/Existence.hpp>
#include <pkgcore/platform/storage/File.hpp>
#include <pkgcore/platform/storage/FileOrFolder.hpp>
#include <pkgcore/platform/storage/Folder.hpp>
#include <pkgcore/platform/storage/StorageSystemReference.hpp>

#include "tests/support/scripted_platform/Answers.hpp"
#include "tests/support/scripted_platform/Show.hpp"

#include <boost/date_time/posix_time/ptime.hpp>

#include <ios>
#include <map>
#include <string>
#include <vector>

namespace foundation::storage::vfs {

/// A scripted storage system has a name, by which the calls on it can be told apart.
class StorageSystem {
public:
    std::string name;
};

}  // namespace foundation::storage::vfs

namespace scripted {

foundation::storage::vfs::StorageSystemReference storageSystem(const std::string& name);

/// A place in a storage system, in the log of calls: 'location'@name. The name is empty where a reference was
/// moved from.
Verbatim showPlace(const foundation::storage::vfs::File& file);
Verbatim showPlace(const foundation::storage::vfs::Folder& folder);

/// What a scripted listing shows.
struct StoredEntry {
    std::u16string location;
    bool isFolder;
};

StoredEntry storedFile(const std::u16string& location);
StoredEntry storedFolder(const std::u16string& location);

/// The part of a scripted platform that is below foundation::storage. Functions that give another form of a
/// text answer with the text in a tag: an IRI made from u"a" is u"iri(a)", a canonical one u"canonical(a)".
/// Without any word nothing exists, nothing fails, everything is writable, and folders are empty.
struct StorageScript {
    Answers<bool> hasIRIPrefix;
    Answers<std::u16string> makeIRI;
    Answers<std::u16string> makeCanonicalIRI;
    Answers<std::u16string> joinIRI;
    Answers<std::u16string> getScheme;
    Answers<std::u16string> getPath;
    Answers<std::u16string> getName;
    Answers<bool> hasParent;
    Answers<std::u16string> getParent;
    Answers<std::u16string> toAbsoluteIRI;
    Answers<std::u16string> fromAbsoluteIRI;

    Answers<foundation::storage::vfs::ExistenceType> exists;
    Answers<bool> isWritable;
    Answers<boost::posix_time::ptime> getLastModified;

    // One set of answers for files and folders.
    Answers<void> setWritable;
    Answers<void> setLastModified;
    Answers<void> remove;
    Answers<void> copy;
    Answers<void> move;
    Answers<void> createFolder;
    Answers<void> createFolderRecursive;

    // Listings, by the location of the folder; `next` answers by the location of the entry that comes.
    std::map<std::u16string, std::vector<StoredEntry>> entries;
    std::map<std::u16string, std::vector<StoredEntry>> entriesBelow;
    Answers<void> listAll;
    Answers<void> listAllRecursive;
    Answers<void> next;

    // Streams: the state that opening leaves the stream in, what an input stream reads, what was written.
    Answers<std::ios_base::iostate> openInput;
    Answers<std::ios_base::iostate> openOutput;
    std::string content;
    std::string written;
};

}  // namespace scripted
