// Which operations of the local back end turn an exception into a message, a code and a neutral result, and
// which let it pass: each of the 27, for each call of the platform that it makes.

#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include "tests/contract/LocalContract.hpp"

#include <functional>

using contract::LocalContract;
using contract::OpenLocalOps;
using scripted::Platform;
using scripted::show;
namespace errc = boost::system::errc;

namespace {

using Code = boost::system::error_code;
using Failure = std::exception_ptr;

const boost::posix_time::ptime kTime(boost::gregorian::date(2024, 2, 29));

/// One operation and one call of the platform in it that fails.
struct Case {
    std::string name;
    std::function<void(Platform&, Failure)> script;
    /// Gives the result as text, "-" for none.
    std::function<std::string(OpenLocalOps&, std::string&, Code&)> call;
    std::string neutral;
};

std::string files(OpenLocalOps& ops, std::string& msg, Code& ec) {
    std::vector<opc::ustring> found;
    ops.doGetFiles(u"a", found, true, msg, ec);
    return std::to_string(found.size()) + " files";
}

void copyOf(Platform& p, const fl::filesystem::file_status& source) {
    p.symlink_status.at(u"a").returns(source);
    p.symlink_status.at(u"b").returns(scripted::aFolder());
}

std::string copy(OpenLocalOps& o, std::string& m, Code& e) {
    return o.doCopy(u"a", u"b", opc::Replace, m, e), "-";
}

const std::string kEmpty = "''";
const std::string kNoTime = "not-a-date-time";
const std::string kNotKnown = "65535";

const std::vector<Case> kTranslating = {
    {"doGetTempName_tmpnam", [](auto& p, auto f) { p.tmpnam.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetTempName(u"a", m, e)); }, kEmpty},
    {"doGetTempName_exists", [](auto& p, auto f) { p.exists.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetTempName(u"a", m, e)); }, kEmpty},
    {"doGetTempName_make_native_form", [](auto& p, auto f) { p.make_native_form.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetTempName(u"a", m, e)); }, kEmpty},
    {"doGetParentPath_make_native_form", [](auto& p, auto f) { p.make_native_form.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetParentPath(u"a", m, e)); }, kEmpty},
    {"doGetParentPath_make_generic_form", [](auto& p, auto f) { p.make_generic_form.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetParentPath(u"a", m, e)); }, kEmpty},
    {"doAppendPath_make_native_form", [](auto& p, auto f) { p.make_native_form.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doAppendPath(u"a", u"b", m, e)); }, kEmpty},
    {"doAppendPath_concatenate_pathname", [](auto& p, auto f) { p.concatenate_pathname.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doAppendPath(u"a", u"b", m, e)); }, kEmpty},
    {"doAppendPath_make_generic_form", [](auto& p, auto f) { p.make_generic_form.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doAppendPath(u"a", u"", m, e)); }, kEmpty},
    {"doExists", [](auto& p, auto f) { p.symlink_status.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doExists(u"a", m, e)); }, "false"},
    {"doIsFile", [](auto& p, auto f) { p.symlink_status.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doIsFile(u"a", m, e)); }, "false"},
    {"doIsFolder", [](auto& p, auto f) { p.symlink_status.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doIsFolder(u"a", m, e)); }, "false"},
    {"doIsSymlink", [](auto& p, auto f) { p.symlink_status.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doIsSymlink(u"a", m, e)); }, "false"},
    {"doGetPermissions", [](auto& p, auto f) { p.symlink_status.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetPermissions(u"a", m, e)); }, kNotKnown},
    {"doSetPermissions", [](auto& p, auto f) { p.permissions.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return o.doSetPermissions(u"a", opc::Perms::ReadWrite, m, e), "-"; },
     "-"},
    {"doGetLastModifiedTime", [](auto& p, auto f) { p.symlink_status.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetLastModifiedTime(u"a", m, e)); }, kNoTime},
    {"doSetLastModifiedTime", [](auto& p, auto f) { p.last_write_time.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return o.doSetLastModifiedTime(u"a", kTime, m, e), "-"; }, "-"},
    {"doGetLinkTarget_read_symlink", [](auto& p, auto f) { p.read_symlink.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetLinkTarget(u"a", m, e)); }, kEmpty},
    {"doGetLinkTarget_make_generic_form", [](auto& p, auto f) { p.make_generic_form.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetLinkTarget(u"a", m, e)); }, kEmpty},
    {"doGetFiles_make_native_form", [](auto& p, auto f) { p.make_native_form.rethrows(f); }, files,
     "0 files"},
    {"doGetFiles_open", [](auto& p, auto f) { p.openListing.rethrows(f); }, files, "0 files"},
    {"doCreateFolder", [](auto& p, auto f) { p.create_directory.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return o.doCreateFolder(u"a", m, e), "-"; }, "-"},
    {"doCreateFolders", [](auto& p, auto f) { p.create_directories.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return o.doCreateFolders(u"a", m, e), "-"; }, "-"},
    {"doCreateSymlink", [](auto& p, auto f) { p.create_symlink.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return o.doCreateSymlink(u"a", u"b", m, e), "-"; }, "-"},
    {"doCopy_symlink_status_of_source", [](auto& p, auto f) { p.symlink_status.at(u"a").rethrows(f); }, copy,
     "-"},
    {"doCopy_symlink_status_of_destination",
     [](auto& p, auto f) {
         p.symlink_status.at(u"a").returns(scripted::aFolder());
         p.symlink_status.at(u"b").rethrows(f);
     },
     copy, "-"},
    {"doCopy_copy_file", [](auto& p, auto f) { copyOf(p, scripted::aFile()), p.copy_file.rethrows(f); }, copy,
     "-"},
    {"doCopy_remove_all", [](auto& p, auto f) { copyOf(p, scripted::aFolder()), p.remove_all.rethrows(f); },
     copy, "-"},
    {"doCopy_copy_directory",
     [](auto& p, auto f) { copyOf(p, scripted::aFolder()), p.copy_directory.rethrows(f); }, copy, "-"},
    {"doCopy_copy_symlink", [](auto& p, auto f) { copyOf(p, scripted::aLink()), p.copy_symlink.rethrows(f); },
     copy, "-"},
    {"doRename", [](auto& p, auto f) { p.rename.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return o.doRename(u"a", u"b", m, e), "-"; }, "-"},
    {"doRemove", [](auto& p, auto f) { p.remove.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return o.doRemove(u"a", m, e), "-"; }, "-"},
    {"doRemoveAll", [](auto& p, auto f) { p.remove_all.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return o.doRemoveAll(u"a", m, e), "-"; }, "-"},
};

const std::vector<Case> kExempt = {
    {"doGetFilename_make_native_form", [](auto& p, auto f) { p.make_native_form.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetFilename(u"a", m, e)); }, ""},
    {"doGetFilename_extract_filename", [](auto& p, auto f) { p.extract_filename.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetFilename(u"a", m, e)); }, ""},
    {"doGetExtension_make_native_form", [](auto& p, auto f) { p.make_native_form.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetExtension(u"a", m, e)); }, ""},
    {"doGetExtension_extract_extension", [](auto& p, auto f) { p.extract_extension.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doGetExtension(u"a", m, e)); }, ""},
    {"doNormalizePath_make_native_form", [](auto& p, auto f) { p.make_native_form.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doNormalizePath(u"a", m, e)); }, ""},
    {"doNormalizePath_make_generic_form", [](auto& p, auto f) { p.make_generic_form.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doNormalizePath(u"a", m, e)); }, ""},
    {"doIsAbsolutePath_make_native_form", [](auto& p, auto f) { p.make_native_form.rethrows(f); },
     [](auto& o, auto&, auto&) { return show(o.doIsAbsolutePath(u"a")); }, ""},
    {"doIsAbsolutePath_is_absolute", [](auto& p, auto f) { p.is_absolute.rethrows(f); },
     [](auto& o, auto&, auto&) { return show(o.doIsAbsolutePath(u"a")); }, ""},
    {"doCreateInputStream_path", [](auto& p, auto f) { p.make_native_access_form_with_cleanup.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doCreateInputStream(u"a", 0, m, e) != nullptr); }, ""},
    {"doCreateInputStream_open", [](auto& p, auto f) { p.openInput.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doCreateInputStream(u"a", 0, m, e) != nullptr); }, ""},
    {"doCreateOutputStream_path", [](auto& p, auto f) { p.make_native_access_form_with_cleanup.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doCreateOutputStream(u"a", 0, m, e) != nullptr); }, ""},
    {"doCreateOutputStream_open", [](auto& p, auto f) { p.openOutput.rethrows(f); },
     [](auto& o, auto& m, auto& e) { return show(o.doCreateOutputStream(u"a", 0, m, e) != nullptr); }, ""},
};

/// Each case on a platform of its own whose call fails with `failure`.
template <typename Check>
void forEach(const std::vector<Case>& cases, Failure failure, Check check) {
    for (const Case& operation : cases) {
        SCOPED_TRACE(operation.name);
        contract::LocalFixture fixture;
        operation.script(fixture.platform, failure);
        check(operation, fixture);
    }
}

TEST(LocalTranslatingOperations, TranslateAFailureOfTheFileSystemAndAreNeutral) {
    const auto failure = std::make_exception_ptr(fl::filesystem::AccessDenied("words", u"p", {}));
    forEach(kTranslating, failure, [](const Case& operation, contract::LocalFixture& local) {
        EXPECT_EQ(operation.call(local.ops, local.msg, local.ec), operation.neutral);
        local.expectReported(errc::permission_denied, "words: user(p)");
    });
}

TEST(LocalTranslatingOperations, TranslateWhateverElseIsThrownAndAreNeutral) {
    forEach(kTranslating, std::make_exception_ptr(7),
            [](const Case& operation, contract::LocalFixture& local) {
                EXPECT_EQ(operation.call(local.ops, local.msg, local.ec), operation.neutral);
                local.expectReported(errc::io_error, "Unknown error");
            });
}

TEST(LocalExemptOperations, LetEveryExceptionPassAndReportNothing) {
    const auto failure = std::make_exception_ptr(fl::filesystem::AccessDenied(u"p"));
    forEach(kExempt, failure, [](const Case& operation, contract::LocalFixture& local) {
        EXPECT_THROW(operation.call(local.ops, local.msg, local.ec), fl::filesystem::AccessDenied);
        local.expectNothingReported();
    });
}

class LocalTempName : public LocalContract {};

TEST_F(LocalTempName, TranslatesAMissingTemporaryFolderAsUnknown) {
    platform.temp_directory_name.throws(fl::filesystem::AccessDenied("words", u"p", {}));
    EXPECT_EQ(ops.doGetTempName(u"", msg, ec), u"");
    // By then it is the library's own exception, which the translation has no row for.
    expectReported(errc::io_error, "Unknown error");
}

}  // namespace
