#pragma once

#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/portable/storage/ProviderTypes.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryChildren.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryContent.hpp>

#include <functional>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>

namespace foundation::storage::portable {

/// A file or a folder in memory. Only a MemoryTree changes it.
struct MemoryNode {
    explicit MemoryNode(const provider::Item& properties) : item(properties) {}
    MemoryNode(const MemoryNode&) = delete;
    MemoryNode& operator=(const MemoryNode&) = delete;
    ~MemoryNode();

    SharedContent content;    ///< of a file
    MemoryChildren children;  ///< of a folder
    provider::Item item;
    /// While a tree is let go, the next one to go.
    SharedNode nextToGo;
};

/// The files and folders of a store in memory. Any thread may call any member at any time. Failures are
/// exceptions as Provider.hpp has them.
class MemoryTree {
public:
    using Clock = std::function<boost::posix_time::ptime()>;
    using Path = provider::Path;

    explicit MemoryTree(Clock clock);

    std::optional<provider::Item> find(const Path& path) const;

    /// The folder itself, for listAfter(); NotFound where none is.
    SharedNode folder(const Path& path) const;

    /// The next entries of a folder behind a name, in order; from the first one on where `after` is null.
    /// They come to the beginning of `page`; returns how many they are, fewer than kPageSize at the end
    /// alone.
    static constexpr std::size_t kPageSize = 1024;
    std::size_t listAfter(const MemoryNode& folder, const std::u16string* after,
                          std::vector<provider::ListItem>& page) const;

    SharedContent content(const Path& file) const;

    /// Throws what publish() would throw now.
    void checkPublishing(const Path& file) const;
    /// Makes or replaces the content of a file; AlreadyExists for one that is there unless `mayReplace`.
    void publish(const Path& file, SharedContent content, bool mayReplace);

    void createFolder(const Path& folder);
    void remove(const Path& path);
    void removeTree(const Path& folder);
    void copy(const Path& from, const Path& to, provider::ReplacementPolicy policy);
    void move(const Path& from, const Path& to, provider::ReplacementPolicy policy);
    void setWritable(const Path& path, bool isWritable);
    void setLastModified(const Path& path, const boost::posix_time::ptime& time);

private:
    using Lock = std::unique_lock<std::shared_mutex>;
    using SharedLock = std::shared_lock<std::shared_mutex>;

    const SharedNode& root(const std::u16string& authority) const;
    const SharedNode& look(const Path& path) const;
    SharedNode require(const Path& path) const;
    SharedNode parentForCreation(const Path& path) const;
    void makeRoot(const Path& path);
    void put(const Path& path, SharedNode node);
    SharedNode take(MemoryNode& parent, std::u16string_view name);
    SharedNode newNode(provider::Kind kind) const;
    void checkReplacing(const Path& to, provider::Kind kind, provider::ReplacementPolicy policy) const;
    SharedNode cloned(const MemoryNode& node) const;

    mutable std::shared_mutex mutex_;
    Clock clock_;
    SharedNode emptyRoot_;  ///< of an authority in which nothing was made so far
    MemoryChildren roots_;  ///< by their authorities
};

}  // namespace foundation::storage::portable
