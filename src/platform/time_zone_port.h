// The system's calendar conversions between local time and GMT, shaped like
// the Win32 calls: a SYSTEMTIME record and a FILETIME count. Linux keeps
// their difference: the local-to-GMT call applies the offset in force now,
// the zone call the rule of the date (see time_zone_posix.cpp).
#pragma once

#include <cstdint>

namespace ostrel::platform {

// SYSTEMTIME: the fields in the system's order, 16-bit each.
struct SystemTimeRecord {
    int16_t wYear = 0;
    int16_t wMonth = 0;      // 1..12
    int16_t wDayOfWeek = 0;  // the system counts Sunday as 0; it ignores the field on the way in
    int16_t wDay = 0;
    int16_t wHour = 0;
    int16_t wMinute = 0;
    int16_t wSecond = 0;
    int16_t wMilliseconds = 0;
};

// FILETIME: 100-nanosecond intervals since 1 Jan 1601.
using FileTimeValue = uint64_t;

class TimeZonePort {
  public:
    virtual ~TimeZonePort() = default;
    // SystemTimeToFileTime: false for a record that is no valid date (the
    // count is left as it was).
    virtual bool systemTimeToFileTime(const SystemTimeRecord& time, FileTimeValue& fileTime) = 0;
    // LocalFileTimeToFileTime with one variable as input and output: the
    // offset from GMT in force now, whatever the date.
    virtual bool localFileTimeToFileTime(FileTimeValue& fileTime) = 0;
    // FileTimeToSystemTime: false for a count beyond the system's range.
    virtual bool fileTimeToSystemTime(FileTimeValue fileTime, SystemTimeRecord& time) = 0;
    // SystemTimeToTzSpecificLocalTime in the machine's current zone: the
    // rule in force on the date. False when the system refuses.
    virtual bool systemTimeToTzSpecificLocalTime(const SystemTimeRecord& universal,
                                                 SystemTimeRecord& local) = 0;
};

}  // namespace ostrel::platform
