// streams.md and temporary-files.md.

#include <pkgcore/pkgcore.hpp>

#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "tests/support/TempTree.hpp"

#include <boost/iostreams/stream.hpp>

#include <gtest/gtest.h>

#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

/// A native folder and one in virtual storage.
class Pages : public testing::Test {
protected:
    static std::string contentOf(opc::FileSystemOps& ops, const opc::ustring& path) {
        const auto stream = ops.createInputStream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(*stream), {}};
    }
    static void write(opc::FileSystemOps& ops, const opc::ustring& path, const std::string& content) {
        *ops.createOutputStream(path, std::ios::binary) << content << std::flush;
    }

    test::TempTree tree;
    opc::FileSystemOpsSelector selector{
        vfs::StorageSystemBuilder().mount(u"mem", provider::makeMemoryProvider()).build()};
    opc::FileSystemOps& files = selector.getLocal();
    opc::FileSystemOps& storage = selector.getVirtual();
    const opc::ustring folder = tree.text("");
};

TEST_F(Pages, FilesAreStandardStreams) {
    const opc::ustring path = tree.text("a");
#include "streams/files.inc"
    EXPECT_EQ(line, "first");
}

TEST_F(Pages, AVectorIsAByteStream) {
#include "streams/memory.inc"
    EXPECT_EQ(count, 2U);
    EXPECT_FALSE(isDone);
    EXPECT_EQ(std::string(std::begin(two), std::end(two)), "te");
}

TEST_F(Pages, TheCopyLoopTakesEverySide) {
    const opc::ustring path = tree.text("a");
    const opc::ustring other = tree.text("b");
    write(files, path, std::string(40'000, 'x'));
#include "streams/copying.inc"
    EXPECT_EQ(contentOf(files, other), std::string(40'000, 'x'));
}

TEST_F(Pages, AByteStreamIsADeviceOfIostreams) {
#include "streams/iostreams.inc"
    EXPECT_EQ(first, "tea");
}

/// A row of the table of modes; an empty `onExisting` stands for a failure.
struct ModeRow {
    int mode;
    bool opensMissing;
    std::string onExisting;
};

TEST_F(Pages, ModesDoWhatTheirTableSays) {
    const int in = std::ios::in;
    const int app = std::ios::app;
    const int ate = std::ios::ate;
    const int trunc = std::ios::trunc;
    const ModeRow rows[] = {
        {0, true, "N"},           {trunc, true, "N"}, {ate, true, "N"},          {app, true, "oldN"},
        {in | app, true, "oldN"}, {in, false, "Nld"}, {in | ate, false, "oldN"}, {in | trunc, true, "N"},
        {app | trunc, false, ""},
    };
    for (opc::FileSystemOps* ops : {&files, &storage}) {
        const opc::ustring path = ops == &files ? tree.text("m") : u"mem://notes/m";
        for (const ModeRow& row : rows) {
            boost::system::error_code ec;
            ops->remove(path, ec);
            EXPECT_EQ(ops->createOutputStream(path, row.mode, ec) != nullptr, row.opensMissing) << row.mode;
            write(*ops, path, "old");
            const auto stream = ops->createOutputStream(path, row.mode, ec);
            ASSERT_EQ(stream == nullptr, row.onExisting.empty()) << row.mode;
            if (stream) {
                *stream << 'N' << std::flush;
                EXPECT_EQ(contentOf(*ops, path), row.onExisting) << row.mode;
            }
        }
    }
}

TEST_F(Pages, OutputStreamsOfVirtualStorageWriteInOrder) {
    const auto native = files.createOutputStream(tree.text("a"), 0);
    EXPECT_TRUE((*native << "tea").seekp(1));
    const auto stored = storage.createOutputStream(u"mem://notes/a", 0);
    EXPECT_TRUE((*stored << "tea").tellp() == std::streampos(3));
    EXPECT_TRUE(stored->seekp(1).fail());
}

TEST_F(Pages, OthersSeeStoredBytesWhenTheyAreFlushed) {
    const auto stream = storage.createOutputStream(u"mem://notes/a", 0);
    *stream << "tea";
    EXPECT_FALSE(storage.exists(u"mem://notes/a"));
    stream->flush();
    EXPECT_EQ(contentOf(storage, u"mem://notes/a"), "tea");
}

TEST_F(Pages, GuardsLeaveNothing) {
#include "temporary-files/guards.inc"
    std::vector<opc::ustring> left;
    files.getFiles(folder, left, true);
    EXPECT_TRUE(left.empty());
}

TEST_F(Pages, AReleasedFileStays) {
    const opc::ustring settings = tree.text("settings");
    write(files, settings, "colour=red\n");
    {
#include "temporary-files/release.inc"
    } EXPECT_EQ(contentOf(files, settings), "colour=blue\n");
}

TEST_F(Pages, NamesAreFreeAndNothingIsMade) {
#include "temporary-files/names.inc"
    EXPECT_FALSE(files.exists(here));
    EXPECT_EQ(files.getExtension(here), u"html");
    EXPECT_EQ(files.getParentPath(anywhere), opc::util::getTempDir());
    EXPECT_EQ(files.getFilename(anywhere).size(), std::string(".<20 characters>.tmp").size() + 5);
    EXPECT_EQ(storage.getParentPath(inStore), u"mem://notes/");
    EXPECT_FALSE(storage.exists(inStore));
}

}  // namespace
