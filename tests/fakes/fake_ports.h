// Fakes of the ports for tests: each records what the core asked of it or
// answers what the test put in it. None does anything behind the test's back.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/common/wmi_records.h"
#include "platform/ports.h"
#include "runtime/automation_error.h"
#include "runtime/format.h"

namespace ostrel::fakes {

namespace detail {

// Seconds from 1 Jan 1601, through the run time's calendar.
constexpr int64_t kTicksPerSecond = 10'000'000;
inline double firstDay() {
    return toCalendarValue(DateTimeParts{1601, 1, 1});
}
inline platform::FileTimeValue seconds(int64_t count) {
    return static_cast<platform::FileTimeValue>(count * kTicksPerSecond);
}

// The text and a NUL at the start of the buffer: its length, or when it
// doesn't fit, the size it needs.
inline uint32_t answerText(const std::string& text, std::string& buffer, uint32_t size) {
    const auto needed = static_cast<uint32_t>(text.size() + 1);
    if (needed > size || buffer.size() < needed) return needed;
    buffer.replace(0, needed, text + '\0');
    return needed - 1;
}

inline bool answerName(const std::map<int32_t, std::string>& names, int32_t format,
                       std::string& buffer, uint32_t& size) {
    const auto found = names.find(format);
    if (found == names.end()) return false;
    size = answerText(found->second, buffer, size);
    return size == found->second.size();
}

inline std::string settingKey(std::string_view application, std::string_view section,
                              std::string_view key) {
    return std::string(application) + "\\" + std::string(section) + "\\" + std::string(key);
}

inline std::string hex(int64_t number) {
    char text[16];
    std::snprintf(text, sizeof text, "%X", static_cast<uint32_t>(number));
    return text;
}

}  // namespace detail

// A clock that stands still at the time the test sets.
class FakeClock : public platform::ClockPort {
  public:
    DateTimeParts time{2024, 3, 5, 14, 7, 9};
    DateTimeParts now() override { return time; }
};

// Keeps every text written to the debugger stream.
class CapturingDebugStream : public platform::DebugStreamPort {
  public:
    std::vector<std::string> texts;
    void write(std::string_view text) override { texts.emplace_back(text); }
    // The texts since the last call (or clear), without their line ends.
    std::vector<std::string> lines() {
        std::vector<std::string> lines;
        for (const std::string& text : texts)
            lines.push_back(text.substr(0, text.find_last_not_of("\r\n") + 1));
        texts.clear();
        return lines;
    }
};

// Keeps every box shown, as "title|style|text", instead of showing it.
class CapturingMessageBox : public platform::MessageBoxPort {
  public:
    std::vector<std::string> shown;
    void show(std::string_view text, int32_t style, std::string_view title) override {
        shown.push_back(std::string(title) + "|" + std::to_string(style) + "|" + std::string(text));
    }
    const std::vector<std::string>& boxes() const { return shown; }
};

// Environment variables from a map (a missing entry is an unset variable)
// and a component folder of the test's choice.
class FakeEnvironment : public platform::EnvironmentPort {
  public:
    std::map<std::string, std::string, std::less<>> variables;
    std::string folder;
    std::optional<std::string> variable(std::string_view name) override {
        if (const auto found = variables.find(name); found != variables.end()) return found->second;
        return std::nullopt;
    }
    std::string componentFolder() override { return folder; }
};

// Locale facts as the test sets them (English by default).
class FakeLocale : public platform::LocalePort {
  public:
    LocaleFacts localeFacts;
    std::string language;
    LocaleFacts facts() override { return localeFacts; }
    std::string uiLanguage() override { return language; }
};

// System records and names as the test sets them. The name calls behave as
// GetComputerNameExA/GetUserNameExA: a format without an entry fails; a
// buffer or size too small for the name and its NUL fails with size set to
// what is needed; otherwise the name and a NUL are written at the start of
// the buffer (the rest stays) and size becomes the name's length.
class FakeSystemInfo : public platform::SystemInfoPort {
  public:
    platform::OsVersionRecord version;
    bool versionSucceeds = true;
    std::optional<platform::OsVersionRecord> versionAskedWith;  // the record as the call got it
    platform::SystemRecord system;
    platform::SystemRecord nativeSystem;
    std::map<int32_t, std::string> computerNames;  // by name format
    std::map<int32_t, std::string> userNames;      // by name format

    bool getVersionEx(platform::OsVersionRecord& record) override {
        versionAskedWith = record;
        if (versionSucceeds) record = version;
        return versionSucceeds;
    }
    void getSystemInfo(platform::SystemRecord& record) override { record = system; }
    void getNativeSystemInfo(platform::SystemRecord& record) override { record = nativeSystem; }
    bool computerNameEx(int32_t format, std::string& buffer, uint32_t& size) override {
        return detail::answerName(computerNames, format, buffer, size);
    }
    bool userNameEx(int32_t format, std::string& buffer, uint32_t& size) override {
        return detail::answerName(userNames, format, buffer, size);
    }
};

// A lock inside this test: what each call answers is the test's to say,
// and every call is written down ("create NAME", "wait H MS", "release H",
// "close H"). Handles count from 1; a failure is error 288 (289 on close),
// whose text is "text of CODE".
class FakeNamedMutex : public platform::NamedMutexPort {
  public:
    bool createFails = false;
    uint32_t waitAnswer = kWaitObtained;
    bool releaseFails = false;
    bool closeFails = false;
    std::vector<std::string> calls;

    int32_t create(std::string_view name) override {
        calls.push_back("create " + std::string(name));
        if (!createFails) return nextHandle_++;
        lastError_ = 288;
        return 0;
    }
    uint32_t wait(int32_t handle, int32_t timeoutMs) override {
        calls.push_back("wait " + std::to_string(handle) + " " + std::to_string(timeoutMs));
        return waitAnswer;
    }
    bool release(int32_t handle) override { return answer("release ", handle, releaseFails, 288); }
    bool close(int32_t handle) override { return answer("close ", handle, closeFails, 289); }
    int32_t lastError() override { return lastError_; }
    std::string errorText(int32_t code) override { return "text of " + std::to_string(code); }

  private:
    bool answer(std::string verb, int32_t handle, bool fails, int32_t code) {
        calls.push_back(verb + std::to_string(handle));
        if (fails) lastError_ = code;
        return !fails;
    }
    int32_t nextHandle_ = 1;
    int32_t lastError_ = 0;
};

// The older settings store in memory, keyed "application\\section\\key" as
// given; counts its reads. A save may be made to fail (error 5).
class FakeProgramSettings : public platform::ProgramSettingsPort {
  public:
    std::map<std::string, std::string> values;
    int reads = 0;
    bool saveFails = false;

    std::string get(std::string_view application, std::string_view section, std::string_view key,
                    std::string_view defaultValue) override {
        ++reads;
        const auto found = values.find(detail::settingKey(application, section, key));
        return found == values.end() ? std::string(defaultValue) : found->second;
    }
    void save(std::string_view application, std::string_view section, std::string_view key,
              std::string_view value) override {
        if (saveFails) raise(kErrInvalidCall);
        values[detail::settingKey(application, section, key)] = std::string(value);
    }
};

// A process table and a clock of the test's making. Each sleep moves the
// tick counter on by what was slept; start answers startedId, or raises 53
// when startFails; a snapshot that fails has error 8.
class FakeProcesses : public platform::ProcessPort {
  public:
    std::vector<platform::ProcessEntry> table;
    bool snapshotFails = false;
    uint32_t startedId = 1234;
    bool startFails = false;
    std::vector<std::string> started;  // command lines, with their window style
    uint32_t ticks = 1000;
    uint32_t sleeps = 0;
    int snapshotsOpen = 0;

    int64_t createSnapshot(uint32_t flags, uint32_t processId) override {
        if (snapshotFails || flags != 15 || processId != 0) return kInvalidSnapshot;
        ++snapshotsOpen;
        return 7;
    }
    bool firstProcess(int64_t snapshot, platform::ProcessEntry& entry) override {
        next_ = 0;
        return nextProcess(snapshot, entry);
    }
    bool nextProcess(int64_t, platform::ProcessEntry& entry) override {
        if (next_ >= table.size()) return false;
        entry = table[next_++];
        return true;
    }
    bool closeSnapshot(int64_t) override {
        --snapshotsOpen;
        return true;
    }
    int32_t lastError() override { return 8; }
    uint32_t start(std::string_view commandLine, int32_t windowStyle) override {
        if (startFails) raise(kErrFileNotFound);
        started.push_back(std::string(commandLine) + " @" + std::to_string(windowStyle));
        return startedId;
    }
    uint32_t tickCount() override { return ticks; }
    void sleep(uint32_t milliseconds) override {
        ++sleeps;
        ticks += milliseconds;
    }

  private:
    size_t next_ = 0;
};

// The calendar calls in a zone of the test's making, offsets in minutes
// east of GMT: nowOffset is the offset in force now, ruleOfDate the offset
// on a GMT date. The way back to a record fills the milliseconds with
// `milliseconds`; every record handed in is kept.
class FakeTimeZone : public platform::TimeZonePort {
  public:
    int32_t nowOffset = 0;
    std::function<int32_t(const platform::SystemTimeRecord& universal)> ruleOfDate;
    bool zoneRefuses = false;
    int16_t milliseconds = 0;
    std::vector<platform::SystemTimeRecord> given;

    bool systemTimeToFileTime(const platform::SystemTimeRecord& time,
                              platform::FileTimeValue& fileTime) override {
        given.push_back(time);
        const double date = toCalendarValue(DateTimeParts{time.wYear, time.wMonth, time.wDay,
                                                          time.wHour, time.wMinute, time.wSecond});
        fileTime = detail::seconds(std::llround((date - detail::firstDay()) * 86400));
        return true;
    }
    bool localFileTimeToFileTime(platform::FileTimeValue& fileTime) override {
        fileTime -= detail::seconds(int64_t{nowOffset} * 60);
        return true;
    }
    bool fileTimeToSystemTime(platform::FileTimeValue fileTime,
                              platform::SystemTimeRecord& time) override {
        const auto seconds = static_cast<int64_t>(fileTime / detail::kTicksPerSecond);
        // Whole days and the seconds of the day apart, so no rounding can creep in.
        const DateTimeParts parts =
            fromCalendarValue(detail::firstDay() + static_cast<double>(seconds / 86400));
        const int64_t second = seconds % 86400;
        const auto part = [](int64_t number) { return static_cast<int16_t>(number); };
        time = {part(parts.year),  part(parts.month),   0,
                part(parts.day),   part(second / 3600), part(second / 60 % 60),
                part(second % 60), milliseconds};
        return true;
    }
    bool systemTimeToTzSpecificLocalTime(const platform::SystemTimeRecord& universal,
                                         platform::SystemTimeRecord& local) override {
        platform::FileTimeValue fileTime = 0;
        systemTimeToFileTime(universal, fileTime);  // which keeps `universal`
        if (zoneRefuses) return false;
        const int32_t offset = ruleOfDate ? ruleOfDate(universal) : 0;
        fileTime += detail::seconds(int64_t{offset} * 60);
        return fileTimeToSystemTime(fileTime, local);
    }
};

// Paths of the test's making: an existing path has an entry in longNames
// (its long form); folders lists the folders the current directory may
// become. Calls are written down ("long PATH SIZE", "cwd SIZE", "cd PATH").
// A long-name call may be made to raise 453, as a missing entry point does.
class FakePaths : public platform::PathPort {
  public:
    std::map<std::string, std::string, std::less<>> longNames;
    std::vector<std::string> folders;
    std::string currentDirectory = "C:\\Work";
    bool currentDirectoryFails = false;
    bool longNameRaises = false;
    std::vector<std::string> calls;

    uint32_t getLongPathName(std::string_view path, std::string& buffer, uint32_t size) override {
        calls.push_back("long " + std::string(path) + " " + std::to_string(size));
        if (longNameRaises) raise(453, "Can't find DLL entry point GetLongPathNameA in kernel32");
        const auto found = longNames.find(path);
        if (found == longNames.end()) return 0;
        return detail::answerText(found->second, buffer, size);
    }
    uint32_t getCurrentDirectory(uint32_t size, std::string& buffer) override {
        calls.push_back("cwd " + std::to_string(size));
        if (currentDirectoryFails) return 0;
        return detail::answerText(currentDirectory, buffer, size);
    }
    bool setCurrentDirectory(std::string_view path) override {
        calls.push_back("cd " + std::string(path));
        if (std::find(folders.begin(), folders.end(), path) == folders.end()) return false;
        currentDirectory = path;
        return true;
    }
};

// The folder dialogue answering as the test says: choice nullopt is a
// cancel; selfIsNothing a folder whose Self is Nothing. Creations are
// counted, and each BrowseForFolder written down as "owner|title|options|root".
class FakeShell : public platform::ShellPort {
  public:
    std::optional<std::string> choice;
    bool selfIsNothing = false;
    bool createFails = false;
    int created = 0;
    std::vector<std::string> calls;

    std::unique_ptr<platform::ShellApplication> createApplication() override {
        if (createFails) raise(kErrCantCreate);
        ++created;
        return std::make_unique<Object>(*this);
    }

  private:
    // The application, the chosen folder and its item in one: each answer is a
    // new one of these on the same shell.
    class Object : public platform::ShellApplication,
                   public platform::ShellFolder,
                   public platform::ShellFolderItem {
      public:
        explicit Object(FakeShell& shell) : shell_(shell) {}
        std::unique_ptr<platform::ShellFolder> browseForFolder(int32_t owner,
                                                               std::string_view title,
                                                               int32_t options,
                                                               std::string_view root) override {
            shell_.calls.push_back(std::to_string(owner) + "|" + std::string(title) + "|" +
                                   std::to_string(options) + "|" + std::string(root));
            if (!shell_.choice) return nullptr;
            return std::make_unique<Object>(shell_);
        }
        std::unique_ptr<platform::ShellFolderItem> self() override {
            if (shell_.selfIsNothing) return nullptr;
            return std::make_unique<Object>(shell_);
        }
        std::string path() override { return *shell_.choice; }

      private:
        FakeShell& shell_;
    };
};

// The help viewers, writing each call down as "html|file|command|data" or
// "win|file|command".
class FakeHelp : public platform::HelpPort {
  public:
    std::vector<std::string> calls;
    void htmlHelp(std::string_view file, int32_t command, int32_t data) override {
        calls.push_back("html|" + std::string(file) + "|" + std::to_string(command) + "|" +
                        std::to_string(data));
    }
    void winHelp(std::string_view file, int32_t command) override {
        calls.push_back("win|" + std::string(file) + "|" + std::to_string(command));
    }
};

// The A-form registry calls on keys of the test's making, "HIVE\\path" with
// the hive's number in hexadecimal ("80000002\\SOFTWARE\\..."). A key in
// refused fails to open with 5; a value larger than the buffer answers 234
// with the size it needs. Opens and closes are written down ("open KEY MASK",
// "close HANDLE"); handles count from 1, and those not closed yet are in
// openHandles with their key.
class FakeAnsiRegistry : public platform::AnsiRegistryPort {
  public:
    struct Value {
        uint32_t type = 1;
        std::string bytes;
    };
    std::map<std::string, std::map<std::string, Value>> keys;
    std::set<std::string> refused;
    std::map<int64_t, std::string> openHandles;
    std::vector<std::string> calls;

    int32_t openKeyEx(int32_t hive, std::string_view subKey, uint32_t access,
                      int64_t& key) override {
        const std::string path = detail::hex(hive) + "\\" + std::string(subKey);
        calls.push_back("open " + path + " " + detail::hex(access));
        if (refused.count(path)) return 5;
        if (!keys.count(path)) return 2;
        key = nextHandle_++;
        openHandles[key] = path;
        return 0;
    }
    int32_t queryValueEx(int64_t key, std::string_view valueName, uint32_t& type,
                         std::string& buffer, uint32_t& size) override {
        const auto path = openHandles.find(key);
        if (path == openHandles.end()) return 6;
        const auto& values = keys[path->second];
        const auto value = values.find(std::string(valueName));
        if (value == values.end()) return 2;
        type = value->second.type;
        const std::string& bytes = value->second.bytes;
        const bool fits = bytes.size() <= size && bytes.size() <= buffer.size();
        size = static_cast<uint32_t>(bytes.size());
        if (!fits) return 234;
        std::copy(bytes.begin(), bytes.end(), buffer.begin());
        return 0;
    }
    int32_t closeKey(int64_t key) override {
        calls.push_back("close " + std::to_string(key));
        return openHandles.erase(key) ? 0 : 6;
    }
    std::string fromAnsi(std::string_view bytes) override { return std::string(bytes); }

  private:
    int64_t nextHandle_ = 1;
};

// No screen: a resolution of the test's choice, and each form shown is kept
// with its owner; the presses in `clicks` are made in turn while it is
// shown, until one unloads it.
class FakeWindowing : public platform::WindowPort {
  public:
    int32_t dpi = 96;
    std::vector<std::string> clicks;
    std::vector<Form> shown;
    std::vector<int64_t> owners;
    std::vector<bool> unloadedBy;  // what each press answered

    int32_t dotsPerInch() override { return dpi; }
    void showModal(const Form& form, int64_t ownerWindow, const ClickHandler& onClick) override {
        shown.push_back(form);
        owners.push_back(ownerWindow);
        for (const std::string& control : clicks) {
            unloadedBy.push_back(onClick(control));
            if (unloadedBy.back()) break;
        }
    }
};

// WMI from records the test sets per class (a class left out: a null result
// set). A class named in failingClasses makes its query raise; unreachable
// makes the moniker unresolvable. Every moniker and query is kept.
class FakeWmi : public platform::WmiPort {
  public:
    std::map<std::string, std::vector<platform::WmiRecord>> classes;
    std::set<std::string, std::less<>> failingClasses;
    bool unreachable = false;
    std::vector<std::string> monikers, queries;

    std::unique_ptr<platform::WmiServices> connect(std::string_view moniker) override {
        monikers.emplace_back(moniker);
        if (unreachable) return nullptr;
        return std::make_unique<Services>(*this);
    }

  private:
    class Services final : public platform::WmiServices {
      public:
        explicit Services(FakeWmi& wmi)
            : wmi_(wmi), records_([&wmi](std::string_view className) -> platform::WmiClassRecords {
                  if (wmi.failingClasses.count(className)) raise(-2147217392, "Invalid class");
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
};

}  // namespace ostrel::fakes
