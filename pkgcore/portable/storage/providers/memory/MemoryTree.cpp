#include <pkgcore/portable/storage/providers/memory/MemoryTree.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/i18n/AsciiRun.hpp>

#include <algorithm>
#include <string_view>
#include <utility>

namespace foundation::storage::portable {

using provider::Item;
using provider::Kind;
using provider::ListItem;
using provider::ReplacementPolicy;
using vfs::ErrorCode;

namespace {

const SharedNode kNothing;

[[noreturn]] void fail(ErrorCode code) { throw vfs::Exception(code, vfs::AbsoluteIRI()); }

/// The first name of a path, which goes on behind it.
std::u16string_view takeName(std::u16string_view& path) {
    const std::size_t end = fl::i18n::portable::findUnit(path.data(), path.size(), u'/');
    const std::u16string_view name = path.substr(0, end);
    path.remove_prefix(std::min(end + 1, path.size()));
    return name;
}

bool isFolder(const SharedNode& node) noexcept { return node && node->item.kind == Kind::Folder; }

/// A folder that is not writable takes no entries and gives none up.
void requireWritable(const MemoryNode& folder) {
    if (!folder.item.isWritable) {
        fail(ErrorCode::AccessDenied);
    }
}

/// Nothing of a tree is removed unless all of it can be.
void requireRemovable(const SharedNode& tree) {
    std::vector<const MemoryNode*> rest{tree.get()};
    while (!rest.empty()) {
        const MemoryNode* const node = rest.back();
        rest.pop_back();
        if (!node->children.empty()) {
            requireWritable(*node);
        }
        for (const auto& child : node->children) rest.push_back(child.second.get());
    }
}

/// Puts the children of a node that are nobody else's in front of a chain. Somebody who still lists a folder
/// lets it go later.
void moveChildren(MemoryNode& node, SharedNode& chain) noexcept {
    while (!node.children.empty()) {
        SharedNode child = node.children.takeAny();
        if (child.use_count() == 1) {
            child->nextToGo = std::move(chain);
            chain = std::move(child);
        }
    }
}

}  // namespace

// One by one, since a tree may be deeper than the stack, and without taking memory.
MemoryNode::~MemoryNode() {
    SharedNode chain;
    moveChildren(*this, chain);
    while (chain) {
        const SharedNode node = std::move(chain);
        chain = std::move(node->nextToGo);
        moveChildren(*node, chain);
    }
}

MemoryTree::MemoryTree(Clock clock) : clock_(std::move(clock)), emptyRoot_(newNode(Kind::Folder)) {}

SharedNode MemoryTree::newNode(Kind kind) const {
    Item item;
    item.kind = kind;
    item.lastModified = clock_();
    return std::make_shared<MemoryNode>(item);
}

const SharedNode& MemoryTree::root(const std::u16string& authority) const {
    const SharedNode* const found = roots_.find(authority);
    return found == nullptr ? emptyRoot_ : *found;
}

/// What is at a path, or null. Stays valid until the tree is changed.
const SharedNode& MemoryTree::look(const Path& path) const {
    const SharedNode* node = &root(path.authority());
    std::u16string_view rest = path.text();
    while (!rest.empty()) {
        node = (*node)->children.find(takeName(rest));
        if (node == nullptr) {
            return kNothing;
        }
    }
    return *node;
}

SharedNode MemoryTree::require(const Path& path) const {
    SharedNode node = look(path);
    if (!node) {
        fail(ErrorCode::NotFound);
    }
    return node;
}

/// The folder that something new is made in; a file in its place, or above it, is in the way.
SharedNode MemoryTree::parentForCreation(const Path& path) const {
    if (path.isRoot()) {
        fail(ErrorCode::AlreadyExists);
    }
    SharedNode node = root(path.authority());
    const Path parent = path.parent();
    std::u16string_view rest = parent.text();
    while (!rest.empty()) {
        const SharedNode* const child = node->children.find(takeName(rest));
        if (child == nullptr) {
            fail(isFolder(node) ? ErrorCode::NotFound : ErrorCode::AlreadyExists);
        }
        node = *child;
    }
    if (!isFolder(node)) {
        fail(ErrorCode::AlreadyExists);
    }
    requireWritable(*node);
    return node;
}

/// Gives an authority a root of its own, before anything in it is changed.
void MemoryTree::makeRoot(const Path& path) {
    if (roots_.find(path.authority()) == nullptr) {
        roots_.put(path.authority(), newNode(Kind::Folder));
    }
}

/// Into its folder, in the place of what is there.
void MemoryTree::put(const Path& path, SharedNode node) {
    makeRoot(path);
    const SharedNode parent = look(path.parent());
    parent->children.put(path.name(), std::move(node));
    parent->item.lastModified = clock_();
}

/// Out of its folder. Takes no memory, so that it can follow what may fail.
SharedNode MemoryTree::take(MemoryNode& parent, std::u16string_view name) {
    SharedNode node = parent.children.take(name);
    parent.item.lastModified = clock_();
    return node;
}

std::optional<Item> MemoryTree::find(const Path& path) const {
    const SharedLock lock(mutex_);
    const SharedNode& node = look(path);
    return node ? std::optional<Item>(node->item) : std::nullopt;
}

SharedNode MemoryTree::folder(const Path& path) const {
    const SharedLock lock(mutex_);
    SharedNode node = look(path);
    if (!isFolder(node)) {
        fail(ErrorCode::NotFound);
    }
    return node;
}

std::size_t MemoryTree::listAfter(const MemoryNode& folder, const std::u16string* after,
                                  std::vector<ListItem>& page) const {
    const SharedLock lock(mutex_);
    const MemoryChildren& children = folder.children;
    if (children.size() <= kPageSize) {
        children.preload();
    }
    page.resize(std::max(page.size(), std::min(children.size(), kPageSize)));
    std::size_t count = 0;
    auto entry = after == nullptr ? children.begin() : children.behind(*after);
    for (const auto end = children.end(); entry != end && count < kPageSize; ++entry) {
        ListItem& item = page[count++];
        item.name = textOf(entry->first);
        item.kind = entry->second->item.kind;
        item.isLink = false;
        item.isDevice = false;
    }
    return count;
}

SharedContent MemoryTree::content(const Path& file) const {
    const SharedLock lock(mutex_);
    const SharedNode node = require(file);
    if (isFolder(node)) {
        fail(ErrorCode::NotFound);
    }
    return node->content;
}

void MemoryTree::checkPublishing(const Path& file) const {
    const SharedLock lock(mutex_);
    const SharedNode node = look(file);
    if (isFolder(node)) {
        fail(ErrorCode::AlreadyExists);
    }
    if (!node) {
        parentForCreation(file);
    }
}

void MemoryTree::publish(const Path& file, SharedContent content, bool mayReplace) {
    const Lock lock(mutex_);
    SharedNode node = look(file);
    if (node && (isFolder(node) || !mayReplace)) {
        fail(ErrorCode::AlreadyExists);
    }
    if (!node) {
        parentForCreation(file);
        node = newNode(Kind::File);
        put(file, node);
    }
    node->content.swap(content);
    node->item.lastModified = clock_();
}

void MemoryTree::createFolder(const Path& folder) {
    const Lock lock(mutex_);
    if (look(folder)) {
        fail(ErrorCode::AlreadyExists);
    }
    parentForCreation(folder);
    put(folder, newNode(Kind::Folder));
}

void MemoryTree::remove(const Path& path) {
    SharedNode gone;
    const Lock lock(mutex_);
    if (!require(path)->children.empty()) {
        fail(ErrorCode::FolderNotEmpty);
    }
    const SharedNode parent = look(path.parent());
    requireWritable(*parent);
    gone = take(*parent, path.name());
}

// What is removed is taken apart after the lock is given back.
void MemoryTree::removeTree(const Path& folder) {
    SharedNode gone;
    const Lock lock(mutex_);
    requireRemovable(require(folder));
    const SharedNode parent = look(folder.parent());
    requireWritable(*parent);
    gone = take(*parent, folder.name());
}

void MemoryTree::checkReplacing(const Path& to, Kind kind, ReplacementPolicy policy) const {
    parentForCreation(to);
    const SharedNode old = look(to);
    if (!old) {
        return;
    }
    if (policy == ReplacementPolicy::FailIfExists || old->item.kind != kind) {
        fail(ErrorCode::AlreadyExists);
    }
    requireRemovable(old);
}

/// The whole tree, with the time of now; contents are shared.
SharedNode MemoryTree::cloned(const MemoryNode& node) const {
    const auto copyOf = [this](const MemoryNode& original) {
        SharedNode copy = newNode(original.item.kind);
        copy->item.isWritable = original.item.isWritable;
        copy->content = original.content;
        return copy;
    };
    SharedNode result = copyOf(node);
    std::vector<std::pair<const MemoryNode*, MemoryNode*>> rest{{&node, result.get()}};
    while (!rest.empty()) {
        const auto [original, copy] = rest.back();
        rest.pop_back();
        for (const auto& [name, child] : original->children) {
            SharedNode added = copyOf(*child);
            rest.emplace_back(child.get(), added.get());
            copy->children.put(textOf(name), std::move(added));
        }
    }
    return result;
}

void MemoryTree::copy(const Path& from, const Path& to, ReplacementPolicy policy) {
    SharedNode old;
    const Lock lock(mutex_);
    const SharedNode source = require(from);
    checkReplacing(to, source->item.kind, policy);
    old = look(to);
    put(to, cloned(*source));
}

void MemoryTree::move(const Path& from, const Path& to, ReplacementPolicy policy) {
    SharedNode old;
    const Lock lock(mutex_);
    const SharedNode source = require(from);
    const SharedNode parent = look(from.parent());
    requireWritable(*parent);
    checkReplacing(to, source->item.kind, policy);
    old = look(to);
    put(to, source);
    take(*parent, from.name());
}

void MemoryTree::setWritable(const Path& path, bool isWritable) {
    const Lock lock(mutex_);
    makeRoot(path);
    require(path)->item.isWritable = isWritable;
}

void MemoryTree::setLastModified(const Path& path, const boost::posix_time::ptime& time) {
    const Lock lock(mutex_);
    makeRoot(path);
    require(path)->item.lastModified = time;
}

}  // namespace foundation::storage::portable
