#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include <pkgcore/portable/storage/providers/memory/MemoryTree.hpp>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <utility>

namespace foundation::storage::provider {

namespace {

using portable::MemoryContentBuilder;
using portable::MemoryTree;
using portable::SharedContent;
using portable::SharedNode;
using SharedTree = std::shared_ptr<MemoryTree>;

class MemoryReader : public Reader {
public:
    explicit MemoryReader(SharedContent content) noexcept : content_(std::move(content)) {}

    std::size_t read(char* out, std::size_t count) override {
        const std::size_t taken = content_->read(position_, out, count);
        position_ += taken;
        return taken;
    }
    std::size_t readAt(std::uint64_t offset, char* out, std::size_t count) override {
        return content_->read(offset, out, count);
    }
    std::optional<std::uint64_t> size() const override { return content_->size(); }

private:
    SharedContent content_;
    std::uint64_t position_ = 0;
};

class MemoryWriter : public Writer {
public:
    MemoryWriter(SharedTree tree, Path file, MemoryContentBuilder builder, bool mayReplace)
        : tree_(std::move(tree)),
          file_(std::move(file)),
          builder_(std::move(builder)),
          mayReplace_(mayReplace) {}

    void write(const char* bytes, std::size_t count) override { builder_.add(bytes, count); }

    void commit() override {
        tree_->publish(file_, builder_.content(), mayReplace_);
        mayReplace_ = true;
    }

    void discard() noexcept override { builder_ = MemoryContentBuilder(); }

private:
    SharedTree tree_;
    Path file_;
    MemoryContentBuilder builder_;
    bool mayReplace_;
};

/// Goes on behind the last name that it has shown, so that it may be changed meanwhile.
class MemoryLister : public Lister {
public:
    MemoryLister(SharedTree tree, SharedNode folder) noexcept
        : tree_(std::move(tree)), folder_(std::move(folder)) {}

    std::vector<ListItem> next() override {
        std::vector<ListItem> page;
        page.resize(fill(page));
        return page;
    }

    std::size_t fill(std::vector<ListItem>& page) override {
        if (isDone_) {
            return 0;
        }
        const std::size_t count = tree_->listAfter(*folder_, last_ ? &*last_ : nullptr, page);
        isDone_ = count < MemoryTree::kPageSize;
        if (!isDone_) {
            last_ = page[count - 1].name;
        }
        return count;
    }

private:
    SharedTree tree_;
    SharedNode folder_;
    std::optional<std::u16string> last_;
    bool isDone_ = false;
};

class MemoryProvider : public Provider {
public:
    explicit MemoryProvider(MemoryTree::Clock clock)
        : tree_(std::make_shared<MemoryTree>(std::move(clock))) {}

    Traits traits() const override {
        Traits traits;
        traits.readsAt = true;
        traits.writes = true;
        traits.appends = true;
        traits.createsFolders = true;
        traits.removes = true;
        traits.removesTrees = true;
        traits.copiesFiles = true;
        traits.copiesFolders = true;
        traits.movesFiles = true;
        traits.movesFolders = true;
        traits.setsWritable = true;
        traits.setsLastModified = true;
        traits.hasAuthorities = true;
        traits.hasByteNames = false;
        return traits;
    }

    std::optional<Item> find(const Path& path) override { return tree_->find(path); }

    std::unique_ptr<Lister> list(const Path& folder) override {
        return std::make_unique<MemoryLister>(tree_, tree_->folder(folder));
    }

    std::unique_ptr<Reader> openReader(const Path& file) override {
        return std::make_unique<MemoryReader>(tree_->content(file));
    }

    std::unique_ptr<Writer> openWriter(const Path& file, WriteMode mode) override {
        tree_->checkPublishing(file);
        const bool continues = mode == WriteMode::Append && tree_->find(file);
        MemoryContentBuilder builder =
            continues ? MemoryContentBuilder(*tree_->content(file)) : MemoryContentBuilder();
        return std::make_unique<MemoryWriter>(tree_, file, std::move(builder), mode != WriteMode::CreateNew);
    }

    void createFolder(const Path& folder) override { tree_->createFolder(folder); }
    void remove(const Path& path) override { tree_->remove(path); }
    void removeTree(const Path& folder) override { tree_->removeTree(folder); }

    void copy(const Path& from, const Path& to, ReplacementPolicy policy) override {
        tree_->copy(from, to, policy);
    }
    void move(const Path& from, const Path& to, ReplacementPolicy policy) override {
        tree_->move(from, to, policy);
    }
    void setWritable(const Path& path, bool isWritable) override { tree_->setWritable(path, isWritable); }
    void setLastModified(const Path& path, const boost::posix_time::ptime& time) override {
        tree_->setLastModified(path, time);
    }

private:
    SharedTree tree_;
};

}  // namespace

std::shared_ptr<Provider> makeMemoryProvider() {
    return std::make_shared<MemoryProvider>(boost::posix_time::microsec_clock::universal_time);
}

}  // namespace foundation::storage::provider
