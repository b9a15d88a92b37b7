#pragma once

#include <pkgcore/platform/Export.hpp>

#include <boost/date_time/posix_time/posix_time_duration.hpp>
#include <boost/date_time/posix_time/ptime.hpp>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// @file
/// What a store and the storage system tell each other; see Provider.hpp.
namespace foundation::storage::provider {

/// Where something is in a store: an authority, and the names from its root down, separated by "/". The names
/// are plain text; none of them is empty, "." or "..", none holds "/" or NUL. The root has no name.
///
/// A name that is no valid UTF-8 holds U+DC80..U+DCFF for such bytes; a path has these only where the store
/// says so in its Traits.
class PKGCORE_PLATFORM_API Path {
public:
    /// The root, of no authority.
    Path() = default;
    /// `text` in the form that the class describes; nothing is checked.
    explicit Path(std::u16string text, std::u16string authority = {})
        : text_(std::move(text)), authority_(std::move(authority)) {}

    /// "a/b"; empty for the root.
    const std::u16string& text() const noexcept { return text_; }

    /// In lower case; always empty for a store that is one tree.
    const std::u16string& authority() const noexcept { return authority_; }

    /// Whether it has no name.
    bool isRoot() const noexcept { return text_.empty(); }

    /// The last name; empty for the root.
    std::u16string_view name() const noexcept;

    /// What holds it; the root for the root.
    Path parent() const;

    /// The place of a name in this folder.
    Path child(std::u16string_view name) const;

    /// Whether it is `other` or lies below it, at any depth.
    bool isAtOrBelow(const Path& other) const noexcept;

    /// Code unit by code unit, the authority as well.
    /// @{
    friend bool operator==(const Path& one, const Path& other) noexcept {
        return one.text_ == other.text_ && one.authority_ == other.authority_;
    }
    friend bool operator!=(const Path& one, const Path& other) noexcept { return !(one == other); }
    /// @}

private:
    std::u16string text_;
    std::u16string authority_;
};

/// What a store holds; whatever is neither (a pipe, a device) has to pass for a file or not to be there.
enum class Kind : unsigned char { File, Folder };

/// Tells items apart, whatever stores and paths lead to them. Two stores may show one place, and what is
/// moved from one to the other must not be removed then.
struct Identity {
    std::uint64_t device = 0;     ///< what holds the container or, without one, the item
    std::uint64_t container = 0;  ///< the file on the device in which the whole store lies, or 0
    std::uint64_t number = 0;     ///< of the item in it, for as long as the item exists
};

/// Whether both are the same item.
/// @{
inline bool operator==(const Identity& one, const Identity& other) noexcept {
    return one.device == other.device && one.container == other.container && one.number == other.number;
}
inline bool operator!=(const Identity& one, const Identity& other) noexcept { return !(one == other); }
/// @}

/// What is at a path.
struct Item {
    Kind kind = Kind::File;  ///< of what a link leads to
    bool isWritable = true;  ///< whether the content may be replaced, or a folder's entries changed
    /// As in ListItem; everything else speaks of what the link leads to. One that leads nowhere is a file.
    bool isLink = false;
    /// A pipe, a socket or a device: a file whose bytes come and go, so that it may be opened, but is neither
    /// copied nor updated. Opening a pipe may wait for its other end.
    bool isDevice = false;
    /// UTC; not_a_date_time where the store keeps none.
    boost::posix_time::ptime lastModified{boost::posix_time::not_a_date_time};
    /// None where nothing but this store can lead to the item, or where it cannot tell.
    std::optional<Identity> identity{};
};

/// One entry of a folder.
struct ListItem {
    std::u16string name;     ///< plain; never empty, "." or ".."
    Kind kind = Kind::File;  ///< as in Item
    /// A second name of something that has its place elsewhere (a link): whoever walks a tree does not go
    /// into it, and removing removes the name alone.
    bool isLink = false;
    /// As in Item, but of the entry itself. Listings of the storage system leave it out.
    bool isDevice = false;
};

/// What a writer begins with.
enum class WriteMode : unsigned char {
    Create,     ///< an empty content, which replaces the old one when it is committed
    CreateNew,  ///< the same, but the first commit throws "exists" if anything is there by then
    Append      ///< the old content, or an empty one where nothing is; with Traits::appends alone
};

/// What a store does itself. The storage system puts together what is left false where that can be done from
/// the rest (see docs/providers.md), and refuses it as unsupported where it cannot. A flag that is true
/// promises that the verb is overridden, one that is false that it is never called.
struct Traits {
    bool readsAt = false;           ///< Reader::readAt
    bool writes = false;            ///< openWriter with WriteMode::Create and CreateNew
    bool appends = false;           ///< openWriter with WriteMode::Append
    bool createsFolders = false;    ///< createFolder
    bool removes = false;           ///< remove
    bool removesTrees = false;      ///< removeTree
    bool copiesFiles = false;       ///< copy of a file within the store
    bool copiesFolders = false;     ///< copy of a folder with everything in it
    bool movesFiles = false;        ///< move of a file, atomic
    bool movesFolders = false;      ///< move of a folder with everything in it, atomic
    bool setsWritable = false;      ///< setWritable
    bool setsLastModified = false;  ///< setLastModified

    /// Each authority is a tree of its own, whose root exists from the start; a mount without an authority
    /// serves all of them. Otherwise the store is one tree and knows no authorities.
    bool hasAuthorities = false;
    /// Names may hold bytes that are no UTF-8, as U+DC80..U+DCFF.
    bool hasByteNames = false;
    /// What a commit after the first one adds becomes visible piece by piece while it is written, not in one
    /// step.
    bool growsInPlace = false;

    /// In UTF-16 units; a longer name is refused as unsupported.
    std::size_t maxNameLength = std::numeric_limits<std::size_t>::max();
    /// In bytes. The store itself throws "too large" for what goes beyond it, when it is written or
    /// committed; the storage system does not begin to copy a file that is known to be larger.
    std::uint64_t maxFileSize = std::numeric_limits<std::uint64_t>::max();
    /// The smallest difference between two times that the store keeps; not_a_date_time where it keeps none.
    boost::posix_time::time_duration timeStep = boost::posix_time::microseconds(1);
};

}  // namespace foundation::storage::provider
