#pragma once

#include <pkgcore/testing/conformance/Needs.hpp>

#include <algorithm>

namespace foundation::storage::conformance {

/// A verb that Traits deny throws "unsupported" and nothing else. One that they promise does not throw, where
/// there is something to try it on.
#define PKGCORE_EXPECT_VERB(isThere, canTry, ...)          \
    if (!(isThere)) {                                      \
        PKGCORE_EXPECT_FAILURE(NotSupported, __VA_ARGS__); \
    } else if (canTry) {                                   \
        EXPECT_NO_THROW(__VA_ARGS__);                      \
    }

TEST_P(ProviderConformance, TraitsAreTheSameAtEveryCall) {
    EXPECT_EQ(store().traits().writes, traits().writes);
    EXPECT_EQ(store().traits().hasAuthorities, traits().hasAuthorities);
}

TEST_P(ProviderConformance, TraitsTellWhichVerbsThereAre) {
    using provider::WriteMode;
    const provider::Traits has = traits();
    const boost::posix_time::ptime time(boost::gregorian::date(2001, 2, 3));
    PKGCORE_EXPECT_VERB(has.createsFolders, true, store().createFolder(at(u"d")));
    PKGCORE_EXPECT_VERB(has.writes, true, store().openWriter(at(u"f"), WriteMode::Create)->commit());
    PKGCORE_EXPECT_VERB(has.writes, true, store().openWriter(at(u"g"), WriteMode::CreateNew)->commit());
    PKGCORE_EXPECT_VERB(has.appends, true, store().openWriter(at(u"h"), WriteMode::Append)->commit());
    PKGCORE_EXPECT_VERB(has.copiesFiles, has.writes, store().copy(at(u"f"), at(u"f2"), kFail));
    PKGCORE_EXPECT_VERB(has.movesFiles, has.writes, store().move(at(u"f"), at(u"f3"), kFail));
    PKGCORE_EXPECT_VERB(has.setsWritable, has.writes, store().setWritable(at(u"g"), false));
    PKGCORE_EXPECT_VERB(has.setsLastModified, has.writes, store().setLastModified(at(u"g"), time));
    PKGCORE_EXPECT_VERB(has.removes, has.writes, store().remove(at(u"g")));
    PKGCORE_EXPECT_VERB(has.copiesFolders, has.createsFolders, store().copy(at(u"d"), at(u"d2"), kFail));
    PKGCORE_EXPECT_VERB(has.movesFolders, has.createsFolders, store().move(at(u"d"), at(u"d3"), kFail));
    const std::u16string left = has.movesFolders ? u"d3" : u"d";
    PKGCORE_EXPECT_VERB(has.removesTrees, has.createsFolders, store().removeTree(at(left)));
}

TEST_P(ProviderConformance, ReadersReadAtAnOffset) {
    PKGCORE_NEEDS(Need::ReadingAt);
    for (const auto& [path, content] : filesToRead()) {
        const std::unique_ptr<provider::Reader> reader = store().openReader(at(path));
        const std::size_t size = content.size();
        std::string bytes(8, '\0');
        std::string inOrder(2, '\0');
        inOrder.resize(reader->read(inOrder.data(), 2));
        for (const std::size_t offset :
             {std::size_t{0}, size / 2, size - std::min<std::size_t>(size, 3), size}) {
            bytes.resize(8);
            bytes.resize(reader->readAt(offset, bytes.data(), 8));
            EXPECT_EQ(bytes, content.substr(offset, 8));
        }
        EXPECT_EQ(reader->readAt(1'000'000'000'000, bytes.data(), 1), 0U);
        inOrder.resize(4);
        inOrder.resize(std::min<std::size_t>(2, size) +
                       reader->read(inOrder.data() + std::min<std::size_t>(2, size), 2));
        EXPECT_EQ(inOrder, content.substr(0, 4)) << "reading in order goes on where it was";
        EXPECT_EQ(reader->size().value_or(size), size);
    }
}

TEST_P(ProviderConformance, ANewFileIsMadeOnce) {
    PKGCORE_NEEDS(Need::Writing);
    using provider::WriteMode;
    const auto first = store().openWriter(at(u"f"), WriteMode::CreateNew);
    const auto second = store().openWriter(at(u"f"), WriteMode::CreateNew);
    first->write("first", 5);
    second->write("second", 6);
    first->commit();
    PKGCORE_EXPECT_FAILURE(AlreadyExists, second->commit());
    EXPECT_EQ(read(u"f"), "first");
    first->write(" time", 5);
    first->commit();
    EXPECT_EQ(read(u"f"), "first time");
}

TEST_P(ProviderConformance, AWriterThatIsGivenUpLeavesNothing) {
    PKGCORE_NEEDS(Need::Writing);
    using provider::WriteMode;
    {
        const auto dropped = store().openWriter(at(u"f"), WriteMode::Create);
        dropped->write("text", 4);
        const auto discarded = store().openWriter(at(u"g"), WriteMode::Create);
        discarded->write("text", 4);
        discarded->discard();
    }
    EXPECT_EQ(list(u""), Names{});
}

TEST_P(ProviderConformance, WhatIsOpenOutlivesTheHandles) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders);
    ASSERT_TRUE(write(u"f", "text"));
    Ground ground = GetParam().makeGround();
    const std::shared_ptr<void> keeper = std::move(ground.keeper);
    const auto writer = ground.store->openWriter(ground.path.child(u"f"), provider::WriteMode::Create);
    const auto lister = ground.store->list(ground.path);
    ground = this->ground();
    writer->write("text", 4);
    EXPECT_NO_THROW(writer->commit());
    EXPECT_NO_THROW(lister->next());
}

TEST_P(ProviderConformance, NamesAreTakenUpToTheirLimit) {
    PKGCORE_NEEDS(Need::Folders);
    const std::size_t limit = std::min<std::size_t>(traits().maxNameLength, 10'000);
    const std::u16string longest(limit, u'x');
    folder(longest).createFolder();
    EXPECT_TRUE(isFolder(longest));
    if (limit == traits().maxNameLength) {
        PKGCORE_EXPECT_FAILURE(NotSupported, folder(longest + u"x").createFolder());
    }
    EXPECT_EQ(list(u""), Names{longest + u"/"});
}

TEST_P(ProviderConformance, FilesAreTakenUpToTheirLimit) {
    PKGCORE_NEEDS(Need::Writing);
    const std::uint64_t limit = std::min<std::uint64_t>(traits().maxFileSize, 1'000'000);
    const std::string largest = someBytes(static_cast<std::size_t>(limit));
    ASSERT_TRUE(write(u"f", largest));
    if (limit == traits().maxFileSize) {
        PKGCORE_EXPECT_FAILURE(FileTooLarge, writeDirectly(u"g", largest + 'x'));
        EXPECT_FALSE(write(u"f", largest + 'x'));
        EXPECT_FALSE(write(u"f", "x", std::ios_base::app));
    }
    EXPECT_EQ(read(u"f"), largest);
    EXPECT_EQ(list(u""), Names{u"f"});
}

}  // namespace foundation::storage::conformance
