#include "fakes/fake_ports.h"

#include "runtime/automation_error.h"

namespace ostrel::fakes {

namespace {

bool answerName(const std::map<int32_t, std::string>& names, int32_t format, std::string& buffer,
                uint32_t& size) {
    const auto found = names.find(format);
    if (found == names.end()) return false;
    const std::string& name = found->second;
    const size_t needed = name.size() + 1;
    if (size < needed || buffer.size() < needed) {
        size = static_cast<uint32_t>(needed);
        return false;
    }
    buffer.replace(0, needed, name + '\0');
    size = static_cast<uint32_t>(name.size());
    return true;
}

}  // namespace

std::optional<std::string> FakeEnvironment::variable(std::string_view name) {
    const auto found = variables.find(name);
    if (found == variables.end()) return std::nullopt;
    return found->second;
}

bool FakeSystemInfo::getVersionEx(platform::OsVersionRecord& record) {
    versionAskedWith = record;
    if (!versionSucceeds) return false;
    record = version;
    return true;
}

bool FakeSystemInfo::computerNameEx(int32_t format, std::string& buffer, uint32_t& size) {
    return answerName(computerNames, format, buffer, size);
}

bool FakeSystemInfo::userNameEx(int32_t format, std::string& buffer, uint32_t& size) {
    return answerName(userNames, format, buffer, size);
}

int32_t FakeNamedMutex::create(std::string_view name) {
    calls.push_back("create " + std::string(name));
    if (!createFails) return nextHandle_++;
    lastError_ = failureCode;
    return 0;
}

uint32_t FakeNamedMutex::wait(int32_t handle, int32_t timeoutMs) {
    calls.push_back("wait " + std::to_string(handle) + " " + std::to_string(timeoutMs));
    return waitAnswer;
}

bool FakeNamedMutex::release(int32_t handle) {
    calls.push_back("release " + std::to_string(handle));
    if (releaseFails) lastError_ = failureCode;
    return !releaseFails;
}

bool FakeNamedMutex::close(int32_t handle) {
    calls.push_back("close " + std::to_string(handle));
    if (closeFails) lastError_ = failureCode + 1;
    return !closeFails;
}

int64_t FakeProcesses::createSnapshot(uint32_t flags, uint32_t processId) {
    if (snapshotFails || flags != 15 || processId != 0) return kInvalidSnapshot;
    ++snapshotsOpen;
    return 7;
}

bool FakeProcesses::firstProcess(int64_t snapshot, platform::ProcessEntry& entry) {
    next_ = 0;
    return nextProcess(snapshot, entry);
}

bool FakeProcesses::nextProcess(int64_t, platform::ProcessEntry& entry) {
    if (next_ >= table.size()) return false;
    entry = table[next_++];
    return true;
}

uint32_t FakeProcesses::start(std::string_view commandLine, int32_t windowStyle) {
    if (startFails) raise(kErrFileNotFound);
    started.push_back(std::string(commandLine) + " @" + std::to_string(windowStyle));
    return startedId;
}

namespace {
std::string settingKey(std::string_view application, std::string_view section,
                       std::string_view key) {
    return std::string(application) + "\\" + std::string(section) + "\\" + std::string(key);
}
}  // namespace

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

}  // namespace ostrel::fakes
