#include <pkgcore/platform/i18n/TimeZone.hpp>

#include <pkgcore/platform/i18n/StdLocale.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

namespace fl::i18n {

using boost::posix_time::ptime;
using scripted::Platform;

namespace time_zone {

timezone::timezone(const std::string& name) { Platform::current().record("timezone", name); }

ptime from_utc(const ptime& utc, const timezone& /*zone*/) {
    Platform::current().record("from_utc", utc);
    return Platform::current().from_utc.next(scripted::widen(scripted::show(utc)), [&] { return utc; });
}

ptime to_utc(const ptime& local, const timezone& /*zone*/) {
    Platform::current().record("to_utc", local);
    return Platform::current().to_utc.next(scripted::widen(scripted::show(local)), [&] { return local; });
}

}  // namespace time_zone

namespace facet {

std::locale get_global_std_locale() {
    Platform::current().record("get_global_std_locale");
    return std::locale::classic();
}

}  // namespace facet
}  // namespace fl::i18n
