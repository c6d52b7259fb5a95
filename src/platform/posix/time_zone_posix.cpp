// The calendar calls through the C library and the time-zone database (TZ
// as the process sees it). The two directions differ as on Windows: local
// to GMT subtracts the offset in force now (localtime_r of the present),
// GMT to local applies the rule of the date (localtime_r of that instant).
#include <ctime>

#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

constexpr int64_t kTicksPerSecond = 10'000'000;
constexpr int64_t kTicksPerMillisecond = 10'000;
constexpr int64_t kSecondsFrom1601To1970 = 11'644'473'600;
constexpr int kLastYear = 30827;  // the last year a SYSTEMTIME may hold

// The record's instant as seconds since 1970 in GMT, or false when a field
// is out of its range or the day is not in the month.
bool secondsOf(const SystemTimeRecord& time, int64_t& seconds) {
    if (time.wYear < 1601 || time.wYear > kLastYear || time.wMonth < 1 || time.wMonth > 12 ||
        time.wDay < 1 || time.wHour < 0 || time.wHour > 23 || time.wMinute < 0 ||
        time.wMinute > 59 || time.wSecond < 0 || time.wSecond > 59 || time.wMilliseconds < 0 ||
        time.wMilliseconds > 999) {
        return false;
    }
    std::tm fields{};
    fields.tm_year = time.wYear - 1900;
    fields.tm_mon = time.wMonth - 1;
    fields.tm_mday = time.wDay;
    fields.tm_hour = time.wHour;
    fields.tm_min = time.wMinute;
    fields.tm_sec = time.wSecond;
    const std::time_t instant = timegm(&fields);
    if (fields.tm_mday != time.wDay) return false;  // 31 April became 1 May
    seconds = instant;
    return true;
}

void fill(const std::tm& fields, int16_t milliseconds, SystemTimeRecord& time) {
    time.wYear = static_cast<int16_t>(fields.tm_year + 1900);
    time.wMonth = static_cast<int16_t>(fields.tm_mon + 1);
    time.wDayOfWeek = static_cast<int16_t>(fields.tm_wday);
    time.wDay = static_cast<int16_t>(fields.tm_mday);
    time.wHour = static_cast<int16_t>(fields.tm_hour);
    time.wMinute = static_cast<int16_t>(fields.tm_min);
    time.wSecond = static_cast<int16_t>(fields.tm_sec);
    time.wMilliseconds = milliseconds;
}

class PosixTimeZone final : public TimeZonePort {
  public:
    bool systemTimeToFileTime(const SystemTimeRecord& time, FileTimeValue& fileTime) override {
        int64_t seconds = 0;
        if (!secondsOf(time, seconds)) return false;
        fileTime = static_cast<FileTimeValue>((seconds + kSecondsFrom1601To1970) * kTicksPerSecond +
                                              time.wMilliseconds * kTicksPerMillisecond);
        return true;
    }

    bool localFileTimeToFileTime(FileTimeValue& fileTime) override {
        tzset();  // a changed TZ counts from the next call, as a zone change does on Windows
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        if (!localtime_r(&now, &local)) return false;
        // Wraps below 1601 as the unsigned count does; the way back refuses it.
        fileTime -= static_cast<FileTimeValue>(local.tm_gmtoff * kTicksPerSecond);
        return true;
    }

    bool fileTimeToSystemTime(FileTimeValue fileTime, SystemTimeRecord& time) override {
        if (fileTime > static_cast<FileTimeValue>(INT64_MAX)) return false;
        const auto ticks = static_cast<int64_t>(fileTime);
        const std::time_t seconds = ticks / kTicksPerSecond - kSecondsFrom1601To1970;
        std::tm fields{};
        if (!gmtime_r(&seconds, &fields) || fields.tm_year + 1900 > kLastYear + 1) return false;
        fill(fields, static_cast<int16_t>(ticks / kTicksPerMillisecond % 1000), time);
        return true;
    }

    bool systemTimeToTzSpecificLocalTime(const SystemTimeRecord& universal,
                                         SystemTimeRecord& local) override {
        int64_t seconds = 0;
        if (!secondsOf(universal, seconds)) return false;
        tzset();
        const std::time_t instant = seconds;
        std::tm fields{};
        if (!localtime_r(&instant, &fields)) return false;
        fill(fields, universal.wMilliseconds, local);
        return true;
    }
};

}  // namespace

TimeZonePort& systemTimeZone() {
    static PosixTimeZone timeZone;
    return timeZone;
}

}  // namespace ostrel::platform
