// The kernel's calendar calls, as they stand.
#include <windows.h>

#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

SYSTEMTIME toSystem(const SystemTimeRecord& time) {
    return SYSTEMTIME{static_cast<WORD>(time.wYear),      static_cast<WORD>(time.wMonth),
                      static_cast<WORD>(time.wDayOfWeek), static_cast<WORD>(time.wDay),
                      static_cast<WORD>(time.wHour),      static_cast<WORD>(time.wMinute),
                      static_cast<WORD>(time.wSecond),    static_cast<WORD>(time.wMilliseconds)};
}

SystemTimeRecord fromSystem(const SYSTEMTIME& time) {
    return SystemTimeRecord{
        static_cast<int16_t>(time.wYear),      static_cast<int16_t>(time.wMonth),
        static_cast<int16_t>(time.wDayOfWeek), static_cast<int16_t>(time.wDay),
        static_cast<int16_t>(time.wHour),      static_cast<int16_t>(time.wMinute),
        static_cast<int16_t>(time.wSecond),    static_cast<int16_t>(time.wMilliseconds)};
}

FILETIME toFile(FileTimeValue value) {
    return FILETIME{static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

FileTimeValue fromFile(const FILETIME& value) {
    return (static_cast<FileTimeValue>(value.dwHighDateTime) << 32) | value.dwLowDateTime;
}

class Win32TimeZone final : public TimeZonePort {
  public:
    bool systemTimeToFileTime(const SystemTimeRecord& time, FileTimeValue& fileTime) override {
        const SYSTEMTIME system = toSystem(time);
        FILETIME file = toFile(fileTime);
        const bool done = SystemTimeToFileTime(&system, &file) != FALSE;
        fileTime = fromFile(file);
        return done;
    }

    bool localFileTimeToFileTime(FileTimeValue& fileTime) override {
        FILETIME file = toFile(fileTime);
        const bool done = LocalFileTimeToFileTime(&file, &file) != FALSE;
        fileTime = fromFile(file);
        return done;
    }

    bool fileTimeToSystemTime(FileTimeValue fileTime, SystemTimeRecord& time) override {
        const FILETIME file = toFile(fileTime);
        SYSTEMTIME system = toSystem(time);
        const bool done = FileTimeToSystemTime(&file, &system) != FALSE;
        time = fromSystem(system);
        return done;
    }

    bool systemTimeToTzSpecificLocalTime(const SystemTimeRecord& universal,
                                         SystemTimeRecord& local) override {
        const SYSTEMTIME in = toSystem(universal);
        SYSTEMTIME out = toSystem(local);
        const bool done = SystemTimeToTzSpecificLocalTime(nullptr, &in, &out) != FALSE;
        local = fromSystem(out);
        return done;
    }
};

}  // namespace

TimeZonePort& systemTimeZone() {
    static Win32TimeZone timeZone;
    return timeZone;
}

}  // namespace ostrel::platform
