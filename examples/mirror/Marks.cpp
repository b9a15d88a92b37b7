#include "Marks.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

namespace mirror {

namespace {

constexpr unsigned kCarried = 0777;  // set-uid, set-gid and sticky stay behind
constexpr unsigned kWriteBits = 0222;
constexpr unsigned kOwnerWrites = 0200;
constexpr unsigned kOwnersBits = 0700;

unsigned permissionsOf(const Item& item) {
    const std::optional<opc::ustring> native = item.native();
    return native ? item.nativeFiles().getPermissions(*native) & kCarried
                  : item.files().getPermissions(item.path) & kCarried;
}

void setPermissions(const Item& item, unsigned permissions) {
    const auto value = static_cast<opc::Perms::Perms_tag>(permissions);
    if (const std::optional<opc::ustring> native = item.native()) {
        item.nativeFiles().setPermissions(*native, value);
        return;
    }
    boost::system::error_code ec;
    item.files().setPermissions(item.path, value, ec);
    if (ec.failed() && ec != boost::system::errc::operation_not_supported) {
        item.files().setPermissions(item.path, value);  // for the words of its exception
    }
}

/// `current` with or without the right to write.
unsigned withWriting(unsigned current, bool isWritable) {
    const bool isSo = (current & kWriteBits) != 0;
    return isSo == isWritable ? current : isWritable ? current | kOwnerWrites : current & ~kWriteBits;
}

}  // namespace

void copyPermissions(const Item& original, const Item& copy) {
    const unsigned given = permissionsOf(original);
    const unsigned current = permissionsOf(copy);
    const unsigned wanted =
        areNative(original, copy) ? given : withWriting(current, (given & kWriteBits) != 0);
    if (wanted != current) {
        setPermissions(copy, wanted);
    }
}

void setTime(const Item& item, const boost::posix_time::ptime& time) {
    boost::system::error_code ignored;
    item.files().setLastModifiedTime(item.path, time, ignored);
}

void openUp(const Item& folder) {
    try {
        const unsigned current = permissionsOf(folder);
        const unsigned needed = folder.native() ? current | kOwnersBits : withWriting(current, true);
        if (needed != current) {
            setPermissions(folder, needed);
        }
    } catch (const opc::Exception&) {
        // What cannot be written then says so itself.
    }
}

}  // namespace mirror
