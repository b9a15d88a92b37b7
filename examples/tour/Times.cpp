// Times as text, and on this machine's wall clock.

#include "Tour.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

namespace tour {

namespace {

using boost::posix_time::ptime;

const ptime kNoon(boost::gregorian::date(2024, 7, 1), boost::posix_time::time_duration(12, 0, 0));

void writeAndReadText(Step& step) {
    const opc::ustring text = u"2024-07-01T12:00:00Z";
    step.checkEqual("convertTimeToString", opc::convertTimeToString(kNoon), text);
    step.checkEqual("convertStringToTime", opc::convertStringToTime(text), kNoon);
    step.check(opc::convertStringToTime(u"noon").is_not_a_date_time(), "a text that is no time gave one");
    step.count(3);
}

void askTheWallClock(Step& step) {
    const ptime local = opc::convertToLocalTime(kNoon);
    step.checkEqual("convertToUTCTime", opc::convertToUTCTime(local), kNoon);
    step.count(2);
    step.note(printable(opc::convertTimeToString(kNoon)) + " is " + describe(local) +
              " on the wall clock here");
}

}  // namespace

void tellTheTime(Tour& /*tour*/, Step& step) {
    const ptime now = opc::getCurrentTime();
    step.checkEqual("the text of now, read back", opc::convertStringToTime(opc::convertTimeToString(now)),
                    now);
    step.count(1);
    step.note("now: " + printable(opc::convertTimeToString(now)) + ", here " +
              describe(opc::convertToLocalTime(now)));
    writeAndReadText(step);
    askTheWallClock(step);
}

}  // namespace tour
