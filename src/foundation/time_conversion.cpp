#include "foundation/time_conversion.h"

#include "foundation/globals.h"
#include "runtime/automation_error.h"
#include "runtime/format.h"

namespace ostrel {

namespace {

using platform::SystemTimeRecord;

platform::TimeZonePort& timeZone() {
    return requirePort(apartment().ports.timeZone);
}

// The date-time into the record, field by field as the calendar functions
// give them.
SystemTimeRecord recordOf(double date) {
    const DateTimeParts parts = fromCalendarValue(date);
    SystemTimeRecord record;
    record.wDay = static_cast<int16_t>(parts.day);
    record.wMonth = static_cast<int16_t>(parts.month);
    record.wYear = static_cast<int16_t>(parts.year);
    record.wHour = static_cast<int16_t>(parts.hour);
    record.wMinute = static_cast<int16_t>(parts.minute);
    record.wSecond = static_cast<int16_t>(parts.second);
    // kept: Monday is 1 and Sunday 7, not the system's numbering; the calls
    // ignore the field on the way in.
    record.wDayOfWeek = static_cast<int16_t>(weekdayFromMonday(date));
    record.wMilliseconds = 0;
    return record;
}

// The date at midnight, then the hours, minutes and seconds added one after
// the other; the milliseconds are not looked at.
double dateOf(const SystemTimeRecord& record) {
    double date = toCalendarValue(DateTimeParts{record.wYear, record.wMonth, record.wDay});
    date = dateAdd(TimeInterval::Hour, record.wHour, date);
    date = dateAdd(TimeInterval::Minute, record.wMinute, date);
    return dateAdd(TimeInterval::Second, record.wSecond, date);
}

}  // namespace

double gfdatConvertToGMT(double vdatLocal) {
    try {
        SystemTimeRecord record = recordOf(vdatLocal);
        platform::TimeZonePort& port = timeZone();
        platform::FileTimeValue fileTime = 0;
        // The answers of the three calls are not looked at: a refused call
        // leaves the value or the record as it was.
        port.systemTimeToFileTime(record, fileTime);
        port.localFileTimeToFileTime(fileTime);
        port.fileTimeToSystemTime(fileTime, record);
        return dateOf(record);
    } catch (...) {
        const AutomationError error = currentError();
        throw AutomationError(error.number, "[gfdatConvertToGMT]" + error.description,
                              "[OstrelGlobals.gfdatConvertToGMT]");
    }
}

double gfdatNowGMT() {
    return gfdatConvertToGMT(toCalendarValue(requirePort(apartment().ports.clock).now()));
}

double gfdatConvertFromGMT(double vdatGMT) {
    const SystemTimeRecord universal = recordOf(vdatGMT);
    SystemTimeRecord local;
    if (!timeZone().systemTimeToTzSpecificLocalTime(universal, local)) return vdatGMT;
    return dateOf(local);
}

}  // namespace ostrel
