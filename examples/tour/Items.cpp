// What can be said about one item: its time, its permissions, where it points to.

#include "Tour.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

namespace tour {

namespace {

namespace errc = boost::system::errc;

const boost::posix_time::ptime kLongAgo(boost::gregorian::date(2001, 2, 3),
                                        boost::posix_time::time_duration(4, 5, 6) +
                                            boost::posix_time::microseconds(789));

constexpr auto kOwnerAndGroup = static_cast<opc::Perms::Perms_tag>(
    opc::Perms::OwnerRead | opc::Perms::OwnerWrite | opc::Perms::GroupRead);

}  // namespace

void setTimesAndPermissions(Tour& tour, Step& step) {
    opc::FileSystemOps& files = tour.files;
    const opc::ustring path = files.appendPath(tour.scratch, u"dated.txt");
    writeText(files, path, "a file with a past");

    files.setLastModifiedTime(path, kLongAgo);
    step.checkEqual("getLastModifiedTime", files.getLastModifiedTime(path), kLongAgo);

    files.setPermissions(path, kOwnerAndGroup);
    step.checkEqual("getPermissions", files.getPermissions(path), kOwnerAndGroup);

    // Both have a value that asks for nothing, so that what could not be read can be handed back as it is.
    files.setLastModifiedTime(path, boost::posix_time::not_a_date_time);
    files.setPermissions(path, opc::Perms::NotKnown);
    step.checkEqual("getLastModifiedTime, unchanged", files.getLastModifiedTime(path), kLongAgo);
    step.checkEqual("getPermissions, unchanged", files.getPermissions(path), kOwnerAndGroup);
    step.count(1);
    step.note("time " + describe(kLongAgo) + ", permissions " + describe(kOwnerAndGroup));
    step.note("time to the second: " + printable(opc::convertTimeToString(kLongAgo)));
}

namespace {

/// Queries speak of the link itself; only streams follow it.
void followLink(opc::FileSystemOps& files, const opc::ustring& link, Step& step) {
    step.checkEqual("isSymlink(link)", files.isSymlink(link), true);
    step.checkEqual("isFile(link)", files.isFile(link), false);
    step.checkEqual("getLinkTarget(link)", files.getLinkTarget(link), opc::ustring(u"original.txt"));
    step.checkEqual("text read through the link", readText(files, link), std::string("the original"));
}

void lookAtDanglingLink(opc::FileSystemOps& files, const opc::ustring& link, Step& step) {
    step.checkEqual("exists(dangling link)", files.exists(link), true);
    step.checkFails("reading through a dangling link", errc::io_error,
                    [&](auto& ec) { files.createInputStream(link, std::ios_base::binary, ec); });
}

}  // namespace

void makeAndFollowLinks(Tour& tour, Step& step) {
    opc::FileSystemOps& files = tour.files;
    const opc::ustring folder = files.appendPath(tour.scratch, u"links");
    const opc::ustring original = files.appendPath(folder, u"original.txt");
    const opc::ustring link = files.appendPath(folder, u"link");
    const opc::ustring dangling = files.appendPath(folder, u"dangling");
    const opc::ustring copied = files.appendPath(folder, u"copied");
    files.createFolder(folder);
    writeText(files, original, "the original");

    // Plain names: each "/" of a target is written as "\", which POSIX hosts take for a part of the name.
    files.createSymlink(u"original.txt", link);
    followLink(files, link, step);

    files.createSymlink(u"nowhere", dangling);
    lookAtDanglingLink(files, dangling, step);

    files.copy(link, copied, opc::Fail);
    step.checkEqual("isSymlink(copy of a link)", files.isSymlink(copied), true);

    files.removeAll(link);
    step.checkEqual("exists(removed link)", files.exists(link), false);
    step.checkEqual("exists(its target)", files.exists(original), true);
    step.count(3);
}

}  // namespace tour
