#pragma once

#include <pkgcore/portable/storage/Provider.hpp>
#include <pkgcore/portable/storage/ProviderParts.hpp>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

namespace test {

/// A store that passes everything on to another one but hides some of what that can do, so that the storage
/// system has to put it together from the rest.
class BareProvider : public foundation::storage::provider::Provider {
public:
    using Traits = foundation::storage::provider::Traits;
    using Path = foundation::storage::provider::Path;
    using Policy = foundation::storage::provider::ReplacementPolicy;

    /// `hide` sets flags of the traits to false, or the greatest size of files to a smaller one.
    BareProvider(std::shared_ptr<Provider> store, const std::function<void(Traits&)>& hide)
        : store_(std::move(store)), traits_(store_->traits()) {
        hide(traits_);
    }

    Traits traits() const override { return traits_; }
    std::optional<foundation::storage::provider::Item> find(const Path& path) override {
        return store_->find(path);
    }
    std::unique_ptr<foundation::storage::provider::Lister> list(const Path& folder) override {
        return store_->list(folder);
    }
    std::unique_ptr<foundation::storage::provider::Reader> openReader(const Path& file) override {
        auto reader = store_->openReader(file);
        return traits_.readsAt ? std::move(reader) : std::make_unique<ForwardReader>(std::move(reader));
    }
    std::unique_ptr<foundation::storage::provider::Writer> openWriter(
        const Path& file, foundation::storage::provider::WriteMode mode) override {
        const bool isAppending = mode == foundation::storage::provider::WriteMode::Append;
        if (!(isAppending ? traits_.appends : traits_.writes)) {
            return Provider::openWriter(file, mode);
        }
        const std::uint64_t size = isAppending && store_->find(file) ? *store_->openReader(file)->size() : 0;
        return std::make_unique<LimitedWriter>(store_->openWriter(file, mode), size, traits_.maxFileSize);
    }
    void createFolder(const Path& folder) override {
        traits_.createsFolders ? store_->createFolder(folder) : Provider::createFolder(folder);
    }
    void remove(const Path& path) override {
        traits_.removes ? store_->remove(path) : Provider::remove(path);
    }
    void removeTree(const Path& folder) override {
        traits_.removesTrees ? store_->removeTree(folder) : Provider::removeTree(folder);
    }
    void copy(const Path& from, const Path& to, Policy policy) override {
        does(from, traits_.copiesFiles, traits_.copiesFolders) ? store_->copy(from, to, policy)
                                                               : Provider::copy(from, to, policy);
    }
    void move(const Path& from, const Path& to, Policy policy) override {
        does(from, traits_.movesFiles, traits_.movesFolders) ? store_->move(from, to, policy)
                                                             : Provider::move(from, to, policy);
    }
    void setWritable(const Path& path, bool isWritable) override {
        traits_.setsWritable ? store_->setWritable(path, isWritable)
                             : Provider::setWritable(path, isWritable);
    }
    void setLastModified(const Path& path, const boost::posix_time::ptime& time) override {
        traits_.setsLastModified ? store_->setLastModified(path, time)
                                 : Provider::setLastModified(path, time);
    }
    void sync(const Path& path) override { store_->sync(path); }

private:
    /// Reads in order alone and does not know the size.
    class ForwardReader : public foundation::storage::provider::Reader {
    public:
        explicit ForwardReader(std::unique_ptr<foundation::storage::provider::Reader> reader)
            : reader_(std::move(reader)) {}
        std::size_t read(char* out, std::size_t count) override { return reader_->read(out, count); }
        std::optional<std::uint64_t> size() const override { return std::nullopt; }

    private:
        std::unique_ptr<foundation::storage::provider::Reader> reader_;
    };

    /// Takes no more than the traits say.
    class LimitedWriter : public foundation::storage::provider::Writer {
    public:
        LimitedWriter(std::unique_ptr<foundation::storage::provider::Writer> writer, std::uint64_t size,
                      std::uint64_t limit)
            : writer_(std::move(writer)), left_(limit - std::min(limit, size)) {}
        void write(const char* bytes, std::size_t count) override {
            foundation::storage::provider::require(count <= left_,
                                                   foundation::storage::vfs::ErrorCode::FileTooLarge);
            writer_->write(bytes, count);
            left_ -= count;
        }
        void commit() override { writer_->commit(); }
        void discard() noexcept override { writer_->discard(); }

    private:
        std::unique_ptr<foundation::storage::provider::Writer> writer_;
        std::uint64_t left_;
    };

    bool does(const Path& path, bool files, bool folders) {
        const auto found = store_->find(path);
        const bool isFolder = found && found->kind == foundation::storage::provider::Kind::Folder;
        return isFolder ? folders : files;
    }

    std::shared_ptr<Provider> store_;
    Traits traits_;
};

}  // namespace test
