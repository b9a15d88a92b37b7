// Failures in their two styles, and work on paths as text.

#include "Tour.hpp"

namespace tour {

namespace {

namespace errc = boost::system::errc;

/// Runs one failing operation in both styles: `thrown` without an error code, `reported` with one.
template <typename Thrown, typename Reported>
void failTwice(errc::errc_t expected, const std::string& prefix, Thrown thrown, Reported reported,
               Step& step) {
    try {
        thrown();
        step.check(false, "nothing was thrown, instead of " + describe(prefix + "..."));
    } catch (const opc::Exception& failure) {
        const std::string text = failure.what();
        step.check(text.compare(0, prefix.size(), prefix) == 0,
                   describe(text) + " lacks the prefix " + describe(prefix));
        step.check(failure.code() == expected, "thrown code: " + describe(failure.code()));
        step.note("thrown:     " + text);
    }
    boost::system::error_code ec;
    reported(ec);
    step.check(ec == expected, "reported code: " + describe(ec));
    step.note("error code: " + describe(ec));
    step.count(2);
}

}  // namespace

void provokeFailures(Tour& tour, Step& step) {
    opc::FileSystemOps& files = tour.files;
    const opc::ustring missing = files.appendPath(tour.scratch, u"no such item");
    failTwice(
        errc::no_such_file_or_directory, "remove failed: ",  //
        [&] { files.remove(missing); }, [&](auto& ec) { files.remove(missing, ec); }, step);
    failTwice(
        errc::file_exists, "createFolder failed: ",  //
        [&] { files.createFolder(tour.scratch); }, [&](auto& ec) { files.createFolder(tour.scratch, ec); },
        step);
}

void takePathsApart(Tour& tour, Step& step) {
    opc::FileSystemOps& files = tour.files;
    const opc::ustring path = files.appendPath(u"/srv//data/", u"/reports/june.tar.gz");
    const auto expect = [&](const char* what, const opc::ustring& found, const opc::ustring& expected) {
        step.checkEqual(what, found, expected);
        step.count(1);
        step.note(std::string(what) + ": " + printable(found));
    };
    expect("appendPath", path, u"/srv/data/reports/june.tar.gz");
    expect("getParentPath", files.getParentPath(path), u"/srv/data/reports");
    expect("getFilename", files.getFilename(path), u"june.tar.gz");
    expect("getExtension", files.getExtension(path), u"gz");
    expect("normalizePath", files.normalizePath(u"reports//../june/"), u"reports/../june");
    step.checkEqual("isAbsolutePath(relative path)", files.isAbsolutePath(u"reports"), false);
}

void drawTempNames(Tour& tour, Step& step) {
    opc::FileSystemOps& files = tour.files;
    const opc::ustring one = files.getTempName(tour.scratch);
    const opc::ustring other = files.getTempName(tour.scratch);
    step.checkEqual("getParentPath(name)", files.getParentPath(one), tour.scratch);
    step.checkEqual("exists(name)", files.exists(one), false);  // a name is drawn, nothing is made
    step.check(one != other, "the same name twice: " + printable(one));
    step.count(2);
    step.note(printable(files.getFilename(one)));
}

}  // namespace tour
