#pragma once

#include <pkgcore/portable/storage/ProviderTypes.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::sqlite {

class Connection;
class Query;

/// A file or a folder in its folder.
struct Entry {
    std::int64_t parent = 0;
    std::string name;     ///< as stored
    std::int64_t id = 0;  ///< stays the same; what the entries in a folder call their parent
    provider::Kind kind = provider::Kind::File;
    bool isWritable = true;
    std::int64_t modified = 0;  ///< microseconds since 1970, UTC
    std::int64_t size = 0;      ///< of a file
    std::int64_t content = 0;   ///< of a file that is not empty

    bool isFolder() const noexcept { return kind == provider::Kind::Folder; }
};

/// The tree of names, within a transaction. Whatever is read is compared with its seal: "damaged" otherwise.
class Entries {
public:
    explicit Entries(Connection& connection) noexcept : connection_(connection) {}

    std::optional<Entry> find(std::int64_t folder, std::string_view name);

    /// From a row with the columns of Sql::FindEntry.
    Entry entryFrom(const Query& row, std::int64_t folder, std::string_view name) const;

    /// What is at a path; nothing for a path through a file.
    std::optional<Entry> find(const provider::Path& path);

    /// The same; "not found" for nothing.
    Entry require(const provider::Path& path);
    Entry requireFolder(const provider::Path& path);

    /// The folder around something that is to be made there. "Not found" if it is missing, "exists" for a
    /// file in its place or above, and for the root; "access denied" if it takes no entries.
    Entry folderForCreation(const provider::Path& path);

    /// The folder around something that is there; "access denied" if it gives up no entries.
    void requireGivesUp(const provider::Path& path);

    /// "Access denied" if a folder at or below this one, or it, does not give up its entries.
    void requireRemovable(const Entry& folder);

    /// In the place of what has the same name.
    void put(const Entry& entry);
    void erase(const Entry& entry);

    bool isEmpty(const Entry& folder);

    /// The next entries behind a name in order, as many as said.
    std::vector<Entry> listAfter(std::int64_t folder, std::string_view name, std::int64_t count);

    void makeRoot();

private:
    bool isBelowFile(const provider::Path& path);
    std::int64_t sealOf(const Entry& entry) const;
    template <typename Row>
    void readRow(const Row& row, Entry& entry) const;

    Connection& connection_;
};

/// Microseconds since 1970.
std::int64_t timeOfNow();

}  // namespace foundation::storage::sqlite
