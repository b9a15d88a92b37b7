#pragma once

#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include <boost/date_time/posix_time/ptime.hpp>

#include <algorithm>
#include <initializer_list>

namespace foundation::storage::conformance {

/// What a test needs its store to do, by itself or put together by the storage system.
enum class Need : unsigned char {
    Writing,
    ReadingAt,
    Folders,
    Removing,
    MovingFiles,
    MovingFolders,
    MovingAtOnce,  ///< files, by the store itself
    Marking,
    Times
};

/// For the beginning of a test. Where the store does not do one of these, the test ends here, having seen
/// that it is refused and changes nothing.
#define PKGCORE_NEEDS(...) \
    if (refusesOneOf({__VA_ARGS__})) return

class ProviderConformance : public testing::TestWithParam<Backend>, public Workplace {
protected:
    ProviderConformance() : Workplace(GetParam().makeGround()) {}

    bool refusesOneOf(std::initializer_list<Need> needs) {
        const auto* const lacking =
            std::find_if(needs.begin(), needs.end(), [this](Need need) { return !does(need); });
        if (lacking == needs.end()) {
            return false;
        }
        expectRefusal(*lacking);
        return true;
    }

    /// Files to be read: those that the ground came with, or some that are written now.
    Contents filesToRead() const {
        if (!traits().writes) {
            EXPECT_FALSE(ground().content.empty()) << "a ground that cannot be written needs some content";
            return ground().content;
        }
        Contents files{{u"empty", ""}, {u"short", "0123456789"}, {u"long", someBytes(400'000)}};
        for (const auto& [path, content] : files) {
            EXPECT_TRUE(write(path, content));
        }
        return files;
    }

    /// Without the storage system around the store.
    void writeDirectly(const std::u16string& name, const std::string& content) const {
        const auto writer = store().openWriter(at(name), provider::WriteMode::Create);
        writer->write(content.data(), content.size());
        writer->commit();
    }

private:
    bool does(Need need) const {
        const provider::Traits has = traits();
        switch (need) {
            case Need::Writing:
                return has.writes;
            case Need::ReadingAt:
                return has.readsAt;
            case Need::Folders:
                return has.createsFolders;
            case Need::Removing:
                return has.removes;
            case Need::MovingFiles:
                return has.movesFiles || has.removes;
            case Need::MovingFolders:
                return has.movesFolders || has.removes;
            case Need::MovingAtOnce:
                return has.movesFiles;
            case Need::Marking:
                return has.setsWritable;
            case Need::Times:
                return has.setsLastModified;
        }
        return false;
    }

    void expectRefusal(Need need) {
        const Contents files = filesToRead();
        ASSERT_FALSE(files.empty());
        const std::u16string path = files.begin()->first;
        if (need == Need::MovingFolders) {
            folder(u"refused").createFolder();
        }
        const Contents before = everything();
        refuse(need, path);
        EXPECT_EQ(everything(), before);
    }

    /// What the storage system answers, with a file that is there.
    void refuse(Need need, const std::u16string& path) const {
        switch (need) {
            case Need::Writing:
                return refuseWriting(path);
            case Need::ReadingAt:
                return refuseReadingAt(path);
            case Need::Folders:
                PKGCORE_EXPECT_FAILURE(NotSupported, folder(u"new").createFolder());
                PKGCORE_EXPECT_FAILURE(NotSupported, folder(u"new/below").createFolderRecursive());
                return;
            case Need::Removing:
                PKGCORE_EXPECT_FAILURE(NotSupported, file(path).removeFile());
                return;
            case Need::MovingFiles:
                PKGCORE_EXPECT_FAILURE(NotSupported, file(path).moveFile(file(u"new"), kReplace));
                return;
            case Need::MovingFolders:
                PKGCORE_EXPECT_FAILURE(NotSupported, folder(u"refused").moveFolder(folder(u"new"), kFail));
                return;
            case Need::MovingAtOnce:
                PKGCORE_EXPECT_FAILURE(NotSupported, store().move(at(path), at(u"new"), kFail));
                return;
            case Need::Marking:
                return refuseMarking(path);
            case Need::Times:
                return refuseTimes(path);
        }
    }

    void refuseWriting(const std::u16string& path) const {
        for (const std::u16string& target : {path, std::u16string(u"new")}) {
            for (const auto mode :
                 {std::ios_base::out, std::ios_base::app, std::ios_base::in | std::ios_base::out}) {
                EXPECT_FALSE(write(target, "text", mode));
            }
        }
        if (!traits().copiesFiles) {
            PKGCORE_EXPECT_FAILURE(NotSupported, file(path).copyFile(file(u"new"), kFail));
        }
    }

    /// A stream that cannot seek still knows where it stands.
    void refuseReadingAt(const std::u16string& path) const {
        vfs::ifstream stream(file(path), std::ios_base::in);
        EXPECT_EQ(stream.tellg(), std::streampos(0));
        stream.seekg(1'000'000);
        EXPECT_TRUE(stream.fail());
        stream.clear();
        EXPECT_EQ(readAll(stream), read(path));
        char byte = 0;
        PKGCORE_EXPECT_FAILURE(NotSupported, store().openReader(at(path))->readAt(0, &byte, 1));
    }

    /// What is so already need not be changed.
    void refuseMarking(const std::u16string& path) const {
        const bool isWritable = vfs::isWritable(file(path));
        PKGCORE_EXPECT_FAILURE(NotSupported, file(path).setWritable(!isWritable));
        EXPECT_NO_THROW(file(path).setWritable(isWritable));
        EXPECT_EQ(vfs::isWritable(file(path)), isWritable);
    }

    void refuseTimes(const std::u16string& path) const {
        const boost::posix_time::ptime before = vfs::getLastModified(file(path));
        const boost::posix_time::ptime time(boost::gregorian::date(2001, 2, 3));
        PKGCORE_EXPECT_FAILURE(NotSupported, file(path).setLastModified(time));
        EXPECT_NO_THROW(file(path).setLastModified(boost::posix_time::ptime()));
        EXPECT_EQ(vfs::getLastModified(file(path)), before);
    }
};

}  // namespace foundation::storage::conformance
