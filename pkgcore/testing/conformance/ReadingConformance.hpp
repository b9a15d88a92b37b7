#pragma once

#include <pkgcore/testing/conformance/Needs.hpp>

#include <algorithm>

namespace foundation::storage::conformance {

TEST_P(ProviderConformance, OnlyFilesAreRead) {
    EXPECT_EQ(read(u"missing"), "(none)");
    EXPECT_EQ(read(u"missing/f"), "(none)");
    EXPECT_EQ(read(u""), "(none)");
    for (const auto& [path, content] : filesToRead()) {
        EXPECT_TRUE(isFile(path));
        EXPECT_EQ(read(path), content);
        EXPECT_EQ(read(path + u"/g"), "(none)");
    }
    if (traits().createsFolders) {
        folder(u"d").createFolder();
    }
    EXPECT_EQ(read(u"d"), "(none)");
}

TEST_P(ProviderConformance, WhatIsPutBackDoesNotGetIntoTheFile) {
    PKGCORE_NEEDS(Need::ReadingAt);
    for (const auto& [path, content] : filesToRead()) {
        if (content.size() < 3) continue;
        const char other = static_cast<char>(content[1] + 1);
        vfs::ifstream stream(file(path), std::ios_base::in);
        stream.seekg(2).putback(other);
        EXPECT_EQ(stream.tellg(), 1);
        EXPECT_EQ(stream.get(), std::char_traits<char>::to_int_type(other));
        EXPECT_EQ(stream.seekg(0).get(), std::char_traits<char>::to_int_type(content[0]));
        EXPECT_EQ(stream.get(), std::char_traits<char>::to_int_type(content[1]));
    }
}

TEST_P(ProviderConformance, AnOpenReaderKeepsWhatItOpened) {
    PKGCORE_NEEDS(Need::Writing);
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
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"f", "old"));
    vfs::ifstream reader(file(u"f"), std::ios_base::in);
    ASSERT_TRUE(write(u"f", someBytes(100'000), std::ios_base::app));
    EXPECT_EQ(readAll(reader), "old");
}

TEST_P(ProviderConformance, AnOpenReaderOutlivesItsFile) {
    PKGCORE_NEEDS(Need::Writing, Need::Removing);
    const std::string content = someBytes(300'000);
    ASSERT_TRUE(write(u"f", content));
    vfs::ifstream reader(file(u"f"), std::ios_base::in);
    file(u"f").removeFile();
    EXPECT_EQ(readAll(reader), content);
}

TEST_P(ProviderConformance, ReadersGoToAnyPlace) {
    PKGCORE_NEEDS(Need::ReadingAt);
    for (const auto& [path, content] : filesToRead()) {
        vfs::ifstream reader(file(path), std::ios_base::in);
        for (std::size_t at = 1; at < content.size(); at = at * 5 / 3 + 11) {
            for (const std::size_t place : {at, content.size() - at}) {
                reader.seekg(static_cast<std::streamoff>(place));
                ASSERT_EQ(reader.get(), std::char_traits<char>::to_int_type(content[place])) << place;
                ASSERT_EQ(reader.tellg(), std::streampos(static_cast<std::streamoff>(place + 1)));
            }
        }
        const std::size_t fromEnd = std::min<std::size_t>(content.size(), 3);
        reader.seekg(-static_cast<std::streamoff>(fromEnd), std::ios_base::end);
        EXPECT_EQ(readAll(reader), content.substr(content.size() - fromEnd));
        reader.clear();
        reader.seekg(0);
        EXPECT_EQ(readAll(reader), content);
        reader.clear();
        reader.seekg(-1);
        EXPECT_TRUE(reader.fail());
    }
}

TEST_P(ProviderConformance, ReadersStartAtTheEndIfToldSo) {
    PKGCORE_NEEDS(Need::ReadingAt);
    for (const auto& [path, content] : filesToRead()) {
        vfs::ifstream reader(file(path), std::ios_base::ate);
        EXPECT_EQ(reader.tellg(), std::streampos(static_cast<std::streamoff>(content.size())));
        EXPECT_EQ(reader.get(), std::char_traits<char>::eof());
        reader.clear();
        reader.unget();
        EXPECT_EQ(reader.fail(), content.empty());
        if (!content.empty()) {
            EXPECT_EQ(reader.get(), std::char_traits<char>::to_int_type(content.back()));
        }
    }
}

TEST_P(ProviderConformance, ReadersTakePiecesOfEverySize) {
    for (const auto& [path, content] : filesToRead()) {
        vfs::ifstream reader(file(path), std::ios_base::in);
        std::string read;
        std::string piece(70'002, '\0');
        for (std::size_t step = 1; reader; step = step * 3 % 70'001 + 1) {
            reader.read(piece.data(), static_cast<std::streamsize>(step));
            read.append(piece, 0, static_cast<std::size_t>(reader.gcount()));
        }
        EXPECT_TRUE(reader.eof());
        EXPECT_EQ(read, content);
    }
}

TEST_P(ProviderConformance, ReadersOfOneFileDoNotDisturbEachOther) {
    for (const auto& [path, content] : filesToRead()) {
        const auto one = store().openReader(at(path));
        const auto other = store().openReader(at(path));
        std::string bytes[2];
        for (std::size_t i = 0, taken = 1; taken > 0; ++i) {
            char piece[3000];
            provider::Reader& reader = i % 2 == 0 ? *one : *other;
            taken = reader.read(piece, i % 2 == 0 ? 3000 : 2999);
            bytes[i % 2].append(piece, taken);
        }
        EXPECT_EQ(std::max(bytes[0].size(), bytes[1].size()), content.size());
        EXPECT_EQ(bytes[0], content.substr(0, bytes[0].size()));
        EXPECT_EQ(bytes[1], content.substr(0, bytes[1].size()));
    }
}

}  // namespace foundation::storage::conformance
