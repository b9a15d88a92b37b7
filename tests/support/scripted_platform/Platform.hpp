#pragma once

#include <pkgcore/platform/filesystem/FileStatus.hpp>

#include "tests/support/scripted_platform/Answers.hpp"
#include "tests/support/scripted_platform/Show.hpp"
#include "tests/support/scripted_platform/StorageScript.hpp"

#include <cstdio>
#include <ios>
#include <map>
#include <string>
#include <vector>

namespace scripted {

/// Calls of the platform in the order in which they were made, each as "name('argument', ...)".
using Calls = std::vector<std::string>;

/// One entry of a scripted folder.
struct Entry {
    std::u16string name;
    unsigned kind;
};

Entry file(const std::u16string& name);
Entry folder(const std::u16string& name);
Entry link(const std::u16string& name);

fl::filesystem::file_status ofKind(unsigned kind);
fl::filesystem::file_status nothing();
fl::filesystem::file_status aFile();
fl::filesystem::file_status aFolder();
fl::filesystem::file_status aLink();

/// A platform that does nothing but remember what was asked of it and answer as it was told. While an object
/// of this class lives, every function of pkgcore/platform works on it; there is at most one.
///
/// Functions that give another form of a text answer with the text in a tag, make_native_form(u"a", true)
/// with u"native(a)", so that a result tells which conversions it went through and in which order. All others
/// answer as their member here says; without any word, nothing exists, nothing fails, and folders are empty.
///
///     Platform platform;
///     platform.symlink_status.at(u"a").returns(aFolder());
///     platform.remove.throws(AccessDenied(u"b"));
///     platform.folders[u"native(top)"] = {file(u"x"), folder(u"sub")};
class Platform {
public:
    Platform();
    ~Platform();
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    static Platform& current();

    const Calls& calls() const { return calls_; }

    /// Those of `calls()` to functions of one of these names.
    Calls callsTo(const std::vector<std::string>& names) const;

    template <typename... Arguments>
    void record(const std::string& name, const Arguments&... arguments) {
        std::string list;
        ((list += (list.empty() ? "" : ", ") + show(arguments)), ...);
        calls_.push_back(name + "(" + list + ")");
    }

    // fl::filesystem
    Answers<fl::filesystem::file_status> symlink_status;
    Answers<bool> exists;
    Answers<void> copy_file;
    Answers<void> copy_directory;
    Answers<void> copy_symlink;
    Answers<void> rename;
    Answers<void> remove;
    Answers<void> remove_all;
    Answers<bool> create_directory;
    Answers<bool> create_directories;
    Answers<void> create_symlink;
    Answers<std::u16string> read_symlink;
    Answers<void> permissions;
    Answers<void> last_write_time;
    Answers<std::u16string> temp_directory_name;
    Answers<std::u16string> get_current_path;
    Answers<std::u16string> tmpnam;
    /// Without an answer: a stream whose end is recorded as "fclose()".
    Answers<std::FILE*> tmpfile;
    std::u16string tmpfileName = u"tmpfile name";

    // Listings. A folder goes by the path that it is opened with, an entry by that path, "/" and its name.
    std::map<std::u16string, std::vector<Entry>> folders;
    Answers<void> openListing;
    Answers<void> increment;
    Answers<fl::filesystem::file_status> entryStatus;

    // File streams: the state that opening leaves the stream in, what an input stream reads, what was
    // written.
    Answers<std::ios_base::iostate> openInput;
    Answers<std::ios_base::iostate> openOutput;
    std::string content;
    std::string written;

    // fl::filesystem::detail
    Answers<std::u16string> make_native_form;
    Answers<std::u16string> make_generic_form;
    Answers<std::u16string> extract_extension;
    Answers<std::u16string> extract_filename;
    Answers<std::u16string> extract_parent_path;
    Answers<std::u16string> concatenate_pathname;
    Answers<bool> is_absolute;
    Answers<std::wstring> to_filesystem;
    Answers<std::wstring> make_access_form;
    Answers<std::wstring> make_native_access_form_with_cleanup;

    // fl::i18n. One set of answers for all overloads of a name.
    Answers<void> initialize;
    Answers<void> makeConverter;
    Answers<std::u16string> to_ustring;
    Answers<std::string> to_string;
    Answers<std::string> to_string_leniently;
    Answers<std::wstring> to_wstring;
    Answers<std::size_t> transform;
    Answers<std::size_t> scan;

    // Times, by the ISO form of their argument (20240229T000000). Without an answer: the argument.
    Answers<boost::posix_time::ptime> from_utc;
    Answers<boost::posix_time::ptime> to_utc;

    // foundation::storage
    StorageScript storage;

private:
    Calls calls_;
};

}  // namespace scripted
