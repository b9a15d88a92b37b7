#pragma once

#include <pkgcore/testing/conformance/Needs.hpp>

#include <boost/date_time/posix_time/posix_time.hpp>

namespace foundation::storage::conformance {

using boost::posix_time::ptime;
using boost::posix_time::time_from_string;

TEST_P(ProviderConformance, FilesAreMarkedReadOnlyAndBack) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"f", "text"));
    EXPECT_TRUE(vfs::isWritable(file(u"f")));
    file(u"f").setWritable(true);
    PKGCORE_NEEDS(Need::Marking);
    file(u"f").setWritable(false);
    EXPECT_FALSE(vfs::isWritable(file(u"f")));
    EXPECT_EQ(read(u"f"), "text");
    file(u"f").setWritable(true);
    EXPECT_TRUE(vfs::isWritable(file(u"f")));
}

TEST_P(ProviderConformance, ANewContentKeepsTheFileWritable) {
    PKGCORE_NEEDS(Need::Writing);
    ASSERT_TRUE(write(u"f", "one"));
    ASSERT_TRUE(write(u"f", "two"));
    EXPECT_TRUE(vfs::isWritable(file(u"f")));
}

TEST_P(ProviderConformance, TimesAreKeptToTheStep) {
    PKGCORE_NEEDS(Need::Writing, Need::Folders, Need::Times);
    ASSERT_TRUE(write(u"f", "text"));
    folder(u"d").createFolder();
    for (const char* text :
         {"2020-02-29 23:59:59.123456", "1999-12-31 00:00:00", "1970-01-01 00:00:00.000001"}) {
        const ptime time = time_from_string(text);
        file(u"f").setLastModified(time);
        folder(u"d").setLastModified(time);
        for (const vfs::FileOrFolder& entry :
             {vfs::FileOrFolder(file(u"f")), vfs::FileOrFolder(folder(u"d"))}) {
            const boost::posix_time::time_duration off = time - vfs::getLastModified(entry);
            EXPECT_LT(off.is_negative() ? off.invert_sign() : off, traits().timeStep) << text;
        }
    }
}

TEST_P(ProviderConformance, NoTimeChangesNothing) {
    PKGCORE_NEEDS(Need::Writing, Need::Times);
    const ptime time = time_from_string("2001-02-03 04:05:06");
    ASSERT_TRUE(write(u"f", "text"));
    file(u"f").setLastModified(time);
    file(u"f").setLastModified(ptime());
    EXPECT_EQ(vfs::getLastModified(file(u"f")), time);
    PKGCORE_EXPECT_FAILURE(NotSupported, file(u"f").setLastModified(ptime(boost::posix_time::pos_infin)));
    EXPECT_EQ(vfs::getLastModified(file(u"f")), time);
}

TEST_P(ProviderConformance, WritingSetsTheTime) {
    PKGCORE_NEEDS(Need::Writing, Need::Times);
    const ptime old = time_from_string("2001-02-03 04:05:06");
    ASSERT_TRUE(write(u"f", "text"));
    file(u"f").setLastModified(old);
    ASSERT_TRUE(write(u"f", "more", std::ios_base::app));
    EXPECT_GT(vfs::getLastModified(file(u"f")), old);
}

TEST_P(ProviderConformance, OnlyWhatIsThereIsMarked) {
    const ptime time = time_from_string("2001-02-03 04:05:06");
    PKGCORE_EXPECT_FAILURE(NotFound, file(u"missing").setWritable(false));
    PKGCORE_EXPECT_FAILURE(NotFound, file(u"missing").setLastModified(time));
    PKGCORE_EXPECT_FAILURE(NotFound, folder(u"missing").setWritable(true));
    PKGCORE_EXPECT_FAILURE(NotFound, folder(u"missing").setLastModified(time));
    PKGCORE_EXPECT_FAILURE(NotFound, vfs::isWritable(file(u"missing")));
    PKGCORE_EXPECT_FAILURE(NotFound, vfs::getLastModified(folder(u"missing")));
    PKGCORE_EXPECT_FAILURE(NotFound, file(u"").setLastModified(time));
}

}  // namespace foundation::storage::conformance
