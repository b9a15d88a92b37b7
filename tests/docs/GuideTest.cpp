// getting-started.md, iris.md, errors.md and times.md.

#include <pkgcore/pkgcore.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>
#include <pkgcore/testing/FaultProvider.hpp>

#include "getting-started/first-program.includes.inc"
#include "iris/mounting.includes.inc"

#include "tests/docs/Documents.hpp"
#include "tests/support/TempTree.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

namespace {

using boost::posix_time::ptime;
namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

/// What a statement writes to standard output.
template <typename Statement>
std::string outputOf(Statement statement) {
    testing::internal::CaptureStdout();
    statement();
    return testing::internal::GetCapturedStdout();
}

namespace first_program {
#include "getting-started/first-program.inc"
}  // namespace first_program

/// In a working directory of its own.
class Guide : public testing::Test {
protected:
    Guide() { EXPECT_EQ(chdir(tree.path().c_str()), 0); }
    ~Guide() override { EXPECT_EQ(chdir("/"), 0); }

    test::TempTree tree;
    opc::FileSystemOpsSelector selectorOfNativePaths;
    opc::FileSystemOps& files = selectorOfNativePaths.getLocal();
};

TEST_F(Guide, TheFirstProgramListsWhatItWrote) {
    EXPECT_EQ(outputOf([] { EXPECT_EQ(first_program::main(), 0); }), "shop/2026/tea.txt\n");
}

TEST_F(Guide, ASelectorFindsTheBackEndOfAPath) {
#include "getting-started/back-ends.inc"
    EXPECT_EQ(isOnDisk, ::access("/srv/notes", F_OK) == 0);
    EXPECT_TRUE(isInMemory);
    EXPECT_EQ(&selector.getForPath(u"/srv/notes"), &selector.getLocal());
    EXPECT_EQ(&selector.getForPath(u"mem://notes/"), &selector.getVirtual());
}

TEST_F(Guide, AFailureIsThrownOrGivenAsACode) {
    const std::string output = outputOf([this] {
#include "getting-started/two-styles.inc"
    });
    EXPECT_EQ(output, "remove failed: Path not found: missing/page\nnothing to remove\n");
}

TEST_F(Guide, TheCodeOfAMissingItemIsACondition) {
    boost::system::error_code ec;
    files.remove(u"missing", ec);
    const std::string output = outputOf([&] {
#include "errors/conditions.inc"
    });
    EXPECT_EQ(output, "nothing there\n");
}

TEST_F(Guide, TextIsConvertedAsItSays) {
#include "getting-started/text.inc"
    EXPECT_EQ(name, u"Grüße.txt");
    EXPECT_EQ(always,
              "Gr\xC3\xBC\xC3\x9F"
              "e.txt");
    EXPECT_EQ(opc::toString(shown, false), name);
    EXPECT_TRUE(same);
}

TEST_F(Guide, BothStylesRemove) {
    files.createFolder(u"a");
    const opc::ustring path = u"a";
    boost::system::error_code ec;
    const auto remove = [&] {
#include "errors/two-styles.inc"
    };
    remove();
    EXPECT_EQ(ec, boost::system::errc::no_such_file_or_directory);  // the first of the two has removed it
    EXPECT_THROW(remove(), opc::Exception);
}

TEST_F(Guide, AStreamIsAskedBehindItsFlush) {
    const auto stream = files.createOutputStream(u"a", std::ios::binary);
    const std::string text = "tea";
#include "errors/flush.inc"
    EXPECT_TRUE(stream->good());
}

TEST(IRIs, AreEncodedAndNamesArePlain) {
#include "iris/mounting.inc"
    EXPECT_TRUE(files.isFolder(u"MEM://notes/2026"));
#include "iris/names.inc"
    EXPECT_EQ(place, u"mem://notes/100%25%20done%3F.txt");
    EXPECT_EQ(name, u"100% done?.txt");
}

TEST_F(Guide, TimesOfFilesAreKept) {
    const opc::ustring path = u"a";
    files.createFolder(path);
#include "times/files.inc"
    EXPECT_EQ(kept, noon);
#include "times/text.inc"
    EXPECT_EQ(text, u"2026-07-01T12:00:00Z");
    EXPECT_EQ(time, noon);
    EXPECT_TRUE(isNoTime);
}

TEST_F(Guide, TheExactFormOfATimeIsTheOneThatIsWritten) {
    for (const opc::ustring given : {u"2026-07-01T12:00:00Z", u"2026/07/01T12:00:00", u"2026-07"}) {
#include "times/exact.inc"
        EXPECT_EQ(isExact, given.size() == 20);
        EXPECT_FALSE(opc::convertStringToTime(given).is_not_a_date_time());
    }
}

TEST_F(Guide, TheClockOnTheWallComesBack) {
#include "times/clocks.inc"
    EXPECT_FALSE(here.is_not_a_date_time());
    EXPECT_LE(std::max(now, again) - std::min(now, again), boost::posix_time::hours(2));
}

/// Calls of the virtual back end whose texts the page has to the letter.
struct Mistake {
    const char16_t* iri;
    const char* text;
};

const Mistake kMistakes[] = {
    {u"mem://a/b c", "Character U+0020 at offset 9 is not allowed in the path of an IRI"},
    {u"abcdefghi", "The end at offset 9 is not allowed in the scheme of an IRI"},
    {u"mem://a/b%2F", "Character U+002F, encoded at offset 9, is not allowed in a name"},
    {u"mem://a/b%zz", "The percent-encoding at offset 9 lacks its two hexadecimal digits"},
    {u"mem://a/b%ff", "The percent-encoding at offset 9 is not UTF-8"},
};

std::string messageOf(opc::FileSystemOps& files, const opc::ustring& iri) {
    try {
        files.exists(iri);
    } catch (const opc::Exception& failure) {
        EXPECT_EQ(failure.code(), boost::system::errc::bad_address);
        return failure.what();
    }
    return "";
}

TEST(ErrorsTable, HasWhatIsWrongWithAnIRI) {
    const std::string text = documents::textOf("errors.md");
    const opc::FileSystemOpsSelector selector(
        vfs::StorageSystemBuilder().mount(u"mem", provider::makeMemoryProvider()).build());
    for (const Mistake& mistake : kMistakes) {
        const std::string message = messageOf(selector.getVirtual(), mistake.iri);
        EXPECT_EQ(message.rfind(std::string("exists failed: ") + mistake.text + ": ", 0), 0U) << message;
        EXPECT_NE(documents::rowOf(text, mistake.text), "") << mistake.text;
    }
}

TEST(ErrorsTable, AStreamTellsWhatIsNoIRIAndWhichSchemeIsNotMounted) {
    namespace errc = boost::system::errc;
    const opc::FileSystemOpsSelector selector(vfs::StorageSystemBuilder()
                                                  .mount(u"mem", provider::makeMemoryProvider())
                                                  .mount(u"box", u"inbox", provider::makeMemoryProvider())
                                                  .build());
    const std::pair<opc::ustring, errc::errc_t> expected[] = {
        {u"/srv/notes", errc::bad_address},
        {u"nobodys://a/b", errc::address_family_not_supported},
        {u"zip://a/b", errc::address_family_not_supported},  // known, and not mounted
        {u"box://outbox/b", errc::io_error},
        {u"mem://a/b", errc::io_error},
    };
    for (const auto& [path, code] : expected) {
        boost::system::error_code ec;
        EXPECT_EQ(selector.getVirtual().createInputStream(path, 0, ec), nullptr);
        EXPECT_EQ(ec, code);
    }
}

/// One failure of a storage system, as the table of codes has it.
struct StorageRow {
    vfs::ErrorCode failure;
    const char* failureName;
    boost::system::errc::errc_t code;
    const char* codeName;
};

#define ROW(failure, code) \
    { vfs::ErrorCode::failure, #failure, boost::system::errc::code, #code }

const StorageRow kStorageRows[] = {
    ROW(FolderNotEmpty, directory_not_empty),   ROW(NoSuchStorage, no_such_device_or_address),
    ROW(AccessDenied, permission_denied),       ROW(AlreadyExists, file_exists),
    ROW(NotFound, no_such_file_or_directory),   ROW(ReadOnlyStorage, read_only_file_system),
    ROW(FileTooLarge, file_too_large),          ROW(TemporarilyBusy, resource_unavailable_try_again),
    ROW(NoSpace, no_space_on_device),           ROW(IOError, io_error),
    ROW(NotRecoverable, state_not_recoverable), ROW(NotSupported, operation_not_supported),
};

/// The text of a table's cell for a failure: "<text> (`<name>`, <value>)".
std::string cellFor(const StorageRow& row) {
    const vfs::Exception failure(row.failure, vfs::AbsoluteIRI());
    return std::string(failure.what()) + " (`" + row.failureName + "`, " +
           std::to_string(static_cast<unsigned>(row.failure)) + ")";
}

TEST(ErrorsTable, HasEveryFailureOfTheStorage) {
    namespace faults = foundation::storage::conformance;
    const std::string text = documents::textOf("errors.md");
    const auto store = std::make_shared<faults::FaultProvider>(provider::makeMemoryProvider());
    const opc::FileSystemOpsSelector selector(vfs::StorageSystemBuilder().mount(u"mem", store).build());
    for (const StorageRow& row : kStorageRows) {
        boost::system::error_code ec;
        store->fail({1, faults::Verb::Find, faults::Effect::FailBefore, row.failure, false});
        selector.getVirtual().exists(u"mem://notes/a", ec);
        EXPECT_EQ(ec, row.code) << row.codeName;
        const std::string cells = documents::rowOf(text, std::string("`") + row.codeName + "`");
        EXPECT_NE(cells.find(cellFor(row)), std::string::npos) << cellFor(row) << " is not in " << cells;
    }
}

}  // namespace
