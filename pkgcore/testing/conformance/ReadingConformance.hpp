#pragma once

#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include <algorithm>

namespace foundation::storage::conformance {

TEST_P(ProviderConformance, OnlyFilesAreRead) {
    EXPECT_EQ(read(u"missing"), "(none)");
    EXPECT_EQ(read(u"missing/f"), "(none)");
    EXPECT_EQ(read(u""), "(none)");
    PKGCORE_SKIP_UNLESS(makesTrees());
    folder(u"d").createFolder();
    ASSERT_TRUE(write(u"f", "text"));
    EXPECT_EQ(read(u"d"), "(none)");
    EXPECT_EQ(read(u"f/g"), "(none)");
    EXPECT_EQ(read(u"f"), "text");
}

TEST_P(ProviderConformance, AnOpenReaderKeepsWhatItOpened) {
    PKGCORE_SKIP_UNLESS(writes());
    const std::string content = someBytes(300'000);
    ASSERT_TRUE(write(u"f", content));
    vfs::ifstream replaced(file(u"f"), std::ios_base::in);
    vfs::ifstream begun(file(u"f"), std::ios_base::in);
    EXPECT_EQ(begun.get(), std::char_traits<char>::to_int_type(content[0]));
    ASSERT_TRUE(write(u"f", "new"));
    EXPECT_EQ(begun.get(), std::char_traits<char>::to_int_type(content[1]));
    EXPECT_EQ(readAll(replaced), content);
    EXPECT_EQ(readAll(begun), content.substr(2));
    EXPECT_EQ(read(u"f"), "new");
}

TEST_P(ProviderConformance, AnOpenReaderDoesNotSeeWhatIsAppended) {
    PKGCORE_SKIP_UNLESS(writes());
    ASSERT_TRUE(write(u"f", "old"));
    vfs::ifstream reader(file(u"f"), std::ios_base::in);
    ASSERT_TRUE(write(u"f", someBytes(100'000), std::ios_base::app));
    EXPECT_EQ(readAll(reader), "old");
}

TEST_P(ProviderConformance, AnOpenReaderOutlivesItsFile) {
    PKGCORE_SKIP_UNLESS(writes() && traits().removes);
    const std::string content = someBytes(300'000);
    ASSERT_TRUE(write(u"f", content));
    vfs::ifstream reader(file(u"f"), std::ios_base::in);
    file(u"f").removeFile();
    EXPECT_EQ(readAll(reader), content);
}

TEST_P(ProviderConformance, ReadersGoToAnyPlace) {
    PKGCORE_SKIP_UNLESS(writes() && traits().readsAt);
    const std::string content = someBytes(400'000);
    ASSERT_TRUE(write(u"f", content));
    vfs::ifstream reader(file(u"f"), std::ios_base::in);
    for (std::size_t at = 7; at < content.size(); at = at * 5 / 3 + 11) {
        for (const std::size_t place : {at, content.size() - at}) {
            reader.seekg(static_cast<std::streamoff>(place));
            ASSERT_EQ(reader.get(), std::char_traits<char>::to_int_type(content[place])) << place;
            ASSERT_EQ(reader.tellg(), std::streampos(static_cast<std::streamoff>(place + 1)));
        }
    }
    reader.seekg(-3, std::ios_base::end);
    EXPECT_EQ(readAll(reader), content.substr(content.size() - 3));
    reader.clear();
    reader.seekg(0);
    EXPECT_EQ(readAll(reader), content);
    reader.clear();
    reader.seekg(-1);
    EXPECT_TRUE(reader.fail());
}

TEST_P(ProviderConformance, ReadersStartAtTheEndIfToldSo) {
    PKGCORE_SKIP_UNLESS(writes() && traits().readsAt);
    ASSERT_TRUE(write(u"f", "text"));
    vfs::ifstream reader(file(u"f"), std::ios_base::ate);
    EXPECT_EQ(reader.tellg(), std::streampos(4));
    reader.unget();
    EXPECT_EQ(reader.get(), 't');
    EXPECT_EQ(reader.get(), std::char_traits<char>::eof());
}

TEST_P(ProviderConformance, ReadersTakePiecesOfEverySize) {
    PKGCORE_SKIP_UNLESS(writes());
    const std::string content = someBytes(500'000);
    ASSERT_TRUE(write(u"f", content));
    vfs::ifstream reader(file(u"f"), std::ios_base::in);
    std::string read;
    std::string piece(70'002, '\0');
    for (std::size_t step = 1; reader; step = step * 3 % 70'001 + 1) {
        reader.read(piece.data(), static_cast<std::streamsize>(step));
        read.append(piece, 0, static_cast<std::size_t>(reader.gcount()));
    }
    EXPECT_TRUE(reader.eof());
    EXPECT_EQ(read, content);
}

}  // namespace foundation::storage::conformance
