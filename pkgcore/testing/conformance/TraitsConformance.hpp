#pragma once

#include <pkgcore/testing/conformance/ConformanceTest.hpp>

namespace foundation::storage::conformance {

/// A verb that Traits deny throws "unsupported" and nothing else.
#define PKGCORE_EXPECT_VERB(isThere, ...)                  \
    if (isThere) {                                         \
        EXPECT_NO_THROW(__VA_ARGS__);                      \
    } else {                                               \
        PKGCORE_EXPECT_FAILURE(NotSupported, __VA_ARGS__); \
    }

TEST_P(ProviderConformance, TraitsAreTheSameAtEveryCall) {
    EXPECT_EQ(store().traits().writes, traits().writes);
    EXPECT_EQ(store().traits().hasAuthorities, traits().hasAuthorities);
}

TEST_P(ProviderConformance, TraitsTellWhichVerbsThereAre) {
    using provider::WriteMode;
    const provider::Traits has = traits();
    const boost::posix_time::ptime time(boost::gregorian::date(2001, 2, 3));
    PKGCORE_EXPECT_VERB(has.createsFolders, store().createFolder(at(u"d")));
    PKGCORE_EXPECT_VERB(has.writes, store().openWriter(at(u"f"), WriteMode::Create)->commit());
    PKGCORE_EXPECT_VERB(has.writes, store().openWriter(at(u"g"), WriteMode::CreateNew)->commit());
    PKGCORE_EXPECT_VERB(has.appends, store().openWriter(at(u"h"), WriteMode::Append)->commit());
    PKGCORE_SKIP_UNLESS(makesTrees());
    PKGCORE_EXPECT_VERB(has.copiesFiles, store().copy(at(u"f"), at(u"f2"), kFail));
    PKGCORE_EXPECT_VERB(has.movesFiles, store().move(at(u"f"), at(u"f3"), kFail));
    PKGCORE_EXPECT_VERB(has.setsWritable, store().setWritable(at(u"g"), false));
    PKGCORE_EXPECT_VERB(has.setsLastModified, store().setLastModified(at(u"g"), time));
    PKGCORE_EXPECT_VERB(has.removes, store().remove(at(u"g")));
    if (has.copiesFolders) {
        EXPECT_NO_THROW(store().copy(at(u"d"), at(u"d2"), kFail));
    }
    if (has.movesFolders) {
        EXPECT_NO_THROW(store().move(at(u"d"), at(u"d3"), kFail));
    }
    const std::u16string left = has.movesFolders ? u"d3" : u"d";
    PKGCORE_EXPECT_VERB(has.removesTrees, store().removeTree(at(left)));
}

TEST_P(ProviderConformance, TraitsTellWhetherReadersReadAtAnOffset) {
    PKGCORE_SKIP_UNLESS(writes());
    ASSERT_TRUE(write(u"f", "0123456789"));
    const std::unique_ptr<provider::Reader> reader = store().openReader(at(u"f"));
    char bytes[4] = {};
    if (!traits().readsAt) {
        PKGCORE_EXPECT_FAILURE(NotSupported, reader->readAt(2, bytes, 3));
        return;
    }
    EXPECT_EQ(reader->read(bytes, 2), 2u);
    EXPECT_EQ(reader->readAt(6, bytes, 3), 3u);
    EXPECT_EQ(std::string(bytes, 3), "678");
    EXPECT_EQ(reader->read(bytes, 1), 1u);
    EXPECT_EQ(bytes[0], '2');
    EXPECT_EQ(reader->readAt(9, bytes, 3), 1u);
    EXPECT_EQ(reader->readAt(10, bytes, 3), 0u);
    EXPECT_EQ(reader->readAt(1'000'000'000'000, bytes, 3), 0u);
    EXPECT_EQ(reader->size().value_or(10), 10u);
}

TEST_P(ProviderConformance, ANewFileIsMadeOnce) {
    PKGCORE_SKIP_UNLESS(writes());
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
    PKGCORE_SKIP_UNLESS(writes());
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
    PKGCORE_SKIP_UNLESS(makesTrees());
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

TEST_P(ProviderConformance, LongNamesAreRefused) {
    PKGCORE_SKIP_UNLESS(traits().createsFolders && traits().maxNameLength < 100'000);
    const std::u16string longest(traits().maxNameLength, u'x');
    folder(longest).createFolder();
    EXPECT_TRUE(isFolder(longest));
    PKGCORE_EXPECT_FAILURE(NotSupported, folder(longest + u"x").createFolder());
}

}  // namespace foundation::storage::conformance
