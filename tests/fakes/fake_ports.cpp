#include "fakes/fake_ports.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "runtime/automation_error.h"
#include "runtime/format.h"

namespace ostrel::fakes {

namespace {

// Seconds from 1 Jan 1601, through the run time's calendar.
constexpr int64_t kTicksPerSecond = 10'000'000;
double firstDay() {
    return toCalendarValue(DateTimeParts{1601, 1, 1});
}

// The text and a NUL at the start of the buffer: its length, or when it
// doesn't fit, the size it needs.
uint32_t answerText(const std::string& text, std::string& buffer, uint32_t size) {
    const auto needed = static_cast<uint32_t>(text.size() + 1);
    if (needed > size || buffer.size() < needed) return needed;
    buffer.replace(0, needed, text + '\0');
    return needed - 1;
}

bool answerName(const std::map<int32_t, std::string>& names, int32_t format, std::string& buffer,
                uint32_t& size) {
    const auto found = names.find(format);
    if (found == names.end()) return false;
    size = answerText(found->second, buffer, size);
    return size == found->second.size();
}

std::string settingKey(std::string_view application, std::string_view section,
                       std::string_view key) {
    return std::string(application) + "\\" + std::string(section) + "\\" + std::string(key);
}

std::string hex(uint32_t number) {
    char text[16];
    std::snprintf(text, sizeof text, "%X", number);
    return text;
}

// The application, the chosen folder and its item in one: each answer is a
// new one of these on the same shell.
class FakeShellObject : public platform::ShellApplication,
                        public platform::ShellFolder,
                        public platform::ShellFolderItem {
  public:
    explicit FakeShellObject(FakeShell& shell) : shell_(shell) {}
    std::unique_ptr<platform::ShellFolder> browseForFolder(int32_t owner, std::string_view title,
                                                           int32_t options,
                                                           std::string_view root) override {
        shell_.calls.push_back(std::to_string(owner) + "|" + std::string(title) + "|" +
                               std::to_string(options) + "|" + std::string(root));
        if (!shell_.choice) return nullptr;
        return std::make_unique<FakeShellObject>(shell_);
    }
    std::unique_ptr<platform::ShellFolderItem> self() override {
        if (shell_.selfIsNothing) return nullptr;
        return std::make_unique<FakeShellObject>(shell_);
    }
    std::string path() override { return *shell_.choice; }

  private:
    FakeShell& shell_;
};

class FakeWmiServices final : public platform::WmiServices {
  public:
    explicit FakeWmiServices(FakeWmi& wmi)
        : wmi_(wmi), records_([&wmi](std::string_view className) -> platform::WmiClassRecords {
              const auto& failing = wmi.failingClasses;
              if (std::find(failing.begin(), failing.end(), className) != failing.end()) {
                  raise(-2147217392, "Invalid class");
              }
              const auto found = wmi.classes.find(std::string(className));
              if (found == wmi.classes.end()) return std::nullopt;
              return found->second;
          }) {}
    std::unique_ptr<platform::WmiResultSet> execQuery(std::string_view query) override {
        wmi_.queries.emplace_back(query);
        return records_.execQuery(query);
    }

  private:
    FakeWmi& wmi_;
    platform::WmiRecordServices records_;
};

}  // namespace

bool FakeTimeZone::systemTimeToFileTime(const platform::SystemTimeRecord& time,
                                        platform::FileTimeValue& fileTime) {
    given.push_back(time);
    const double date = toCalendarValue(
        DateTimeParts{time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond});
    fileTime = static_cast<platform::FileTimeValue>(std::llround((date - firstDay()) * 86400)) *
               kTicksPerSecond;
    return true;
}

bool FakeTimeZone::localFileTimeToFileTime(platform::FileTimeValue& fileTime) {
    fileTime -= static_cast<platform::FileTimeValue>(int64_t{nowOffset} * 60 * kTicksPerSecond);
    return true;
}

bool FakeTimeZone::fileTimeToSystemTime(platform::FileTimeValue fileTime,
                                        platform::SystemTimeRecord& time) {
    const auto seconds = static_cast<int64_t>(fileTime / kTicksPerSecond);
    // Whole days and the seconds of the day apart, so no rounding can creep in.
    const DateTimeParts parts =
        fromCalendarValue(firstDay() + static_cast<double>(seconds / 86400));
    const int64_t second = seconds % 86400;
    const auto part = [](int64_t number) { return static_cast<int16_t>(number); };
    time = {part(parts.year),  part(parts.month),   0,
            part(parts.day),   part(second / 3600), part(second / 60 % 60),
            part(second % 60), milliseconds};
    return true;
}

bool FakeTimeZone::systemTimeToTzSpecificLocalTime(const platform::SystemTimeRecord& universal,
                                                   platform::SystemTimeRecord& local) {
    given.push_back(universal);
    if (zoneRefuses) return false;
    platform::FileTimeValue fileTime = 0;
    systemTimeToFileTime(universal, fileTime);
    given.pop_back();
    const int32_t offset = ruleOfDate ? ruleOfDate(universal) : 0;
    fileTime += static_cast<platform::FileTimeValue>(int64_t{offset} * 60 * kTicksPerSecond);
    return fileTimeToSystemTime(fileTime, local);
}

uint32_t FakePaths::getLongPathName(std::string_view path, std::string& buffer, uint32_t size) {
    calls.push_back("long " + std::string(path) + " " + std::to_string(size));
    if (longNameRaises) raise(453, "Can't find DLL entry point GetLongPathNameA in kernel32");
    const auto found = longNames.find(path);
    if (found == longNames.end()) return 0;
    return answerText(found->second, buffer, size);
}

uint32_t FakePaths::getCurrentDirectory(uint32_t size, std::string& buffer) {
    calls.push_back("cwd " + std::to_string(size));
    if (currentDirectoryFails) return 0;
    return answerText(currentDirectory, buffer, size);
}

bool FakePaths::setCurrentDirectory(std::string_view path) {
    calls.push_back("cd " + std::string(path));
    if (std::find(folders.begin(), folders.end(), path) == folders.end()) return false;
    currentDirectory = path;
    return true;
}

std::unique_ptr<platform::ShellApplication> FakeShell::createApplication() {
    if (createFails) raise(kErrCantCreate);
    ++created;
    return std::make_unique<FakeShellObject>(*this);
}

bool FakeSystemInfo::computerNameEx(int32_t format, std::string& buffer, uint32_t& size) {
    return answerName(computerNames, format, buffer, size);
}

bool FakeSystemInfo::userNameEx(int32_t format, std::string& buffer, uint32_t& size) {
    return answerName(userNames, format, buffer, size);
}

uint32_t FakeProcesses::start(std::string_view commandLine, int32_t windowStyle) {
    if (startFails) raise(kErrFileNotFound);
    started.push_back(std::string(commandLine) + " @" + std::to_string(windowStyle));
    return startedId;
}

std::string FakeProgramSettings::get(std::string_view application, std::string_view section,
                                     std::string_view key, std::string_view defaultValue) {
    ++reads;
    const auto found = values.find(settingKey(application, section, key));
    return found == values.end() ? std::string(defaultValue) : found->second;
}

void FakeProgramSettings::save(std::string_view application, std::string_view section,
                               std::string_view key, std::string_view value) {
    if (saveFails) raise(kErrInvalidCall);
    values[settingKey(application, section, key)] = std::string(value);
}

int32_t FakeAnsiRegistry::openKeyEx(int32_t hive, std::string_view subKey, uint32_t access,
                                    int64_t& key) {
    const std::string path = hex(static_cast<uint32_t>(hive)) + "\\" + std::string(subKey);
    calls.push_back("open " + path + " " + hex(access));
    if (refused.count(path)) return 5;
    if (!keys.count(path)) return 2;
    key = nextHandle_++;
    openHandles[key] = path;
    return 0;
}

int32_t FakeAnsiRegistry::queryValueEx(int64_t key, std::string_view valueName, uint32_t& type,
                                       std::string& buffer, uint32_t& size) {
    const auto path = openHandles.find(key);
    if (path == openHandles.end()) return 6;
    const auto& values = keys[path->second];
    const auto value = values.find(std::string(valueName));
    if (value == values.end()) return 2;
    type = value->second.type;
    const std::string& bytes = value->second.bytes;
    if (bytes.size() > size || bytes.size() > buffer.size()) {
        size = static_cast<uint32_t>(bytes.size());
        return 234;
    }
    std::copy(bytes.begin(), bytes.end(), buffer.begin());
    size = static_cast<uint32_t>(bytes.size());
    return 0;
}

int32_t FakeAnsiRegistry::closeKey(int64_t key) {
    calls.push_back("close " + std::to_string(key));
    return openHandles.erase(key) ? 0 : 6;
}

std::unique_ptr<platform::WmiServices> FakeWmi::connect(std::string_view moniker) {
    monikers.emplace_back(moniker);
    if (unreachable) return nullptr;
    return std::make_unique<FakeWmiServices>(*this);
}

}  // namespace ostrel::fakes
