#include <pkgcore/testing/FaultProvider.hpp>

#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "tests/support/ManyThreads.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace foundation::storage::conformance {

namespace {

using provider::Path;
using provider::ReplacementPolicy;
using provider::WriteMode;
using vfs::ErrorCode;

const Path kFile(u"f");
const Path kFolder(u"d");

class FaultProviderTest : public testing::Test {
protected:
    FaultProviderTest() { write("0123456789"); }

    void write(const std::string& content) const {
        const auto writer = memory->openWriter(kFile, WriteMode::Create);
        writer->write(content.data(), content.size());
        writer->commit();
    }
    std::string content() const {
        char bytes[100];
        return {bytes, memory->openReader(kFile)->read(bytes, sizeof bytes)};
    }

    /// The code of the failure with which a call ends, or none.
    template <typename Call>
    static std::optional<ErrorCode> failure(Call call) {
        try {
            call();
        } catch (const vfs::Exception& failure) {
            return failure.getErrorCode();
        }
        return std::nullopt;
    }
    std::optional<ErrorCode> findFailure() const {
        return failure([this] { store->find(kFile); });
    }

    const std::shared_ptr<provider::Provider> memory = provider::makeMemoryProvider();
    const std::shared_ptr<FaultProvider> store = std::make_shared<FaultProvider>(memory);
};

TEST_F(FaultProviderTest, WithoutAFaultItIsTheOtherStore) {
    EXPECT_EQ(store->traits().movesFolders, memory->traits().movesFolders);
    store->createFolder(kFolder);
    store->copy(kFile, Path(u"d/g"), ReplacementPolicy::FailIfExists);
    EXPECT_EQ(store->list(kFolder)->next().size(), 1U);
    store->setWritable(kFile, false);
    EXPECT_FALSE(store->find(kFile)->isWritable);
    store->move(kFile, Path(u"h"), ReplacementPolicy::FailIfExists);
    store->removeTree(kFolder);
    store->remove(Path(u"h"));
    EXPECT_TRUE(memory->list(Path())->next().empty());
    EXPECT_EQ(store->struck(), 0U);
}

TEST_F(FaultProviderTest, EveryVerbIsCountedAsWhatItIs) {
    char byte = 0;
    const auto reader = store->openReader(kFile);
    reader->read(&byte, 1);
    reader->readAt(0, &byte, 1);
    const auto writer = store->openWriter(Path(u"g"), WriteMode::Create);
    writer->write(&byte, 1);
    writer->commit();
    store->find(kFile);
    store->list(Path())->next();
    store->createFolder(kFolder);
    store->removeTree(kFolder);
    store->copy(kFile, Path(u"h"), ReplacementPolicy::FailIfExists);
    store->move(kFile, Path(u"h"), ReplacementPolicy::ReplaceExisting);
    store->setWritable(Path(u"h"), true);
    store->setLastModified(Path(u"h"), boost::posix_time::ptime(boost::gregorian::date(2024, 2, 29)));
    store->sync(Path(u"h"));
    store->remove(Path(u"h"));
    for (std::size_t verb = 0; verb < kVerbCount; ++verb) {
        EXPECT_EQ(store->calls(static_cast<Verb>(verb)), 1U) << verb;
    }
    EXPECT_EQ(store->calls(), kVerbCount);
    store->clear();
    EXPECT_EQ(store->calls(), 0U);
}

TEST_F(FaultProviderTest, OneCallFailsWithTheCode) {
    store->fail({2, std::nullopt, Effect::FailBefore, ErrorCode::NoSpace});
    EXPECT_EQ(findFailure(), std::nullopt);
    EXPECT_EQ(findFailure(), ErrorCode::NoSpace);
    EXPECT_EQ(findFailure(), std::nullopt);
    EXPECT_EQ(store->struck(), 1U);
}

TEST_F(FaultProviderTest, ALastingFaultEndsWhenItIsCleared) {
    Fault fault;
    fault.number = 2;
    fault.lasts = true;
    store->fail(fault);
    EXPECT_EQ(findFailure(), std::nullopt);
    EXPECT_EQ(findFailure(), ErrorCode::IOError);
    EXPECT_EQ(findFailure(), ErrorCode::IOError);
    EXPECT_EQ(store->struck(), 2U);
    store->clear();
    EXPECT_EQ(findFailure(), std::nullopt);
}

TEST_F(FaultProviderTest, OnlyTheVerbThatIsMeantCounts) {
    store->fail({1, Verb::Remove, Effect::FailBefore});
    EXPECT_EQ(findFailure(), std::nullopt);
    EXPECT_EQ(failure([&] { store->remove(kFile); }), ErrorCode::IOError);
    EXPECT_EQ(content(), "0123456789");
}

TEST_F(FaultProviderTest, AFailureBeforeLeavesAllAndOneAfterLeavesTheWorkDone) {
    store->fail({1, Verb::CreateFolder, Effect::FailBefore});
    EXPECT_EQ(failure([&] { store->createFolder(kFolder); }), ErrorCode::IOError);
    EXPECT_FALSE(memory->find(kFolder));
    store->fail({1, Verb::CreateFolder, Effect::FailAfter});
    EXPECT_EQ(failure([&] { store->createFolder(kFolder); }), ErrorCode::IOError);
    EXPECT_TRUE(memory->find(kFolder));
}

TEST_F(FaultProviderTest, ACommitMayFailHavingPublished) {
    for (const Effect effect : {Effect::FailBefore, Effect::FailAfter}) {
        const auto writer = store->openWriter(kFile, WriteMode::Create);
        store->fail({1, Verb::Commit, effect});
        writer->write("new", 3);
        EXPECT_EQ(failure([&] { writer->commit(); }), ErrorCode::IOError);
        EXPECT_EQ(content(), effect == Effect::FailAfter ? "new" : "0123456789");
    }
}

TEST_F(FaultProviderTest, ATruncatedReadIsTheEnd) {
    const auto reader = store->openReader(kFile);
    store->fail({2, std::nullopt, Effect::Truncate});
    char bytes[10];
    EXPECT_EQ(reader->read(bytes, 2), 2U);
    EXPECT_EQ(reader->read(bytes, 6), 3U);
    EXPECT_EQ(reader->read(bytes, 6), 0U);
    EXPECT_EQ(reader->readAt(4, bytes, 6), 1U);
    EXPECT_EQ(reader->readAt(7, bytes, 6), 0U);
    EXPECT_EQ(reader->size(), std::optional<std::uint64_t>(10));
    EXPECT_EQ(store->openReader(kFile)->read(bytes, 10), 10U);
}

TEST_F(FaultProviderTest, WhatIsOpenOutlivesTheStoreAndStillFails) {
    auto own = std::make_unique<FaultProvider>(memory);
    const auto lister = own->list(Path());
    own->fail({2, Verb::ListNext});
    own.reset();
    EXPECT_EQ(lister->next().size(), 1U);
    EXPECT_EQ(failure([&] { lister->next(); }), ErrorCode::IOError);
}

TEST_F(FaultProviderTest, TheCallbackComesFirstAndMayThrow) {
    store->onCall([this](Verb verb) {
        EXPECT_EQ(verb, Verb::OpenReader);
        write("meanwhile");
    });
    char bytes[10];
    const auto reader = store->openReader(kFile);
    store->onCall({});
    EXPECT_EQ(reader->read(bytes, 10), 9U);
    store->onCall([](Verb) { throw std::runtime_error("of another kind"); });
    EXPECT_THROW(store->find(kFile), std::runtime_error);
}

TEST_F(FaultProviderTest, ManyThreadsHaveOneFault) {
    store->fail({40, Verb::Find});
    std::atomic<int> failed{0};
    test::inManyThreads([&] {
        for (int i = 0; i < 100; ++i) {
            failed += findFailure() ? 1 : 0;
        }
    });
    EXPECT_EQ(failed, 1);
    EXPECT_EQ(store->calls(), 800U);
}

}  // namespace

}  // namespace foundation::storage::conformance
