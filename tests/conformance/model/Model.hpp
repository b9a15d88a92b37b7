#pragma once

#include "tests/conformance/model/Outcome.hpp"
#include "tests/conformance/model/Step.hpp"

#include <map>
#include <optional>
#include <string>

namespace test::model {

/// What every store has to do, written down as plainly as can be: a map from paths to what is there.
class Model {
public:
    Outcome apply(const Step& step);

    /// Stores may differ: whether a folder can be marked as not writable depends on the store and on the
    /// user.
    bool leavesOpen(const Step& step) const;

private:
    struct Item {
        bool isFolder = true;
        bool isWritable = true;
        std::string content;
        std::optional<boost::posix_time::ptime> time;  ///< where it was set and not changed since
    };
    using Path = std::u16string;
    using Error = std::optional<boost::system::errc::errc_t>;

    Outcome query(const Step& step) const;
    Error change(const Step& step);

    Error createFolders(const Path& path);
    Error write(const Step& step);
    Error copy(const Path& from, const Path& to, bool replaces);
    Error rename(const Path& from, const Path& to);
    Error remove(const Path& path, bool withContents);

    bool exists(const Path& path) const { return items_.count(path) != 0; }
    bool isFolder(const Path& path) const { return exists(path) && items_.at(path).isFolder; }
    bool isFile(const Path& path) const { return exists(path) && !items_.at(path).isFolder; }
    bool hasEntries(const Path& path) const;
    /// What stands against something new at the path.
    Error obstacle(const Path& path) const;
    Error transferObstacle(const Path& from, const Path& to, bool replaces) const;
    void erase(const Path& path);
    std::map<Path, Item> tree(const Path& path) const;
    void put(const std::map<Path, Item>& tree, const Path& from, const Path& to);
    std::string listing(const Path& path, bool recursive) const;
    std::string everything() const;

    // No name is another one with a character below "/" behind it, so that this is the order of listings.
    std::map<Path, Item> items_{{u"", {}}};
};

}  // namespace test::model
