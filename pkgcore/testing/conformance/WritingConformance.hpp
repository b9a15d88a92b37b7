#pragma once

#include <pkgcore/testing/conformance/Needs.hpp>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace foundation::storage::conformance {

TEST_P(ProviderConformance, NothingIsSeenBeforeTheFirstFlush) {
    PKGCORE_NEEDS(Need::Writing);
    vfs::ofstream stream(file(u"f"), std::ios_base::out);
    stream << someBytes(200'000);
    EXPECT_TRUE(isMissing(u"f"));
    stream << std::flush;
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(read(u"f"), someBytes(200'000));
}

TEST_P(ProviderConformance, TheOldContentIsSeenBeforeTheFirstFlush) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"f", "old"));
    vfs::ofstream stream(file(u"f"), std::ios_base::out);
    stream << someBytes(200'000);
    EXPECT_EQ(read(u"f"), "old");
    stream << std::flush;
    EXPECT_EQ(read(u"f"), someBytes(200'000));
}

TEST_P(ProviderConformance, ClosingPublishes) {
    PKGCORE_NEEDS(Need::Writing);
    { vfs::ofstream(file(u"f"), std::ios_base::out) << "text"; }
    EXPECT_EQ(read(u"f"), "text");
}

TEST_P(ProviderConformance, ClosingWithoutAByteMakesAnEmptyFile) {
    PKGCORE_NEEDS(Need::Writing);
    { vfs::ofstream stream(file(u"new"), std::ios_base::out); }
    EXPECT_EQ(read(u"new"), "");
    ASSERT_TRUE(write(u"old", "text"));
    { vfs::ofstream stream(file(u"old"), std::ios_base::out); }
    EXPECT_EQ(read(u"old"), "");
}

TEST_P(ProviderConformance, MoreIsPublishedAfterTheFirstTime) {
    PKGCORE_NEEDS(Need::Writing);
    std::string expected;
    vfs::ofstream stream(file(u"f"), std::ios_base::out);
    for (unsigned i = 0; i < 20; ++i) {
        const std::string piece = someBytes(10'000 + 1'000 * i, i);
        expected += piece;
        stream << piece << std::flush;
        ASSERT_TRUE(stream.good());
        ASSERT_EQ(read(u"f"), expected);
    }
    stream << "end";
    stream.flush();
    EXPECT_EQ(read(u"f"), expected + "end");
}

TEST_P(ProviderConformance, NothingIsPublishedWhileAnExceptionIsOnItsWay) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"old", "old"));
    for (const std::u16string name : {u"old", u"new"}) {
        try {
            vfs::ofstream stream(file(name), std::ios_base::out);
            stream << someBytes(100'000);
            throw std::runtime_error("on its way");
        } catch (const std::runtime_error&) {
        }
    }
    EXPECT_EQ(read(u"old"), "old");
    EXPECT_TRUE(isMissing(u"new"));
    EXPECT_EQ(list(u""), Names{u"old"});
}

TEST_P(ProviderConformance, NothingMoreIsPublishedAfterAFailure) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"old", "old"));
    for (const std::u16string name : {u"old", u"new"}) {
        vfs::ofstream stream(file(name), std::ios_base::out);
        stream << someBytes(100'000);
        stream.setstate(std::ios_base::badbit);
    }
    EXPECT_EQ(read(u"old"), "old");
    EXPECT_EQ(list(u""), Names{u"old"});
}

TEST_P(ProviderConformance, WhatWasPublishedStaysWhenTheRestIsDiscarded) {
    PKGCORE_NEEDS(Need::Writing);
    try {
        vfs::ofstream stream(file(u"f"), std::ios_base::out);
        stream << "first" << std::flush << someBytes(100'000);
        throw std::runtime_error("on its way");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(read(u"f"), "first");
}

TEST_P(ProviderConformance, ContentOfEverySizeComesBack) {
    PKGCORE_NEEDS(Need::Writing);
    for (const std::size_t size : {0u, 1u, 4095u, 4096u, 32'767u, 65'535u, 65'536u, 65'537u, 3'000'017u}) {
        const std::string content =
            someBytes(static_cast<std::size_t>(std::min<std::uint64_t>(size, traits().maxFileSize)));
        ASSERT_TRUE(write(u"f", content));
        ASSERT_EQ(read(u"f"), content) << size;
    }
}

TEST_P(ProviderConformance, PiecesOfEverySizeFollowEachOther) {
    PKGCORE_NEEDS(Need::Writing);
    const std::string content = someBytes(500'000);
    {
        vfs::ofstream stream(file(u"f"), std::ios_base::out);
        std::size_t done = 0;
        for (std::size_t step = 1; done < content.size(); step = step * 3 % 70'001 + 1) {
            const std::size_t count = std::min(step, content.size() - done);
            stream.write(content.data() + done, static_cast<std::streamsize>(count));
            done += count;
            ASSERT_EQ(stream.tellp(), std::streampos(static_cast<std::streamoff>(done)));
        }
    }
    EXPECT_EQ(read(u"f"), content);
}

TEST_P(ProviderConformance, AppendingGoesOnBehindTheOldContent) {
    PKGCORE_NEEDS(Need::Writing);
    const std::string content = someBytes(100'000);
    ASSERT_TRUE(write(u"f", content));
    {
        vfs::ofstream stream(file(u"f"), std::ios_base::app);
        EXPECT_EQ(stream.tellp(), std::streampos(100'000));
        stream << "more";
    }
    EXPECT_EQ(read(u"f"), content + "more");
    EXPECT_TRUE(write(u"f", "!", std::ios_base::out | std::ios_base::app));
    EXPECT_EQ(read(u"f"), content + "more!");
}

TEST_P(ProviderConformance, AppendingMakesAMissingFile) {
    PKGCORE_NEEDS(Need::Writing);
    { vfs::ofstream stream(file(u"empty"), std::ios_base::app); }
    EXPECT_EQ(read(u"empty"), "");
    EXPECT_TRUE(write(u"f", "text", std::ios_base::app));
    EXPECT_EQ(read(u"f"), "text");
}

TEST_P(ProviderConformance, AppendingIsDiscardedToo) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"f", "old"));
    try {
        vfs::ofstream stream(file(u"f"), std::ios_base::app);
        stream << someBytes(100'000);
        throw std::runtime_error("on its way");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(read(u"f"), "old");
}

TEST_P(ProviderConformance, WritingOverTheBeginningKeepsTheRest) {
    PKGCORE_NEEDS(Need::Writing);
    constexpr auto kInOut = std::ios_base::in | std::ios_base::out;
    ASSERT_TRUE(write(u"f", "0123456789"));
    EXPECT_TRUE(write(u"f", "abc", kInOut));
    EXPECT_EQ(read(u"f"), "abc3456789");
    {
        vfs::ofstream stream(file(u"f"), kInOut);
        stream << "XY" << std::flush;
        EXPECT_EQ(read(u"f"), "XYc3456789");
        stream << "Z" << std::flush;
        EXPECT_EQ(read(u"f"), "XYZ3456789");
        stream << "......." << std::flush << "end";
    }
    EXPECT_EQ(read(u"f"), "XYZ.......end");
    EXPECT_TRUE(write(u"f", "!", kInOut | std::ios_base::ate));
    EXPECT_EQ(read(u"f"), "XYZ.......end!");
    EXPECT_FALSE(write(u"missing", "abc", kInOut));
    EXPECT_TRUE(isMissing(u"missing"));
}

TEST_P(ProviderConformance, AnUpdateGoesToAnyPlace) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"f", "hello world"));
    {
        vfs::ofstream stream(file(u"f"), std::ios_base::in | std::ios_base::binary);
        EXPECT_EQ(stream.tellp(), std::streampos(0));
        stream.seekp(0, std::ios_base::end) << "XX";
        EXPECT_EQ(stream.tellp(), std::streampos(13));
        stream.seekp(6) << "W" << std::flush;
        EXPECT_EQ(read(u"f"), "hello WorldXX");
        stream.seekp(-1, std::ios_base::cur) << "w";
        stream.seekp(15) << "!";
        EXPECT_EQ(read(u"f"), "hello WorldXX");
    }
    EXPECT_EQ(read(u"f"), std::string("hello worldXX\0\0!", 16));
}

TEST_P(ProviderConformance, AnUpdateReadsWhatItHas) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"f", "hello world"));
    vfs::ofstream stream(file(u"f"), std::ios_base::in);
    std::istream reader(stream.rdbuf());
    std::string word;
    EXPECT_TRUE(reader >> word);
    EXPECT_EQ(word, "hello");
    EXPECT_EQ(stream.tellp(), std::streampos(5)) << "one position serves both";
    stream << "," << std::flush;
    EXPECT_TRUE(reader >> word);
    EXPECT_EQ(word, "world");
    EXPECT_EQ(read(u"f"), "hello,world");
}

TEST_P(ProviderConformance, ANewFileIsUpdatedIfToldSo) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"old", "long ago"));
    for (const std::u16string name : {u"old", u"new"}) {
        vfs::ofstream stream(file(name), std::ios_base::in | std::ios_base::trunc);
        stream << "size: ?" << someBytes(100'000);
        stream.seekp(6) << "3";
        EXPECT_EQ(isMissing(name), name == u"new");
        stream << std::flush;
        EXPECT_EQ(read(name), "size: 3" + someBytes(100'000));
    }
    { vfs::ofstream stream(file(u"old"), std::ios_base::in | std::ios_base::trunc); }
    EXPECT_EQ(read(u"old"), "");
}

TEST_P(ProviderConformance, AnUpdateOfEverySizeAtEveryPlaceIsKept) {
    PKGCORE_NEEDS(Need::Writing);
    std::string expected = someBytes(200'000);
    ASSERT_TRUE(write(u"f", expected));
    vfs::ofstream stream(file(u"f"), std::ios_base::in);
    unsigned long long state = 1;
    for (unsigned i = 0; i < 60; ++i) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        const std::size_t at = static_cast<std::size_t>(state >> 33) % (expected.size() + 1000);
        const std::string piece =
            someBytes(static_cast<std::size_t>(state >> 20) % (i % 8 == 0 ? 50'000 : 500), i);
        if (!piece.empty()) {
            expected.resize(std::max(expected.size(), at + piece.size()));
            expected.replace(at, piece.size(), piece);
        }
        stream.seekp(static_cast<std::streamoff>(at)) << piece;
        if (i % 20 == 19) {
            stream << std::flush;
            ASSERT_EQ(read(u"f"), expected);
        }
    }
    EXPECT_TRUE(stream.good());
}

TEST_P(ProviderConformance, AnUpdateIsDiscardedAsAWhole) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"f", "old text"));
    try {
        vfs::ofstream stream(file(u"f"), std::ios_base::in);
        stream << "new" << std::flush << "er";
        throw std::runtime_error("on its way");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(read(u"f"), "new text");
    EXPECT_EQ(list(u""), Names{u"f"});
}

TEST_P(ProviderConformance, WhatIsWrittenInOrderGoesNowhereElse) {
    PKGCORE_NEEDS(Need::Writing);
    constexpr std::streamoff kFarthest = std::numeric_limits<std::streamoff>::max();
    for (const auto mode : {std::ios_base::out, std::ios_base::app, std::ios_base::in | std::ios_base::app}) {
        ASSERT_TRUE(write(u"f", "old"));
        vfs::ofstream stream(file(u"f"), mode);
        stream << "12345";
        const std::streampos here = stream.tellp();
        EXPECT_TRUE(stream.seekp(here));
        EXPECT_TRUE(stream.seekp(0, std::ios_base::cur));
        EXPECT_TRUE(stream.seekp(0, std::ios_base::end));
        EXPECT_EQ(stream.tellp(), here);
        for (const std::streamoff off : {std::streamoff{-1}, std::streamoff{1}, kFarthest}) {
            for (const auto direction : {std::ios_base::cur, std::ios_base::end}) {
                EXPECT_FALSE(stream.seekp(off, direction));
                EXPECT_FALSE(stream << "lost");
                stream.clear();
            }
        }
        EXPECT_FALSE(stream.seekp(0));
        stream.clear();
        stream << "6" << std::flush;
        EXPECT_EQ(read(u"f"), mode == std::ios_base::out ? "123456" : "old123456");
    }
}

TEST_P(ProviderConformance, FlagsThatMakeNoSenseOpenNothing) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"f", "old"));
    EXPECT_FALSE(write(u"f", "new", std::ios_base::trunc | std::ios_base::app));
    EXPECT_EQ(read(u"f"), "old");
}

TEST_P(ProviderConformance, NoFileIsMadeWhereThereIsNoFolder) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"f", "text"));
    EXPECT_FALSE(write(u"missing/f", "text"));
    EXPECT_FALSE(write(u"f/g", "text"));
    EXPECT_FALSE(write(u"", "text"));
    EXPECT_EQ(listTree(u""), Names{u"f"});
}

TEST_P(ProviderConformance, AFolderIsNotWrittenOver) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders);
    folder(u"d").createFolder();
    EXPECT_FALSE(write(u"d", "text"));
    EXPECT_FALSE(write(u"d", "text", std::ios_base::app));
    EXPECT_TRUE(isFolder(u"d"));
}

TEST_P(ProviderConformance, AReadOnlyFileIsNotWritten) {
    PKGCORE_NEEDS(Need::Writing, Need::Marking);
    ASSERT_TRUE(write(u"f", "old"));
    file(u"f").setWritable(false);
    for (const auto mode : {std::ios_base::out, std::ios_base::app, std::ios_base::in | std::ios_base::out}) {
        EXPECT_FALSE(write(u"f", "new", mode));
    }
    EXPECT_EQ(read(u"f"), "old");
    file(u"f").setWritable(true);
    EXPECT_TRUE(write(u"f", "new"));
    EXPECT_EQ(read(u"f"), "new");
}

TEST_P(ProviderConformance, PublishingIntoARemovedFolderFails) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::Removing);
    folder(u"d").createFolder();
    vfs::ofstream stream(file(u"d/f"), std::ios_base::out);
    stream << "text";
    folder(u"d").removeFolder(FolderRemovalPolicy::WithContents);
    stream << std::flush;
    EXPECT_TRUE(stream.bad());
    EXPECT_TRUE(isMissing(u"d"));
}

}  // namespace foundation::storage::conformance
