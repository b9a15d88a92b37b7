#pragma once

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/Provider.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

/// @file
/// A store that fails when it is told to, to see what a program, or another store, makes of that:
///
///     const auto store = std::make_shared<FaultProvider>(makeMyProvider());
///     store->fail({3, Verb::Write, Effect::FailAfter, ErrorCode::NoSpace});
///
/// lets the third write from now on go through and throw all the same. Needs nothing but the library.
namespace foundation::storage::conformance {

/// What a FaultProvider counts: the verbs of providers, and of what they open. Asking for traits or for the
/// size of a reader, discarding and destroying never fail and do not count.
enum class Verb : unsigned char {
    Find,             ///< Provider::find
    List,             ///< Provider::list
    ListNext,         ///< Lister::next and Lister::fill
    OpenReader,       ///< Provider::openReader
    Read,             ///< Reader::read
    ReadAt,           ///< Reader::readAt
    OpenWriter,       ///< Provider::openWriter
    Write,            ///< Writer::write
    Commit,           ///< Writer::commit
    CreateFolder,     ///< Provider::createFolder
    Remove,           ///< Provider::remove
    RemoveTree,       ///< Provider::removeTree
    Copy,             ///< Provider::copy
    Move,             ///< Provider::move
    SetWritable,      ///< Provider::setWritable
    SetLastModified,  ///< Provider::setLastModified
    Sync,             ///< Provider::sync
};
/// How many verbs there are, for tables of them.
inline constexpr std::size_t kVerbCount = static_cast<std::size_t>(Verb::Sync) + 1;

/// What becomes of a call that a fault strikes.
enum class Effect : unsigned char {
    FailBefore,  ///< throws; the store is not asked
    FailAfter,   ///< the store does it and it throws then, as where an answer is lost
    Truncate  ///< half of what was read is given, and the reader has its end there; other verbs do not care
};

/// Which call is to fail, and how. Without more said, the first one of all, before it reaches the store.
struct Fault {
    std::size_t number = 1;              ///< which call, from 1
    std::optional<Verb> verb;            ///< which calls are counted for that: of one verb, or all of them
    Effect effect = Effect::FailBefore;  ///< what becomes of it
    vfs::ErrorCode code = vfs::ErrorCode::IOError;  ///< of the exception that it throws
    bool lasts = false;                             ///< all that are counted after it have the effect as well
};

/// Counts calls and decides which of them fail. Serves any number of threads.
class FaultPlan {
public:
    /// What FaultProvider::onCall takes.
    using Callback = std::function<void(Verb)>;

    /// As the members of FaultProvider of these names.
    /// @{
    void fail(const Fault& fault) {
        const Lock lock(mutex_);
        fault_ = fault;
        counted_ = struck_ = 0;
    }

    void clear() {
        const Lock lock(mutex_);
        fault_.reset();
        struck_ = 0;
        calls_.fill(0);
    }

    void onCall(Callback callback) {
        const Lock lock(mutex_);
        callback_ = std::move(callback);
    }

    std::size_t calls(Verb verb) const {
        const Lock lock(mutex_);
        return calls_[static_cast<std::size_t>(verb)];
    }

    std::size_t calls() const {
        const Lock lock(mutex_);
        std::size_t sum = 0;
        for (const std::size_t count : calls_) sum += count;
        return sum;
    }

    std::size_t struck() const {
        const Lock lock(mutex_);
        return struck_;
    }
    /// @}

    /// Counts a call, and gives the fault that it has.
    std::optional<Fault> next(Verb verb) {
        Callback callback;
        std::optional<Fault> fault;
        {
            const Lock lock(mutex_);
            ++calls_[static_cast<std::size_t>(verb)];
            callback = callback_;
            fault = strikes(verb) ? fault_ : std::nullopt;
        }
        if (callback) {
            callback(verb);
        }
        return fault;
    }

    /// Makes a call as its fault wants it.
    template <typename Call>
    static auto carryOut(const std::optional<Fault>& fault, const Call& call) -> decltype(call()) {
        if (!fault || fault->effect == Effect::Truncate) {
            return call();
        }
        if (fault->effect == Effect::FailAfter) {
            call();
        }
        throw vfs::Exception(fault->code, "A fault was asked for");
    }

    /// Counts a call and makes it, as its fault wants it.
    template <typename Call>
    auto run(Verb verb, const Call& call) -> decltype(call()) {
        return carryOut(next(verb), call);
    }

private:
    using Lock = std::lock_guard<std::mutex>;

    bool strikes(Verb verb) {
        if (!fault_ || (fault_->verb && *fault_->verb != verb)) {
            return false;
        }
        ++counted_;
        const bool strikes = counted_ == fault_->number || (fault_->lasts && counted_ > fault_->number);
        struck_ += strikes ? 1U : 0U;
        return strikes;
    }

    mutable std::mutex mutex_;
    std::optional<Fault> fault_;
    Callback callback_;
    std::size_t counted_ = 0;
    std::size_t struck_ = 0;
    std::array<std::size_t, kVerbCount> calls_{};
};

/// Passes everything on to another store, with the same traits, but fails where it is told to.
class FaultProvider : public provider::Provider {
    using Path = provider::Path;
    using Policy = provider::ReplacementPolicy;

public:
    /// In front of `store`, which it keeps.
    explicit FaultProvider(std::shared_ptr<Provider> store) : store_(std::move(store)) {}

    /// Counts from here, instead of for the fault that there was. Holds for what is open already, too.
    void fail(const Fault& fault) { plan_->fail(fault); }

    /// No fault any more, and all counts are 0.
    void clear() { plan_->clear(); }

    /// Has this called before every call, by the thread that makes it and with nothing locked: to wait, to
    /// change something meanwhile, or to throw something else. An empty one ends that.
    void onCall(FaultPlan::Callback callback) { plan_->onCall(std::move(callback)); }

    /// How many calls there were, those with a fault included.
    /// @{
    std::size_t calls() const { return plan_->calls(); }
    std::size_t calls(Verb verb) const { return plan_->calls(verb); }
    /// @}

    /// How many calls the present fault has struck.
    std::size_t struck() const { return plan_->struck(); }

    provider::Traits traits() const override { return store_->traits(); }

    std::optional<provider::Item> find(const Path& path) override {
        return plan_->run(Verb::Find, [&] { return store_->find(path); });
    }
    std::unique_ptr<provider::Lister> list(const Path& folder) override {
        return std::make_unique<FaultLister>(plan_->run(Verb::List, [&] { return store_->list(folder); }),
                                             plan_);
    }
    std::unique_ptr<provider::Reader> openReader(const Path& file) override {
        return std::make_unique<FaultReader>(
            plan_->run(Verb::OpenReader, [&] { return store_->openReader(file); }), plan_);
    }
    std::unique_ptr<provider::Writer> openWriter(const Path& file, provider::WriteMode mode) override {
        return std::make_unique<FaultWriter>(
            plan_->run(Verb::OpenWriter, [&] { return store_->openWriter(file, mode); }), plan_);
    }
    void createFolder(const Path& folder) override {
        plan_->run(Verb::CreateFolder, [&] { store_->createFolder(folder); });
    }
    void remove(const Path& path) override {
        plan_->run(Verb::Remove, [&] { store_->remove(path); });
    }
    void removeTree(const Path& folder) override {
        plan_->run(Verb::RemoveTree, [&] { store_->removeTree(folder); });
    }
    void copy(const Path& from, const Path& to, Policy policy) override {
        plan_->run(Verb::Copy, [&] { store_->copy(from, to, policy); });
    }
    void move(const Path& from, const Path& to, Policy policy) override {
        plan_->run(Verb::Move, [&] { store_->move(from, to, policy); });
    }
    void setWritable(const Path& path, bool isWritable) override {
        plan_->run(Verb::SetWritable, [&] { store_->setWritable(path, isWritable); });
    }
    void setLastModified(const Path& path, const boost::posix_time::ptime& time) override {
        plan_->run(Verb::SetLastModified, [&] { store_->setLastModified(path, time); });
    }
    void sync(const Path& path) override {
        plan_->run(Verb::Sync, [&] { store_->sync(path); });
    }

private:
    using SharedPlan = std::shared_ptr<FaultPlan>;

    class FaultLister : public provider::Lister {
    public:
        FaultLister(std::unique_ptr<Lister> lister, SharedPlan plan)
            : lister_(std::move(lister)), plan_(std::move(plan)) {}

        std::vector<provider::ListItem> next() override {
            return plan_->run(Verb::ListNext, [this] { return lister_->next(); });
        }
        std::size_t fill(std::vector<provider::ListItem>& page) override {
            return plan_->run(Verb::ListNext, [&] { return lister_->fill(page); });
        }

    private:
        std::unique_ptr<Lister> lister_;
        SharedPlan plan_;
    };

    class FaultReader : public provider::Reader {
    public:
        FaultReader(std::unique_ptr<Reader> reader, SharedPlan plan)
            : reader_(std::move(reader)), plan_(std::move(plan)) {}

        std::size_t read(char* out, std::size_t count) override {
            const std::size_t taken =
                readFrom(position_, Verb::Read, [&] { return reader_->read(out, count); });
            position_ += taken;
            return taken;
        }
        std::size_t readAt(std::uint64_t offset, char* out, std::size_t count) override {
            return readFrom(offset, Verb::ReadAt, [&] { return reader_->readAt(offset, out, count); });
        }
        std::optional<std::uint64_t> size() const override { return reader_->size(); }

    private:
        template <typename Call>
        std::size_t readFrom(std::uint64_t offset, Verb verb, const Call& call) {
            const std::optional<Fault> fault = plan_->next(verb);
            const std::size_t taken = FaultPlan::carryOut(fault, call);
            if (fault && fault->effect == Effect::Truncate) {
                end_ = std::min(end_, offset + taken / 2);
            }
            return static_cast<std::size_t>(std::min<std::uint64_t>(taken, end_ - std::min(end_, offset)));
        }

        std::unique_ptr<Reader> reader_;
        SharedPlan plan_;
        std::uint64_t position_ = 0;
        std::uint64_t end_ = std::numeric_limits<std::uint64_t>::max();
    };

    class FaultWriter : public provider::Writer {
    public:
        FaultWriter(std::unique_ptr<Writer> writer, SharedPlan plan)
            : writer_(std::move(writer)), plan_(std::move(plan)) {}

        void write(const char* bytes, std::size_t count) override {
            plan_->run(Verb::Write, [&] { writer_->write(bytes, count); });
        }
        void commit() override {
            plan_->run(Verb::Commit, [this] { writer_->commit(); });
        }
        void discard() noexcept override { writer_->discard(); }

    private:
        std::unique_ptr<Writer> writer_;
        SharedPlan plan_;
    };

    std::shared_ptr<Provider> store_;
    SharedPlan plan_ = std::make_shared<FaultPlan>();
};

}  // namespace foundation::storage::conformance
