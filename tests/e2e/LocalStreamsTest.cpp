#include "tests/e2e/LocalTest.hpp"

#include <sys/stat.h>

#include <iterator>

namespace test {

namespace {

constexpr int in = std::ios_base::in;
constexpr int out = std::ios_base::out;
constexpr int app = std::ios_base::app;
constexpr int ate = std::ios_base::ate;
constexpr int trunc = std::ios_base::trunc;
constexpr int binary = std::ios_base::binary;

std::string readAll(std::istream& stream) { return {std::istreambuf_iterator<char>(stream), {}}; }

class LocalStreams : public LocalTest {
protected:
    using LocalTest::LocalTest;

    std::string read(std::string_view name) {
        return readAll(*ops.createInputStream(tree.text(name), binary));
    }

    /// Writes, flushes and closes; whether all of that went well.
    bool write(const opc::ustring& path, int mode, const std::string& content) {
        const auto stream = ops.createOutputStream(path, mode);
        *stream << content << std::flush;
        return stream->good();
    }

    /// Neither direction opens; the failure has no words.
    void refuseBoth(const opc::ustring& path) {
        EXPECT_TRUE(fails([&](auto&... ec) { return ops.createInputStream(path, 0, ec...); }, errc::io_error,
                          "createInputStream failed: "));
        EXPECT_TRUE(fails([&](auto&... ec) { return ops.createOutputStream(path, 0, ec...); }, errc::io_error,
                          "createOutputStream failed: "));
    }
};

TEST_F(LocalStreams, WhatWasWrittenIsRead) {
    for (const std::size_t size : {0U, 1U, 100U, 65'535U, 65'536U, 65'537U, 3'000'000U}) {
        const std::string content = someBytes(size);
        ASSERT_TRUE(write(tree.text("file"), binary, content));
        EXPECT_EQ(content, contentOf(tree / "file"));
        EXPECT_EQ(content, read("file"));
    }
}

TEST_F(LocalStreams, BytesPassAsTheyAreWithoutTheBinaryFlagToo) {
    const std::string content("a\r\nb\nc\x1a\0d\xff", 11);
    ASSERT_TRUE(write(tree.text("file"), 0, content));
    EXPECT_EQ(content, contentOf(tree / "file"));
    EXPECT_EQ(content, readAll(*ops.createInputStream(tree.text("file"), 0)));
}

TEST_F(LocalStreams, AMissingFileIsNotReadAndNotMadeByReading) {
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.createInputStream(tree.text("missing"), binary, ec...); },
                      errc::io_error, "createInputStream failed: "));
    EXPECT_FALSE(isThere(tree / "missing"));
}

TEST_F(LocalStreams, AFolderOpensInNeitherDirection) {
    makeFolder(tree / "folder");
    makeLink("folder", tree / "link");
    for (const opc::ustring& path :
         {tree.text("folder"), tree.text("folder/"), tree.text("link"), opc::ustring(u"/")}) {
        refuseBoth(path);
    }
}

TEST_F(LocalStreams, NothingOpensAtImpossiblePaths) {
    makeFile(tree / "file", "text");
    makeLink("loop", tree / "loop");
    for (const opc::ustring& path :
         {opc::ustring(), tree.text("missing/x"), tree.text("file/x"), tree.text(std::string(256, 'x')),
          tree.text("loop"), tree.text(u"\xD800"), tree.text("file") + opc::ustring(u"\0", 1)}) {
        refuseBoth(path);
    }
    EXPECT_EQ("text", contentOf(tree / "file"));
}

TEST_F(LocalStreams, WritingEmptiesAFileUnlessAskedOtherwise) {
    struct Case {
        int mode;
        const char* afterwards;
    };
    for (const Case& test :
         {Case{0, "new"}, Case{binary, "new"}, Case{out, "new"}, Case{trunc, "new"}, Case{app, "old textnew"},
          Case{app | binary, "old textnew"}, Case{in, "new text"}, Case{in | ate, "old textnew"},
          Case{in | app, "old textnew"}, Case{in | trunc, "new"}}) {
        makeFile(tree / "file", "old text");
        EXPECT_TRUE(write(tree.text("file"), test.mode, "new")) << test.mode;
        EXPECT_EQ(test.afterwards, contentOf(tree / "file")) << test.mode;
    }
}

TEST_F(LocalStreams, WritingMakesTheFileUnlessReadingIsAskedForAsWell) {
    for (const int mode : {0, app, trunc, ate, in | app, in | trunc}) {
        const TempTree place;
        EXPECT_TRUE(write(place.text("file"), mode, "new")) << mode;
        EXPECT_EQ("new", contentOf(place / "file")) << mode;
    }
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.createOutputStream(tree.text("file"), in, ec...); },
                      errc::io_error, "createOutputStream failed: "));
    EXPECT_FALSE(isThere(tree / "file"));
}

TEST_F(LocalStreams, ModesThatMakeNoSenseOpenNothing) {
    makeFile(tree / "file", "text");
    EXPECT_TRUE(reports([&](auto& ec) { return ops.createOutputStream(tree.text("file"), app | trunc, ec); },
                        make_error_code(errc::io_error)));
    EXPECT_TRUE(reports([&](auto& ec) { return ops.createInputStream(tree.text("file"), trunc, ec); },
                        make_error_code(errc::io_error)));
    EXPECT_EQ("text", contentOf(tree / "file"));
}

TEST_F(LocalStreams, ReadingFromTheEndOnStartsThere) {
    makeFile(tree / "file", "text");
    const auto stream = ops.createInputStream(tree.text("file"), ate);
    EXPECT_EQ(4, stream->tellg());
    stream->seekg(1);
    EXPECT_EQ("ext", readAll(*stream));
}

TEST_F(LocalStreams, SeekAndTellAgreeWithTheFile) {
    const std::string content = someBytes(300'000);
    makeFile(tree / "file", content);
    const auto stream = ops.createInputStream(tree.text("file"), binary);
    for (const std::size_t at : {0U, 1U, 65'535U, 65'536U, 200'000U, 100'000U, 299'999U, 5U}) {
        stream->seekg(static_cast<std::streamoff>(at));
        EXPECT_EQ(content[at], static_cast<char>(stream->get())) << at;
        EXPECT_EQ(static_cast<std::streamoff>(at + 1), stream->tellg());
    }
    stream->seekg(-10, std::ios_base::end);
    EXPECT_EQ(content.substr(content.size() - 10), readAll(*stream));
}

TEST_F(LocalStreams, ASeekBeforeTheBeginningFailsAndLosesNothing) {
    makeFile(tree / "file", "text");
    const auto stream = ops.createInputStream(tree.text("file"), binary);
    stream->seekg(-1);
    EXPECT_TRUE(stream->fail());
    stream->clear();
    stream->seekg(0);
    EXPECT_EQ("text", readAll(*stream));
}

TEST_F(LocalStreams, WritingElsewhereLeavesTheRest) {
    makeFile(tree / "file", "0123456789");
    const auto stream = ops.createOutputStream(tree.text("file"), in);
    stream->seekp(3);
    *stream << "xy";
    EXPECT_EQ(5, stream->tellp());
    stream->seekp(0, std::ios_base::end);
    *stream << "z" << std::flush;
    EXPECT_EQ("012xy56789z", contentOf(tree / "file"));
}

TEST_F(LocalStreams, AppendingGoesToTheEndWhoeverElseWrites) {
    makeFile(tree / "file", "a");
    const auto first = ops.createOutputStream(tree.text("file"), app);
    const auto second = ops.createOutputStream(tree.text("file"), app);
    *first << "b" << std::flush;
    *second << "c" << std::flush;
    *first << "d" << std::flush;
    EXPECT_EQ("abcd", contentOf(tree / "file"));
}

TEST_F(LocalStreams, OthersMayReadWriteAndRemoveMeanwhile) {
    const auto writer = ops.createOutputStream(tree.text("file"), binary);
    *writer << "one" << std::flush;
    const auto reader = ops.createInputStream(tree.text("file"), binary);
    EXPECT_EQ("one", readAll(*reader));
    *writer << "two" << std::flush;
    reader->clear();
    EXPECT_EQ("two", readAll(*reader));
    ops.remove(tree.text("file"));
    *writer << "three" << std::flush;
    EXPECT_TRUE(writer->good());
    reader->clear();
    EXPECT_EQ("three", readAll(*reader));
}

TEST_F(LocalStreams, CloseTheFileWithTheirLastOwner) {
    makeFile(tree / "file", "text");
    auto stream = ops.createInputStream(tree.text("file"), 0);
    const auto opened = openDescriptors().size();
    auto second = stream;
    stream.reset();
    EXPECT_EQ(opened, openDescriptors().size());
    second.reset();
    EXPECT_EQ(opened - 1, openDescriptors().size());
}

TEST_F(LocalStreams, WriteWhatIsBufferedWhenTheyEnd) {
    *ops.createOutputStream(tree.text("file"), 0) << "text";
    EXPECT_EQ("text", contentOf(tree / "file"));
}

TEST_F(LocalStreams, AreNotHandedOnToOtherPrograms) {
    makeFile(tree / "file");
    const auto stream = ops.createInputStream(tree.text("file"), 0);
    for (const auto& [descriptor, what] : openDescriptors()) {
        if (what == tree / "file") {
            EXPECT_EQ(FD_CLOEXEC, ::fcntl(descriptor, F_GETFD));
        }
    }
}

TEST_F(LocalStreams, ALinkOpensWhatItPointsTo) {
    makeFile(tree / "file", "text");
    makeLink("file", tree / "link");
    makeLink("new", tree / "dangling");
    EXPECT_EQ("text", read("link"));
    EXPECT_TRUE(write(tree.text("dangling"), 0, "made"));
    EXPECT_EQ("made", contentOf(tree / "new"));
    EXPECT_TRUE(ops.isSymlink(tree.text("dangling")));
}

TEST_F(LocalStreams, NewFilesAreAsOpenAsTheMaskAllows) {
    runInChild([&] {
        ::umask(027);
        EXPECT_TRUE(write(tree.text("file"), 0, "text"));
        EXPECT_EQ(0640U, modeOf(tree / "file"));
    });
}

TEST_F(LocalStreams, AFullDiskShowsWhenTheStreamIsFlushed) {
    for (const std::size_t size : {1U, 1'000'000U}) {
        const auto stream = ops.createOutputStream(u"/dev/full", 0);
        *stream << std::string(size, 'x') << std::flush;
        EXPECT_TRUE(stream->bad()) << size;
    }
}

TEST_F(LocalStreams, AFileThatMayNotGrowShowsWhenTheStreamIsFlushed) {
    runInChild([&] {
        limitFileSize(1'000);
        const auto stream = ops.createOutputStream(tree.text("file"), 0);
        *stream << std::string(1'500, 'x') << std::flush;
        EXPECT_TRUE(stream->bad());
        EXPECT_EQ(1'000, statusOf(tree / "file").st_size);
    });
}

TEST_F(LocalStreams, WhereNobodyMayReadOrWriteDoNotOpen) {
    runAsOrdinaryUser([&] {
        const TempTree own;
        opc::LocalFileSystemOps local;
        makeFile(own / "file", "text");
        setMode(own / "file", 0);
        refuseBoth(own.text("file"));
    });
}

TEST_F(LocalStreams, FilesOfTheSystemWithoutASizeAreReadWhole) {
    EXPECT_EQ(contentOf("/proc/version"), readAll(*ops.createInputStream(u"/proc/version", 0)));
    EXPECT_FALSE(contentOf("/proc/version").empty());
}

TEST_F(LocalStreams, EveryNameOpens) {
    for (const OddName& name : oddNames()) {
        EXPECT_TRUE(write(tree.text(name.asText), 0, name.onDisk));
        EXPECT_EQ(name.onDisk, contentOf(tree / name.onDisk));
        EXPECT_EQ(name.onDisk, readAll(*ops.createInputStream(tree.text(name.asText), 0)));
    }
}

/// With many items, where the host makes them quickly.
class LocalStreamsAtScale : public LocalStreams {
protected:
    LocalStreamsAtScale() : LocalStreams(fastFolder()) {}
};

TEST_F(LocalStreamsAtScale, OpenBelowTheLimitOfOnePath) {
    makeChain(tree.path(), "folder-with-a-long-name", 300);
    const std::string chain = chainPath("folder-with-a-long-name", 300);
    EXPECT_EQ("leaf", read(chain + "/leaf"));
    EXPECT_TRUE(write(tree.text(chain + "/new"), 0, "text"));
    EXPECT_EQ("text", read(chain + "/new"));
}

TEST_F(LocalStreams, LinesAreReadAndSteppedBackOver) {
    std::string content;
    for (int line = 0; line < 20'000; ++line) {
        content += "line " + std::to_string(line) + '\n';
    }
    makeFile(tree / "file", content);
    const auto stream = ops.createInputStream(tree.text("file"), 0);
    std::string again;
    for (std::string line; std::getline(*stream, line); again += line + '\n') {
        ASSERT_TRUE(stream->unget());
        ASSERT_EQ('\n', stream->get());
    }
    EXPECT_EQ(content, again);
}

}  // namespace
}  // namespace test
