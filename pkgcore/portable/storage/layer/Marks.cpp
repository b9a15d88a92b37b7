#include <pkgcore/portable/storage/layer/Marks.hpp>

namespace foundation::storage::portable {

void setWritable(const Spot& spot, provider::Kind kind, bool isWritable) {
    if (spot.require(kind).isWritable != isWritable) {
        spot.setWritable(isWritable);
    }
}

void setLastModified(const Spot& spot, provider::Kind kind, const boost::posix_time::ptime& time) {
    if (time.is_not_a_date_time()) {
        return;
    }
    spot.require(kind);
    if (time.is_special()) {
        spot.fail(vfs::ErrorCode::NotSupported);
    }
    spot.setLastModified(time);
}

}  // namespace foundation::storage::portable
